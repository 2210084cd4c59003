#!/usr/bin/env bash
# Big data, end to end: wall time and peak memory of whole `orvane` runs.
#   bench/big_data.sh BUILD_DIR [ROUNDS] [--large]
# Default: `orvane render` of a 1000 x 1000 DSAA grid (3-D surface, 20 contour intervals,
# 800 x 600) against the same picture drawn with VTK (bench/vtk_render.py, Debian's
# python3-vtk9 from scripts/install-deps.sh --bench), ROUNDS interleaved rounds
# (default 3); prints the minimum wall time and the largest peak memory of each, and
# the ratio orvane / vtk.
# --large also makes a 10000 x 10000 grid (GeoTIFF and DSAA) and 10,000,000 scattered
# points (about 3 GB on disk, several minutes to make) and times, once each:
# `orvane render` of the GeoTIFF and of the DSAA grid, `orvane render` of the points as a
# 2-D contour map, and `orvane grid --method nn` of the points onto 1000 x 1000 nodes.
# The inputs are made once by bench/make_big_data.py and kept in $ORVANE_BIG_DIR
# (default /tmp/orvane-big), never in the repository; the pictures are written there too.
# ORVANE_BIG_N and ORVANE_BIG_POINTS change the --large sizes (for a quick try).
# Each run is measured by GNU time (`%e %M`: wall seconds, peak resident KB); for VTK it
# runs inside xvfb-run, so the X server's start is not counted.
set -euo pipefail

usage="usage: bench/big_data.sh BUILD_DIR [ROUNDS] [--large]"
large=0
args=()
for a in "$@"; do
  case "$a" in
    --large) large=1 ;;
    -h|--help) echo "$usage"; exit 0 ;;
    *) args+=("$a") ;;
  esac
done
build=${args[0]:?$usage}
rounds=${args[1]:-3}
[[ "$rounds" =~ ^[1-9][0-9]*$ ]] || { echo "big_data: ROUNDS must be a positive integer, not '$rounds'" >&2; exit 2; }
orvane="$build/bin/orvane"
[[ -x "$orvane" ]] || { echo "big_data: $orvane not found; build first (make release)" >&2; exit 2; }
here=$(cd "$(dirname "$0")" && pwd)
for tool in /usr/bin/time xvfb-run; do
  command -v "$tool" > /dev/null || { echo "big_data: $tool is missing (scripts/install-deps.sh)" >&2; exit 2; }
done
dir=${ORVANE_BIG_DIR:-/tmp/orvane-big}
mkdir -p "$dir"
log=$(mktemp -d)
trap 'rm -rf "$log"' EXIT

# prepare KIND N FILE: bench/make_big_data.py once; a file left half made is not kept.
prepare() {
  if [[ -s "$3" ]]; then
    echo "using $3 ($(du -h "$3" | cut -f1))"
  else
    echo "making $3 ..."
    local part="${3%.*}.part.${3##*.}"  # the extension picks the format
    /usr/bin/python3 "$here/make_big_data.py" "$1" "$2" "$part"
    mv "$part" "$3"
    echo "made $3 ($(du -h "$3" | cut -f1))"
  fi
}

# measure NAME COMMAND...: runs it under GNU time, prints the wall seconds, the peak
# memory and the command's own timings line, and appends "wall kb" to $log/NAME.
# (For VTK the command is `xvfb-run -a /usr/bin/time ...`: time goes inside.)
measure() {
  local name=$1
  shift
  if ! "$@" > "$log/out" 2>&1; then
    cat "$log/out" >&2
    echo "big_data: $name failed" >&2
    exit 1
  fi
  local wall kb
  read -r wall kb < "$log/time"
  echo "$wall $kb" >> "$log/$name"
  printf '  %-14s %7.2f s %8.0f MB   %s\n' "$name" "$wall" "$((kb / 1024))" \
    "$(grep -h '^timings:' "$log/out" | tail -1 || true)"
}
timed() { /usr/bin/time -f '%e %M' -o "$log/time" "$@"; }

