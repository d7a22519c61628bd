#!/usr/bin/env bash
# Traffic of a bus on the waves: an analyzer that is added by mouse has its boxes, in the colour of their row, and its
# glyphs where the bytes, the starts and the stops were sent, and nothing between two messages; a search and a click bring
# a byte to the middle, and all is exported.
# shellcheck source=tests/e2e/e2e.sh
source "$(dirname "${BASH_SOURCE[0]}")/e2e.sh"
# shellcheck source=tests/e2e/datafile.sh
source "$(dirname "${BASH_SOURCE[0]}")/datafile.sh"
# shellcheck source=tests/e2e/decoding.sh
source "$(dirname "${BASH_SOURCE[0]}")/decoding.sh"

half=10 # samples of half a clock: 100 kbit/s at 2 MHz
rate=2000000
messages=8
pause=600

# set_line NAME LEVEL SAMPLE: an edge of scl or sda, if there is one.
declare -A level=([scl]=1 [sda]=1)
scl_edges=()
sda_edges=()
set_line() {
    local -n edges_of=$1_edges
    if ((level[$1] != $2)); then
        edges_of+=("$3")
        level[$1]=$2
    fi
}

# condition KIND: a start, a repeated start or a stop. SCL is high behind a stop and low behind the others.
condition() {
    if ((level[scl] == 0)); then
        set_line sda $(($1 == 0)) $((position + half / 2))
        set_line scl 1 $((position + half))
        position=$((position + 2 * half))
    fi
    set_line sda "$1" "$position"
    frames+=("$position,$2,")
    position=$((position + half))
}

# byte VALUE ACK KIND SHOWN: eight bits, the highest first, and the acknowledgement, 0 for ACK. SHOWN is its value.
byte() {
    local bits=$(($1 << 1 | $2)) k
    frames+=("$((position + half)),$3,$4")
    for ((k = 8; k >= 0; --k)); do
        set_line scl 0 "$position"
        set_line sda $((bits >> k & 1)) $((position + half / 2))
        set_line scl 1 $((position + half))
        position=$((position + 2 * half))
    done
    set_line scl 0 "$position"
}

# make_bus FILE: each message writes a register's number and reads that register. Sets `frames`, a line for each element.
make_bus() {
    local i
    frames=()
    position=$pause
    for ((i = 0; i < messages; ++i)); do
        condition 0 start
        byte $((0x50 << 1)) 0 address $((0x50))
        byte $((0x10 + i)) 0 data $((0x10 + i))
        condition 0 restart
        byte $((0x50 << 1 | 1)) 0 address $((0x50))
        byte $((0xA0 + i)) 1 data $((0xA0 + i))
        condition 1 stop
        position=$((position + pause))
    done
    samples=$position
    {
        settings_block 1 SCL SDA
        file_head "$samples" "$rate" 0 16
        channel_block 0 1 "${scl_edges[@]}" "$samples"
        channel_block 1 1 "${sda_edges[@]}" "$samples"
    } >"$1"
}

# place_of SAMPLE: its column in the wave view. `left` is the sample at the view's left edge, `ratio` samples per pixel.
place_of() {
    awk -v at="$1" -v left="$left" -v ratio="$ratio" -v s="$s" 'BEGIN { print int((at - left) / ratio) * s }'
}

# look_at_row: sets the place of the row of SDA, and what the view shows.
look_at_row() {
    local y h
    IFS=$'\t' read -r _ y _ h _ < <(controls label '' 'Drag to move (Ctrl+↑, Ctrl+↓)' | sort -n -k 2 | sed -n 2p)
    eval "$(xdotool getwindowgeometry --shell "$window" | grep -E '^Y=[0-9]+$')"
    row_y=$((y - Y - 4 * s))
    row_h=$((h + 7 * s))
    ratio=$(controls text 'Samples per pixel' | cut -f 9)
    xdotool mousemove --window "$window" $((wave_x + wave_w / 2)) $((wave_y + 20 * s))
    wait_settled "$window"
    left=$(awk -v at="$(sample_at_middle)" -v w="$wave_w" -v ratio="$ratio" -v s="$s" \
        'BEGIN { print at - w / 2 / s * ratio }')
    picture "$window" "$shot"
}

