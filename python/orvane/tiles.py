"""A large grid made tile by tile, each tile from the points near it.

Every tile is gridded from the points within its extent widened by a halo. Where a node's
value depends only on points within the halo (inverse distance with a search radius no
larger than the halo, natural neighbour where the points are dense against the halo, or
local kriging whose neighbourhoods lie within it), the tiles meet without seams and the
whole equals the grid made at once. The tiles are independent: any map function can run
them (a process pool's map, or dask.array.map_blocks as in examples/tiled_grid.py).
"""

import math

import numpy as np


def tile_slices(count, size):
    """The index ranges (start, stop) of tiles of at most size nodes over count nodes."""
    return [(start, min(start + size, count)) for start in range(0, count, size)]


def grid_tile(x, y, z, xs, ys, halo, method="idw", **options):
    """The grid on the nodes xs by ys (one tile) from the points within halo of them:
    Z of shape (len(ys), len(xs))."""
    from . import grid

    near = (x >= xs[0] - halo) & (x <= xs[-1] + halo) & (y >= ys[0] - halo) & (y <= ys[-1] + halo)
    return grid(x[near], y[near], z[near], method, nodes=(xs, ys), **options)[2]


def grid_tiles(x, y, z, extent, spacing, tile=256, halo=None, method="idw", map=map, **options):
    """The grid over extent = (xmin, xmax, ymin, ymax) with nodes spacing apart (see
    orvane.grid_nodes), made in tiles of tile x tile nodes, each from the points within
    halo of it (default: the search radius for inverse distance, else ten times the
    spacing). map runs the tiles (the built-in map by default; a pool's map spreads
    them). Returns (xs, ys, Z) as orvane.grid does."""
    from . import grid_nodes

    x, y, z = (np.ascontiguousarray(v, dtype=float) for v in (x, y, z))
    xs, ys = grid_nodes(extent, spacing=spacing)
    if halo is None:
        step = spacing if np.isscalar(spacing) else max(spacing)
        halo = options.get("radius") or 10.0 * step
    if not (halo >= 0 and math.isfinite(halo)):
        raise ValueError("halo must be a finite distance of 0 or more")
    jobs = [(x, y, z, xs[i0:i1], ys[j0:j1], halo, method, options)
            for (j0, j1) in tile_slices(len(ys), tile) for (i0, i1) in tile_slices(len(xs), tile)]
    Z = np.empty((len(ys), len(xs)))
    pieces = list(map(_run, jobs))
    k = 0
    for (j0, j1) in tile_slices(len(ys), tile):
        for (i0, i1) in tile_slices(len(xs), tile):
            Z[j0:j1, i0:i1] = pieces[k]
            k += 1
    return xs, ys, Z


def _run(job):
    x, y, z, xs, ys, halo, method, options = job
    return grid_tile(x, y, z, xs, ys, halo, method, **options)
