#!/usr/bin/env bash
# Writes the fuzz targets' seed corpora (tests/fuzz/corpus) from real files: the built-in
# sample, volcano (cut to a coarse lattice so each seed stays small), meuse, and the
# States the orvane command saves. Run with a release build:
#   scripts/fuzz-corpus.sh build/release
set -euo pipefail
cd "$(dirname "$0")/.."
bin=${1:?usage: scripts/fuzz-corpus.sh BUILD}/bin/orvane
data=../shared/data
out=tests/fuzz/corpus
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Volcano on every fourth node, as XYZ text.
awk '($1 / 10) % 4 == 1 && ($2 / 10) % 4 == 1' "$data/volcano.xyz" > "$work/volcano.xyz"

# The XYZ reader: real text in the forms it accepts.
x=$out/xyz_reader
cp "$work/volcano.xyz" "$x/volcano.xyz"
head -n 40 "$data/meuse.csv" > "$x/meuse-header.csv"
printf '\xef\xbb\xbf# x y z\r\n0 0 1\r\n1 0 2\r\n0 1 3\r\n1 1\r\n' > "$x/bom-crlf-short.xyz"
printf 'x;y;z\n1,5;2,5;3\n2,5;2,5;4,25\n1,5;3,5;\n' > "$x/decimal-comma.csv"
printf '1\t2\t3\n4\t5\tnan\n7\t8\t-inf\n1e308 -1e308 5e-324\n' > "$x/tabs-and-extremes.xyz"

# The grid readers: DSAA, ESRI ASCII and an XYZ lattice with a blank cell.
g=$out/grid_reader
printf 'DSAA\n6 4\n0 5\n0 3\n100 195\n100 113 126 139 152 165\n107 120 133 1.70141e38 159 172\n114 127 140 153 166 179\n121 134 147 160 173 195\n' > "$g/small.grd"
printf 'ncols 4\nnrows 3\nxllcorner 0\nyllcorner 0\ncellsize 10\nNODATA_value -9999\n1 2 3 4\n5 -9999 7 8\n9 10 11 12\n' > "$g/small.asc"
printf '0,0,1\n1,0,2\n2,0,3\n0,1,4\n1,1,\n2,1,6\n' > "$g/lattice-blank.xyz"
cp "$work/volcano.xyz" "$g/volcano.xyz"

# States: the sample's formatting, the sample with its data, volcano and meuse in 2-D.
s=$out/state
"$bin" state --sample --formatting-only -o "$s/sample-formatting.state"
"$bin" state --sample -o "$s/sample.state"
"$bin" state "$work/volcano.xyz" --plot-type 2d --colormap terrain -o "$s/volcano-2d.state"
"$bin" state "$data/meuse.csv" --z-field zinc --levels-log 6 -o "$s/meuse-log.state"
cp "$s"/*.state "$out/property_bag/"

# FormatNumber: a pattern, then the values' bits and their count (read from the end).
f=$out/format_number
i=0
for pattern in '0.00' '#,##0.00;(#,##0.00);"zero"' '0.###E+00' '\#0%' 'Currency' '#,,' '00000000000000000000.0000000000'; do
  for value in 2.675 -1234567.891 0 1e-300 nan; do
    python3 -c 'import struct, sys; sys.stdout.buffer.write(sys.argv[1].encode() + struct.pack("<d", float(sys.argv[2])) + bytes([0]))' \
      "$pattern" "$value" > "$f/seed-$i"
    i=$((i + 1))
  done
done

# Hostile data sets: the fuzzer's provider reads these as choices; a spread of sizes.
d=$out/data_set
for n in 64 256 1024 4096; do
  python3 -c 'import random, sys; random.seed(int(sys.argv[1])); sys.stdout.buffer.write(random.randbytes(int(sys.argv[1])))' "$n" > "$d/random-$n"
done