# summary NAME: minimum wall seconds and largest peak MB over its rounds.
summary() { sort -g "$log/$1" | awk 'NR == 1 { w = $1 } $2 > m { m = $2 } END { printf "%.2f %.0f", w, m / 1024 }'; }

echo "orvane: $orvane"
echo "data:   $dir"
echo "load:   $(cut -d' ' -f1-3 /proc/loadavg), $(nproc) cores"

grid="$dir/grid1000.grd"
prepare grid 1000 "$grid"
echo
echo "1000 x 1000 DSAA grid, 3-D, 20 contour intervals, 800 x 600; $rounds interleaved rounds"
echo "  orvane: $orvane render $grid --contours 20 --size 800x600 -o $dir/orvane-1000.png --timings"
echo "  vtk:    xvfb-run -a /usr/bin/python3 bench/vtk_render.py $grid $dir/vtk-1000.png --levels 20 --size 800x600"
for ((r = 1; r <= rounds; r++)); do
  echo "round $r"
  measure orvane timed "$orvane" render "$grid" --contours 20 --size 800x600 -o "$dir/orvane-1000.png" --timings
  measure vtk xvfb-run -a /usr/bin/time -f '%e %M' -o "$log/time" /usr/bin/python3 "$here/vtk_render.py" \
    "$grid" "$dir/vtk-1000.png" --levels 20 --size 800x600
done
read -r ow om <<< "$(summary orvane)"
read -r vw vm <<< "$(summary vtk)"
echo
printf '%-8s %10s %10s\n' "" "wall (min)" "peak"
printf '%-8s %8.2f s %7s MB\n' orvane "$ow" "$om" vtk "$vw" "$vm"
awk -v ow="$ow" -v vw="$vw" -v om="$om" -v vm="$vm" 'BEGIN { printf "%-8s %10.2f %10.2f\n", "ratio", ow / vw, om / vm }'
echo "pictures: $dir/orvane-1000.png $dir/vtk-1000.png"

((large)) || exit 0

n=${ORVANE_BIG_N:-10000}
count=${ORVANE_BIG_POINTS:-10000000}
echo
echo "large inputs ($n x $n grid, $count points); once each"
prepare grid "$n" "$dir/grid$n.tif"
prepare grid "$n" "$dir/grid$n.grd"
prepare points "$count" "$dir/points$count.xyz"
echo "load:   $(cut -d' ' -f1-3 /proc/loadavg)"
echo "  $orvane render $dir/grid$n.tif --contours 20 --size 800x600 -o $dir/orvane-$n-tif.png --timings"
measure render-tif timed "$orvane" render "$dir/grid$n.tif" --contours 20 --size 800x600 \
  -o "$dir/orvane-$n-tif.png" --timings
echo "  $orvane render $dir/grid$n.grd --contours 20 --size 800x600 -o $dir/orvane-$n-grd.png --timings"
measure render-grd timed "$orvane" render "$dir/grid$n.grd" --contours 20 --size 800x600 \
  -o "$dir/orvane-$n-grd.png" --timings
echo "  $orvane render $dir/points$count.xyz --plot-type 2d --contours 20 --size 800x600 -o $dir/orvane-points.png --timings"
measure render-points timed "$orvane" render "$dir/points$count.xyz" --plot-type 2d --contours 20 \
  --size 800x600 -o "$dir/orvane-points.png" --timings
# --intervals counts the spaces between nodes: 999 of them make 1000 x 1000 nodes.
echo "  $orvane grid $dir/points$count.xyz --method nn --intervals 999 --xmin 0 --xmax 10000 --ymin 0 --ymax 10000 -o $dir/points-nn.tif"
measure grid-nn timed "$orvane" grid "$dir/points$count.xyz" --method nn --intervals 999 \
  --xmin 0 --xmax 10000 --ymin 0 --ymax 10000 -o "$dir/points-nn.tif"
echo "pictures: $dir/orvane-$n-tif.png $dir/orvane-$n-grd.png $dir/orvane-points.png; grid: $dir/points-nn.tif"
