"""The gallery's peer pictures: the data of each orvane picture drawn by matplotlib, the
same way where matplotlib can (the resampled grids are the ones orvane made).

    python3 scripts/gallery_peers.py DATA_DIR WORK_DIR OUT_DIR
"""
import csv
import math
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import matplotlib.tri as mtri  # noqa: E402
import numpy as np  # noqa: E402
from matplotlib.colors import BoundaryNorm  # noqa: E402

data, work, out = sys.argv[1:4]


def points(path, skip_header=False):
    rows = []
    with open(path) as f:
        reader = csv.reader(f) if path.endswith(".csv") else (line.split() for line in f)
        for row in reader:
            try:
                rows.append([float(v) for v in row[:3]])
            except ValueError:
                continue
    return np.array(rows)


def grid(path):
    """An orvane grid CSV (x, y, z; blank z outside the hull) as X, Y vectors and Z[y, x]."""
    rows = []
    with open(path) as f:
        for x, y, z in csv.reader(f):
            rows.append((float(x), float(y), float(z) if z else math.nan))
    a = np.array(rows)
    xs, ys = np.unique(a[:, 0]), np.unique(a[:, 1])
    z = np.full((len(ys), len(xs)), np.nan)
    z[np.searchsorted(ys, a[:, 1]), np.searchsorted(xs, a[:, 0])] = a[:, 2]
    return xs, ys, np.ma.masked_invalid(z)


def figure():
    return plt.figure(figsize=(8, 6), dpi=100)


def save(fig, name):
    fig.savefig(f"{out}/{name}_matplotlib.png", dpi=100)
    plt.close(fig)
    print(f"gallery: {name}_matplotlib.png")


def levels_by(z, step):
    return np.arange(math.floor(np.nanmin(z) / step) * step, np.nanmax(z) + step, step)


volcano = points(f"{data}/volcano.xyz")
tri = mtri.Triangulation(volcano[:, 0], volcano[:, 1])
levels = levels_by(volcano[:, 2], 10)

fig = figure()
ax = fig.add_subplot(projection="3d")
ax.plot_trisurf(tri, volcano[:, 2], cmap="terrain", linewidth=0, antialiased=True, shade=True)
ax.set(title="Maunga Whau, lit", xlabel="Easting (m)", ylabel="Northing (m)", zlabel="Height (m)")
save(fig, "volcano_3d")

fig = figure()
ax = fig.add_subplot()
filled = ax.tricontourf(tri, volcano[:, 2], levels=levels, cmap="terrain")
lines = ax.tricontour(tri, volcano[:, 2], levels=levels, colors="k", linewidths=0.5)
ax.clabel(lines, fmt="%g", fontsize=8)
ax.set(title="Maunga Whau", xlabel="Easting (m)", ylabel="Northing (m)", aspect="equal")
fig.colorbar(filled, ax=ax, label="Height (m)")
save(fig, "volcano_map")

meuse = points(f"{data}/meuse.csv")
for name, title, log in (("meuse_kriged", "Zinc along the Meuse, kriged", False), ("zinc_log", "Zinc, log-spaced levels", True)):
    xs, ys, z = grid(f"{work}/{name if not log else 'zinc_nn'}.csv")
    fig = figure()
    ax = fig.add_subplot()
    if log:
        lo, hi = np.log10(z.min()), np.log10(z.max())
        bounds = 10 ** np.linspace(lo, hi, 10)
        filled = ax.contourf(xs, ys, z, levels=bounds, cmap="viridis", norm=BoundaryNorm(bounds, 256))
    else:
        filled = ax.contourf(xs, ys, z, levels=10, cmap="viridis")
    ax.contour(xs, ys, z, levels=filled.levels, colors="k", linewidths=0.5)
    ax.scatter(meuse[:, 0], meuse[:, 1], s=12, c="white", edgecolors="k", linewidths=0.6)
    ax.set(title=title, xlabel="x (m)", ylabel="y (m)", aspect="equal")
    fig.colorbar(filled, ax=ax, label="Zinc (ppm)")
    save(fig, name)

xs, ys, z = grid(f"{work}/topo_nn.csv")
fig = figure()
ax = fig.add_subplot(projection="3d")
gx, gy = np.meshgrid(xs, ys)
ax.plot_surface(gx, gy, z, cmap="terrain", linewidth=0, antialiased=True, rcount=120, ccount=120)
ax.set(title="Hills from 600 points, natural neighbour", zlabel="Elevation (m)")
save(fig, "topo_nn")

bump = np.loadtxt(f"{work}/bump.xyz")
btri = mtri.Triangulation(bump[:, 0], bump[:, 1])
fig = figure()
ax = fig.add_subplot(projection="3d")
ax.plot_trisurf(btri, bump[:, 2], cmap="viridis", edgecolor="k", linewidth=0.3)
ax.scatter(bump[:, 0], bump[:, 1], bump[:, 2], c="white", edgecolors="k", s=8)
ax.set(title="A bump: mesh, markers and hull")
save(fig, "bump_mesh")

n = np.linspace(-2, 2, 41)
gx, gy = np.meshgrid(n, n)
fig = figure()
ax = fig.add_subplot(projection="3d")
ax.plot_surface(gx, gy, 0.15 * (gx * gx - gy * gy), cmap="viridis", vmin=-0.6, vmax=1.6)
ax.plot_surface(gx, gy, 1.2 * np.exp(-(gx * gx + gy * gy)) + 0.4, cmap="viridis", vmin=-0.6, vmax=1.6, alpha=0.55)
ax.set(title="A saddle under a see-through bump")
save(fig, "two_surfaces")

n = np.linspace(0, 4, 30)
gx, gy = np.meshgrid(n, n)
fig = figure()
ax = fig.add_subplot(projection="3d")
ax.plot_surface(gx, gy, 0.3 * np.sin(gx * gy), cmap="rainbow")
ax.set(title="Z = 0.3 * sin(X + Y)")
save(fig, "sample")
