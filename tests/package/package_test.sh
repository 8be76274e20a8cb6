#!/usr/bin/env bash
# One test of the installation, by name. CTest gives the environment: BUILD_DIR, SCRATCH, CMAKE, CXX, CLIENT_FLAGS,
# PKG_CONFIG, GENERATOR.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
prefix=$SCRATCH/prefix
expected="Zahnrad 7 has 9 code units"

fail() {
    echo "$*"
    exit 1
}

# Where an installation has its libraries: lib, lib64 or one of the platform's own.
libdir_of() { dirname "$(find "$1" -name libQORSysTS.so -print -quit)"; }

# came_from PROGRAM LIBRARY DIRECTORY: the program loads that library from that directory.
came_from() {
    local path
    path=$(ldd "$1" | sed -n "s/^[[:space:]]*$2 => \([^ ]*\).*/\1/p")
    [ "$(realpath -- "$(dirname "${path:-/missing/}")")" = "$(realpath "$3")" ] ||
        fail "$1 loads $2 from '$path' and not from $3"
}

run_client() {
    local output
    output=$("$1") || fail "$1 ended with status $?"
    [ "$output" = "$expected" ] || fail "$1 printed '$output' and not '$expected'"
}

# client_by_find_package DIRECTORY PREFIX [cmake arguments...]
client_by_find_package() {
    local directory=$1 at=$2
    shift 2
    rm -rf "$directory"
    "$CMAKE" -S "$here/client" -B "$directory" -G "$GENERATOR" -DCMAKE_CXX_COMPILER="$CXX" \
        -DCMAKE_CXX_FLAGS="$CLIENT_FLAGS" -DCMAKE_PREFIX_PATH="$at" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF "$@"
    "$CMAKE" --build "$directory"
    run_client "$directory/client"
    run_client "$directory/client_static"
    came_from "$directory/client" libQORSysTS.so.1 "$(libdir_of "$at")"
}

# client_by_pkg_config DIRECTORY PREFIX
client_by_pkg_config() {
    local directory=$1 at=$2 libdir flags
    libdir=$(libdir_of "$at")
    rm -rf "$directory"
    mkdir -p "$directory"
    export PKG_CONFIG_PATH=$libdir/pkgconfig
    "$PKG_CONFIG" --validate QORSysTS QORSysMultiThreading
    flags=$("$PKG_CONFIG" --cflags --libs QORSysTS)
    echo "$flags"
    # Both variables hold several words.
    # shellcheck disable=SC2086
    "$CXX" -std=c++17 $CLIENT_FLAGS "$here/client/main.cpp" "$here/client/second.cpp" -o "$directory/client" $flags
    export LD_LIBRARY_PATH=$libdir
    run_client "$directory/client"
    came_from "$directory/client" libQORSysTS.so.1 "$libdir"
    came_from "$directory/client" libQORSysMultiThreading.so.1 "$libdir"
}

case $1 in
Installs)
    rm -rf "$prefix"
    "$CMAKE" --install "$BUILD_DIR" --prefix "$prefix"
    ;;

HoldsEverything)
    libdir=$(libdir_of "$prefix")
    for file in libQORSysTS.so libQORSysTS.so.1 libQORSysTS.a libQORSysMultiThreading.so libQORSysMultiThreading.so.1 \
        libQORSysMultiThreading.a pkgconfig/QORSysTS.pc pkgconfig/QORSysMultiThreading.pc \
        cmake/QORSysTS/QORSysTSConfig.cmake cmake/QORSysTS/QORSysTSConfigVersion.cmake \
        cmake/QORSysTS/QORSysTSTargets.cmake; do
        [ -e "$libdir/$file" ] || fail "not installed: $libdir/$file"
    done
    for library in QORSysTS QORSysMultiThreading; do
        readelf -d "$libdir/lib$library.so" | grep -q "(SONAME).*\[lib$library\.so\.1\]" ||
            fail "the soname of $libdir/lib$library.so is not lib$library.so.1"
    done
    # Exactly the exported headers and the definitions that they stamp, whole.
    diff <(cd "$root" && find SystemTS/include SystemMT/include \( -name '*.h' -o -name '*.inc' \) -printf '%f\n' | sort) \
        <(cd "$prefix/include/QORSysTS" && find . -type f -printf '%f\n' | sort) ||
        fail "the installed headers are not the exported ones (< in the tree, > installed)"
    cmp "$root/data/NLS/SUPPLANG_R9" "$prefix/share/QORSysTS/NLS/SUPPLANG_R9"
    ;;

