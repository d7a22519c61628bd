# shellcheck shell=bash
# The frame of the end-to-end tests. To be sourced with the arguments PROGRAM CLOSEWINDOW SCREENREADER DPI; gives the
# test a folder of its own (`folder`) and a display, and takes both away at the end. A failure leaves a picture and its
# path.
#
# DPI is a multiple of 96; `s` is that multiple, by which all sizes of the window are scaled. Its places in units of `s`
# pixels: the margins left, right and below are 2; the bar above is 48 high, the ruler 36, the sidebars are 190 wide,
# the status line is 20 high.
set -euo pipefail

# shellcheck disable=SC2034 # read by the tests
program=$1
# shellcheck disable=SC2034 # read in display.sh
closewindow=$2
# shellcheck source=scripts/display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/display.sh"
# shellcheck disable=SC2034 # read in controls.sh
screenreader=$3
dpi=$4
s=$((dpi / 96))
# shellcheck source=scripts/controls.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/controls.sh"

folder=$(mktemp -d)
config=$folder/data/corvan/lux.config
shot=$folder/shot.png

finish() {
    local code=$?
    if ((code != 0)); then
        local kept=${TMPDIR:-/tmp}/lux-e2e-failure.png
        import -silent -window root "png:$kept" 2>/dev/null || cp "$shot" "$kept" 2>/dev/null || kept=none
        echo "FAILED. The picture: $kept. The program's output:" >&2
        cat "$folder/program.log" >&2 || true
    fi
    stop_display
    stop_reader
    rm -rf "$folder"
}
trap finish EXIT

fail() {
    echo "$*" >&2
    exit 1
}

# count FILE GEOMETRY COLOUR: prints how many pixels of that part have exactly that colour, and how many there are.
count() {
    convert "$1" -crop "$2" +repage -alpha off -fill black +opaque "$3" -fill white -opaque "$3" \
        -precision 15 -format '%[fx:round(mean*w*h)] %[fx:w*h]\n' info:
}

# share FILE GEOMETRY COLOUR: the same of a thousand, rounded up, so that 0 means none.
share() {
    local found all
    read -r found all < <(count "$@")
    echo $(((found * 1000 + all - 1) / all))
}

# expect TEXT FILE GEOMETRY COLOUR LEAST MOST: the share lies in LEAST to MOST.
expect() {
    local found
    found=$(share "$2" "$3" "$4")
    if ((found < $5 || found > $6)); then
        fail "$1: $found of 1000 pixels of $3 have $4, not $5 to $6"
    fi
}

# expect_pixel TEXT FILE X Y COLOUR
expect_pixel() {
    expect "$1" "$2" "1x1+$3+$4" "$5" 1000 1000
}

# expect_config EXPRESSION: the settings that the program wrote at its end hold it.
expect_config() {
    grep -Eq "$1" "$config" || fail "$config does not hold $1"
}

# measure_window WINDOW: sets `width` and `height`, and the wave view's `wave_x`, `wave_y`, `wave_w`, `wave_h`. The wave
# view is as wide as the ruler above it, which its lower line tells.
measure_window() {
    local WIDTH HEIGHT
    eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^(WIDTH|HEIGHT)=[0-9]+$')"
    width=$WIDTH
    height=$HEIGHT
    wave_x=$(((2 + 190) * s))
    wave_y=$(((48 + 36) * s))
    picture "$1" "$shot"
    read -r wave_w _ < <(count "$shot" "$((width - wave_x))x1+${wave_x}+$((wave_y - 1))" '#9f9f9f')
    if ((wave_w < 400 * s || wave_w > width - wave_x - 2 * s)); then
        fail "the ruler's lower line is $wave_w of $width pixels wide"
    fi
    wave_h=$((height - wave_y - (20 + 2) * s))
    ruler=${wave_w}x$((36 * s))+${wave_x}+$((48 * s))
    wave=${wave_w}x${wave_h}+${wave_x}+${wave_y}
    sidebars=$((190 * s))x${wave_h}+$((2 * s))+${wave_y}
}

ruler_checksum() {
    import -silent -window "$1" -depth 8 ppm:- | convert ppm:- -crop "$ruler" +repage ppm:- | cksum
}

ruler_shows_other_than() {
    [[ $(ruler_checksum "$1") != "$2" ]]
}

wave_is_shown() {
    picture "$1" "$shot"
    (($(share "$shot" "$wave" '#f7f7f7') > 0))
}

# a_dialog_after TITLE WINDOW: there is a file dialog, which has come behind WINDOW of the same title.
a_dialog_after() {
    dialog=$(window_of "$1") && [[ $dialog != "$2" ]] && control_is_shown text 'File name:'
}

path_is_typed() {
    [[ $(controls text 'File name:' | cut -f 9) == "$1" ]]
}

# type_path TITLE PATH [WINDOW]: into the file dialog; its window is `dialog` then. What came out wrong is typed again,
# as a user would, and told.
type_path() {
    local try
    wait_for 30 "the file dialog \"$1\"" a_dialog_after "^$1\$" "${3:-}"
    for try in 1 2 3; do
        if ((try > 1)); then
            click_on text 'File name:' # what the field offers below goes with it
        fi
        press "$dialog" ctrl+a
        xdotool type --delay 2 "$2"
        if wait_for $((try * 10)) "the typed path" path_is_typed "$2"; then
            return
        fi
        echo "\"$(controls text 'File name:' | cut -f 9)\" stands there, not \"$2\"" >&2
    done
    return 1
}

# expect_main_window FILE: the parts that stand there with any data.
expect_main_window() {
    expect "the rows' ground" "$1" "$wave" '#1f1f23' 100 1000
    expect "the ruler's ground" "$1" "$ruler" '#1f1f23' 700 1000
    expect "the ruler's lower line" "$1" "${wave_w}x1+${wave_x}+$((wave_y - 1))" '#9f9f9f' 950 1000
    expect "the sidebars' ground" "$1" "$sidebars" '#3f3f3f' 200 1000
}

start_display "$folder" "$((1280 * s))x$((800 * s))" "$dpi"
