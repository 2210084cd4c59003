"""orvane's functions against the C++ library (through the orvane command, which calls
the same functions), against scipy where the methods coincide, and on bad input."""

import os
import subprocess
import threading
import time

import numpy as np
import pytest

import orvane

ORVANE = os.environ["ORVANE"]


def run(tmp_path, *args):
    subprocess.run([ORVANE, *args], check=True, capture_output=True, cwd=tmp_path)


def write_points(tmp_path, x, y, z):
    path = tmp_path / "p.csv"
    rows = (",".join(repr(float(v)) for v in row) for row in zip(x, y, z))
    path.write_text("x,y,z\n" + "".join(row + "\n" for row in rows))
    return str(path)


def read_grid(path):
    """orvane grid's CSV (x, y, z lines, X outer; an empty z is blank) as xs, ys, Z[j, i]."""
    rows = [line.split(",") for line in open(path).read().split("\n") if line]
    x, y, z = (np.array([float(v) if v else np.nan for v in column]) for column in zip(*rows))
    xs, ys = np.unique(x), np.unique(y)
    return xs, ys, z.reshape(len(xs), len(ys)).T


def test_triangles_and_grids_equal_the_cpp_librarys_bit_for_bit(tmp_path, scattered):
    x, y, z = scattered
    points = write_points(tmp_path, x, y, z)
    run(tmp_path, "triangulate", points, "-o", "t.csv")
    expected = np.loadtxt(tmp_path / "t.csv", delimiter=",", dtype=np.int32)
    assert np.array_equal(orvane.triangulate(x, y), expected)
    cases = [
        (["--method", "idw", "--power", "1.5"], dict(method="idw", power=1.5)),
        (["--method", "idw", "--max-points", "8", "--radius", "12"], dict(method="idw", max_points=8, radius=12)),
        (["--method", "kriging", "--model", "spherical", "--nugget", "0.5", "--sill", "300", "--range", "60"],
         dict(method="kriging", model="spherical", nugget=0.5, sill=300, range=60)),
        # The command's natural neighbour works in the points' unit square and stops at their hull.
        (["--method", "nn"], dict(method="nn", rescale=True)),
    ]
    for args, options in cases:
        run(tmp_path, "grid", points, *args, "--intervals", "24", "-o", "g.csv")
        xs, ys, expected = read_grid(tmp_path / "g.csv")
        method = options.pop("method")
        _, _, Z = orvane.grid(x, y, z, method, nodes=(xs, ys), **options)
        assert Z.shape == (25, 25)
        assert np.array_equal(Z, expected, equal_nan=True), args


def test_a_plane_is_exact_and_agrees_with_scipys_linear_griddata():
    r = np.random.default_rng(2)
    x, y = r.uniform(0, 10, 300), r.uniform(0, 10, 300)
    z = 3 + 2 * x - y
    xs, ys, Z = orvane.grid(x, y, z, "nn", nx=41, ny=41)
    X, Y = np.meshgrid(xs, ys)
    inside = ~np.isnan(Z)
    assert inside.sum() > 0.8 * Z.size
    assert np.allclose(Z[inside], (3 + 2 * X - Y)[inside], rtol=0, atol=1e-10)
    scipy = pytest.importorskip("scipy.interpolate")
    linear = scipy.griddata((x, y), z, (X, Y), method="linear")
    both = inside & ~np.isnan(linear)
    assert np.allclose(Z[both], linear[both], rtol=0, atol=1e-10)


def test_contours_of_a_grid_and_of_points():
    xs = np.linspace(-1, 1, 41)
    X, Y = np.meshgrid(xs, xs)
    Z = X * X + Y * Y  # circles about the origin
    lines = orvane.contour_lines(xs, xs, Z, [0.25, 0.5])
    assert len(lines) == 2 and len(lines[0]) == 1
    ring = lines[0][0]
    assert ring.shape[1] == 2
    assert np.allclose(np.hypot(ring[:, 0], ring[:, 1]), 0.5, atol=2e-3)
    bands = orvane.contour_bands(xs, xs, Z, [0.25, 0.5])
    assert [len(b) for b in bands] == [1, 1, 1]
    annulus = bands[1][0]
    assert len(annulus) == 2  # the outer ring and the hole
    area = lambda r: 0.5 * abs(np.dot(r[:, 0], np.roll(r[:, 1], 1)) - np.dot(r[:, 1], np.roll(r[:, 0], 1)))
    assert area(annulus[0]) - area(annulus[1]) == pytest.approx(np.pi * (0.5 - 0.25), rel=5e-3)
    # Holes in a grid (NaN) stay open; scattered points are triangulated first.
    Z[18:23, 18:23] = np.nan
    assert len(orvane.contour_lines(xs, xs, Z, [0.01])[0]) == 0
    r = np.random.default_rng(3)
    px, py = r.uniform(-1, 1, 500), r.uniform(-1, 1, 500)
    assert len(orvane.contour_lines(px, py, px + py, 3)) == 3


