#!/bin/sh
# Draws the pictures of art/ anew and renders them at 1x and 2x.
# Needs python3, rsvg-convert and optipng.
set -eu
cd "$(dirname "$0")"

python3 -B art/make_art.py

count=0
for source in art/*/*.svg; do
    picture=${source#art/}
    picture=${picture%.svg}
    mkdir -p "${picture%/*}"
    rsvg-convert --zoom 1 --output "$picture.png" "$source"
    rsvg-convert --zoom 2 --output "$picture@2x.png" "$source"
    optipng -quiet -o2 -strip all "$picture.png" "$picture@2x.png"
    count=$((count + 1))
done
echo "Rendered $count pictures at 1x and 2x, $(du -ch */*.png | tail -n 1 | cut -f 1) in all"
