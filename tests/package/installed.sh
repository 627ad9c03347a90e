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

command -v dpkg-deb >/dev/null || exit 0
(cd "$folder" && cpack --config "$build/CPackConfig.cmake" -G DEB -B "$folder/deb" >/dev/null)
dpkg-deb -x "$folder"/deb/*.deb "$folder/unpacked"
[ "$("$folder/unpacked/usr/bin/moradmin" cat "$folder/d.dxf" /sample/answer)" = 42 ]
