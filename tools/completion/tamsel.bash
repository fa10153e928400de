# Completion for tamsel-dump and tamsel-capture: options as --help lists them, their values, files.
_tamsel() {
    local current=$2 previous=$3 word i families=0
    COMPREPLY=()
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W \
            "$("$1" --help 2>/dev/null | grep -oE '(^|[ ,])--?[a-z][a-z-]*' | tr -d ' ,')" -- "$current")
        return
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        [[ $word == ras || $word == ui || $word == h245 ]] && families=1
    done
    if [[ $previous == --modules ]]; then
        mapfile -t COMPREPLY < <(compgen -W '2009 1998' -- "$current")
    elif [[ $previous == --message ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'setup callProceeding alerting connect releaseComplete
            facility registrationRequest registrationReject admissionRequest admissionConfirm
            admissionReject disengageRequest terminalCapabilitySet openLogicalChannel
            openLogicalChannelReject' -- "$current")
    elif [[ $previous == -i && $1 == *tamsel-capture ]]; then
        mapfile -t COMPREPLY < <(compgen -W "any $(ls /sys/class/net 2>/dev/null)" -- "$current")
    elif [[ $previous == --@(host|from|to|filter|call|port) ]]; then
        return
    elif [[ $previous == --family || ($1 == *tamsel-dump && $families == 0 && $previous != -o) ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'ras ui h245' -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        compopt -o filenames 2>/dev/null
    fi
}
complete -F _tamsel tamsel-dump tamsel-capture
