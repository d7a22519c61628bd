# shellcheck shell=bash
# Data files written and read byte by byte as docs/formats.md tells, sharing nothing with the program. To be sourced.

# le40 NUMBER: five bytes, the lowest first.
le40() {
    local bytes
    printf -v bytes '\\x%02x' $(($1 & 255)) $((($1 >> 8) & 255)) $((($1 >> 16) & 255)) $((($1 >> 24) & 255)) \
        $((($1 >> 32) & 255))
    # shellcheck disable=SC2059 # the format is the bytes
    printf "$bytes"
}

# settings_block VIEWSTATE [NAME...]: the names of the channels from 0 on; the others have none. Model 0 is the one
# without hardware, of 16 channels. `device_settings` is put into the settings of its device.
device_settings=
settings_block() {
    local i names=''
    for ((i = 2; i <= $#; ++i)); do
        names+="        <chnShowName$((i - 2))>${!i}</chnShowName$((i - 2))>"$'\n'
    done
    printf '<?xml version="1.0" encoding="UTF-8"?>\n<settings>\n    <global>\n'
    printf '        <devModel>0</devModel>\n        <viewState>%s</viewState>\n%s' "$1" "$names"
    printf '    </global>\n    <devices><RV2520>%s</RV2520></devices>\n' "$device_settings"
    printf '    <analyzers/>\n</settings>\n'
}

# file_head SAMPLES RATE TRIGGER CHANNELS
file_head() {
    printf 'cxdat\0\0\0'
    local number
    for number in "$1" "$2" "$3"; do
        le40 "$number"
        printf '\0\0\0'
    done
    # shellcheck disable=SC2059 # the format is the byte
    printf "\\x$(printf '%02x' "$4")\\0\\0\\0\\0\\0\\0\\0"
}

# channel_block CHANNEL LEVEL POSITION...: the last position is the end mark.
channel_block() {
    # shellcheck disable=SC2059 # the format is the bytes
    printf "##D\\0\\x$(printf '%02x' "$1")\\x$(printf '%02x' "$2")\\0\\0"
    shift 2
    le40 $#
    printf '\0\0\0'
    local position
    for position in "$@"; do
        le40 "$position"
    done
}

# levels FILE FIRST LAST CHANNEL...: prints the levels of those channels as the CSV export tells them, without its head:
# a line for sample FIRST and for each one up to LAST at which one of them differs from the sample before. LAST may be
# "end". Goes through every sample on its own.
levels() {
    local file=$1 settings
    # The settings end with their line's end.
    settings=$(grep -abo '</settings>' "$file" | head -n 1)
    settings=$((${settings%%:*} + 12))
    od -An -v -tu1 -w1 -j "$settings" "$file" | FIRST=$2 LAST=$3 CHANNELS="${*:4}" awk '
        { byte[NR - 1] = $1 }
        function le40(at) {
            return byte[at] + 256 * (byte[at + 1] + 256 * (byte[at + 2] + 256 * (byte[at + 3] + 256 * byte[at + 4])))
        }
        END {
            samples = le40(8); rate = le40(16); trigger = le40(24)
            for (at = 40; at < NR; at += 16 + 5 * count) {
                channel = byte[at + 4]; level[channel] = byte[at + 5]; count = le40(at + 8)
                for (i = 0; i < count; ++i) {
                    flips[channel, le40(at + 16 + 5 * i)] = 1
                }
            }
            chosen = split(ENVIRON["CHANNELS"], channels, " ")
            last = ENVIRON["LAST"] == "end" ? samples - 1 : ENVIRON["LAST"]
            for (sample = 0; sample <= last; ++sample) {
                differs = sample == ENVIRON["FIRST"] + 0
                text = ""
                for (i = 1; i <= chosen; ++i) {
                    channel = channels[i]
                    if ((channel, sample) in flips) {
                        level[channel] = 1 - level[channel]
                        differs = 1
                    }
                    text = text ", " (level[channel] + 0)
                }
                if (differs && sample >= ENVIRON["FIRST"] + 0) {
                    printf "%.9f%s\n", (sample - trigger) / rate, text
                }
            }
        }'
}
