# Completion of moradmin in bash: commands, options, drawings, and out of the drawing that stands on
# the line paths of its store, layers and references. The program itself says what may follow.
_moradmin() {
    local line words=("${COMP_WORDS[@]:1:COMP_CWORD}")
    COMPREPLY=()
    while IFS= read -r line; do
        if [ "$line" = :files ]; then
            compopt -o default -o bashdefault
        else
            COMPREPLY+=("$(printf '%q' "$line")")
        fi
    done < <("${COMP_WORDS[0]}" complete -- "${words[@]}" 2>/dev/null)
    if [ "${#COMPREPLY[@]}" -eq 1 ] && [[ ${COMPREPLY[0]} == */ ]]; then compopt -o nospace; fi
}
complete -F _moradmin moradmin
