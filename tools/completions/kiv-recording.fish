# Completes kiv-recording in fish. Verbs and options come from the program's own
# --help, so that they are those of the installed version.

function __kiv_recording_options
    set -l words (commandline -opc)
    $words[1] $words[2] --help 2>/dev/null |
        sed -nE 's/^  (-[A-Za-z0-9],)?(--[a-z-]+).*/\2/p'
end

complete -c kiv-recording -n __fish_use_subcommand -f -a \
    '(kiv-recording --help | sed -nE "/^Subcommands:/,/^\$/s/^  ([a-z]+) .*/\1/p")'
complete -c kiv-recording -n 'string match -q -- "-*" (commandline -ct)' -f -a \
    '(__kiv_recording_options)'
