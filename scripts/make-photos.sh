#!/usr/bin/env bash
# Makes eight sample photos in a folder: six landscapes (a sky gradient over
# a textured ground, a sun) of 1600x1200, one portrait of 1200x1600, and a
# phone photo of a tree, 1200x1600 as shown but stored on its side
# (1600x1200) with EXIF orientation 6, as phones held upright store them.
# Usage: scripts/make-photos.sh FOLDER
# Needs ImageMagick and exiftool (scripts/install-deps.sh).
set -euo pipefail
photos="${1:?usage: make-photos.sh FOLDER}"
mkdir -p "$photos"
skies=('#3d7bd1-#dcefff' '#e8874a-#ffe2b0' '#5b8fd6-#f0f6ff' '#2a4d8f-#9cc3f0' '#c96a8a-#ffd9c0' '#4f9ad8-#e6f4ff')
grounds=('#2f6a22,#a4c46a' '#6a4a22,#d8b47a' '#1f5b4a,#8fc4a8' '#4d6a1e,#c8d890' '#5b3a2a,#c89a70' '#1f4f7a,#7fb0d0')
i=0
for number in 4711 4712 4715 4723 4730 4731; do
    convert -size 1600x720 "gradient:${skies[$i]}" \
        \( -size 1600x480 -seed "$number" plasma:fractal -colorspace Gray -blur 0x1.5 \
           -auto-level -colorspace sRGB +level-colors "${grounds[$i]}" \) -append \
        -fill '#ffe27a' -draw "circle $((300 + i * 200)),$((180 + i * 20)) $((300 + i * 200)),$((240 + i * 20))" \
        -quality 90 "$photos/IMG_${number}.jpg"
    i=$((i + 1))
done
convert -size 1200x1600 gradient:'#1d3b6e-#f3c98b' -fill '#fff3c4' \
    -draw 'circle 600,900 600,990' -quality 90 "$photos/IMG_4740.jpg"
# Drawn upright, then turned a quarter to the left as the camera stores it;
# orientation 6 says to turn it a quarter to the right to show it.
convert -size 1200x1600 gradient:'#6fa8e0-#e8f2fb' \
    -fill '#3d6b2a' -draw 'rectangle 0,1300 1199,1599' \
    -fill '#5a3a1a' -draw 'rectangle 560,820 640,1320' \
    -fill '#2f7a2f' -draw 'circle 600,700 600,960' \
    -rotate -90 -quality 90 "$photos/IMG_4750.jpg"
exiftool -q -overwrite_original -n -JFIF:all= -Orientation=6 -Make=Telefon "$photos/IMG_4750.jpg"
