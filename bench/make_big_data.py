#!/usr/bin/python3
"""Makes the large inputs the big-data benchmarks read; they are never committed.

    make_big_data.py grid N OUT       an N x N terrain-like grid: .grd (DSAA text), .xyz
                                      (x y z lines), .tif (GeoTIFF, Float32) by OUT's extension
    make_big_data.py points N OUT     N scattered points (x y z lines) over the same surface

The surface is a few broad hills and valleys with fine ripples and single-node spikes,
so that a thinned grid that loses peaks shows it. Same seed, same bytes.
"""
import sys

import numpy as np


def surface(x, y):
    """Heights in metres over the unit square."""
    z = 400.0 + 120.0 * np.sin(3.1 * x) * np.cos(2.3 * y)
    z += 60.0 * np.exp(-((x - 0.62) ** 2 + (y - 0.35) ** 2) / 0.004)
    z += 8.0 * np.sin(37.0 * x + 11.0 * y) * np.cos(29.0 * y)
    return z


def grid(n, out):
    rng = np.random.default_rng(7)
    t = np.linspace(0.0, 1.0, n)
    # Row by row: z[j, i] over x = t[i], y = t[j]; 10 km square, 1/(n-1) spacing.
    spikes = rng.integers(0, n, size=(max(8, n // 100), 2))
    span = 10000.0
    if out.endswith(".tif"):
        from osgeo import gdal
        gdal.UseExceptions()
        drv = gdal.GetDriverByName("GTiff")
        ds = drv.Create(out, n, n, 1, gdal.GDT_Float32, ["TILED=YES", "COMPRESS=NONE", "BIGTIFF=IF_SAFER"])
        step = span / (n - 1)
        # Cell centres on the nodes: the top-left corner half a cell outside.
        ds.SetGeoTransform([-step / 2, step, 0.0, span + step / 2, 0.0, -step])
        band = ds.GetRasterBand(1)
        band.SetNoDataValue(-9999.0)
        block = 512
        for j0 in range(0, n, block):
            rows = t[j0:j0 + block]
            z = surface(t[None, :], rows[:, None]).astype(np.float32)
            for (si, sj) in spikes:
                if j0 <= sj < j0 + block:
                    z[sj - j0, si] += 150.0
            # GeoTIFF rows run from the top (north) down.
            band.WriteArray(z[::-1, :], 0, n - j0 - z.shape[0])
        ds = None
        return
    with open(out, "w") as f:
        if out.endswith(".grd"):
            f.write(f"DSAA\n{n} {n}\n0 {span:g}\n0 {span:g}\n")
            zmin, zmax = 180.0, 800.0
            f.write(f"{zmin:g} {zmax:g}\n")
        block = max(1, 4_000_000 // n)
        xs = t * span
        for j0 in range(0, n, block):
            rows = t[j0:j0 + block]
            z = surface(t[None, :], rows[:, None])
            for (si, sj) in spikes:
                if j0 <= sj < j0 + block:
                    z[sj - j0, si] += 150.0
            if out.endswith(".grd"):
                np.savetxt(f, z, fmt="%.6f")
            else:
                yy = np.repeat(rows * span, n)
                xx = np.tile(xs, rows.size)
                np.savetxt(f, np.column_stack([xx, yy, z.ravel()]), fmt="%.3f %.3f %.6f")


def points(n, out):
    rng = np.random.default_rng(11)
    span = 10000.0
    with open(out, "w") as f:
        block = 2_000_000
        for k0 in range(0, n, block):
            m = min(block, n - k0)
            x, y = rng.random(m), rng.random(m)
            np.savetxt(f, np.column_stack([x * span, y * span, surface(x, y)]), fmt="%.3f %.3f %.4f")


if __name__ == "__main__":
    if len(sys.argv) != 4 or sys.argv[1] not in ("grid", "points"):
        sys.exit(__doc__)
    (grid if sys.argv[1] == "grid" else points)(int(sys.argv[2]), sys.argv[3])
