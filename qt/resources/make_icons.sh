#!/usr/bin/env bash
# Renders icons/*.svg to the PNG files beside them, 48 x 48 pixels: twice what a tool bar shows.
set -euo pipefail
. "$(dirname "$0")/../../scripts/lib.sh"

install_missing librsvg2-bin
for drawing in "$root"/qt/resources/icons/*.svg; do
    rsvg-convert --width 48 --height 48 --output "${drawing%.svg}.png" "$drawing"
done
