#!/usr/bin/env bash
# From a file to decoded characters by mouse: the menu opens a capture, the panel adds an analyzer, the list shows what
# it found, a search and a click bring one character to the middle of the view, and all are exported. The analyzer is
# there again when the program has been started anew.
# shellcheck source=tests/e2e/e2e.sh
source "$(dirname "${BASH_SOURCE[0]}")/e2e.sh"
# shellcheck source=tests/e2e/datafile.sh
source "$(dirname "${BASH_SOURCE[0]}")/datafile.sh"
# shellcheck source=tests/e2e/decoding.sh
source "$(dirname "${BASH_SOURCE[0]}")/decoding.sh"

make_capture "$folder/capture.cxdat"
start_reader "$folder"
start_program "$folder" "$program"
window=$(wait_window 60 'CorvanLUX$')
wait_settled "$window"
measure_window "$window"

click_on 'push button' 'Main menu'
click_on 'menu item' 'Open...'
type_path Open "$folder/capture.cxdat"
press_button Open
wait_window 30 'capture\.cxdat - CorvanLUX$' >/dev/null
wait_for 60 "the wave's colour in the wave view" wave_is_shown "$window"

click_on 'push button' 'Add an analyzer'
click_on 'menu item' 'UART/RS232/485'
wait_window 30 '^Analyzer - UART/RS232/485$' >/dev/null
click_on 'push button' OK
wait_for 30 "the end of the settings" window_is_gone '^Analyzer - UART/RS232/485$'
wait_frames

click_on text Search
xdotool windowfocus "$window"
xdotool type --delay 20 0x31
wait_for 30 "the row that is searched for" only_row_is "$rare_row"
click_on 'list item' "$rare_row"
expect_middle "$rare"

export_csv UART/RS232/485 "$folder/frames.csv"
expect_export "$folder/frames.csv"
expect_back
