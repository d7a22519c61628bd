# shellcheck shell=bash
# The pictures of the decoders: of each a simulated capture with its traffic, its boxes on the waves and its list. To be
# sourced by scripts/pictures, which gives the functions and paths that are used here.
# shellcheck disable=SC2154 # what scripts/pictures sets

# decoder_capture FILE DECODER "RATE MODEL" LINES: LINES are its channels from 0 on, as key=name.
decoder_capture() {
    local file=$1 decoder=$2 rate=${3% *} model=${3#* } settings='' line names='' channel=0
    for line in $4; do
        settings+=,${line%%=*}=$channel
        names+="<chnShowName$channel>${line#*=}</chnShowName$channel>"
        channel=$((channel + 1))
    done
    XDG_DATA_HOME=$folder/data "$root/build/dev/bin/luxcli" capture --simulate --model "$model" --rate "$rate" \
        --depth 200k --channels "0-$((channel - 1))" -a "$decoder:${settings#,}" -o "$file" >/dev/null
    # The whole capture is shown when the file is opened, at once.
    LC_ALL=C sed -i "s|<viewState/>|<viewState>1</viewState>$names|; s|<disAnimateZoom/>|<disAnimateZoom>1</disAnimateZoom>|" \
        "$file"
    lines=$channel
}

# type_into ROLE NAME TEXT: takes the place of what is there.
type_into() {
    click_on "$1" "$2"
    xdotool key ctrl+a
    xdotool type --delay 10 "$3"
}

# row_of TEXT: prints a place on the first row of the list that has it. Rows are as wide as their texts, and the boxes on
# the waves have items of their own.
row_of() {
    controls 'list item' '' | TEXT=$1 LIST=$list_x awk -F '\t' '
        $1 >= ENVIRON["LIST"] && index($6, ENVIRON["TEXT"]) { print int($1 + 20), int($2 + $4 / 2); found = 1; exit }
        END { exit !found }'
}

# decoder_picture NAME DECODER "RATE MODEL" LINES ZOOM ROW
decoder_picture() {
    local name=$1 zoom=$5 row=$6 file=$folder/$1.cxdat height x y
    decoder_capture "$file" "$2" "$3" "$4"
    # The waves have the window but for the bars: 84 above and 22 below.
    height=$((84 + 22 + (lines > 7 ? 42 * lines : 300)))
    mkdir -p "$folder/data/corvan"
    printf '<settings><global><windowPosition>0,40,1000,%s</windowPosition></global></settings>\n' "$height" \
        >"$folder/data/corvan/lux.config"
    start_program "$folder" "$root/build/dev/bin/corvanlux" "$file"
    window=$(wait_window 60 "$1\\.cxdat - CorvanLUX\$")
    wait_settled "$window"
    xdotool windowfocus "$window"
    click_on 'push button' 'Collapse Measurements'
    list_x=$((1000 - 240))
    type_into text Search "$row"
    wait_for 30 "the row $row" row_of "$row" >/dev/null
    wait_settled "$window"
    read -r x y < <(row_of "$row")
    xdotool mousemove "$x" "$y" click 1
    wait_settled "$window"
    # A click on a row may zoom in, so that the element can be read.
    type_into text 'Samples per pixel' "$zoom"
    xdotool key Return
    wait_settled "$window"
    click_on text Search
    xdotool key ctrl+a BackSpace Tab
    xdotool mousemove --window "$window" 20 $((height - 8))
    wait_settled "$window"
    keep "decoder-$name" "$window" -crop "1000x$((height - 48))+0+48" -colors 64
    close_program "$window"
}

# decoder_pictures [NAME...]: those, or all.
decoder_pictures() {
    local parts
    while IFS='|' read -r -a parts <&4; do
        if [[ ${parts[0]} != '#'* && (" $* " == *" ${parts[0]} "* || $# == 0) ]]; then
            decoder_picture "${parts[@]}"
        fi
    done 4<"$root/scripts/pictures.decoders"
}
