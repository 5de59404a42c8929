# bash completion for vastel-connect

_vastel_connect() {
    # -help has no line about itself.
    mapfile -t COMPREPLY < <(compgen -W "-help -h $(vastel-connect -help |
        sed -n 's/^  \(-[a-z]*\):.*/\1/p')" -- "$2")
}
complete -F _vastel_connect vastel-connect
