#!/usr/bin/env bash
# Makes the PNG icons of hicolor/ anew: of the program from its logo, of its files from the SVG sources here. The results
# are committed, so a build needs none of this. Needs rsvg-convert (librsvg2-bin).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
logo=../../src/res/images

# icon SOURCE-SMALL SOURCE FOLDER NAME
icon() {
    local size source
    for size in 16 24 32 48 64 128 256; do
        # Below 32 pixels a simpler drawing on the 16 pixel grid stays sharp.
        source=$2
        if ((size < 32)); then
            source=$1
        fi
        mkdir -p "hicolor/${size}x${size}/$3"
        rsvg-convert -w "$size" -h "$size" "$source" -o "hicolor/${size}x${size}/$3/$4.png"
    done
}

icon "$logo/logo-small.svg" "$logo/logo.svg" apps corvanlux
for kind in data settings; do
    icon "$kind-small.svg" "application-x-corvanlux-$kind.svg" mimetypes "application-x-corvanlux-$kind"
done
