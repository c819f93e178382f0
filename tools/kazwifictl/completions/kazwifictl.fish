# fish completion for kazwifictl(1)

set -l commands status on off scan list connect disconnect forget monitor wait doctor report country
set -l none "not __fish_seen_subcommand_from $commands"
set -l connect '__fish_seen_subcommand_from connect'

# Prints the SSIDs that can be typed, one per line. Prints nothing without Wi-Fi.
function __kazwifictl_ssids
    set -l words (commandline -opc)
    $words[1] --start-wait 1 list --names $argv 2>/dev/null
end

complete -c kazwifictl -f
complete -c kazwifictl -n $none -a status -d 'Show whether Wi-Fi is on, and the connection'
complete -c kazwifictl -n $none -a on -d 'Switch Wi-Fi on'
complete -c kazwifictl -n $none -a off -d 'Switch Wi-Fi off'
complete -c kazwifictl -n $none -a scan -d 'Scan for networks, then list them'
complete -c kazwifictl -n $none -a list -d 'List the networks in range'
complete -c kazwifictl -n $none -a connect -d 'Connect to a network'
complete -c kazwifictl -n $none -a disconnect -d 'End the connection'
complete -c kazwifictl -n $none -a forget -d 'Delete a saved network'
complete -c kazwifictl -n $none -a monitor -d 'Show every change'
complete -c kazwifictl -n $none -a wait -d 'Wait for a state'
complete -c kazwifictl -n $none -a doctor -d 'Find what is wrong with this device'
complete -c kazwifictl -n $none -a report -d 'Write a file for a bug report'
complete -c kazwifictl -n $none -a country -d 'Show or set the country whose radio rules apply'
complete -c kazwifictl -n '__fish_seen_subcommand_from report' -F

complete -c kazwifictl -n $none -a help -d 'Show help'
complete -c kazwifictl -n '__fish_seen_subcommand_from help' -a '$commands'

complete -c kazwifictl -l json -d 'Write results as JSON'
complete -c kazwifictl -l color -x -a 'auto always never' -d 'When to use colours'
complete -c kazwifictl -s v -l verbose -d 'Write the log of the library to stderr'
complete -c kazwifictl -l simulate -d 'Use a simulated device'
complete -c kazwifictl -l start-wait -x -d 'Seconds to wait for Wi-Fi to start'
complete -c kazwifictl -s h -l help -d 'Show help'
complete -c kazwifictl -n $none -l version -d 'Show the version'

complete -c kazwifictl -n '__fish_seen_subcommand_from list' -l names -d 'Only names that can be typed'
complete -c kazwifictl -n '__fish_seen_subcommand_from list' -l saved -d 'Only saved networks'

complete -c kazwifictl -n $connect -a '(__kazwifictl_ssids)' -d Network
complete -c kazwifictl -n '__fish_seen_subcommand_from forget' -a '(__kazwifictl_ssids --saved)' -d 'Saved network'
complete -c kazwifictl -n '__fish_seen_subcommand_from connect forget' -l hex -d 'The SSID is hexadecimal'
complete -c kazwifictl -n $connect -l security -x -a 'open wep wpa wpa2 wpa3 enterprise' -d 'How it is protected'
complete -c kazwifictl -n $connect -l hidden -d 'The network does not announce its name'
complete -c kazwifictl -n $connect -l password-file -r -F -d 'File with the password; - is stdin'
complete -c kazwifictl -n $connect -l identity -x -d 'EAP identity'
complete -c kazwifictl -n $connect -l anonymous-identity -x -d 'EAP outer identity'
complete -c kazwifictl -n $connect -l eap -x -a 'MSCHAPV2 PEAP PWD TLS TTLS' -d 'EAP method'
complete -c kazwifictl -n $connect -l phase2 -x -a 'GTC MSCHAP MSCHAPV2 PAP' -d 'Inner method'
complete -c kazwifictl -n $connect -l ca-file -r -F -d 'CA that the EAP server must have'
complete -c kazwifictl -n $connect -l domain -x -d 'Domain that the EAP server must have'
complete -c kazwifictl -n $connect -l client-cert -r -F -d 'Certificate of this device'
complete -c kazwifictl -n $connect -l private-key -r -F -d 'Its key, instead of the password'
complete -c kazwifictl -n $connect -l wait -x -d 'Seconds to wait for the outcome; 0 returns at once'
complete -c kazwifictl -n $connect -l keep -d 'Keep a new network saved even if connecting fails'
complete -c kazwifictl -n $connect -l replace -d 'Replace the settings of a saved network'
complete -c kazwifictl -n '__fish_seen_subcommand_from forget' -l all -d 'All saved networks'
complete -c kazwifictl -n '__fish_seen_subcommand_from wait' -l for -x -a 'on off connected disconnected' -d 'The state'
complete -c kazwifictl -n '__fish_seen_subcommand_from wait' -l timeout -x -d 'How long to wait'
