#!/usr/bin/env bash
# A first start without an instrument: F5 makes a capture, its wave is drawn, a click zooms in, and the close button
# ends the program, which then has written its settings.
# shellcheck source=tests/e2e/e2e.sh
source "$(dirname "${BASH_SOURCE[0]}")/e2e.sh"

start_program "$folder" "$program"
window=$(wait_window 60 'CorvanLUX$')
wait_settled "$window"
measure_window "$window"

picture "$window" "$shot"
expect_main_window "$shot"
expect "no wave before the first capture" "$shot" "$wave" '#f7f7f7' 0 0

capture "$window"
wait_for 60 "the wave's colour in the wave view" wave_is_shown "$window"
expect_main_window "$shot"
expect "the ruler's ticks and texts" "$shot" "$ruler" '#f7f7f7' 1 300

# The ruler tells a zoom from the arrow that shows the pulse under the pointer.
before=$(ruler_checksum "$window")
click "$window" $((wave_x + wave_w / 2)) $((wave_y + wave_h / 2)) 1
wait_for 30 "another ruler after a click" ruler_shows_other_than "$window" "$before"
wait_settled "$window"
picture "$window" "$shot"
expect_main_window "$shot"
expect "the wave after the zoom" "$shot" "$wave" '#f7f7f7' 1 900

close_program "$window"

[[ -f $config ]] || fail "no settings were written to $config"
expect_config "<windowPosition>-?[0-9]+,-?[0-9]+,$width,$height</windowPosition>"
expect_config '<devModel'
expect_config '<ratioSasPix>[0-9.e+]+</ratioSasPix>'
expect_config '<windowMaximized>0</windowMaximized>'
