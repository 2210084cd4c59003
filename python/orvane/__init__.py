"""Orvane: gridding, contouring and plotting of Z = f(X, Y) on numpy arrays.

The functions take numpy arrays (or anything numpy turns into one) in data units and
release the GIL while they work. Errors of the library come as :class:`orvane.Error`,
a ``ValueError`` that carries the error's ``number``, ``source`` and ``description``.

    >>> import orvane
    >>> xs, ys, Z = orvane.grid(x, y, z, method="kriging", nx=200, ny=150)
    >>> lines = orvane.contour_lines(xs, ys, Z, levels=[100, 200, 400])
    >>> s = orvane.Surface(); s.data_sets[0].set_grid(xs, ys, Z); s.to_png("map.png")
"""

import math as _math

import numpy as _np

from ._orvane import (  # noqa: F401
    Axes,
    Axis,
    Contouring,
    DataSet,
    DataSets,
    Error,
    Legend,
    Surface,
    View,
    set_threads,
)
from . import _orvane
from .tiles import grid_tiles  # noqa: E402,F401

__all__ = [
    "Error", "Surface", "triangulate", "grid", "grid_nodes", "contour_lines", "contour_bands",
    "variogram", "fit_variogram", "cross_validate", "set_threads", "grid_tiles",
]


def _error(text, number=5):
    """An orvane.Error raised on the Python side (source "orvane")."""
    error = Error(text)
    error.number, error.source, error.description = number, "orvane", text
    return error


def triangulate(x, y):
    """The Delaunay triangles of the points (x, y): an (n, 3) int32 array of point numbers,
    each triangle counter-clockwise. Exact duplicates count once (the first of them)."""
    return _orvane._triangulate(x, y)


def grid_nodes(extent, nx=None, ny=None, spacing=None):
    """The node coordinates (xs, ys) of a grid over extent = (xmin, xmax, ymin, ymax):
    nx by ny nodes from edge to edge, or nodes spacing = d or (dx, dy) apart from
    (xmin, ymin) as far as the extent reaches (node k at xmin + k * dx)."""
    x0, x1, y0, y1 = (float(v) for v in extent)
    if not all(_math.isfinite(v) for v in (x0, x1, y0, y1)) or not (x0 <= x1 and y0 <= y1):
        raise _error("extent must be finite (xmin, xmax, ymin, ymax) with xmin <= xmax and ymin <= ymax")
    if spacing is not None:
        dx, dy = (spacing, spacing) if _np.isscalar(spacing) else spacing
        dx, dy = float(dx), float(dy)
        if not (dx > 0 and dy > 0 and _math.isfinite(dx) and _math.isfinite(dy)):
            raise _error("spacing must be finite and above 0")
        count_x = int(_math.floor((x1 - x0) / dx * (1 + 1e-12))) + 1
        count_y = int(_math.floor((y1 - y0) / dy * (1 + 1e-12))) + 1
        return x0 + dx * _np.arange(count_x), y0 + dy * _np.arange(count_y)
    nx = 101 if nx is None else int(nx)
    ny = nx if ny is None else int(ny)
    if nx < 1 or ny < 1:
        raise _error("nx and ny must be 1 or more")
    xs = _np.array([x0]) if nx == 1 else _np.linspace(x0, x1, nx)
    ys = _np.array([y0]) if ny == 1 else _np.linspace(y0, y1, ny)
    return xs, ys


def _points(x, y, z):
    arrays = tuple(_np.asarray(v) for v in (x, y, z))
    for name, a in zip("xyz", arrays):
        if a.dtype.kind not in "iuf":
            raise _error("%s must hold real numbers, not %s" % (name, a.dtype), 13)
    return arrays


def _settings(method, options):
    known = {
        "idw": {"power", "max_points", "radius"},
        "kriging": {"model", "nugget", "sill", "range", "block"},
        "nn": {"gradients", "tautness", "extrapolate", "rescale"},
    }
    if method not in known:
        raise _error('method must be "idw", "kriging" or "nn", not %r' % (method,))
    for name in options:
        owner = [m for m, names in known.items() if name in names]
        if not owner:
            raise TypeError("unknown option %r" % (name,))
        if owner[0] != method:
            raise _error("%s applies to method=%r only" % (name, owner[0]))
    settings = dict(options)
    settings["method"] = method
    return settings


