#!/usr/bin/env bash
# The check for newer versions against a server on this machine: by itself after the start, when it says that there is
# one; from the menu; while the program is closed; and handed over to an updater.
#
#   update.sh PROGRAM CLOSEWINDOW SCREENREADER DPI SERVER ADDRESS PORT
#
# PROGRAM is built to ask http://ADDRESS:PORT, and has a folder of its own, where this puts the updater.
# shellcheck source=tests/e2e/e2e.sh
source "$(dirname "${BASH_SOURCE[0]}")/e2e.sh"
server=$5 address=$6 port=$7
log=$folder/server.log
reply=$folder/reply.xml
updater=$(dirname "$program")/Updater.exe
told=$folder/updater.told

server_pid=
stop_server() {
    kill "$server_pid" 2>/dev/null || true
    rm -f "$updater"
}
"$server" "$address" "$port" "$reply" >"$log" 2>&1 </dev/null &
server_pid=$!
trap "finish; stop_server" EXIT
wait_for 30 "the server" grep -q '^ready$' "$log"

requests() {
    (($(grep -c '^/update' "$log") == $1))
}

# expect_request NUMBER EXPRESSION: that request, from 1, was this one.
expect_request() {
    wait_for 30 "request $1" requests "$1"
    tail -n 1 "$log" | grep -Eq "$2" || fail "request $1 is $(tail -n 1 "$log"), not $2"
}

# answer VERSION: what the service says from now on.
answer() {
    cat >"$reply" <<END
<?xml version="1.0" encoding="UTF-8"?>
<lux><last>$1</last><support>1.0.0</support><dnllink>https://example.org/d</dnllink>
<updlink>https://example.org/u?a=1&amp;b=2</updlink></lux>
END
}

cancel_dialog() {
    click_on 'push button' Cancel
    wait_for 30 "the end of the dialog" window_is_gone '^Check for updates$'
}

# ask_by_menu: the last entry but one; from the end, since there is less to come between.
ask_by_menu() {
    local before
    before=$(checksum root)
    click_on 'push button' 'Main menu'
    wait_for 30 "the menu" shows_other_than root "$before"
    wait_settled root
    xdotool key --delay 20 Up Up Return
    wait_window 30 '^Check for updates$' >/dev/null
}

# The program asks by itself, five seconds after its first start.
answer 99.1.0
start_reader "$folder"
start_program "$folder" "$program"
window=$(wait_window 60 'CorvanLUX$')
wait_window 60 '^Check for updates$' >/dev/null
expect_request 1 '^/update\?app=lux&ver=[0-9.]+&op=0&bw=64&os=lnx&mod=0$'
wait_control label 'Find a new version: 99.1.0, Update now?'
cancel_dialog

# The user asks: there is none.
answer 0.9
ask_by_menu
wait_control label "It's the latest version, no updates required."
expect_request 2 '&op=1&'
cancel_dialog

# The program is closed while a request is under way.
: >"$reply"
ask_by_menu
expect_request 3 '&op=1&'
control_is_shown label 'Looking for updates, please wait...' || fail "the dialog does not wait"
begun=$SECONDS
close_program "$window"
((SECONDS - begun <= 12)) || fail "the program took $((SECONDS - begun)) s to close" # 15 until the request's limit
expect_config "<lastUpdate>$(date +%Y)-[0-9]{2}-[0-9]{2}_[0-9]{2}:[0-9]{2}:[0-9]{2}</lastUpdate>"

# A week later: the updater beside the program is started, and all of the program goes.
sed -i 's|<lastUpdate>[^<]*|<lastUpdate>2020-01-01_00:00:00|' "$config"
answer 99.1.0
cat >"$updater" <<END
#!/bin/sh
printf '%s\n' "\$@" >'$told.part' && mv '$told.part' '$told'
END
chmod +x "$updater"
start_program "$folder" "$program"
wait_window 60 '^Check for updates$' >/dev/null
click_on 'push button' OK
wait_for 30 "the updater" test -e "$told"
wait_for 60 "the program's end" program_ended
version=$(sed -n 's/.*&ver=\([0-9.]*\)&.*/\1/p' "$log" | tail -n 1)
printf '%s\n' 'https://example.org/u?a=1&b=2' "$version" 99.1.0 en-US | diff - "$told"
requests 4 || fail "$(grep -c '^/update' "$log") requests instead of 4"
