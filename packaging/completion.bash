# Completes the command line of scn4070a-store in bash, from what the program itself says.
_scn4070a_store() {
    local program=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} choice=
    if ((COMP_CWORD == 1)); then
        choice=$("$program" --help 2>/dev/null | sed -n 's/^  \([^ ]*\)  *[^ ].*/\1/p')
    elif [[ $word == -* ]]; then
        # The options stand at the begin of a line: "  -o, --output <file>  ...".
        choice=$("$program" "${COMP_WORDS[1]}" --help 2>/dev/null |
            sed -n 's/^  \(-[^ ,]*\)\(, \(--[^ ]*\)\)\{0,1\}.*/\1 \3/p')
    fi
    # With nothing to choose from, file names follow.
    mapfile -t COMPREPLY < <(compgen -W "$choice" -- "$word")
}
complete -o default -F _scn4070a_store scn4070a-store
