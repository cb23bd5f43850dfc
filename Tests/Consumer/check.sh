#!/usr/bin/env bash
# Installs a build, and a static one beside it, each into a folder of its own and builds the consumer against them,
# by CMake's package and by pkg-config, outside the tree; then sees that the shared library shows no symbols but its
# own. Usage: Tests/Consumer/check.sh BUILD-FOLDER-OF-A-SHARED-LIBRARY
set -euo pipefail

build="$(readlink -f "$1")"
source="$(dirname "$(readlink -f "$0")")"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

quietly() { "$@" > "$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }; }

consume() { # consume BUILD-FOLDER PREFIX NAME: leaves the program $work/NAME-by-pkg-config
    local prefix="$2" libraries flags
    rm -rf "$prefix"
    quietly cmake --install "$1" --prefix "$prefix"

    quietly cmake -G Ninja -S "$work/consumer" -B "$work/$3-build" -DCMAKE_PREFIX_PATH="$prefix"
    quietly cmake --build "$work/$3-build"
    "$work/$3-build/consumer" "$prefix/"
    "$work/$3-build/show"

    libraries="$(dirname "$(find "$prefix" -name imaging.pc)")"
    by_pkg_config imaging consumer.cpp "$work/$3-by-pkg-config"
    LD_LIBRARY_PATH="$(dirname "$libraries")" "$work/$3-by-pkg-config" "$prefix/"
    by_pkg_config imaging-show show.cpp "$work/$3-show-by-pkg-config"
    LD_LIBRARY_PATH="$(dirname "$libraries")" "$work/$3-show-by-pkg-config"
}

by_pkg_config() { # by_pkg_config PACKAGE SOURCE PROGRAM, of the prefix and libraries of `consume`
    flags="$(PKG_CONFIG_PATH="$libraries" pkg-config --define-variable=prefix="$prefix" --cflags --libs "$1")"
    # shellcheck disable=SC2086
    g++ -std=c++20 "$source/$2" $flags -o "$3"
}

cp -r "$source" "$work/consumer"
consume "$build" "$work/shared" shared
LD_LIBRARY_PATH="$(dirname "$(find "$work/shared" -name libImaging.so)")"

# The static library: programs leave out of it what nobody asks for, and find its resources where it was configured
# to be installed.
quietly cmake -G Ninja -S "$source/../.." -B "$build-static" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
    -DCMAKE_INSTALL_PREFIX="$build-static/prefix" -DIMAGING_BUILD_TESTS=OFF -DIMAGING_BUILD_TOOLS=OFF -DIMAGING_BUILD_EXAMPLES=OFF
quietly cmake --build "$build-static"
consume "$build-static" "$build-static/prefix" static

# An installation that was moved finds its resources where it is now.
mv "$work/shared" "$work/moved"
LD_LIBRARY_PATH="${LD_LIBRARY_PATH/"$work/shared"/"$work/moved"}" "$work/shared-by-pkg-config" "$work/moved/"
mv "$work/moved" "$work/shared"

LD_LIBRARY_PATH="$LD_LIBRARY_PATH" "$work/shared/bin/imaging" --version

foreign="$(nm -D --defined-only -C "$LD_LIBRARY_PATH/libImaging.so" "$LD_LIBRARY_PATH/libImagingShow.so" |
    awk '$2 ~ /[TBDR]/' | grep -vE ' (vtable for |typeinfo( name)? for |non-virtual thunk to |virtual thunk to |guard variable for )?(Imaging|Platform)::' || true)"
if [[ -n "$foreign" ]]; then
    printf 'The library shows symbols that are not its own:\n%s\n' "$foreign" >&2
    exit 1
fi
