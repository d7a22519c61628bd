#!/usr/bin/env bash
# From a file to decoded characters by keys alone: Ctrl+O opens a capture, Tab leads to the panel, where an analyzer is
# added, a search and Return bring one character to the middle of the view, and all are exported. The analyzer is there
# again when the program has been started anew.
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

press "$window" ctrl+o
type_path Open "$folder/capture.cxdat"
xdotool key Return
wait_window 30 'capture\.cxdat - CorvanLUX$' >/dev/null
wait_for 60 "the wave's colour in the wave view" wave_is_shown "$window"

# The panel's last controls stand before the first ones of the window.
go_to shift+Tab 'push button' 'Add an analyzer'
xdotool key space
wait_control 'menu item' 'UART/RS232/485'
xdotool key --delay 50 Down Return
dialog=$(wait_window 30 '^Analyzer - UART/RS232/485$')
press "$dialog" Return
wait_for 30 "the end of the settings" window_is_gone '^Analyzer - UART/RS232/485$'
wait_frames

go_to Tab text Search
xdotool type --delay 20 0x31
wait_for 30 "the row that is searched for" only_row_is "$rare_row"
xdotool key --delay 50 Tab Down Return # the list is next
expect_middle "$rare"

go_to shift+Tab 'push button' 'Settings of UART/RS232/485'
xdotool key space
wait_control 'menu item' 'Export Data...'
xdotool key --delay 50 Down Down Down Return
dialog=$(wait_window 30 '^Export File Select$')
press "$dialog" Down
wait_for 30 "the choice of the CSV file" control_is_checked 'radio button' 'CSV file (*.csv)'
xdotool key Return
type_path 'Export Data' "$folder/frames.csv"
xdotool key Return
expect_export "$folder/frames.csv"
expect_back
