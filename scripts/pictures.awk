# The capture that the pictures of the guide show: an SPI transfer of three bytes, an I2C transfer of three, a serial
# line, a PWM signal, an interrupt. Prints a line for each channel: its level at the beginning, then the samples at
# which it changes, then the number of samples.
#
# Variables: rate (Hz), samples, trigger (sample).

# set(CHANNEL, SECONDS, LEVEL): from that time on, counted from the trigger. Times of a channel only grow.
function set(channel, seconds, level,    sample) {
    sample = int(trigger + seconds * rate + 0.5)
    if (!(channel in now)) {
        now[channel] = level
        first[channel] = level
    } else if (now[channel] != level) {
        now[channel] = level
        edges[channel] = edges[channel] " " sample
    }
}

# Clock 0, data out 1, data in 2, select 3: mode 0, the highest bit first.
function spi(seconds, period, outs, ins, count,    byte, bit, mask) {
    set(3, seconds, 0)
    seconds += period
    for (byte = 1; byte <= count; ++byte) {
        for (bit = 7; bit >= 0; --bit) {
            mask = 2 ^ bit
            set(1, seconds, int(outs[byte] / mask) % 2)
            set(2, seconds, int(ins[byte] / mask) % 2)
            set(0, seconds + period / 2, 1)
            set(0, seconds + period, 0)
            seconds += period
        }
        seconds += period
    }
    set(1, seconds, 0)
    set(2, seconds, 0)
    set(3, seconds, 1)
}

# Clock 4, data 5: start, bytes with their acknowledgement, stop.
function i2c(seconds, period, bytes, count,    byte, bit) {
    set(5, seconds, 0)
    set(4, seconds + period / 2, 0)
    seconds += period / 2
    for (byte = 1; byte <= count; ++byte) {
        for (bit = 7; bit >= -1; --bit) {
            set(5, seconds + period / 4, bit < 0 ? 0 : int(bytes[byte] / 2 ^ bit) % 2)
            set(4, seconds + period / 2, 1)
            set(4, seconds + period, 0)
            seconds += period
        }
        seconds += period / 2
    }
    set(5, seconds, 0)
    set(4, seconds + period / 2, 1)
    set(5, seconds + period, 1)
}

# Line 6: 8N1, the lowest bit first.
function uart(seconds, baud, bytes, count,    byte, bit) {
    for (byte = 1; byte <= count; ++byte) {
        set(6, seconds, 0)
        for (bit = 0; bit < 8; ++bit) {
            set(6, seconds + (bit + 1) / baud, int(bytes[byte] / 2 ^ bit) % 2)
        }
        set(6, seconds + 9 / baud, 1)
        seconds += 10 / baud
    }
}

BEGIN {
    begin = -trigger / rate
    split("0 0 0 1 1 1 1 0 1 1", levels, " ")
    for (channel = 0; channel < 10; ++channel) {
        set(channel, begin, levels[channel + 1])
    }
    split("159 0 0", outs, " ")
    split("0 194 23", ins, " ")
    spi(0, 8e-6, outs, ins, 3)
    split("160 1 90", bytes, " ")
    i2c(300e-6, 20e-6, bytes, 3)
    split("67 111 114 118 97 110", bytes, " ")
    uart(-30e-6, 115200, bytes, 6)
    for (i = 0; i * 40e-6 < samples / rate; ++i) {
        set(7, begin + i * 40e-6, 1)
        set(7, begin + i * 40e-6 + 12e-6, 0)
    }
    set(8, -20e-6, 0)
    set(8, 240e-6, 1)
    set(9, -45e-6, 0)
    set(9, -35e-6, 1)
    for (channel = 0; channel < 10; ++channel) {
        print first[channel] edges[channel] " " samples
    }
}
