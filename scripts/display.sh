# shellcheck shell=bash
# A virtual display and what a user does on it. To be sourced by bash scripts that run with `set -euo pipefail`.
# No window manager runs there, so the keyboard's focus is set by hand and windows are closed by a message.
#
# Every wait polls until a deadline; a function that reaches it says so and fails.

display_pid=
program_pid=

# wait_for SECONDS TEXT COMMAND...: until COMMAND succeeds.
wait_for() {
    local seconds=$1 text=$2 end
    shift 2
    end=$((SECONDS + seconds))
    until "$@"; do
        if ((SECONDS >= end)); then
            echo "timed out after $seconds s: $text" >&2
            return 1
        fi
        sleep 0.1
    done
}

# start_display FOLDER SIZE DPI: sets DISPLAY to a server of its own with a screen of SIZE, such as 1280x800, on which
# programs find exactly DPI dots per inch. FOLDER exists and takes the server's notes.
start_display() {
    local folder=$1 size=$2 dpi=$3
    # The server chooses a free number itself and tells it when it is ready. It repeats no key (-r): on a busy machine
    # xdotool may come late to let one go.
    Xvfb -displayfd 3 -screen 0 "${size}x24" -dpi "$dpi" -noreset -nolisten tcp -r \
        3>"$folder/display" >"$folder/xvfb.log" 2>&1 </dev/null &
    display_pid=$!
    wait_for 30 "the virtual display" test -s "$folder/display"
    DISPLAY=":$(<"$folder/display")"
    export DISPLAY
    unset WAYLAND_DISPLAY
    # A screen's size in whole millimetres gives 191.9 for 192. What a desktop's settings say counts before it.
    xprop -root -f RESOURCE_MANAGER 8s -set RESOURCE_MANAGER $'Xft.dpi:\t'"$dpi"$'\n'
}

# start_program FOLDER PROGRAM [ARGUMENT...]: with settings of its own below FOLDER/data, so the caller's stay as
# they are. Its output goes to FOLDER/program.log, its process to `program_pid`.
start_program() {
    local folder=$1
    shift
    mkdir -p "$folder/data" "$folder/config" "$folder/cache" "$folder/runtime"
    chmod 700 "$folder/runtime"
    env -u SESSION_MANAGER -u QT_SCALE_FACTOR -u QT_STYLE_OVERRIDE -u QT_QPA_PLATFORMTHEME \
        QT_QPA_PLATFORM=xcb XDG_DATA_HOME="$folder/data" XDG_CONFIG_HOME="$folder/config" \
        XDG_CACHE_HOME="$folder/cache" XDG_RUNTIME_DIR="$folder/runtime" \
        "$@" >"$folder/program.log" 2>&1 </dev/null &
    program_pid=$!
}

program_runs() {
    kill -0 "$program_pid" 2>/dev/null
}

program_ended() {
    ! program_runs
}

# window_of TITLE: prints the id of a visible window whose title matches the expression; fails when there is none.
window_of() {
    local ids
    ids=$(xdotool search --onlyvisible --name "$1" 2>/dev/null) || return 1
    [[ -n $ids ]] && printf '%s\n' "${ids%%$'\n'*}"
}

window_is_shown() {
    window_of "$1" >/dev/null
}

window_is_gone() {
    ! window_is_shown "$1"
}

# wait_window SECONDS TITLE: prints its id.
wait_window() {
    wait_for "$1" "a window with the title $2" window_is_shown "$2" && window_of "$2"
}

window_has_focus() {
    [[ $(xdotool getwindowfocus 2>/dev/null) == "$1" ]]
}

# press WINDOW KEY
press() {
    xdotool windowfocus "$1"
    wait_for 10 "the focus on the window" window_has_focus "$1"
    xdotool key "$2"
}

# press_often WINDOW KEY TIMES: a zoom that is under way takes the next one into account, so each is waited for.
press_often() {
    local i
    for ((i = 0; i < $3; ++i)); do
        press "$1" "$2"
        wait_settled "$1"
    done
}

# click WINDOW X Y BUTTON: pixels from the window's corner.
click() {
    xdotool mousemove --window "$1" "$2" "$3"
    xdotool click "$4"
}

# picture WINDOW FILE: a PNG file.
picture() {
    import -silent -window "$1" "png:$2"
}

# checksum WINDOW: of what the window shows.
checksum() {
    import -silent -window "$1" -depth 8 ppm:- | cksum
}

shows_other_than() {
    [[ $(checksum "$1") != "$2" ]]
}

# wait_settled WINDOW: until it shows the same twice, 300 ms apart.
wait_settled() {
    wait_for 60 "a picture that stays" is_settled "$1"
}

is_settled() {
    local before
    before=$(checksum "$1")
    sleep 0.3
    [[ $(checksum "$1") == "$before" ]]
}

# capture WINDOW: presses F5 and waits until the progress dialog is gone and the wave stands.
capture() {
    local before
    before=$(checksum "$1")
    press "$1" F5
    # A short run may be over before the dialog is seen; then the picture alone tells.
    wait_for 3 "the progress dialog" window_is_shown '^Sampling$' 2>/dev/null || true
    wait_for 300 "the end of the capture" window_is_gone '^Sampling$'
    wait_for 60 "the wave" shows_other_than "$1" "$before"
    wait_settled "$1"
}

# close_program WINDOW: as by its close button; fails unless the program then ends by itself with code 0.
# `closewindow` is the path of the built scripts/closewindow.cpp.
close_program() {
    "${closewindow:?}" "$1"
    wait_for 60 "the program's end" program_ended
    local code=0
    wait "$program_pid" || code=$?
    program_pid=
    if ((code != 0)); then
        echo "the program ended with code $code" >&2
        return 1
    fi
}

# stop_display: ends what is left of the two; for an EXIT trap.
stop_display() {
    if [[ -n $program_pid ]]; then
        kill "$program_pid" 2>/dev/null || true
        wait "$program_pid" 2>/dev/null || true
    fi
    if [[ -n $display_pid ]]; then
        kill "$display_pid" 2>/dev/null || true
        wait "$display_pid" 2>/dev/null || true
    fi
    program_pid=
    display_pid=
}
