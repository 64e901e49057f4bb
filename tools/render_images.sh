#!/usr/bin/env bash
# Renders the application's pictures from their drawings in resources/images/src. The results are
# committed beside the drawings, so that a build needs no renderer; run this after a change of one.
# Needs rsvg-convert (librsvg2-bin) and icotool (icoutils).
set -euo pipefail
cd "$(dirname "$0")/../resources/images"

# A drawing at its own size and, for dense screens, at twice that size.
render() { # drawing, picture
    local extension=${2##*.}
    rsvg-convert "src/$1" -o "$2"
    rsvg-convert --zoom 2 "src/$1" -o "${2%.*}@2x.$extension"
}

for picture in LEDoff LEDon redLEDon download upload tolk_logo icon_linux velantor; do
    render "$picture.svg" "$picture.png"
done
for lamp in greenlight nolight; do
    render "$lamp.svg" "$lamp.PNG"
done

# The smallest size has a drawing of its own, laid on the pixels.
sizes=$(mktemp -d)
trap 'rm -rf "$sizes"' EXIT
rsvg-convert src/new_file_16.svg -o "$sizes/16.png"
for size in 32 48; do
    rsvg-convert --width $size --height $size src/new_file.svg -o "$sizes/$size.png"
done
icotool --create --output new_file.ico "$sizes/16.png" "$sizes/32.png" "$sizes/48.png"

# A desktop shows the program's icon smaller than it is drawn, where a sharp picture counts.
for size in 16 24 32 48 64; do
    rsvg-convert --width $size --height $size src/icon_linux.svg \
        -o "../../packaging/icons/$size.png"
done
