# bash completion for kazwifictl(1)

# Prints the SSIDs that can be typed, one per line. Prints nothing without Wi-Fi.
_kazwifictl_ssids() { # further options of `list`
    "${COMP_WORDS[0]}" --start-wait 1 list --names "$@" 2>/dev/null
}

# Completes the current word from the lines on the standard input. An SSID may contain blanks and other characters
# that are special to the shell, so each SSID is quoted, unless the word already begins with a quote.
_kazwifictl_from_lines() { # the word as readline sees it
    local word=$1 raw=${COMP_WORDS[COMP_CWORD]} line shown
    while IFS= read -r line; do
        case $raw in
            [\'\"]*) shown=$line ;;
            *) printf -v shown %q "$line"; word=$raw ;;
        esac
        [[ $shown == "$word"* ]] && COMPREPLY+=("$shown")
    done
    if declare -F __ltrim_colon_completions >/dev/null; then
        __ltrim_colon_completions "$word"
    fi
}

_kazwifictl() {
    local word=$2 previous=$3 command='' i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            status | on | off | scan | list | connect | disconnect | forget | monitor | wait | doctor | report | country | help)
                command=${COMP_WORDS[i]}
                break
                ;;
        esac
    done
    case $previous in
        --color | --colour) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$word"); return ;;
        --security) mapfile -t COMPREPLY < <(compgen -W 'open wep wpa wpa2 wpa3 enterprise' -- "$word"); return ;;
        --for) mapfile -t COMPREPLY < <(compgen -W 'on off connected disconnected' -- "$word"); return ;;
        --eap) mapfile -t COMPREPLY < <(compgen -W 'MSCHAPV2 PEAP PWD TLS TTLS' -- "$word"); return ;;
        --phase2) mapfile -t COMPREPLY < <(compgen -W 'GTC MSCHAP MSCHAPV2 PAP' -- "$word"); return ;;
        --password-file | --ca-file | --client-cert | --private-key) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$word"); return ;;
        --identity | --anonymous-identity | --domain | --wait | --start-wait | --timeout) return ;;
    esac
    if [[ $word == -* ]]; then
        local options='--json --color --verbose --simulate --start-wait --help'
        case $command in
            '') options+=' --version' ;;
            list) options+=' --names --saved' ;;
            connect) options+=' --hex --security --hidden --password-file --identity --anonymous-identity --eap
                --phase2 --ca-file --domain --client-cert --private-key --wait --keep --replace' ;;
            forget) options+=' --hex --all' ;;
            wait) options+=' --for --timeout' ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        return
    fi
    case $command in
        '') mapfile -t COMPREPLY < <(compgen -W 'status on off scan list connect disconnect forget monitor wait doctor report country help' -- "$word") ;;
        help) mapfile -t COMPREPLY < <(compgen -W 'status on off scan list connect disconnect forget monitor wait doctor report country' -- "$word") ;;
        report) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        connect) _kazwifictl_from_lines "$word" < <(_kazwifictl_ssids) ;;
        forget) _kazwifictl_from_lines "$word" < <(_kazwifictl_ssids --saved) ;;
    esac
}

complete -F _kazwifictl kazwifictl
