# Completes kiv-recording in bash. Verbs and options come from the program's own
# --help, so that they are those of the installed version.

# The verbs, which stand below "Subcommands:".
_kiv_recording_verbs() { # PROGRAM
  "$1" --help 2>/dev/null | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p'
}

_kiv_recording_options() { # PROGRAM [VERB]
  "$@" --help 2>/dev/null |
    sed -nE 's/^  (-[A-Za-z0-9],)?(--[a-z-]+).*/\2/p'
}

_kiv_recording() {
  local program=${COMP_WORDS[0]} verb=${COMP_WORDS[1]} word=${COMP_WORDS[COMP_CWORD]}
  local words=
  if [[ $COMP_CWORD -eq 1 && $word == -* ]]; then
    words=$(_kiv_recording_options "$program")
  elif [[ $COMP_CWORD -eq 1 ]]; then
    words=$(_kiv_recording_verbs "$program")
  elif [[ $word == -* ]]; then
    words=$(_kiv_recording_options "$program" "$verb")
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

# Where nothing else fits, files.
complete -o default -F _kiv_recording kiv-recording
