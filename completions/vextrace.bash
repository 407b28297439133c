# Completion of vextrace for bash: commands, options, their values; file names elsewhere.
_vextrace() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=''
    COMPREPLY=()
    if ((COMP_CWORD == 1)) || [[ $before == help ]]; then
        words="record show info export check cut repair report help -h --help --version"
    elif [[ ${COMP_WORDS[1]} == export && $before =~ ^--(to|format)$ ]]; then
        words="gpx geojson kml csv jsonl nmea"
    elif [[ $before == --stamp ]]; then
        words="utc arrival"
    elif [[ $word == -* ]]; then
        case ${COMP_WORDS[1]} in
            record) words="-h --help -o --output --append --force --jobs --baud --idle --sync \
                --quiet --date --stamp" ;;
            show) words="-h --help --fields --fix --rdb --hex --first --from --until --to \
                --number --utc --raw --follow" ;;
            info) words="-h --help --gap --from --until --json --long" ;;
            export) words="-h --help --to --format -o --output --force --jobs --gap --from --until \
                --unchecked" ;;
            check) words="-h --help --date --stamp --live" ;;
            cut) words="-h --help --from --until -o --output --force" ;;
            repair) words="-h --help -o --output --force --jobs" ;;
            report) words="-h --help -o --output --force --jobs --gap --from --until" ;;
        esac
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -F _vextrace vextrace
