#!/usr/bin/env bash
# Plays animations with zv and holds every picture, and every frame's place and delay, to what ImageMagick says of the
# same file. Players differ in what they show where a frame was disposed to the background: here it is one colour for
# both, which zv is given and which is laid under the other player's transparent pixels.
#   coalesce_test.sh DIRECTORY ZV...    ZV is the command that runs zv; the pictures are left in DIRECTORY
set -euo pipefail
directory=$1
shift
zv=("$@")
background=0a141e

command -v convert compare identify >/dev/null || { echo "ImageMagick is missing: apt-get install imagemagick"; exit 1; }
rm -rf "$directory"
mkdir -p "$directory"
cd "$directory"

# --- The animations. A frame: its size and place, then what draws it.
declare -A films
add() { films[$1]=1; convert "${@:2}" "$1.gif"; }
frame() { # disposal delay page what-draws...
  frames+=(-dispose "$1" -delay "$2" -page "$3" \( "${@:4}" \))
}

# A transparent disc on every disposal, over a picture of many colours; palettes differ from frame to frame.
frames=()
frame none 10 64x48+0+0 -size 64x48 -seed 5 plasma:fractal -colors 256
for disposal in none previous background undefined background previous; do
  frame "$disposal" 7 64x48+$((${#frames[@]} / 2))+5 -size 21x30 xc:none -fill "hsl($((${#frames[@]} * 9)),255,128)" \
    -draw 'circle 10,15 10,3' -fill black -draw 'rectangle 3,12 8,29'
done
add disposals "${frames[@]}" -loop 0
add comments "${frames[@]}" -set comment "a block before every frame"

# The first frame does not cover the picture, and is taken away again; a later one reaches over the edges. What a first
# frame leaves free is transparent to the other player only if the frame has a transparent colour itself.
frames=()
frame previous 0 50x30+20+10 -size 10x10 xc:none -fill red -draw 'rectangle 1,0 9,9'
frame background 3 50x30+15+5 -size 20x20 xc:none -fill white -draw 'circle 9,9 9,2'
frame none 12 50x30+40+20 -size 30x30 -seed 8 plasma:fractal -colors 16
frame previous 12 50x30+0+0 -size 50x30 xc:blue
frame none 12 50x30+3+3 -size 5x5 xc:yellow
add edges "${frames[@]}"

# Two colours a frame, and an odd size.
frames=()
for color in red lime blue white; do
  frame background 100 33x17+0+0 -size 33x17 pattern:crosshatch45 -fill "$color" -opaque black
done
add two-colours "${frames[@]}"

add still -size 40x40 -seed 2 plasma:fractal -colors 60
add interlaced -delay 5 -size 40x37 -seed 3 plasma:fractal -seed 4 plasma:fractal -interlace GIF
add one-palette -delay 5 -size 40x37 -seed 3 plasma:fractal -seed 4 plasma:fractal +map

# A moving square, each frame cut down to what changes.
frames=()
for x in 0 7 14 21 28 35; do
  frame none 4 0x0+0+0 -size 60x20 gradient:navy-orange -fill white -draw "rectangle $x,5 $((x + 9)),14"
done
add optimised "${frames[@]}" -layers OptimizePlus -layers OptimizeTransparency

# Anything at all.
RANDOM=17
disposals=(none previous background undefined)
for film in 1 2 3; do
  frames=()
  for ((i = 0; i < 12; i++)); do
    width=$((1 + RANDOM % 50)) height=$((1 + RANDOM % 40))
    frame "${disposals[RANDOM % 4]}" $((RANDOM % 300)) 60x45+$((RANDOM % 60))+$((RANDOM % 45)) \
      -size ${width}x$height -seed $RANDOM plasma:fractal -colors $((2 + RANDOM % 100)) -alpha set -channel A \
      -evaluate set $((RANDOM % 2 * 100))% +channel -fill "hsl($((RANDOM % 256)),200,100)" \
      -draw "rectangle $((width / 4)),$((height / 4)) $((width / 2)),$height"
  done
  add "random-$film" "${frames[@]}"
done

# --- The comparison
differences=0
complain() {
  echo "$*"
  differences=$((differences + 1))
}

for film in "${!films[@]}"; do
  convert "$film.gif" -coalesce -background "#$background" -alpha remove -alpha off +adjoin "PNG24:$film-wanted-%03d.png"
  "${zv[@]}" play "$film.gif" "$film-shown" --no-delay --background "$background" | tr -d '\r' >"$film.txt"
  identify -format '%T %wx%h %X %Y\n' "$film.gif" | sed 's/x/ x /; s/+//g' |
    awk '{ print $1 * 10 " ms  " $2 " " $3 " " $4 " at " $5 ", " $6 }' >"$film-wanted.txt"
  sed 's/^[^ ]*  \([^,]*, [^,]*\),.*/\1/' "$film.txt" | diff "$film-wanted.txt" - >"$film.diff" ||
    complain "$film.gif: place or delay differs (< ImageMagick, > zv): $(cat "$film.diff")"
  wanted=("$film"-wanted-*.png)
  shown=("$film"-shown-*.png)
  [ ${#wanted[@]} = ${#shown[@]} ] || complain "$film.gif: ${#shown[@]} pictures shown, not ${#wanted[@]}"
  convert "${wanted[@]}" -depth 8 "rgb:$film-wanted.rgb"
  convert "${shown[@]}" -depth 8 "rgb:$film-shown.rgb"
  if ! cmp -s "$film-wanted.rgb" "$film-shown.rgb"; then
    complain "$film.gif: the pictures differ, see $PWD/$film-difference-*.png"
    for picture in "${wanted[@]}"; do
      number=${picture##*-}
      pixels=$(compare -metric AE "$picture" "$film-shown-$number" "$film-difference-$number" 2>&1) ||
        echo "  picture ${number%.png}: $pixels pixels"
    done
  fi
  echo "$film.gif: ${#wanted[@]} pictures compared"
done
[ ${#films[@]} = 11 ] || complain "${#films[@]} animations made, not 11"
exit $((differences != 0))
