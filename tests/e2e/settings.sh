#!/usr/bin/env bash
# Another model by mouse, a capture of its simulated data, and its channels and outputs in the menu of settings by keys:
# a wrong frequency gives a box that can be answered, behind which the menu stays; then Enter takes the channels out of
# use, and the next capture is of the others.
# shellcheck source=tests/e2e/e2e.sh
source "$(dirname "${BASH_SOURCE[0]}")/e2e.sh"

# screen_checksum: with what lies above the window.
screen_checksum() {
    import -silent -window root -depth 8 ppm:- | cksum
}

screen_differs() {
    [[ $(screen_checksum) != "$1" ]]
}

# open_menu NAME: presses that button and waits until what it opens stands.
open_menu() {
    local before
    point_at 'push button' "$1"
    wait_settled root # for the button's own look under the pointer
    before=$(screen_checksum)
    xdotool click 1
    wait_for 30 "the menu of $1" screen_differs "$before"
    wait_settled root
}

start_reader "$folder"
start_program "$folder" "$program"
window=$(wait_window 60 'CorvanLUX$')
wait_settled "$window"
measure_window "$window"

# The menu lies beside its button, a third of the height down; the second model is 68 units below its top.
open_menu 'Model Select'
IFS=$'\t' read -r x y w h _ < <(controls 'push button' 'Model Select')
xdotool mousemove $((x + w + 40 * s)) $((y + h / 3 + 68 * s))
xdotool click 1
wait_window 30 '^RV2320 Unconnected - CorvanLUX$' >/dev/null
capture "$window"
wait_for 60 "the wave of the chosen model" wave_is_shown "$window"

# From the first channel back to the ranges, of which Up and Space choose the first; then past the channels to the first
# output's frequency.
open_menu 'Channel and device settings'
xdotool key --delay 20 shift+Tab Up Up space
xdotool key --delay 20 --repeat 18 Tab
xdotool key ctrl+a
xdotool type --delay 20 '30x'
xdotool key Return
wait_window 30 '^A Setting is Invalid$' >/dev/null
click_on 'push button' Close
wait_for 30 "the box to close" window_is_gone '^A Setting is Invalid$'
wait_settled root

# The menu has come back, and the field still has the focus.
before=$(screen_checksum)
xdotool key ctrl+a
xdotool type --delay 20 '30'
wait_for 30 "the corrected number" screen_differs "$before"
xdotool key Return
wait_settled root
capture "$window"
wait_for 60 "the wave of four channels" wave_is_shown "$window"
close_program "$window"
expect_config '<devModel>6</devModel>'
expect_config '<chnEnable>1,1,1,1,0,0,0,0,0,0,0,0,0,0,0,0</chnEnable>'
