#!/usr/bin/env bash
# installed.sh BUILD SOURCE: installs the build into a folder, builds the example against it alone and
# runs it; makes the Debian package, unpacks it and runs the tool out of it.
set -euo pipefail
build=$1
source=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

cmake --install "$build" --prefix "$folder/prefix" >/dev/null
cp -r "$source/samples/embedding" "$folder/example"
cmake -S "$folder/example" -B "$folder/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
      -DCMAKE_PREFIX_PATH="$folder/prefix" ${3:+-DCMAKE_CXX_FLAGS="$3"} >/dev/null
cmake --build "$folder/build" >/dev/null

"$folder/prefix/bin/moradmin" new "$folder/d.dxf"
"$folder/build/store_value" "$folder/d.dxf"
[ "$("$folder/prefix/bin/moradmin" cat "$folder/d.dxf" /sample/answer)" = 42 ]

man="$folder/prefix/share/man/man1"
for page in moradmin moradmin-put moradmin-shell; do
    [ -s "$man/$page.1" ]
    ! command -v man >/dev/null || LC_ALL=C.UTF-8 man --warnings -l "$man/$page.1" 2>&1 >/dev/null | { ! grep .; }
done
bash -c '. "$1" && complete -p moradmin' bash "$folder/prefix/share/bash-completion/completions/moradmin" >/dev/null
[[ "$("$folder/prefix/bin/moradmin" --version)" == moradmin\ *\(*\) ]]

command -v dpkg-deb >/dev/null || exit 0
(cd "$folder" && cpack --config "$build/CPackConfig.cmake" -G DEB -B "$folder/deb" >/dev/null)
dpkg-deb -x "$folder"/deb/*.deb "$folder/unpacked"
[ -e "$folder/unpacked/usr/share/man/man1/moradmin-cat.1" ]
[ "$("$folder/unpacked/usr/bin/moradmin" cat "$folder/d.dxf" /sample/answer)" = 42 ]
