"""orvane contour at levels that equal data heights: each contour once and whole.

Surveyed heights are whole metres and contours come every 10 m, so levels meet data
values everywhere. The checks below hold on their own; where matplotlib is installed the
polylines are also compared with its triangle-mesh tracer on the same triangles.
"""

import json
import math
import os
import pathlib
import subprocess

import pytest

ORVANE = os.environ.get("ORVANE", "orvane")
SHARED_DATA = pathlib.Path(os.environ.get("ORVANE_SHARED_DATA", ""))


def run(*args):
    done = subprocess.run([ORVANE, *map(str, args)], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


def terrain(path):
    """Whole-metre heights on a 10 m grid: a cratered cone on a flat floor at 100 m,
    with a shelf and a ridge, 60 x 45 points."""
    rows = []
    for i in range(60):
        for j in range(45):
            x, y = 10.0 * i, 10.0 * j
            r = math.hypot(x - 300, y - 220)
            cone = 95 * math.exp(-((r / 150) ** 2)) - 30 * math.exp(-((r / 30) ** 2))
            ridge = 25 * math.exp(-(((y - 80) / 25) ** 2)) * (x > 150)
            rows.append(f"{x:g} {y:g} {max(100, round(100 + cone + ridge)):d}")
    path.write_text("\n".join(rows) + "\n")
    return path


def data_files(tmp_path):
    files = [terrain(tmp_path / "terrain.xyz")]
    volcano = SHARED_DATA / "volcano.xyz"
    if volcano.is_file():
        files.append(volcano)
    return files


def contours(path, out, *extra):
    run("contour", path, "--interval", 10, "-o", out, *extra)
    features = json.loads(pathlib.Path(out).read_text())["features"]
    return {f["properties"]["level"]: [[tuple(p) for p in line] for line in f["geometry"]["coordinates"]]
            for f in features if "level" in f["properties"]}


def length(line):
    return sum(math.dist(a, b) for a, b in zip(line, line[1:]))


def on_hull(point, hull):
    for a, b in zip(hull, hull[1:] + hull[:1]):
        ab = (b[0] - a[0], b[1] - a[1])
        t = ((point[0] - a[0]) * ab[0] + (point[1] - a[1]) * ab[1]) / (ab[0] ** 2 + ab[1] ** 2)
        t = min(1.0, max(0.0, t))
        if math.dist(point, (a[0] + t * ab[0], a[1] + t * ab[1])) < 1e-9:
            return True
    return False


@pytest.mark.parametrize("which", [0, 1])
def test_each_contour_is_one_polyline_with_no_doubled_or_empty_pieces(tmp_path, which):
    files = data_files(tmp_path)
    if which >= len(files):
        pytest.skip("the shared volcano data are not beside the checkout")
    path = files[which]
    hull = [tuple(p) for p in json.loads(run("info", path, "--json"))["hull"]]
    lines = contours(path, tmp_path / "c.geojson")
    assert sum(len(v) for v in lines.values()) > 0
    for level, polylines in lines.items():
        seen = set()
        for line in polylines:
            for a, b in zip(line, line[1:]):
                assert a != b, f"a piece of no length at {level}"
                key = (min(a, b), max(a, b))
                assert key not in seen, f"a segment twice at {level}: {key}"
                seen.add(key)
            closed = line[0] == line[-1]
            assert closed or (on_hull(line[0], hull) and on_hull(line[-1], hull)), \
                f"a polyline at {level} stops inside the data: {line[0]} .. {line[-1]}"
    # Exact signs (the described tracing) trace the flat floor's edge and ridges twice.
    exact = contours(path, tmp_path / "e.geojson", "--ties", "exact")
    assert sum(map(len, exact.values())) > sum(map(len, lines.values()))


def degenerate(line):
    """A closed polyline of no area that runs along each of its segments both ways:
    the out-and-back a tracer walks round a ridge lying exactly on the level."""
    pieces = [(a, b) for a, b in zip(line, line[1:]) if a != b]
    return line[0] == line[-1] and all((b, a) in pieces for a, b in pieces)


@pytest.mark.parametrize("which", [0, 1])
def test_polylines_and_lengths_match_matplotlib_on_the_same_triangles(tmp_path, which):
    pytest.importorskip("matplotlib")
    import numpy as np
    from matplotlib import _tri
    import matplotlib.tri as mtri

    files = data_files(tmp_path)
    if which >= len(files):
        pytest.skip("the shared volcano data are not beside the checkout")
    path = files[which]
    run("triangulate", path, "-o", tmp_path / "t.csv")
    points = np.loadtxt(path)
    triangles = np.loadtxt(tmp_path / "t.csv", delimiter=",", dtype=int)
    triangulation = mtri.Triangulation(points[:, 0], points[:, 1], triangles)
    tracer = _tri.TriContourGenerator(triangulation.get_cpp_triangulation(), points[:, 2])
    ours = contours(path, tmp_path / "c.geojson")
    total_ours = total_theirs = 0.0
    for level, polylines in ours.items():
        theirs = [[tuple(p) for p in line] for line in tracer.create_contour(level)[0]]
        # matplotlib also walks out and back along a ridge on the level; those loops have
        # no area and are not contours.
        whole = [line for line in theirs if not degenerate(line)]
        assert len(polylines) == len(whole), f"level {level}"
        total_ours += sum(map(length, polylines))
        total_theirs += sum(map(length, theirs))
    assert total_ours == pytest.approx(total_theirs, rel=0.01)
