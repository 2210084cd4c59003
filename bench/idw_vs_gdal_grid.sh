#!/usr/bin/env bash
# Local inverse distance, end to end: orvane grid against gdal_grid's invdistnn on the
# same 1,000,000 random points in a 1000 x 1000 square onto 201 x 201 nodes, the 32
# nearest points within 20, weights 1 / d^2 (orvane's --power 1: its power applies to
# the squared distance). Three interleaved rounds; the minima are printed.
#   bench/idw_vs_gdal_grid.sh BUILD_DIR
# Then checks orvane's grid against a brute-force sum on 300 random nodes.
set -euo pipefail
build=${1:?usage: bench/idw_vs_gdal_grid.sh BUILD_DIR}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
/usr/bin/python3 - "$work/pts.csv" <<'PY'
import random, sys
r = random.Random(7)
with open(sys.argv[1], "w") as f:
    f.write("x,y,z\n")
    for _ in range(1000000):
        x, y = r.uniform(0, 1000), r.uniform(0, 1000)
        f.write(f"{x:.4f},{y:.4f},{0.01 * x + 0.02 * y:.4f}\n")
PY
cat > "$work/pts.vrt" <<VRT
<OGRVRTDataSource><OGRVRTLayer name="pts"><SrcDataSource>$work/pts.csv</SrcDataSource>
<GeometryType>wkbPoint</GeometryType><GeometryField encoding="PointFromColumns" x="x" y="y" z="z"/></OGRVRTLayer></OGRVRTDataSource>
VRT
seconds() { local start end; start=$(date +%s.%N); "$@" > /dev/null 2>&1; end=$(date +%s.%N); echo "$end - $start" | bc; }
ours=() peer=()
for round in 1 2 3; do
  ours+=("$(seconds "$build/bin/orvane" grid "$work/pts.csv" --method idw --power 1 --max-points 32 --radius 20 \
    --intervals 200 --xmin 0 --xmax 1000 --ymin 0 --ymax 1000 -o "$work/o.tif")")
  peer+=("$(seconds gdal_grid -q -a invdistnn:power=2:max_points=32:radius=20 -txe -2.5 1002.5 -tye -2.5 1002.5 \
    -outsize 201 201 -l pts "$work/pts.vrt" "$work/g.tif")")
done
min() { printf '%s\n' "$@" | sort -g | head -1; }
echo "orvane grid: $(min "${ours[@]}") s   gdal_grid: $(min "${peer[@]}") s   (load: $(cut -d' ' -f1 /proc/loadavg))"
# The result against a brute-force reference on 300 random nodes: the 32 nearest points
# within 20 of each, weights 1 / d^2, from every point (numpy).
"$build/bin/orvane" grid "$work/pts.csv" --method idw --power 1 --max-points 32 --radius 20 \
  --intervals 200 --xmin 0 --xmax 1000 --ymin 0 --ymax 1000 -o "$work/o.csv" > /dev/null 2>&1
/usr/bin/python3 - "$work/pts.csv" "$work/o.csv" <<'PY'
import sys
import numpy as np
p = np.loadtxt(sys.argv[1], delimiter=",", skiprows=1)
g = np.genfromtxt(sys.argv[2], delimiter=",")
r = np.random.default_rng(7)
worst = 0.0
for k in r.choice(len(g), 300, replace=False):
    x, y, z = g[k]
    d2 = (p[:, 0] - x) ** 2 + (p[:, 1] - y) ** 2
    near = np.argsort(d2, kind="stable")[:32]
    near = near[d2[near] <= 400.0]
    if len(near) == 0:
        assert np.isnan(z), (x, y, z)
        continue
    w = 1.0 / d2[near]
    worst = max(worst, abs(np.sum(w * p[near, 2]) / np.sum(w) - z) / abs(z))
print(f"brute force on 300 nodes: largest relative difference {worst:.1e}")
assert worst < 1e-12
PY
