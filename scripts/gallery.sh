#!/usr/bin/env bash
# Remakes docs/gallery: each picture drawn by orvane from data in ../shared/data or made
# here, and beside it the same data drawn by matplotlib (when python3-matplotlib is
# installed), made the same way: the peer draws the grids orvane resampled.
#
#   scripts/gallery.sh BUILD_DIR
set -euo pipefail

build=${1:?usage: scripts/gallery.sh BUILD_DIR}
root=$(cd "$(dirname "$0")/.." && pwd)
data=${ORVANE_SHARED_DATA:-$root/../shared/data}
out=$root/docs/gallery
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
orvane=$build/bin/orvane
mkdir -p "$out"
[ -f "$data/volcano.xyz" ] && [ -f "$data/meuse.csv" ] || { echo "gallery: no volcano.xyz and meuse.csv in $data" >&2; exit 1; }

# Data made here: scattered hills (topo) and a bump, both from fixed seeds.
/usr/bin/env python3 - "$work" <<'PY'
import math, random, sys
work = sys.argv[1]
r = random.Random(25)
hills = [(r.uniform(0, 10), r.uniform(0, 10), r.uniform(150, 600), r.uniform(0.8, 2.5)) for _ in range(7)]
with open(f"{work}/topo.xyz", "w") as f:
    for _ in range(600):
        x, y = r.uniform(0, 10), r.uniform(0, 10)
        z = 200 + 30 * math.sin(x) + sum(h * math.exp(-((x - a) ** 2 + (y - b) ** 2) / (2 * s * s)) for a, b, h, s in hills)
        f.write(f"{x:.4f} {y:.4f} {z:.3f}\n")
with open(f"{work}/bump.xyz", "w") as f:
    for _ in range(150):
        a, d = r.uniform(0, 2 * math.pi), math.sqrt(r.uniform(0, 1))
        x, y = d * math.cos(a), 0.6 * d * math.sin(a)
        f.write(f"{x:.4f} {y:.4f} {math.exp(-4 * (x * x + y * y)):.5f}\n")
PY

run() { echo "gallery: $1"; shift; "$@"; }
run sample.png "$orvane" render --sample -o "$out/sample.png"
run volcano_3d.png "$orvane" render "$data/volcano.xyz" --lighting --base --interval 10 --title "Maunga Whau, lit" \
  --xlabel "Easting (m)" --ylabel "Northing (m)" --zlabel "Height (m)" -o "$out/volcano_3d.png"
run volcano_map.png "$orvane" render "$data/volcano.xyz" --plot-type 2d --interval 10 --labels \
  --title "Maunga Whau" --xlabel "Easting (m)" --ylabel "Northing (m)" --zlabel "Height (m)" -o "$out/volcano_map.png"
kriging=(--resample kriging --intervals 100 --model spherical --nugget 20000 --sill 150000 --range 900)
run meuse_kriged.png "$orvane" render "$data/meuse.csv" --plot-type 2d "${kriging[@]}" --markers \
  --title "Zinc along the Meuse, kriged" --xlabel "x (m)" --ylabel "y (m)" --zlabel "Zinc (ppm)" -o "$out/meuse_kriged.png"
run zinc_log.png "$orvane" render "$data/meuse.csv" --plot-type 2d --resample nn --intervals 150 --levels-log 8 --markers \
  --title "Zinc, log-spaced levels" --xlabel "x (m)" --ylabel "y (m)" --zlabel "Zinc (ppm)" -o "$out/zinc_log.png"
run topo_nn.png "$orvane" render "$work/topo.xyz" --resample nn --intervals 120 --lighting --rotation 55,0,35 \
  --title "Hills from 600 points, natural neighbour" --zlabel "Elevation (m)" -o "$out/topo_nn.png"
run bump_mesh.png "$orvane" render "$work/bump.xyz" --mesh --markers --contours 8 --rotation 60,0,20 \
  --title "A bump: mesh, markers and hull" -o "$out/bump_mesh.png"
run two_surfaces.png "$build/bin/orvane_two_surfaces" "$out/two_surfaces.png"

# The peer's pictures, from the same data and the same grids.
if /usr/bin/python3 -c "import matplotlib" 2>/dev/null; then
  "$orvane" grid "$data/meuse.csv" --method kriging --intervals 100 --model spherical --nugget 20000 --sill 150000 \
    --range 900 -o "$work/meuse_kriged.csv"
  "$orvane" grid "$data/meuse.csv" --method nn --intervals 150 -o "$work/zinc_nn.csv"
  "$orvane" grid "$work/topo.xyz" --method nn --intervals 120 -o "$work/topo_nn.csv"
  /usr/bin/python3 "$root/scripts/gallery_peers.py" "$data" "$work" "$out"
else
  echo "gallery: matplotlib is not installed (scripts/install-deps.sh --bench): no peer pictures" >&2
fi
