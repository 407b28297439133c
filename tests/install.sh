#!/usr/bin/env bash
# Installs the library as its users get it, static and shared, and builds a program from what is
# installed, with CMake and with pkg-config.
# Usage: install.sh SOURCE_DIR COMPILER
set -euo pipefail
source_dir=$1
compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
expected='48°7.038 N, 11°31.000 E'

fail() {
    echo "install.sh: $*" >&2
    exit 1
}

check() {
    local output
    output=$("$@") || fail "$* does not run"
    [ "$output" = "$expected" ] || fail "$* printed: $output"
}

quietly() {
    "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "failed: $*"; }
}

headers='libvextrace/GPSTraceMessage.h
libvextrace/InvalidMessageException.h
libvextrace/MessageBase.h
libvextrace/MessageFactory.h
libvextrace/busID.h
libvextrace/messageID.h
libvexutil/datablock.h'

for shared in OFF ON; do
    prefix=$work/prefix-$shared
    quietly cmake -S "$source_dir" -B "$work/build-$shared" -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=$shared -DVEXTRACE_EXAMPLES=OFF \
        -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib
    quietly cmake --build "$work/build-$shared" --target install

    installed=$(cd "$prefix/include" && find . -type f | sed 's|^\./||' | LC_ALL=C sort)
    [ "$installed" = "$headers" ] || fail "installed headers: $installed"

    quietly cmake -S "$source_dir/tests/install" -B "$work/consumer-$shared" \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix"
    quietly cmake --build "$work/consumer-$shared"
    check "$work/consumer-$shared/consumer"

    export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
    # shellcheck disable=SC2046 # the flags are words
    quietly "$compiler" -std=c++17 "$source_dir/tests/install/consumer.cpp" \
        -o "$work/consumer-pc-$shared" $(pkg-config --cflags --libs vextrace)
    LD_LIBRARY_PATH=$prefix/lib check "$work/consumer-pc-$shared"
done
echo "The installed library works, static and shared, with CMake and with pkg-config."
