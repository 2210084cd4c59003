"""A grid made in tiles equals the grid made at once."""

import numpy as np

import orvane


def points():
    r = np.random.default_rng(4)
    x, y = r.uniform(0, 100, 6000), r.uniform(0, 80, 6000)
    return x, y, np.sin(x / 9.0) * 30 + np.cos(y / 7.0) * 20 + 0.1 * x


def test_inverse_distance_with_a_radius_tiles_without_seams():
    x, y, z = points()
    extent, spacing = (0, 100, 0, 80), 0.5
    xs, ys, whole = orvane.grid(x, y, z, "idw", extent=extent, spacing=spacing, max_points=16, radius=4)
    txs, tys, tiled = orvane.grid_tiles(x, y, z, extent, spacing, tile=37, method="idw", max_points=16, radius=4)
    assert np.array_equal(txs, xs) and np.array_equal(tys, ys)
    assert np.array_equal(np.isnan(tiled), np.isnan(whole))
    assert np.allclose(tiled, whole, rtol=1e-12, atol=0, equal_nan=True)


def test_natural_neighbour_tiles_match_inside_the_hull():
    x, y, z = points()
    extent, spacing = (0, 100, 0, 80), 0.5
    xs, ys, whole = orvane.grid(x, y, z, "nn", extent=extent, spacing=spacing)
    _, _, tiled = orvane.grid_tiles(x, y, z, extent, spacing, tile=50, halo=8, method="nn")
    inside = ~np.isnan(whole)
    assert inside.sum() > 0.9 * whole.size
    assert np.allclose(tiled[inside], whole[inside], rtol=1e-12, atol=1e-12 * np.abs(z).max())
