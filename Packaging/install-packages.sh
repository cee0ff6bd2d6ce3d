#!/usr/bin/env bash
# Installs what is missing of the named sections of debian-packages.txt, as root or through sudo.
#   install-packages.sh SECTION ...
set -euo pipefail
list="$(dirname "$0")/debian-packages.txt"

wanted=()
section=""
while read -r line; do
    line="${line%%#*}"
    line="${line//[[:space:]]/}"
    case "$line" in
        "") ;;
        \[*\]) section="${line:1:-1}" ;;
        *) for name in "$@"; do [ "$name" = "$section" ] && wanted+=("$line"); done ;;
    esac
done < "$list"

missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "Missing packages: ${missing[*]}. Install them as root, or install sudo." >&2
        exit 1
    fi
    as_root=(sudo)
fi
echo "Installing ${#missing[@]} Debian packages${as_root:+ through sudo}: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update &&
       "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
           apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    echo "The packages could not be installed." >&2
    exit 1
fi
