#!/usr/bin/env bash
# Installs the packages of packages.txt for the given purposes ("build run", "build test") that are missing.
# Asks nothing, and does nothing when all are there.
set -euo pipefail

list="$(dirname "$0")/../packages.txt"
missing=()
while read -r package purpose; do
    [[ -z "$package" || "$package" == \#* ]] && continue
    [[ " $* " == *" $purpose "* ]] || continue
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done < "$list"

[[ ${#missing[@]} -eq 0 ]] && exit 0
echo "Installing: ${missing[*]}"

as_root=()
if [[ $EUID -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
        echo "These packages are missing: ${missing[*]}" >&2
        echo "Install them as root, or install sudo, and run this again." >&2
        exit 1
    fi
    as_root=(sudo)
fi
"${as_root[@]}" apt-get -qq update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "${missing[@]}"
