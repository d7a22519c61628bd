#!/usr/bin/env bash
# Makes the images that are not read as SVG by the program (the window icon, the logo, `reset`) anew from their SVG
# sources in images/. The results are committed beside them, so a build needs none of these tools.
# Needs rsvg-convert (librsvg2-bin) and icotool (icoutils).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/images"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Below 32 pixels a simpler drawing on the 16 pixel grid stays sharp.
for size in 16 24; do
    rsvg-convert -w "$size" -h "$size" logo-small.svg -o "$work/logo-$size.png"
done
for size in 32 48 64 128 256; do
    rsvg-convert -w "$size" -h "$size" logo.svg -o "$work/logo-$size.png"
done
icotool --create --output=Logo.ico "$work"/logo-{16,24,32,48,64,128}.png --raw="$work/logo-256.png"
rsvg-convert -w 128 -h 128 logo.svg -o imgLogo.png
rsvg-convert -w 64 -h 64 reset.svg -o reset.png