def test_variograms_fits_and_cross_validation_match_the_command(tmp_path, meuse):
    x, y, z = meuse
    bins = orvane.variogram(x, y, z)
    assert list(bins["pairs"][:3]) == [57, 299, 419]
    assert bins["distance"][0] == pytest.approx(79.292437455826644, rel=1e-12)
    models = orvane.fit_variogram(bins)
    assert [m["model"] for m in models][0] == "exponential"
    assert models[0]["sse"] <= models[1]["sse"]
    cv = orvane.cross_validate(x, y, z, "kriging", model="spherical", nugget=20000, sill=170000, range=1000, block=False)
    # gstat's krige.cv for this model.
    assert cv["me"] == pytest.approx(1.6629864426985346, rel=1e-9)
    assert cv["rmse"] == pytest.approx(226.80433110518095, rel=1e-9)
    assert cv["msdr"] == pytest.approx(0.92982470293801156, rel=1e-9)
    assert cv["predicted"].shape == (155,)
    assert "msdr" not in orvane.cross_validate(x, y, z, "idw")


def test_bad_input_raises_orvane_error_with_number_and_text(scattered):
    x, y, z = scattered
    cases = [
        (lambda: orvane.grid(x, y[:3], z), 5, "x, y and z must have the same length (400, 3, 400)"),
        (lambda: orvane.grid(x.astype(complex), y, z), 13, "x must hold real numbers, not complex128"),
        (lambda: orvane.grid(x.reshape(20, 20), y, z), 5, "x must be a 1-D array, not 2-D"),
        (lambda: orvane.grid(x, y, np.where(z > 0, np.nan, z)), 5, "The Z values contain NaN (not a number)."),
        (lambda: orvane.grid(x, y, z, "spline"), 5, "method must be \"idw\", \"kriging\" or \"nn\", not 'spline'"),
        (lambda: orvane.grid(x, y, z, "idw", model="linear"), 5, "model applies to method='kriging' only"),
        (lambda: orvane.grid(x, y, z, "kriging", nugget=5, sill=1, range=3, model="linear"), 5,
         "Sill (1) must not be below Nugget (5)."),
        (lambda: orvane.contour_lines([0, 1], [0, 1], np.zeros((3, 2)), [0.5]), 5,
         "a grid's z must have the shape (len(y), len(x)) = (2, 2), not (3, 2)"),
        (lambda: orvane.grid(x, y, z, nx=20000, ny=20000), 7, None),
    ]
    # Strided views (every other point, a table's columns) are read as they are.
    table = np.stack([x, y, z], axis=1)
    assert np.array_equal(orvane.grid(table[::2, 0], table[::2, 1], table[::2, 2], nx=9)[2],
                          orvane.grid(x[::2].copy(), y[::2].copy(), z[::2].copy(), nx=9)[2])
    for call, number, text in cases:
        with pytest.raises(orvane.Error) as caught:
            call()
        assert isinstance(caught.value, ValueError)
        assert caught.value.number == number, caught.value
        if text is not None:
            assert caught.value.description == text
            assert str(caught.value) == text


def test_progress_is_reported_and_can_stop_the_run(scattered):
    x, y, z = scattered
    seen = []
    orvane.grid(x, y, z, nx=64, ny=64, progress=lambda done, total: seen.append((done, total)))
    assert seen and seen[-1][1] == 64 * 64 and all(a <= b for (a, _), (b, _) in zip(seen, seen[1:]))
    with pytest.raises(orvane.Error) as caught:
        orvane.grid(x, y, z, nx=64, ny=64, progress=lambda done, total: False)
    assert caught.value.number == 18

    def fails(done, total):
        raise KeyError("from the callback")

    with pytest.raises(KeyError):
        orvane.grid(x, y, z, "nn", nx=64, ny=64, progress=fails)


def test_two_threads_grid_at_once():
    # Each grid on one thread of its own: with the GIL released, two at once on two
    # cores take about as long as one.
    r = np.random.default_rng(9)
    x, y = r.uniform(0, 1, 20000), r.uniform(0, 1, 20000)
    z = x * y
    orvane.set_threads(1)
    try:
        def once():
            orvane.grid(x, y, z, "idw", nx=61, ny=61)

        def timed(threads):
            start = time.perf_counter()
            workers = [threading.Thread(target=once) for _ in range(threads)]
            for w in workers:
                w.start()
            for w in workers:
                w.join()
            return time.perf_counter() - start

        one = min(timed(1) for _ in range(3))
        two = min(timed(2) for _ in range(3))
    finally:
        orvane.set_threads(0)
    if os.cpu_count() >= 2:
        assert two < 1.6 * one, (one, two)
