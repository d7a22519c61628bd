#!/usr/bin/env bash
# The virtual screens on which everything is tried have exactly the dots per inch that were asked for, whatever their
# size, so that a scale of 2 is one.
#
#   screens.sh SCREENDPI
set -euo pipefail
# shellcheck source=scripts/display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/display.sh"

folder=$(mktemp -d)
finish() {
    stop_display
    rm -rf "$folder"
}
trap finish EXIT

for size in 1280x800 1601x901; do
    for dpi in 96 120 144 168 192 288; do
        start_display "$folder" "$size" "$dpi"
        found=$(XDG_RUNTIME_DIR=$folder QT_QPA_PLATFORM=xcb "$1")
        stop_display
        if [[ $found != "$dpi $dpi $((dpi / 96))" ]]; then
            echo "a screen of $size with $dpi dots per inch is taken for one of: $found" >&2
            exit 1
        fi
        rm "$folder/display"
    done
done
