"""Grids a large domain tile by tile with dask (or, without it, a process pool).

Each tile of the output grid is gridded from the points within a halo of it, so the
tiles are independent and meet without seams: the result equals orvane.grid over the
whole domain. Run as

    python3 python/examples/tiled_grid.py [POINTS] [SPACING]

(PYTHONPATH=build/release/python from the build tree).
"""

import sys
import time
from concurrent.futures import ProcessPoolExecutor

import numpy as np

import orvane


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 200_000
    spacing = float(sys.argv[2]) if len(sys.argv) > 2 else 0.5
    r = np.random.default_rng(1)
    x, y = r.uniform(0, 1000, count), r.uniform(0, 1000, count)
    z = np.sin(x / 50) * 100 + np.cos(y / 70) * 50
    extent = (0.0, 1000.0, 0.0, 1000.0)
    options = dict(method="idw", max_points=32, radius=20.0)
    xs, ys = orvane.grid_nodes(extent, spacing=spacing)
    tile = 500
    start = time.perf_counter()
    try:
        import dask.array as da

        # The output's chunks are the tiles; each block grids its own nodes.
        nodes = da.zeros((len(ys), len(xs)), chunks=(tile, tile))

        def block(b, block_info=None):
            (j0, j1), (i0, i1) = block_info[0]["array-location"]
            return orvane.tiles.grid_tile(x, y, z, xs[i0:i1], ys[j0:j1], options["radius"], **options)

        Z = nodes.map_blocks(block, dtype=float).compute()
        how = "dask"
    except ImportError:
        with ProcessPoolExecutor() as pool:
            _, _, Z = orvane.grid_tiles(x, y, z, extent, spacing, tile=tile, map=pool.map, **options)
        how = "a process pool"
    print(f"{Z.shape[1]} x {Z.shape[0]} nodes from {count} points in tiles of {tile}, with {how}: "
          f"{time.perf_counter() - start:.2f} s; {np.isnan(Z).sum()} blank")


if __name__ == "__main__":
    main()
