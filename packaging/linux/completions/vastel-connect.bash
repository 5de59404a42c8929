# bash completion for vastel-connect

_vastel_connect() {
    mapfile -t COMPREPLY < <(compgen -W "-log -jsonlog -help -h -changelog -showuri" -- "$2")
}
complete -F _vastel_connect vastel-connect
