#!/usr/bin/env bash
# The project's lint, the same at the desk and in continuous integration: rooms, formatting, file sizes,
# and what clang-tidy finds. Usage: cmake/lint.sh [BUILD-FOLDER-WITH-COMPILE-COMMANDS] [--fix]
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

build="${1:-build/release}"
mapfile -t files < <(git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp')

if [[ "${2:-}" == --fix ]]; then
    clang-format -i "${files[@]}"
    exit 0
fi

cmake/check-rooms.py

clang-format --dry-run -Werror "${files[@]}"

too_long="$(wc -l "${files[@]}" | awk '$2 != "total" && $1 > 700 {print "  " $2 ": " $1 " lines"}')"
if [[ -n "$too_long" ]]; then
    printf 'These files ask to be two (700 lines at most):\n%s\n' "$too_long" >&2
    exit 1
fi

mapfile -t sources < <(printf '%s\n' "${files[@]}" | grep -E '^(Imaging|Platform|Show|Tools)/.*\.cpp$')
# Clang does not know all the warnings that the compile commands of g++ name.
printf '%s\0' "${sources[@]}" |
    xargs -0 -n 4 -P 2 clang-tidy --quiet -p "$build" --extra-arg=-Wno-unknown-warning-option 2> >(grep -v 'warnings generated' >&2)
