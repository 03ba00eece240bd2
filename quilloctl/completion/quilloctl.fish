# Completion of quilloctl for fish: put this file into ~/.config/fish/completions. The program itself knows what can
# follow.

function __quilloctl_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    # An empty word is one, too.
    test (count $current) -gt 0; or set current ''
    set -l found ($words[1] complete $words $current 2>/dev/null)
    if test "$found[1]" = :directories
        __fish_complete_directories $current
    else if test "$found[1]" = :files
        __fish_complete_path $current
    else
        printf '%s\n' $found
    end
end

complete -c quilloctl -f -a '(__quilloctl_complete)'
