# Sourced by documents.sh: options that the documents name exist, and all of them are named. Wants
# $documents, $program (empty where it is not built), fail and prose.
# shellcheck disable=SC2154,SC2016 # backticks are looked for

# said_commands DOCUMENT: what stands in backticks, and the lines of shell blocks without comments.
said_commands() {
    prose "$1" | grep -oE '`[^`]+`' | tr -d '`' || true
    awk '/^```/ { inside = $0 == "```sh"; next } inside { sub(/ +#.*/, ""); print }' "$1"
}

# options_in: the options in the words of a command, without values.
options_in() {
    tr -s ' ,|' '\n' | sed -e 's/=.*//' -e 's/[][]//g' | grep -xE -e '--[a-z][a-z-]*|-[a-z]' || true
}

# help_of [COMMAND]: the options that the program has there.
help_of() {
    "$program" "$@" --help | sed -nE 's/^ +(-[^ ]+).*/\1/p' | options_in
}

# ask_for_options: asks each command of the program once, and keeps the answers in options_of.
ask_for_options() {
    local command
    options_of[any]=$(help_of)
    for command in $("$program" --help | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z]*\) .*/\1/p'); do
        options_of[$command]=$(help_of "$command")
        options_of[any]+=$'\n'${options_of[$command]}
    done
}

# known_options [WORD]: of a command of the program, or of any where the word is none.
known_options() {
    echo "${options_of[${1:-any}]-${options_of[any]}}"
}

# check_command DOCUMENT WORD...: options of other programs are none of ours.
check_command() {
    local document=$1 option text=${*:2}
    shift
    case $1 in
        vextrace | -[a-z]* | --*)
            [ -n "$program" ] || return 0
            [ "$1" != vextrace ] || shift
            for option in $(options_in <<<"$text"); do
                grep -qx -e "$option" <<<"$(known_options "${1-}")" ||
                    fail "$document: vextrace has no $option as in: $text"
            done
            ;;
        ./scripts/*)
            for option in $(options_in <<<"$text"); do
                grep -qF -e "$option" "$1" || fail "$document: $1 has no $option"
            done
            ;;
    esac
}

# The page of the manual names every option, and no other.
check_manual_page() {
    local option known named
    known=$(known_options | sort -u)
    named=$(sed 's/\\-/-/g' docs/vextrace.1 | grep -v '^\.\\"' | tr '".()' ' ' | options_in | sort -u)
    for option in $(comm -23 <(echo "$known") <(echo "$named")); do
        fail "docs/vextrace.1 does not name $option"
    done
    for option in $(comm -13 <(echo "$known") <(echo "$named")); do
        fail "docs/vextrace.1 names $option, which vextrace does not have"
    done
}

check_program_options() {
    local document words
    local -A options_of=()
    if [ -n "$program" ]; then
        ask_for_options
        [ "${#options_of[@]}" -gt 1 ] || fail "vextrace --help names no command"
        check_manual_page
    fi
    for document in "${documents[@]}"; do
        while read -r -a words; do
            [ "${#words[@]}" -eq 0 ] || check_command "$document" "${words[@]}"
        done < <(said_commands "$document")
    done
}

# known_cmake_options: and what headers define.
known_cmake_options() {
    grep -rhoE '(option\(|#define +)VEXTRACE_[A-Z_]+|set\(VEXTRACE_[A-Z_]+ .*CACHE' \
        --include=CMakeLists.txt --include='*.cmake' --include='*.h' CMakeLists.txt cmake examples \
        fuzz benchmarks tests tools libvex* | grep -oE 'VEXTRACE_[A-Z_]+' | sort -u
}

# No document names an option of CMake's that does not exist, and each option is named in one.
check_cmake_options() {
    local name document known
    known=$(known_cmake_options)
    for document in "${documents[@]}"; do
        while read -r name; do
            grep -qx "$name" <<<"$known" || fail "$document: there is no option $name"
        done < <(grep -oE '\bVEXTRACE_[A-Z_]+' "$document" | sort -u)
    done
    while read -r name; do
        grep -qF -e "\`$name\`" "${documents[@]}" || fail "no document names the option $name"
    done < <(sed -nE 's/^ *option\((VEXTRACE_[A-Z_]+) .*/\1/p' CMakeLists.txt tests/CMakeLists.txt)
}
