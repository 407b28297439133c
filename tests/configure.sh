#!/usr/bin/env bash
# Where something is missing, CMake says what it is and what to do. The presets can be configured.
# Usage: configure.sh SOURCE_DIR COMPILER [presets], where there is all that they need
set -euo pipefail
source_dir=$1
compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# refuses TEXT OPTION...: CMake stops and its message has the text, wherever it is broken.
refuses() {
    local text=$1
    shift
    rm -rf "$work/build"
    if cmake -S "$source_dir" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" "$@" \
        >"$work/log" 2>&1; then
        echo "configure.sh: CMake takes $*" >&2
        exit 1
    fi
    if ! tr -s ' \n' ' ' <"$work/log" | grep -qF -e "$text"; then
        cat "$work/log" >&2
        echo "configure.sh: CMake does not say: $text" >&2
        exit 1
    fi
}

refuses "$work/nothing does not hold them. Install the package googletest" \
    -DVEXTRACE_TESTS=ON -DVEXTRACE_GTEST_SOURCE="$work/nothing"
refuses 'The tests need GoogleTest. Install the package libgtest-dev' \
    -DVEXTRACE_TESTS=ON -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON
refuses 'need std::thread, which' -DVEXTRACE_TESTS=ON -DVEXTRACE_HAS_THREADS=OFF
refuses 'need std::thread, which' -DVEXTRACE_BENCHMARKS=ON -DVEXTRACE_HAS_THREADS=OFF
mkdir "$work/empty"
refuses "$work/empty, which holds no *.nmea" -DVEXTRACE_TESTS=ON -DVEXTRACE_LOG_DIR="$work/empty"
echo "CMake says what is missing."

[ "${3-}" = presets ] || exit 0
for preset in developer release; do
    (cd "$source_dir" && cmake --preset $preset -B "$work/$preset" >"$work/log" 2>&1) ||
        { cat "$work/log" >&2; exit 1; }
done
echo "The presets can be configured."
