#!/usr/bin/env bash
# Rewrites the data tree's two bitmap fonts with the options they were made with. Builds
# nothing: give it a built vorra-fontgen and the fonts folder (workdir/fonts), e.g.
#   bash tools/fontgen/regenerate.sh build/bin/vorra-fontgen workdir/fonts
# The source fonts are Debian's fonts-dejavu-core (2.37); DEJAVU_DIR points elsewhere.
set -euo pipefail

if [ $# -ne 2 ]; then
  echo "usage: $0 VORRA-FONTGEN FONTS-FOLDER" >&2
  exit 2
fi
fontgen=$1
fonts=$2
dejavu=${DEJAVU_DIR:-/usr/share/fonts/truetype/dejavu}

# 32-pixel cells make a 512 x 512 texture; a 23-pixel em with 2 pixels of padding is the
# largest that keeps accented capitals and descenders inside every cell.
options=(--cell 32 --size 23 --padding 2)

# The GUI's default font: heavy and proportional.
"$fontgen" "${options[@]}" "$dejavu/DejaVuSans-Bold.ttf" "$fonts/arial_black"
# The console's and profiler's font: every character equally wide.
"$fontgen" "${options[@]}" "$dejavu/DejaVuSansMono-Bold.ttf" "$fonts/fixedsys"
