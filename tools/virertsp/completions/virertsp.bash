# Completion of bash for virertsp. The program itself knows what may follow.
_virertsp() {
    local line=${COMP_LINE:0:COMP_POINT} words typed lead candidate
    read -ra words <<<"$line"
    [[ $line != *[[:blank:]] ]] || words+=("")
    typed=${words[-1]}
    # Readline replaces what follows the last of these characters alone.
    lead=${typed%"${typed##*[=:]}"}
    COMPREPLY=()
    while IFS=$'\t' read -r candidate _; do
        if [[ $candidate == ":files" ]]; then
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "${typed#"$lead"}")
        else
            [[ $candidate != *[=/] ]] || compopt -o nospace
            COMPREPLY+=("${candidate#"$lead"}")
        fi
    done < <("${words[0]}" --complete "${words[@]:1}" 2>/dev/null)
}
complete -F _virertsp virertsp
