"""orvane from Python against the peers Python users have, in one run: orvane.grid and
orvane.triangulate against scipy (griddata, Delaunay), orvane.contour_lines against
contourpy. Best of three for each; prints the times and the ratios.

    PYTHONPATH=build/release/python /usr/bin/python3 bench/python_peers.py
"""

import time

import numpy as np

import orvane


def best(call, rounds=3):
    times = []
    for _ in range(rounds):
        start = time.perf_counter()
        call()
        times.append(time.perf_counter() - start)
    return min(times)


def row(name, ours, peer):
    print(f"{name:44s} orvane {ours:8.3f} s   peer {peer:8.3f} s   ratio {ours / peer:6.2f}")


def main():
    from scipy.interpolate import griddata
    from scipy.spatial import Delaunay

    r = np.random.default_rng(1)
    n = 1_000_000
    x, y = r.uniform(0, 1000, n), r.uniform(0, 1000, n)
    z = np.sin(x / 50) * 100 + np.cos(y / 70) * 50
    row("triangulate 1,000,000 points (Delaunay)", best(lambda: orvane.triangulate(x, y)), best(lambda: Delaunay(np.c_[x, y])))
    m = 100_000
    xs, ys = np.linspace(0, 1000, 501), np.linspace(0, 1000, 501)
    X, Y = np.meshgrid(xs, ys)
    row("grid 100,000 points onto 501 x 501 (linear, nn)",
        best(lambda: orvane.grid(x[:m], y[:m], z[:m], "nn", nodes=(xs, ys))),
        best(lambda: griddata((x[:m], y[:m]), z[:m], (X, Y), method="linear")))
    try:
        import contourpy
    except ImportError:
        print("contourpy is not installed (scripts/install-deps.sh --bench)")
        return
    gx = np.linspace(0, 1000, 2001)
    GX, GY = np.meshgrid(gx, gx)
    G = np.sin(GX / 50) * 100 + np.cos(GY / 70) * 50
    levels = np.linspace(-140, 140, 20)

    def peer():
        generator = contourpy.contour_generator(gx, gx, G)
        return [generator.lines(level) for level in levels]

    row("contour 2001 x 2001 at 20 levels", best(lambda: orvane.contour_lines(gx, gx, G, levels)), best(peer))


if __name__ == "__main__":
    main()
