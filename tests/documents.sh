#!/usr/bin/env bash
# Keeps the documents true: links lead somewhere, files and options that they name exist, nothing is
# left out of their lists, C++ blocks compile.
# Usage: documents.sh SOURCE_DIR COMPILER [PROGRAM], without PROGRAM not its options
set -euo pipefail
cd "$1"
compiler=$2
program=${3-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
documents=(*.md docs/*.md)
failures=0

fail() {
    failures=$((failures + 1))
    echo "documents.sh: $*" >&2
}

# prose FILE: the document without its code blocks.
prose() {
    awk '/^```/ { inside = !inside; next } !inside { print }' "$1"
}

# anchors FILE: the names under which its headings are linked.
anchors() {
    prose "$1" | sed -n 's/^#\{1,6\} //p' | tr '[:upper:]' '[:lower:]' |
        sed -e 's/[^a-z0-9 _-]//g' -e 's/ /-/g'
}

. tests/options.sh

check_link() {
    local document=$1 link=$2 file anchor=''
    file=${link%%#*}
    [[ $link == *#* ]] && anchor=${link#*#}
    if [ -n "$file" ]; then
        file=$(dirname "$document")/$file
    else
        file=$document
    fi
    if [ ! -e "$file" ]; then
        fail "$document: the link $link leads nowhere"
    elif [ -n "$anchor" ] && ! grep -qx -e "$anchor" <(anchors "$file"); then
        fail "$document: the link $link leads to no heading"
    fi
}

# Links to other hosts could only be followed with a network.
check_links() {
    local document link count=0
    for document in "${documents[@]}"; do
        while read -r link; do
            count=$((count + 1))
            [[ $link == https://* ]] || check_link "$document" "$link"
        done < <(prose "$document" | grep -o '\](\([^)]*\))' | sed 's/^](\(.*\))$/\1/')
    done
    [ "$count" -gt 0 ] || fail "there are no links"
}

# shellcheck disable=SC2016 # backticks are looked for
# A name in backticks that begins with a folder of the project is a file of it.
check_file_names() {
    local document name count=0
    for document in "${documents[@]}"; do
        while read -r name; do
            count=$((count + 1))
            compgen -G "${name%% *}" >/dev/null || fail "$document: there is no $name"
        done < <(prose "$document" | grep -oE '`[^`]+`' | tr -d '`' |
            grep -E '^(\./)?(libvextrace|libvexutil|libvexstream|tools|examples|tests|fuzz|benchmarks|scripts|cmake|docs|\.ci)/')
    done
    [ "$count" -gt 0 ] || fail "no document names a file"
}

# named DOCUMENT NAME...: each name stands in the document in backticks.
named() {
    local document=$1 name
    shift
    for name in "$@"; do
        grep -qF -e "\`$name" "$document" || fail "$document does not name $name"
    done
}

# Folders of builds are not part of the project.
check_lists() {
    local folder script
    named docs/architecture.md libvexutil/*.{h,cpp} libvextrace/{,internal/}*.{h,cpp}
    for folder in */; do
        [[ $folder == build* ]] || named CONTRIBUTING.md "$folder"
    done
    for script in scripts/*; do
        case $script in
            scripts/demo) ;; # in a block of the README
            scripts/packages | scripts/build | scripts/stages) named CONTRIBUTING.md "scripts/${script#scripts/}" ;;
            *) named CONTRIBUTING.md "./$script" ;;
        esac
    done
}

# blocks FILE LANGUAGE FOLDER: writes each block of that language to a file of its own.
blocks() {
    awk -v language="$2" -v folder="$3" '
        $0 == "```" { inside = 0 }
        inside { print > name }
        $0 == "```" language { inside = 1; name = folder "/" ++count ".h" }' "$1"
}

check_code() {
    local document folder block standard count=0
    for document in "${documents[@]}"; do
        folder=$work/$document
        mkdir -p "$folder/cpp" "$folder/sh"
        blocks "$document" cpp "$folder/cpp"
        blocks "$document" sh "$folder/sh"
        for block in "$folder"/cpp/*.h; do
            [ -e "$block" ] || continue
            count=$((count + 1))
            for standard in c++17 c++20; do
                "$compiler" -std=$standard -Wall -Wextra -Wpedantic -Werror -I. -fsyntax-only \
                    -include "$block" -x c++ /dev/null ||
                    fail "$document: a block does not compile in $standard"
            done
        done
        for block in "$folder"/sh/*.h; do
            [ ! -e "$block" ] || bash -n "$block" || fail "$document: a block is no shell text"
        done
    done
    [ "$count" -gt 0 ] || fail "there are no C++ blocks"
}

check_links
check_file_names
check_lists
check_program_options
check_cmake_options
check_code
[ "$failures" -eq 0 ] || exit 1
echo "The documents are true."