def grid(x, y, z, method="idw", nx=None, ny=None, extent=None, spacing=None, *, nodes=None, blank_outside_hull=None,
         variance=False, progress=None, **options):
    """Resamples scattered points (x, y, z) onto a regular grid.

    method: "idw" (inverse distance; options power=2, max_points=0 for all, radius=0 for
    none), "kriging" (ordinary kriging; model="linear"|"spherical"|"exponential"|"gaussian",
    nugget, sill, range, block=True: whatever is not given is fitted to the points'
    variogram) or "nn" (natural neighbour; gradients=False, tautness=1, extrapolate=False,
    rescale=False: triangulated in data units, or with rescale=True in the unit square of
    the points' limits as the control does).

    The nodes: extent=(xmin, xmax, ymin, ymax) (default: the points' limits) with nx by
    ny nodes (default 101 each way), or spacing=d or (dx, dy) (see grid_nodes), or the
    node coordinates themselves, nodes=(xs, ys), each ascending.
    blank_outside_hull leaves the nodes outside the points' convex hull NaN (default: for
    nn unless extrapolate). progress(done, total) is called as the work goes on (from any
    thread); returning False stops it with orvane.Error 18.

    Returns (xs, ys, Z) with Z of shape (ny, nx), Z[j, i] at (xs[i], ys[j]), NaN where
    blank; with variance=True (kriging) also the estimation variance V of the same shape.
    """
    x, y, z = _points(x, y, z)
    settings = _settings(method, options)
    if nodes is not None:
        xs, ys = (_np.ascontiguousarray(v, dtype=float) for v in nodes)
    else:
        if extent is None:
            if x.size == 0:
                raise _error("there are no points to grid")
            extent = (_np.min(x), _np.max(x), _np.min(y), _np.max(y))
        xs, ys = grid_nodes(extent, nx, ny, spacing)
    if blank_outside_hull is None:
        blank_outside_hull = method == "nn" and not options.get("extrapolate", False)
    settings["blank_outside_hull"] = bool(blank_outside_hull)
    if variance and method != "kriging":
        raise _error("variance=True applies to method='kriging' only")
    out = _orvane._grid(x, y, z, xs, ys, settings, bool(variance), progress)
    return (xs, ys) + tuple(out)


def _levels(z, levels):
    if _np.isscalar(levels):
        count = int(levels)
        if count < 1:
            raise _error("levels must be a count of 1 or more, or a list of levels")
        values = _np.asarray(z, dtype=float)
        low, high = _np.nanmin(values), _np.nanmax(values)
        return low + (high - low) * _np.arange(1, count + 1) / (count + 1)
    return _np.asarray(levels, dtype=float)


def contour_lines(x, y, z, levels=10, *, ties_above=True):
    """The contour lines of a grid (x of nx, y of ny, z of shape (ny, nx), NaN for holes)
    or of scattered points (x, y, z of one length): for each level, a list of (n, 2)
    arrays of vertices. levels: ascending values, or a count of levels evenly inside the
    data's range. With ties_above a height equal to a level counts as above it."""
    return _orvane._contour_lines(x, y, z, _levels(z, levels), bool(ties_above))


def contour_bands(x, y, z, levels=10, *, ties_above=True):
    """The filled bands between the levels (len(levels) + 1 of them, the first below the
    first level): for each band a list of polygons, each a list of rings as (n, 2)
    arrays, the outer ring first (counter-clockwise), then its holes. shapely takes
    ``Polygon(rings[0], rings[1:])``; matplotlib a Path of the rings."""
    return _orvane._contour_bands(x, y, z, _levels(z, levels), bool(ties_above))


def variogram(x, y, z, *, cutoff=0.0, bins=15, direction=None, tolerance=22.5):
    """The experimental semi-variogram as gstat's variogram() makes it: a dict of arrays
    distance (mean of each class's pairs), gamma (semivariance) and pairs, over bins
    classes up to cutoff (0: a third of the points' diagonal); with direction (degrees
    clockwise from +Y) only pairs within tolerance degrees of it."""
    return _orvane._variogram(x, y, z, float(cutoff), int(bins),
                              None if direction is None else float(direction), float(tolerance))


def fit_variogram(bins, model=None):
    """Fits models to a variogram (the dict variogram() gives) by weighted least squares
    (weights pairs / distance^2, as gstat's fit.variogram): a list of dicts with model,
    nugget, psill (partial sill), range and sse, the best first; with model, its fit
    alone. Ranges are the kriging engine's (an exponential's is 3 times gstat's a)."""
    return _orvane._fit_variogram(bins, model)


def cross_validate(x, y, z, method="idw", *, blank_outside_hull=None, progress=None, **options):
    """Leave-one-out cross-validation: each point estimated from the others with the
    method and its options (as for grid). A dict with points (counted), skipped (no
    estimate), me, rmse, mae, medae, predicted (per point, NaN when skipped) and, for
    kriging, msdr and variance (per point)."""
    x, y, z = _points(x, y, z)
    settings = _settings(method, options)
    if blank_outside_hull is None:
        blank_outside_hull = method == "nn" and not options.get("extrapolate", False)
    settings["blank_outside_hull"] = bool(blank_outside_hull)
    return _orvane._cross_validate(x, y, z, settings, progress)
