#!/usr/bin/env bash
# Unpacks the package into a folder and uses it from there as one who has installed it: both programs start, and the
# program finds its languages.
#
#   packaging/install-test.sh PACKAGE
set -euo pipefail
# shellcheck source=scripts/display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/display.sh"

folder=$(mktemp -d)
finish() {
    local code=$?
    if ((code != 0)) && [[ -s $folder/program.log ]]; then
        cat "$folder/program.log" >&2
    fi
    stop_display
    rm -rf "$folder"
}
trap finish EXIT

dpkg-deb --extract "$1" "$folder/system"
bin=$folder/system/usr/bin
closewindow=$folder/closewindow
"${CXX:-g++}" -O1 -o "$closewindow" "$(dirname "${BASH_SOURCE[0]}")/../scripts/closewindow.cpp" -lX11

# The emulator offers an instrument, and ends when it is told to.
printf 'quit\n' | "$bin/corvanlux-emulator" --listen 0 --model 8 >"$folder/emulator.log"
grep -q '^Listening on 127\.0\.0\.1:[1-9]' "$folder/emulator.log"

mkdir -p "$folder/data/corvan"
cat >"$folder/data/corvan/lux.config" <<'END'
<?xml version="1.0" encoding="UTF-8"?>
<settings><global><userLang>de</userLang></global><devices/><analyzers/></settings>
END
start_display "$folder" 1280x800 96
start_program "$folder" "$bin/corvanlux"
# The window's title is in the language.
window=$(wait_window 60 'Nicht verbunden - CorvanLUX$')
wait_settled "$window"

before=$(checksum "$window")
press "$window" F5
wait_for 60 "the wave of a capture" shows_other_than "$window" "$before"
wait_for 60 "the end of the capture" window_is_gone '^Aufzeichnung$'
wait_settled "$window"
close_program "$window"
