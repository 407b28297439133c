#!/usr/bin/env bash
# Takes the library in each way its users may, builds the README's program, one with a message type
# of its own and another one with it and runs them: installed, static and shared, with CMake and
# with pkg-config, from a prefix that was moved; as a part of another CMake project. Removes what
# was installed.
# Usage: install.sh SOURCE_DIR COMPILER
set -euo pipefail
source_dir=$1
compiler=$2
. "$source_dir/tests/install/use.sh"

# Of the compiler's time most goes into headers, so it reads them once for all units of a library.
together=(-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0)

# check_link_flags LIBDIR: what a program links. libvexutil is part of what libvextrace offers.
check_link_flags() {
    export PKG_CONFIG_LIBDIR=$1/pkgconfig
    expect "linked" "-lvextrace -lvexutil" "$(pkg-config --libs-only-l vextrace | xargs)"
    unset PKG_CONFIG_LIBDIR
}

# build_library NAME OPTION...: builds the libraries, with what CMake asks for at configuration. How
# they are taken does not depend on how they are optimised, nor on what is compiled together.
build_library() {
    local build=$work/$1
    shift
    quietly cmake -S "$source_dir" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=-O0 -DVEXTRACE_EXAMPLES=OFF \
        "${together[@]}" "$@"
    quietly cmake --build "$build" -j2
}

# public_headers: those of the sources, and those that the build makes.
public_headers() {
    (cd "$source_dir" && find libvex* -name '*.h' -not -path '*/internal/*')
    printf '%s\n' libvex{stream,trace,util}/export.h
}

# install_and_move NAME: installs to another prefix than the configured one, and moves that.
install_and_move() {
    quietly cmake --install "$work/$1" --prefix "$work/first/$1"
    mkdir -p "$work/moved"
    mv "$work/first/$1" "$work/moved/$1"
    expect "installed headers" "$(public_headers | LC_ALL=C sort)" \
        "$(cd "$work/moved/$1/include" && find . -type f | sed 's|^\./||' | LC_ALL=C sort)"
}

# check_shared_library FOLDER LIBRARY SOVERSION: its name, and that it hides the internals.
check_shared_library() {
    local library=$1/lib$2.so shown
    expect "SONAME" "lib$2.so.$3" \
        "$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')"
    shown=$(nm -D --defined-only -C "$library")
    if grep 'vextrace::internal::' <<<"$shown" >&2; then
        fail "$library shows internals"
    fi
}

# check_types FOLDER: whoever catches and casts must know the types by the library's symbols.
check_types() {
    local type
    for type in InvalidMessageException MessageBase GPSTraceMessage; do
        grep -q "typeinfo for $type\$" < <(nm -D --defined-only -C "$1/libvextrace.so") ||
            fail "typeinfo for $type is hidden"
    done
}

# check_uninstall NAME: the target removes all files, none of others', and its own folders.
check_uninstall() {
    local prefix=$work/removed
    mkdir -p "$prefix/include/libvexutil"
    touch "$prefix/include/libvexutil/other.h"
    quietly cmake --install "$work/$1" --prefix "$prefix"
    quietly cmake --build "$work/$1" --target uninstall
    expect "files of others" include/libvexutil/other.h \
        "$(cd "$prefix" && find . -type f -o -type l | sed 's|^\./||')"
    [ ! -e "$prefix/include/libvextrace" ] || fail "uninstall leaves an empty folder"
    if cmake --build "$work/$1" --target uninstall >"$work/log" 2>&1; then
        fail "uninstall removes what is not there"
    fi
    grep -qF "Nothing was installed from $work/$1" "$work/log" || fail "uninstall does not say why"
}

build_library static -DCMAKE_INSTALL_LIBDIR=lib
build_library shared -DCMAKE_INSTALL_LIBDIR=lib64 -DBUILD_SHARED_LIBS=ON
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$work/static/CMakeCache.txt")
grep -qE "^## \[($version|Unreleased)\]" "$source_dir/CHANGELOG.md" ||
    fail "CHANGELOG.md lacks $version"

# check_components NAME KIND: a component that is not there is refused with what is.
check_components() {
    if cmake -S "$source_dir/tests/install" -B "$work/nonsense" -DVEXTRACE_WAY=package \
        -DVEXTRACE_SOURCE="$source_dir" -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_PREFIX_PATH="$work/moved/$1" -DVEXTRACE_COMPONENTS=nonsense >"$work/log" 2>&1; then
        fail "the component nonsense is found"
    fi
    tr -s ' \n' ' ' <"$work/log" | grep -qF "The components wanted are \"nonsense\". A component \
is a kind of libraries or vexstream, and installed here are \"$2\"." || { cat "$work/log" >&2; fail "no such hint"; }
}

install_and_move static
check_components static "static;vexstream"
use_cmake package static -DCMAKE_PREFIX_PATH="$work/moved/static" -DVEXTRACE_COMPONENTS=vexstream
use_pkg_config static "$work/moved/static/lib"
check_link_flags "$work/moved/static/lib"

install_and_move shared
for library in vexutil vextrace; do
    check_shared_library "$work/moved/shared/lib64" $library "${version%%.*}"
done
check_shared_library "$work/moved/shared/lib64" vexstream 0
check_types "$work/moved/shared/lib64"
# Not every system's CMake looks into lib64 by itself.
use_cmake package shared -DCMAKE_PREFIX_PATH="$work/moved/shared/lib64/cmake" \
    -DVEXTRACE_WITH_STREAM=ON
use_pkg_config shared "$work/moved/shared/lib64"
check_link_flags "$work/moved/shared/lib64"

check_uninstall static
check_uninstall shared

quietly cmake "$work/static" -DCMAKE_INSTALL_PREFIX="$work/absolute" \
    -DCMAKE_INSTALL_LIBDIR="$work/elsewhere/lib"
quietly cmake --install "$work/static"
expect "flags of an absolute library folder" \
    "-I$work/absolute/include -L$work/elsewhere/lib -lvextrace -lvexutil" \
    "$(PKG_CONFIG_LIBDIR=$work/elsewhere/lib/pkgconfig pkg-config --cflags --libs vextrace | xargs)"
[ -e "$work/elsewhere/lib/libvexutil.a" ] || fail "the absolute library folder is empty"

# Fetched it is built and used; as a folder it takes the same road from there on.
quietly cmake -S "$source_dir/tests/install" -B "$work/cmake-subdirectory" \
    -DCMAKE_CXX_COMPILER="$compiler" -DVEXTRACE_WAY=subdirectory -DVEXTRACE_SOURCE="$source_dir"
use_cmake fetch fetch "${together[@]}" -DVEXTRACE_STREAM=ON -DVEXTRACE_WITH_STREAM=ON
quietly cmake --install "$work/cmake-fetch" --prefix "$work/nothing"
[ ! -e "$work/nothing" ] || fail "a parent installs the library unasked"
echo "The library works in every way it can be taken."
