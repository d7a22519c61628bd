# shellcheck shell=bash
# The controls of the program by their names, as a screen reader finds them: for scripts that press and read them. To
# be sourced after display.sh; `screenreader` is the path of the built scripts/screenreader.cpp.

bus_pid=
bus_address=

# start_reader FOLDER: a message bus of its own, of which the programs of the display are told. To be called between
# start_display and start_program.
start_reader() {
    # FOLDER may have a name too long for a socket.
    dbus-daemon --session --nofork --nopidfile --address=unix:tmpdir=/tmp --print-address=3 \
        3>"$1/bus" >"$1/bus.log" 2>&1 </dev/null &
    bus_pid=$!
    wait_for 30 "the message bus" test -s "$1/bus"
    bus_address=$(<"$1/bus")
    export DBUS_SESSION_BUS_ADDRESS=$bus_address
    "${screenreader:?}" offer "$bus_address"
}

# stop_reader: for an EXIT trap.
stop_reader() {
    if [[ -n $bus_pid ]]; then
        kill "$bus_pid" 2>/dev/null || true
        wait "$bus_pid" 2>/dev/null || true
    fi
    bus_pid=
}

# controls ROLE NAME [DESCRIPTION]: prints the lines of what is shown with that role and name; an empty text stands for
# any.
controls() {
    "$screenreader" list "$bus_address" |
        ROLE=$1 NAME=$2 DESCRIPTION=${3:-} awk -F '\t' '
            (ENVIRON["ROLE"] == "" || $5 == ENVIRON["ROLE"]) && (ENVIRON["NAME"] == "" || $6 == ENVIRON["NAME"]) &&
            (ENVIRON["DESCRIPTION"] == "" || $7 == ENVIRON["DESCRIPTION"])'
}

control_is_shown() {
    [[ -n $(controls "$@") ]]
}

control_is_ready() {
    local line
    line=$(controls "$@")
    [[ -n $line && $line != *disabled* ]]
}

control_is_checked() {
    [[ $(controls "$@") == *checked* ]]
}

# text_of ROLE DESCRIPTION: the name of the first control with that description, which for a label is its text.
text_of() {
    controls "$1" "" "$2" | head -n 1 | cut -f 6
}

# wait_control ROLE NAME [DESCRIPTION]: until it is shown and enabled.
wait_control() {
    wait_for 30 "the $1 \"$2\"" control_is_ready "$@"
}

# point_at ROLE NAME [DESCRIPTION]: moves the pointer to the middle of the first such control, once it is there.
point_at() {
    wait_control "$@"
    local x y w h
    IFS=$'\t' read -r x y w h _ < <(controls "$@")
    xdotool mousemove $((x + w / 2)) $((y + h / 2))
}

# click_on ROLE NAME [DESCRIPTION]
click_on() {
    point_at "$@"
    xdotool click 1
}