# is_bright GEOMETRY: something there is as bright as a text. A box's lower half is dark but for that.
is_bright() {
    (($(convert "$shot" -crop "$1" +repage -format '%[fx:int(maxima*100)]' info:) > 60))
}

# expect_boxes FIRST LAST: of the bytes of those lines of `frames`: both ends in the colour of the row, which has none
# between a stop and a start.
blue='#2727ef'
expect_boxes() {
    local i first end x kind
    for ((i = $1; i <= $2; ++i)); do
        IFS=, read -r first kind _ <<<"${frames[i]}"
        x=$(place_of "$first")
        case $kind in
        address | data)
            end=$(place_of $((first + 17 * half)))
            expect "the left end of box $i" "$shot" "$((5 * s))x$((12 * s))+$((wave_x + x - 2 * s))+$((row_y + 2 * s))" \
                "$blue" 150 400
            expect "the right end of box $i" "$shot" \
                "$((5 * s))x$((12 * s))+$((wave_x + end - 2 * s))+$((row_y + 2 * s))" "$blue" 150 400
            is_bright "$((end - x - 4 * s))x$((5 * s))+$((wave_x + x + 2 * s))+$((row_y + 8 * s))" ||
                fail "box $i has no text"
            ;;
        start | restart)
            expect "the glyph of start $i" "$shot" "$((5 * s))x$((5 * s))+$((wave_x + x - 2 * s))+$((row_y + row_h / 2))" \
                '#00ff00' 300 1000
            ;;
        stop)
            expect "the glyph of stop $i" "$shot" "$((5 * s))x$((5 * s))+$((wave_x + x - 2 * s))+$((row_y + row_h / 2))" \
                '#ff0000' 300 1000
            end=$(place_of $((first + pause)))
            expect "no box behind stop $i" "$shot" \
                "$((end - x - 8 * s))x$((12 * s))+$((wave_x + x + 4 * s))+$((row_y + 2 * s))" "$blue" 0 0
            ;;
        esac
    done
}

# expect_message INDEX: it stands in view with all that belongs to it.
expect_message() {
    look_at_row
    expect_boxes $((7 * $1)) $((7 * $1 + 6))
}

# zoom_to NUMBER: samples per pixel.
zoom_to() {
    xdotool windowfocus "$window"
    click_on text 'Samples per pixel'
    xdotool key ctrl+a
    xdotool type --delay 20 "$1"
    xdotool key Return
    wait_settled "$window"
}

# find_rare: by the search and a click on its row in the list, the read byte of message 5 comes to the middle.
find_rare() {
    local x y
    click_on text Search
    xdotool windowfocus "$window"
    xdotool type --delay 20 0xA5
    wait_for 30 "the row that is searched for" control_is_shown label 1
    # The box on the wave has the same name, further left.
    IFS=$'\t' read -r x y _ < <(controls 'list item' 'Data 0xA5, NACK' | sort -n | tail -n 1)
    xdotool mousemove $((x + 10 * s)) $((y + 5 * s)) click 1
    wait_settled "$window"
    zoom_to 2.5
    click_on text Search
    xdotool key ctrl+a BackSpace
    wait_settled "$window"
}

make_bus "$folder/bus.cxdat"
start_reader "$folder"
start_program "$folder" "$program" "$folder/bus.cxdat"
window=$(wait_window 60 'bus\.cxdat - CorvanLUX$')
wait_settled "$window"
measure_window "$window"

click_on 'push button' 'Add an analyzer'
click_on 'menu item' I2C
wait_window 30 '^Analyzer - I2C$' >/dev/null
click_on 'push button' OK
wait_for 30 "the end of the settings" window_is_gone '^Analyzer - I2C$'
wait_for 60 "the number of elements" control_is_shown label "${#frames[@]}"

find_rare
expect_message 5

export_csv I2C "$folder/frames.csv"
wait_for 60 "the exported file" test -s "$folder/frames.csv"
wait_for 30 "the end of the export" window_is_gone '^Save file$'
awk -F , '
    NR == 1 { for (i = 1; i <= NF; ++i) { place[$i] = i } next }
    { printf "%s,%s,%s\n", $place["first_sample"], $place["kind"], $place["v"] }' "$folder/frames.csv" >"$folder/found"
printf '%s\n' "${frames[@]}" | diff - "$folder/found" || fail "the export differs from what was sent"

close_program "$window"
expect_config I2C
