#!/usr/bin/env bash
# From a file to a measured and exported part of it: Ctrl+O opens a data file, one timing marker is placed by its key
# and one by mouse, the panel tells their distance, the menu exports what lies between them as CSV, and Ctrl+S saves the
# capture, which opens again. What was exported and saved is compared with the file by a reading of its bytes.
# shellcheck source=tests/e2e/e2e.sh
source "$(dirname "${BASH_SOURCE[0]}")/e2e.sh"
# shellcheck source=tests/e2e/datafile.sh
source "$(dirname "${BASH_SOURCE[0]}")/datafile.sh"

samples=50000
rate=1000000
trigger=15000
# Edges of channel 0 so far apart that a marker snaps to one of them only.
first_edge=12499
second_edge=35501

# edges CHANNEL STEP: positions of edges, STEP apart on average, the same in every run, and the end mark.
edges() {
    local position=$(($1 * 7)) random=$((12345 + $1))
    while ((position < samples)); do
        printf '%d ' "$position"
        random=$(((random * 1103515245 + 12345) % 2147483648))
        position=$((position + 1 + (random >> 8) % (2 * $2)))
    done
    printf '%d\n' "$samples"
}

capture_file=$folder/capture.cxdat
{
    settings_block 1 Clock '' 'A, "B"'
    file_head $samples $rate $trigger 16
    channel_block 0 1 4500 $first_edge 21000 28501 $second_edge 43000 $samples
    for channel in 1 2 3; do
        # shellcheck disable=SC2046 # one word each
        channel_block "$channel" $((channel % 2)) $(edges "$channel" $((300 * channel)))
    done
    channel_block 5 1 $samples
} >"$capture_file"

# to_row_0 SAMPLE: moves the pointer to that sample in the row of channel 0, a little beside it.
to_row_0() {
    xdotool mousemove --window "$window" $((wave_x + $1 * wave_w / samples + 4 * s)) $((wave_y + 20 * s))
}

# shown_checksum: of ruler and waves, with the pointer away from them.
shown_checksum() {
    xdotool mousemove --window "$window" $((20 * s)) $((height - 8 * s))
    wait_settled "$window"
    import -silent -window "$window" -depth 8 ppm:- |
        convert ppm:- -crop "$((wave_w - 12 * s))x$((wave_h + 36 * s))+${wave_x}+$((48 * s))" +repage ppm:- | cksum
}

# answer_file_dialog TITLE PATH [WINDOW]: types PATH there.
answer_file_dialog() {
    type_path "$@"
    xdotool key Return
    wait_for 30 "the end of the file dialog" window_is_gone "^$1\$"
}

text_is() {
    [[ $(text_of label "$1") == "$2" ]]
}

marker_is_shown() {
    [[ $(text_of label "$1") == *s ]]
}

# menu_stands: the main menu covers what stood at its place.
menu_stands() {
    import -silent -window root -crop "$menu_place" +repage -depth 8 ppm:- | cksum >"$folder/menu"
    [[ $(<"$folder/menu") != "$before" ]]
}

start_reader "$folder"
start_program "$folder" "$program"
window=$(wait_window 60 'CorvanLUX$')
wait_settled "$window"
measure_window "$window"

# Before the menu was ever opened.
press "$window" ctrl+o
answer_file_dialog Open "$capture_file"
wait_window 30 'capture\.cxdat - CorvanLUX$' >/dev/null
wait_for 60 "the wave's colour in the wave view" wave_is_shown "$window"
shown=$(shown_checksum)

# The first marker by its key, which brings it to the pointer; near an edge it snaps; a click puts it down.
to_row_0 20000
press "$window" 1
wait_for 30 "the first marker at the pointer" marker_is_shown A1
to_row_0 $first_edge
wait_for 30 "the first marker at the edge" text_is A1 -2.501ms
click "$window" $((wave_x + first_edge * wave_w / samples + 3 * s)) $((wave_y + 20 * s)) 1

# The second by mouse alone: the panel's button, a way through the waves, a click. It comes with the pair.
click_on 'push button' A2
to_row_0 20000
to_row_0 $second_edge
wait_for 30 "the second marker at the edge" text_is A2 20.501ms
click "$window" $((wave_x + second_edge * wave_w / samples + 3 * s)) $((wave_y + 20 * s)) 1
to_row_0 25000
wait_for 30 "the distance of the markers" text_is A1-A2 23.002ms
text_is A1 -2.501ms || fail "A1 has moved to $(text_of label A1)"
text_is A2 20.501ms || fail "A2 has moved to $(text_of label A2)"

# The menu by keys: its fifth entry, and the second one of the menu beside it.
IFS=$'\t' read -r x y w h _ < <(controls 'push button' 'Main menu')
menu_place=$((w + 100 * s))x$((100 * s))+$((x - 100 * s))+$((y + h))
before=$(import -silent -window root -crop "$menu_place" +repage -depth 8 ppm:- | cksum)
click_on 'push button' 'Main menu'
wait_for 30 "the menu" menu_stands
xdotool key --delay 20 Down Down Down Down Down Right Down Return
selection=$(wait_window 30 '^Export Data$')
click_on 'check box' CH1
click_on 'check box' CH15
click_on 'radio button' 'Timing markers'
wait_for 30 "the choice of markers" control_is_checked 'radio button' 'Timing markers'
control_is_shown 'combo box' 'A1 - A2' || fail "the pair of markers is not offered"
click_on 'push button' OK
answer_file_dialog 'Export Data' "$folder/between.csv" "$selection"
wait_for 60 "the exported file" test -s "$folder/between.csv"

chosen=(0 2 3 4 5 6 7 8 9 10 11 12 13 14)
{
    printf 'Time[s], Clock, A, "B"'
    printf ', Channel %d' "${chosen[@]:2}"
    printf '\n'
    levels "$capture_file" $first_edge $((second_edge - 1)) "${chosen[@]}"
} >"$folder/expected.csv"
(($(wc -l <"$folder/expected.csv") > 20)) || fail "there is too little to compare"
wait_for 60 "the export to be what the file holds" cmp -s "$folder/expected.csv" "$folder/between.csv" || {
    diff "$folder/expected.csv" "$folder/between.csv" | head
    fail "the export differs from the capture"
}

press "$window" ctrl+s
selection=$(wait_window 30 '^Save Data$')
click_on 'push button' OK
answer_file_dialog 'Save Data' "$folder/saved.cxdat" "$selection"
wait_for 60 "the saved file" test -s "$folder/saved.cxdat"
levels "$capture_file" 0 end {0..15} >"$folder/expected"
saved_is_complete() {
    levels "$folder/saved.cxdat" 0 end {0..15} | cmp -s - "$folder/expected"
}
wait_for 60 "the saved file to hold the capture" saved_is_complete
close_program "$window"

start_program "$folder" "$program" "$folder/saved.cxdat"
window=$(wait_window 60 'saved\.cxdat - CorvanLUX$')
wait_for 60 "the wave of the saved file" wave_is_shown "$window"
[[ $(shown_checksum) == "$shown" ]] || fail "the saved file shows another picture than the one it was saved from"
close_program "$window"
