# Sourced by the checks of the installed library: builds the programs of a user's with it and runs
# them. Wants the variables source_dir, compiler and version, and makes the folder $work.
# shellcheck disable=SC2154
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
readme_output=$(awk '$0 == "```" { inside = 0 } inside { print }
    $0 == "```text" { inside = 1 }' "$source_dir/README.md")

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

quietly() {
    "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "failed: $*"; }
}

expect() {
    [ "$2" = "$3" ] || fail "$1: $(diff <(echo "$2") <(echo "$3"))"
}

# positions FOLDER: runs the program with libvexstream there.
positions() {
    local bytes
    (cd "$1" && echo "2026-05-17T10:00:00Z,48.1173,11.5167,545.4" | ./positionsToTrace log trace) ||
        fail "$1/positionsToTrace does not run"
    bytes=$(stat -c %s "$1/trace")
    expect "bytes of the message and its sentences" 132 "$bytes"
}

# run FOLDER: runs the programs there.
run() {
    local output
    output=$("$1/firstSteps") || fail "$1/firstSteps does not run"
    expect "$1/firstSteps" "$readme_output" "$output"
    quietly "$1/consumer"
    output=$("$1/temperature") || fail "$1/temperature does not run"
    expect "$1/temperature" \
        "000000000000000a 00000000  TEMPERATURE | sensor 3 293.1 K" "$output"
    [ ! -e "$1/positionsToTrace" ] || positions "$1"
}

# use_cmake WAY NAME OPTION...: builds and runs the programs with CMake.
use_cmake() {
    local way=$1 build=$work/cmake-$2
    shift 2
    quietly cmake -S "$source_dir/tests/install" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DVEXTRACE_WAY="$way" -DVEXTRACE_SOURCE="$source_dir" "$@"
    quietly cmake --build "$build" -j2
    run "$build"
}

# readme_line SOURCE PROGRAM [OPTION...]: compiles as the README says, with nothing but that line.
readme_line() (
    mkdir "$2.build"
    cd "$2.build" || exit
    cp "$source_dir/examples/TemperatureMessage.h" .
    cp "$1" logger.cpp
    line=$(grep -F 'pkg-config' "$source_dir/README.md" | grep '^c++ ') || fail "the line is gone"
    # shellcheck disable=SC2317 # the line calls it
    c++() { command "$compiler" "$@"; }
    shift 2
    quietly eval "$line $*"
    mv logger "${PWD%.build}"
)

# use_pkg_config NAME LIBDIR [OPTION...]: builds and runs the programs with pkg-config, which looks
# into that folder or, where it is empty, into those of the system.
use_pkg_config() {
    local folder=$work/pc-$1 libdir=$2 module
    shift 2
    mkdir "$folder"
    if [ -n "$libdir" ]; then
        export PKG_CONFIG_LIBDIR=$libdir/pkgconfig
    fi
    for module in vextrace vexutil vexstream; do
        expect "version in $module.pc" "$version" "$(pkg-config --modversion $module)"
    done
    readme_line "$source_dir/examples/firstSteps.cpp" "$folder/firstSteps" "$@"
    readme_line "$source_dir/tests/install/consumer.cpp" "$folder/consumer" "$@"
    readme_line "$source_dir/tests/install/temperature.cpp" "$folder/temperature" "$@"
    # shellcheck disable=SC2046 # these are words
    quietly "$compiler" -std=c++20 "$source_dir/examples/positionsToTrace.cpp" \
        $(pkg-config --cflags --libs vexstream) -o "$folder/positionsToTrace" "$@"
    LD_LIBRARY_PATH=$libdir run "$folder"
    unset PKG_CONFIG_LIBDIR
}
