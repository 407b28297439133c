#!/usr/bin/env bash
# Takes the library in each way its users may, builds the README's program and another one with it
# and runs both: installed, static and shared, with CMake and with pkg-config, from a prefix that
# was moved; as a part of another CMake project; from the Debian packages.
# Usage: install.sh SOURCE_DIR COMPILER
set -euo pipefail
source_dir=$1
compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
readme_output=$(awk '$0 == "```" { inside = 0 } inside { print }
    $0 == "```text" { inside = 1 }' "$source_dir/README.md")

fail() {
    echo "install.sh: $*" >&2
    exit 1
}

quietly() {
    "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "failed: $*"; }
}

expect() {
    [ "$2" = "$3" ] || fail "$1: $(diff <(echo "$2") <(echo "$3"))"
}

# run FOLDER: runs the two programs there.
run() {
    local output
    output=$("$1/firstSteps") || fail "$1/firstSteps does not run"
    expect "$1/firstSteps" "$readme_output" "$output"
    quietly "$1/consumer"
}

# use_cmake WAY NAME OPTION...: builds and runs the programs with CMake.
use_cmake() {
    local way=$1 build=$work/cmake-$2
    shift 2
    quietly cmake -S "$source_dir/tests/install" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" \
        -DVEXTRACE_WAY="$way" -DVEXTRACE_SOURCE="$source_dir" "$@"
    quietly cmake --build "$build" -j2
    run "$build"
}

# use_pkg_config NAME LIBDIR: builds and runs the programs with pkg-config.
use_pkg_config() {
    local folder=$work/pc-$1 libdir=$2 flags module
    mkdir "$folder"
    export PKG_CONFIG_LIBDIR=$libdir/pkgconfig
    for module in vextrace vexutil; do
        expect "version in $module.pc" "$version" "$(pkg-config --modversion $module)"
    done
    read -ra flags < <(pkg-config --cflags --libs vextrace)
    quietly "$compiler" -std=c++17 "$source_dir/examples/firstSteps.cpp" -o "$folder/firstSteps" \
        "${flags[@]}"
    read -ra flags < <(pkg-config --cflags --libs vextrace vexutil)
    quietly "$compiler" -std=c++17 "$source_dir/tests/install/consumer.cpp" -o "$folder/consumer" \
        "${flags[@]}"
    LD_LIBRARY_PATH=$libdir run "$folder"
}

# check_link_flags LIBDIR FLAGS: what a program links for vextrace, and for a static one.
check_link_flags() {
    export PKG_CONFIG_LIBDIR=$1/pkgconfig
    expect "linked" "$2" "$(pkg-config --libs-only-l vextrace | xargs)"
    expect "linked statically" "-lvextrace -lvexutil" \
        "$(pkg-config --static --libs-only-l vextrace | xargs)"
}

# build_library NAME OPTION...: builds the library, with what CMake asks for at configuration.
build_library() {
    local build=$work/$1
    shift
    quietly cmake -S "$source_dir" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_BUILD_TYPE=Release -DVEXTRACE_EXAMPLES=OFF "$@"
    quietly cmake --build "$build" -j2
}

# install_and_move NAME: installs to another prefix than the configured one, and moves that.
install_and_move() {
    quietly cmake --install "$work/$1" --prefix "$work/first/$1"
    mkdir -p "$work/moved"
    mv "$work/first/$1" "$work/moved/$1"
    expect "installed headers" "$headers" \
        "$(cd "$work/moved/$1/include" && find . -type f | sed 's|^\./||' | LC_ALL=C sort)"
}

# check_shared_library FOLDER LIBRARY: its name, and that it hides the internals.
check_shared_library() {
    local library=$1/lib$2.so shown
    expect "SONAME" "lib$2.so.${version%%.*}" \
        "$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')"
    shown=$(nm -D --defined-only -C "$library")
    if grep 'vextrace::' <<<"$shown" >&2; then
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

# make_debian_packages NAME: of the build NAME; unpacks them as an installation would.
make_debian_packages() {
    local package
    quietly cmake "$work/$1" -DCMAKE_INSTALL_PREFIX=/usr -UCMAKE_INSTALL_LIBDIR
    (cd "$work/$1" && quietly cpack -G DEB)
    mkdir "$work/root-$1"
    for package in "$work/$1"/*.deb; do
        quietly dpkg -x "$package" "$work/root-$1"
    done
}

# check_package FILE NAME SECTION DEPENDS: the fields of a package; DEPENDS is a pattern.
check_package() {
    local file=$1
    field() { dpkg-deb -f "$file" "$1"; }
    expect "name of $file" "$2" "$(field Package)"
    expect "version of $file" "$version" "$(field Version)"
    expect "section of $file" "$3" "$(field Section)"
    expect "architecture of $file" "$(dpkg --print-architecture)" "$(field Architecture)"
    grep -qx "$4" <<<"$(field Depends)" || fail "$file depends on: $(field Depends)"
    [ -n "$(field Maintainer)" ] || fail "$file has no maintainer"
}

check_debian_packages() {
    local file runtime=libvextrace${version%%.*}
    file=${version}_$(dpkg --print-architecture).deb
    make_debian_packages static
    use_cmake package debian-static -DCMAKE_PREFIX_PATH="$work/root-static/usr"
    make_debian_packages shared
    use_pkg_config debian-shared "$(dirname "$work/root-shared"/usr/lib/*/pkgconfig)"
    check_package "$work/static/libvextrace-dev_$file" libvextrace-dev libdevel ''
    check_package "$work/shared/libvextrace-dev_$file" libvextrace-dev libdevel \
        "$runtime (= $version)"
    check_package "$work/shared/${runtime}_$file" "$runtime" libs '.*libstdc++6 .*'
}

headers='libvextrace/GPSTraceMessage.h
libvextrace/InvalidMessageException.h
libvextrace/MessageBase.h
libvextrace/MessageFactory.h
libvextrace/busID.h
libvextrace/export.h
libvextrace/messageID.h
libvextrace/visibility.h
libvexutil/datablock.h
libvexutil/export.h
libvexutil/visibility.h'

build_library static -DCMAKE_INSTALL_LIBDIR=lib
build_library shared -DCMAKE_INSTALL_LIBDIR=lib64 -DBUILD_SHARED_LIBS=ON
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$work/static/CMakeCache.txt")
grep -q "^## \[$version\]" "$source_dir/CHANGELOG.md" || fail "CHANGELOG.md lacks $version"

install_and_move static
use_cmake package static -DCMAKE_PREFIX_PATH="$work/moved/static"
use_pkg_config static "$work/moved/static/lib"
check_link_flags "$work/moved/static/lib" "-lvextrace -lvexutil"

install_and_move shared
for library in vexutil vextrace; do
    check_shared_library "$work/moved/shared/lib64" $library
done
check_types "$work/moved/shared/lib64"
# Not every system's CMake looks into lib64 by itself.
use_cmake package shared -DCMAKE_PREFIX_PATH="$work/moved/shared/lib64/cmake"
use_pkg_config shared "$work/moved/shared/lib64"
check_link_flags "$work/moved/shared/lib64" "-lvextrace"

quietly cmake "$work/static" -DCMAKE_INSTALL_PREFIX="$work/absolute" \
    -DCMAKE_INSTALL_LIBDIR="$work/elsewhere/lib"
quietly cmake --install "$work/static"
expect "flags of an absolute library folder" \
    "-I$work/absolute/include -L$work/elsewhere/lib -lvextrace -lvexutil" \
    "$(PKG_CONFIG_LIBDIR=$work/elsewhere/lib/pkgconfig pkg-config --cflags --libs vextrace | xargs)"
[ -e "$work/elsewhere/lib/libvexutil.a" ] || fail "the absolute library folder is empty"

for way in subdirectory fetch; do
    use_cmake $way $way
    quietly cmake --install "$work/cmake-$way" --prefix "$work/nothing"
    [ ! -e "$work/nothing" ] || fail "a parent installs the library unasked"
done

if command -v dpkg-deb >/dev/null; then
    check_debian_packages
fi
echo "The library works in every way it can be taken."
