#!/usr/bin/env bash
# Installs a build into a folder of its own and builds the consumer against it, by CMake's package and by
# pkg-config, outside the tree; then sees that the library shows no symbols but its own.
# Usage: Tests/Consumer/check.sh BUILD-FOLDER
set -euo pipefail

build="$(readlink -f "$1")"
source="$(dirname "$(readlink -f "$0")")"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" > /dev/null
cp -r "$source" "$work/consumer"

cmake -G Ninja -S "$work/consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" > "$work/log" 2>&1 ||
    { cat "$work/log" >&2; exit 1; }
cmake --build "$work/build" > "$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
"$work/build/consumer" "$work/prefix/"
"$work/build/show"

libraries="$(dirname "$(find "$work/prefix" -name imaging.pc)")"
export PKG_CONFIG_PATH="$libraries" LD_LIBRARY_PATH="$(dirname "$libraries")"
flags="$(pkg-config --define-variable=prefix="$work/prefix" --cflags --libs imaging)"
# shellcheck disable=SC2086
g++ -std=c++20 "$source/consumer.cpp" $flags -o "$work/by-pkg-config"
"$work/by-pkg-config" "$work/prefix/"
flags="$(pkg-config --define-variable=prefix="$work/prefix" --cflags --libs imaging-show)"
# shellcheck disable=SC2086
g++ -std=c++20 "$source/show.cpp" $flags -o "$work/show-by-pkg-config"
"$work/show-by-pkg-config"

# An installation that was moved finds its resources where it is now.
mv "$work/prefix" "$work/moved"
LD_LIBRARY_PATH="${LD_LIBRARY_PATH/"$work/prefix"/"$work/moved"}" "$work/by-pkg-config" "$work/moved/"
mv "$work/moved" "$work/prefix"

"$work/prefix/bin/imaging" --version

foreign="$(nm -D --defined-only -C "$LD_LIBRARY_PATH/libImaging.so" "$LD_LIBRARY_PATH/libImagingShow.so" |
    awk '$2 ~ /[TBDR]/' | grep -vE ' (vtable for |typeinfo( name)? for |non-virtual thunk to |virtual thunk to |guard variable for )?(Imaging|Platform)::' || true)"
if [[ -n "$foreign" ]]; then
    printf 'The library shows symbols that are not its own:\n%s\n' "$foreign" >&2
    exit 1
fi
