#!/usr/bin/python3
"""The peer of BM_ContourGrid: contourpy's serial algorithm over the very same grid.

The grid and levels are made exactly as bench_contour.cpp makes them: x = y = 4 i / (n - 1),
z = sin(3x) cos(3y) + 0.3 x y through the C library's sin and cos (math, not numpy's own
vectorised versions, so that every value is bit for bit the C++ one), and 20 automatic
intervals: interval = (zMax - zMin) / 20, levels zMin, zMin + interval, ... by repeated
addition, 21 of them. One run creates the generator, traces the lines at every level and
fills every band between consecutive levels. Prints the best of the runs, in the units
Google Benchmark uses.

Run with the system python (/usr/bin/python3), which has python3-contourpy
(scripts/install-deps.sh --bench).
"""

import math
import sys
import time

import contourpy
import numpy as np


def make_grid(n):
    axis = [4.0 * i / (n - 1) for i in range(n)]
    sin3 = [math.sin(3 * v) for v in axis]
    cos3 = [math.cos(3 * v) for v in axis]
    # contourpy takes z[j, i] at (x[i], y[j]); bench_contour.cpp stores it at z[i * n + j].
    z = np.empty((n, n))
    for j in range(n):
        yj = axis[j]
        cj = cos3[j]
        z[j, :] = [sin3[i] * cj + 0.3 * axis[i] * yj for i in range(n)]
    z_min = float(z.min())
    z_max = float(z.max())
    span = z_max - z_min
    interval = span / 20
    count = round(span / interval)  # half to even, as the C++ rounding
    levels = []
    value = z_min
    for _ in range(count + 1):
        levels.append(value)
        value += interval
    return np.array(axis), np.array(axis), z, levels


def run(x, y, z, levels):
    gen = contourpy.contour_generator(x, y, z, name="serial", line_type="Separate",
                                      fill_type="OuterCode")
    lines = [gen.lines(level) for level in levels]
    filled = [gen.filled(lo, hi) for lo, hi in zip(levels[:-1], levels[1:])]
    return lines, filled


def main():
    n = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    repetitions = int(sys.argv[2]) if len(sys.argv) > 2 else 7
    x, y, z, levels = make_grid(n)
    times = []
    for _ in range(repetitions):
        start = time.perf_counter()
        lines, filled = run(x, y, z, levels)
        times.append(time.perf_counter() - start)
    points = sum(len(p) for level in lines for p in level)  # LineType.Separate
    print(f"contourpy {contourpy.__version__} serial lines + filled, {n} x {n}, {len(levels)} levels: "
          f"best {min(times) * 1000:.1f} ms, median {sorted(times)[len(times) // 2] * 1000:.1f} ms "
          f"over {repetitions} runs ({points} line points)")


if __name__ == "__main__":
    main()
