#!/usr/bin/env bash
# A data file named on the command line is shown at once; one that breaks off gives a box, behind which the program
# goes on.
# shellcheck source=tests/e2e/e2e.sh
source "$(dirname "${BASH_SOURCE[0]}")/e2e.sh"
# shellcheck source=tests/e2e/datafile.sh
source "$(dirname "${BASH_SOURCE[0]}")/datafile.sh"

# Channel 0 is high in the middle half, channel 1 is always high, the others have no data.
good=$folder/good.cxdat
{
    settings_block 1
    file_head 100000 1000000 0 16
    channel_block 0 0 25000 75000 100000
    channel_block 1 1 100000
} >"$good"

# It ends inside the first channel's entries.
broken=$folder/broken.cxdat
head -c $(($(stat -c %s "$good") - 30)) "$good" >"$broken"

start_program "$folder" "$program" "$good"
window=$(wait_window 60 "good\.cxdat - CorvanLUX\$")
measure_window "$window"
wait_for 60 "the wave's colour in the wave view" wave_is_shown "$window"
wait_settled "$window"
picture "$window" "$shot"
expect_main_window "$shot"

# With 16 channels a row has its least height of 42 here: the high level is 8 below its top, the low one 36. Strokes are
# as wide as a unit.
row_h=$((42 * s))
high=$((8 * s + s / 2))
low=$((36 * s + s / 2))
((wave_h / 16 < row_h)) || fail "the window is higher than this test reckons with: $height"
for row in 0 1; do
    top=$((wave_y + row_h * row))
    expect_pixel "row $row is high in the middle" "$shot" $((wave_x + wave_w / 2)) $((top + high)) '#f7f7f7'
    expect_pixel "row $row is not low in the middle" "$shot" $((wave_x + wave_w / 2)) $((top + low)) '#1f1f23'
done
for x in $((wave_w / 8)) $((wave_w * 7 / 8)); do
    expect_pixel "row 0 is low at its ends" "$shot" $((wave_x + x)) $((wave_y + low)) '#f7f7f7'
    expect_pixel "row 0 is not high at its ends" "$shot" $((wave_x + x)) $((wave_y + high)) '#1f1f23'
    expect_pixel "row 1 is high at its ends" "$shot" $((wave_x + x)) $((wave_y + row_h + high)) '#f7f7f7'
done
for quarter in 1 3; do
    # One column of a vertical line in a strip of five columns.
    expect "an edge of row 0 at its quarter $quarter" "$shot" \
        "$((5 * s))x$((20 * s))+$((wave_x + wave_w * quarter / 4 - 2 * s))+$((wave_y + 12 * s))" '#f7f7f7' 200 200
done
expect "rows without data draw no wave" "$shot" \
    "${wave_w}x$((100 * s))+${wave_x}+$((wave_y + 2 * row_h + 10 * s))" '#f7f7f7' 0 0
close_program "$window"

start_program "$folder" "$program" "$broken"
box=$(wait_window 60 '^An error occurred$')
press "$box" Return
wait_for 30 "the box to close" window_is_gone '^An error occurred$'
window=$(wait_window 60 'CorvanLUX$')
capture "$window"
wait_for 60 "a wave after the broken file" wave_is_shown "$window"
close_program "$window"
expect_config '<devModel>0</devModel>'