ClientByFindPackage)
    client_by_find_package "$SCRATCH/find_package" "$prefix"
    came_from "$SCRATCH/find_package/client" libQORSysMultiThreading.so.1 "$(libdir_of "$prefix")"
    ;;

ClientByPkgConfig)
    client_by_pkg_config "$SCRATCH/pkg_config" "$prefix"
    ;;

StagedPrefixCanBeMoved)
    # The prefix that the files were made for never exists; they stand somewhere below the stage.
    stage=$SCRATCH/stage
    rm -rf "$stage"
    DESTDIR=$stage "$CMAKE" --install "$BUILD_DIR" --prefix /nowhere/QORSysTS
    moved=$SCRATCH/moved
    rm -rf "$moved"
    mv "$stage/nowhere/QORSysTS" "$moved"
    if [ -n "$(find "$stage" -type f -print -quit)" ]; then
        find "$stage" -type f
        fail "these were installed outside the prefix"
    fi
    if grep -rIE "$BUILD_DIR/|$stage|/nowhere/" "$moved"; then
        fail "installed files name a place that was only there when they were made"
    fi
    client_by_find_package "$SCRATCH/moved_find_package" "$moved"
    client_by_pkg_config "$SCRATCH/moved_pkg_config" "$moved"
    ;;

BuildsOverAnInstalledCompanion)
    # A prefix that holds the companion alone.
    companion=$SCRATCH/companion
    rm -rf "$companion" "$SCRATCH/over_companion" "$SCRATCH/over_companion_prefix"
    mkdir -p "$companion/lib" "$companion/include"
    cp -P "$(libdir_of "$prefix")"/libQORSysMultiThreading.so* "$companion/lib"
    cp "$root"/SystemMT/include/*.h "$companion/include"
    "$CMAKE" -S "$root" -B "$SCRATCH/over_companion" -G "$GENERATOR" -DCMAKE_CXX_COMPILER="$CXX" \
        -DCMAKE_BUILD_TYPE=None -DQORSYSMT_ROOT="$companion" -DQORSYSTS_BUILD_EXAMPLES=OFF
    "$CMAKE" --build "$SCRATCH/over_companion" --parallel 2
    "$CMAKE" --install "$SCRATCH/over_companion" --prefix "$SCRATCH/over_companion_prefix"
    if [ -n "$(find "$SCRATCH/over_companion_prefix" -name 'libQORSysMultiThreading*' -print -quit)" ]; then
        fail "a companion of this tree was installed beside the one that was asked for"
    fi
    came_from "$(libdir_of "$SCRATCH/over_companion_prefix")/libQORSysTS.so" libQORSysMultiThreading.so.1 "$companion/lib"
    client_by_find_package "$SCRATCH/over_companion_client" "$SCRATCH/over_companion_prefix"
    came_from "$SCRATCH/over_companion_client/client" libQORSysMultiThreading.so.1 "$companion/lib"
    ;;

ReadmeShowsTheClient)
    sed -n '/^```cpp$/,/^```$/{/^```/d;p}' "$root/README.md" | diff - "$here/client/main.cpp" ||
        fail "the first program of README.md (<) is not the client that is tested (>)"
    ;;

*)
    fail "no such test: $1"
    ;;
esac
