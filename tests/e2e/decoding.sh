# shellcheck shell=bash
# What the tests of decoding share: a capture with characters on channel 0, and what the program makes of it. To be
# sourced after e2e.sh and datafile.sh.
# shellcheck disable=SC2034,SC2154 # what the tests read, and what e2e.sh sets

rate=1000000
bit=100 # samples: 10000 bits/s
text='Corvan decodes what the wire says; 1 digit'
gap=$((30 * bit)) # between two characters, which then stand far apart

# character_edges: the edges of `text` as start bit, eight data bits with the lowest first and stop bit, on a line that
# is high while it is idle; then the end mark. Sets `samples`, and in `starts` the first sample of each character.
character_edges() {
    local position=$gap level=1 i k code byte
    edges=()
    starts=()
    for ((i = 0; i < ${#text}; ++i)); do
        printf -v code '%d' "'${text:i:1}"
        starts+=("$position")
        byte=$((code << 1 | 1 << 9)) # start bit, data, stop bit
        for ((k = 0; k < 10; ++k)); do
            if (((byte >> k & 1) != level)); then
                edges+=("$position")
                level=$((1 - level))
            fi
            position=$((position + bit))
        done
        position=$((position + gap))
    done
    samples=$position
    edges+=("$samples")
}

# make_capture FILE
make_capture() {
    character_edges
    {
        settings_block 1 Serial
        file_head "$samples" "$rate" 0 16
        channel_block 0 1 "${edges[@]}"
        channel_block 1 1 "$samples"
    } >"$1"
}

# expected_frames: a line for each character: its first sample, kind, channel, value.
expected_frames() {
    local i code
    for ((i = 0; i < ${#text}; ++i)); do
        printf -v code '%d' "'${text:i:1}"
        printf '%d,byte,0,%d\n' "${starts[i]}" "$code"
    done
}

# frames_of FILE: the same of an exported CSV file, by the names of its columns.
frames_of() {
    awk -F , '
        NR == 1 { for (i = 1; i <= NF; ++i) { place[$i] = i } next }
        { printf "%s,%s,%s,%s\n", $place["first_sample"], $place["kind"], $place["ch"], $place["v"] }' "$1"
}

# The one digit: its place, and its row in the list.
rare=${text%%1*}
rare=${#rare}
rare_row='RX: Data 0x31'

# rows: the texts of the list's rows; boxes have items of their own.
rows() {
    controls 'list item' '' | cut -f 6 | grep '^RX: ' || true
}

first_rows_are() {
    [[ $(rows | head -n 5) == "$1" ]]
}

only_row_is() {
    [[ $(rows) == "$1" ]]
}

# wait_frames: until the list has the first characters, and tells how many there are.
wait_frames() {
    local expected i code
    expected=$(for ((i = 0; i < 5; ++i)); do
        printf -v code '%d' "'${text:i:1}"
        printf 'RX: Data 0x%02X\n' "$code"
    done)
    wait_for 60 "the decoded characters" first_rows_are "$expected"
    wait_for 60 "the number of characters, ${#text}" control_is_shown label "${#text}"
}

# sample_at_middle: that of the wave view, which the bar tells for the pointer.
sample_at_middle() {
    local label
    label=$(text_of label 'Time and sample at the pointer')
    label=${label##*[}
    printf '%s\n' "${label%]}"
}

middle_is_on() {
    local sample
    sample=$(sample_at_middle)
    [[ $sample =~ ^[0-9]+$ ]] && ((sample >= starts[$1] && sample < starts[$1] + 10 * bit))
}

# expect_middle INDEX: the character stands in the middle of the view.
expect_middle() {
    xdotool mousemove --window "$window" $((wave_x + wave_w / 2)) $((wave_y + 20 * s))
    wait_for 30 "the character in the middle of the view" middle_is_on "$1"
}

control_has_focus() {
    [[ $(controls "$@") == *focused* ]]
}

# go_to KEY ROLE NAME: presses Tab or shift+Tab until that control of the main window has the keyboard's focus.
go_to() {
    local i key=$1
    shift
    for ((i = 0; i < 40; ++i)); do
        press "$window" "$key"
        if control_has_focus "$@"; then
            return
        fi
    done
    fail "$key does not lead to the $1 \"$2\""
}

# press_button NAME: of the file dialog, by mouse. What the field offers below goes with the first click.
press_button() {
    click_on text 'File name:'
    click_on 'push button' "$1"
}

# export_csv ANALYZER PATH: what it has decoded, by mouse.
export_csv() {
    click_on 'push button' "Settings of $1"
    click_on 'menu item' 'Export Data...'
    wait_window 30 '^Export File Select$' >/dev/null
    click_on 'radio button' 'CSV file (*.csv)'
    click_on 'push button' OK
    type_path 'Export Data' "$2"
    press_button Save
}

# expect_export FILE
expect_export() {
    wait_for 60 "the exported file" test -s "$1"
    wait_for 30 "the end of the export" window_is_gone '^Save file$'
    frames_of "$1" >"$folder/found"
    expected_frames | diff - "$folder/found" || fail "the export differs from what was sent"
}

# expect_back: the program, started anew without a file, has the analyzer with its channels.
expect_back() {
    close_program "$window"
    expect_config 'UART'
    start_program "$folder" "$program"
    window=$(wait_window 60 'CorvanLUX$')
    wait_control 'push button' 'Settings of UART/RS232/485'
    wait_for 30 "the channels of the analyzer" control_is_shown label 'RX 0   TX 1'
    picture "$window" "$shot"
    close_program "$window"
}
