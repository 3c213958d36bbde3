# Completion of fish for virertsp. The program itself knows what may follow.
function __virertsp_candidates
    set -l words (commandline -opc) (commandline -ct)
    set -l candidates ($words[1] --complete $words[2..-1] 2>/dev/null)
    if test "$candidates" = ":files"
        set -l lead (string match -r -- '^--[^=]*=' $words[-1])
        printf "$lead%s\n" (__fish_complete_path (string replace -- "$lead" '' $words[-1]))
    else
        printf '%s\n' $candidates
    end
end
complete -c virertsp -f -a '(__virertsp_candidates)'
