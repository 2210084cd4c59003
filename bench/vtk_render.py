#!/usr/bin/python3
"""The peer of `orvane render GRID --contours 20`: the same 3-D picture drawn with VTK.

    vtk_render.py GRID.grd OUT.png [--levels 20] [--size 800x600] [--fill banded|lut]

Reads a DSAA text grid, stands it up as a surface with Z exaggerated so that it fills
about a cube, fills 20 equal bands between the data's Z limits in 20 colours (viridis),
draws the contour lines on the levels between them, puts axes with grid lines, a colour
bar and a title around it, and writes the PNG. The view is Orvane's default: parallel
projection, 30 degrees above the horizontal, turned 30 degrees about the vertical, no
lighting. Prints to standard error

    timings: read X s, pipeline X s, render X s, png X s, total X s

read: the header and the numbers, into numpy (np.loadtxt, numpy's C reader, the fastest
    of numpy's text readers here, for one row a line; np.fromstring(text, sep=' ') when the
    rows are wrapped over several lines);
pipeline: the filters run to completion (surface, warp, bands, contour lines);
render: the first frame off screen, the OpenGL context and the upload included;
png: reading the frame back and writing the PNG;
total: from the start of the script, the modules' import included.

--fill banded (default): vtkBandedPolyDataContourFilter cuts the surface into one polygon
    set a band, coloured by the band (VTK's filled contours);
--fill lut: the surface's point heights through a 20-colour lookup table, interpolated in
    texture space (InterpolateScalarsBeforeMapping), so each pixel takes its band's colour
    without cutting the mesh.
The contour lines are vtkContourFilter on the image (VTK's 2-D synchronized templates) and
then raised with the same warp, the same lines as contouring the warped surface, faster.

A benchmark-only peer: Debian's python3-vtk9 (scripts/install-deps.sh --bench), run with
/usr/bin/python3 under `xvfb-run -a` (Mesa's llvmpipe where there is no GPU).
"""

import time

START = time.perf_counter()

import argparse  # noqa: E402
import os  # noqa: E402
import sys  # noqa: E402

import numpy as np  # noqa: E402
from vtkmodules.util.numpy_support import numpy_to_vtk  # noqa: E402
from vtkmodules.vtkCommonCore import vtkLookupTable  # noqa: E402
from vtkmodules.vtkCommonDataModel import vtkImageData  # noqa: E402
from vtkmodules.vtkFiltersCore import vtkContourFilter  # noqa: E402
from vtkmodules.vtkFiltersGeneral import vtkWarpScalar  # noqa: E402
from vtkmodules.vtkFiltersGeometry import vtkImageDataGeometryFilter  # noqa: E402
from vtkmodules.vtkFiltersModeling import vtkBandedPolyDataContourFilter  # noqa: E402
from vtkmodules.vtkIOImage import vtkPNGWriter  # noqa: E402
from vtkmodules.vtkRenderingAnnotation import vtkCubeAxesActor, vtkScalarBarActor  # noqa: E402
from vtkmodules.vtkRenderingCore import (  # noqa: E402
    vtkActor, vtkMapper, vtkPolyDataMapper, vtkRenderer, vtkRenderWindow, vtkTextActor,
    vtkWindowToImageFilter)
import vtkmodules.vtkRenderingFreeType  # noqa: E402,F401  (text)
import vtkmodules.vtkRenderingOpenGL2  # noqa: E402,F401  (the OpenGL back end)

# Surfer's value for a blanked node.
BLANK = 1.70141e38

# viridis at nine even stops
VIRIDIS = ["#440154", "#472d7b", "#3b528b", "#2c728e", "#21918c", "#28ae80", "#5ec962",
           "#addc30", "#fde725"]


def read_dsaa(path):
    """(x0, x1, y0, y1, z[row, column]) of a DSAA text grid; rows run from y0 up."""
    with open(path, "rb") as f:
        head = [f.readline().split() for _ in range(5)]
        if not head[0] or head[0][0] != b"DSAA":
            sys.exit(f"vtk_render: {path} is not a DSAA text grid")
        nx, ny = int(head[1][0]), int(head[1][1])
        x0, x1 = float(head[2][0]), float(head[2][1])
        y0, y1 = float(head[3][0]), float(head[3][1])
        body = f.tell()
        try:
            z = np.loadtxt(f, dtype=np.float64, ndmin=2)
            if z.shape != (ny, nx):
                raise ValueError("wrapped rows")
        except ValueError:
            f.seek(body)
            z = np.fromstring(f.read(), sep=" ")  # noqa: NPY201 (text mode is not deprecated)
    if z.size != nx * ny:
        sys.exit(f"vtk_render: {path} holds {z.size} values, not {nx} x {ny}")
    z = z.reshape(ny, nx)
    if (z >= BLANK).any():
        sys.exit(f"vtk_render: {path} has blanked nodes, which this peer does not draw")
    return x0, x1, y0, y1, z


def lookup_table(count, z0, z1):
    stops = np.array([[int(c[i:i + 2], 16) / 255.0 for i in (1, 3, 5)] for c in VIRIDIS])
    t = (np.arange(count) + 0.5) / count * (len(stops) - 1)
    lut = vtkLookupTable()
    lut.SetNumberOfTableValues(count)
    lut.SetTableRange(z0, z1)
    for k, tk in enumerate(t):
        i = min(int(tk), len(stops) - 2)
        r, g, b = stops[i] + (tk - i) * (stops[i + 1] - stops[i])
        lut.SetTableValue(k, r, g, b, 1.0)
    lut.Build()
    return lut


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("grid")
    ap.add_argument("png")
    ap.add_argument("--levels", type=int, default=20, help="equal bands between the Z limits")
    ap.add_argument("--size", default="800x600", help="WIDTHxHEIGHT")
    ap.add_argument("--fill", choices=("banded", "lut"), default="banded")
    a = ap.parse_args()
    try:
        width, height = (int(v) for v in a.size.lower().split("x"))
    except ValueError:
        ap.error(f"--size {a.size}: WIDTHxHEIGHT expected")
    if a.levels < 1 or width < 1 or height < 1:
        ap.error("--levels and the size must be positive")

    t = time.perf_counter()
    x0, x1, y0, y1, z = read_dsaa(a.grid)
    ny, nx = z.shape
    z0, z1 = float(z.min()), float(z.max())
    t_read = time.perf_counter() - t

    t = time.perf_counter()
    image = vtkImageData()
    image.SetDimensions(nx, ny, 1)
    image.SetOrigin(x0, y0, 0.0)
    image.SetSpacing((x1 - x0) / (nx - 1), (y1 - y0) / (ny - 1), 1.0)
    heights = numpy_to_vtk(z.ravel(), deep=False)  # x runs fastest, as in the file
    heights.SetName("z")
    image.GetPointData().SetScalars(heights)

    # Z exaggerated so that its range is as long as the longer of X and Y.
    scale = max(x1 - x0, y1 - y0) / (z1 - z0) if z1 > z0 else 1.0
    surface = vtkImageDataGeometryFilter()
    surface.SetInputData(image)
    warp = vtkWarpScalar()
    warp.SetInputConnection(surface.GetOutputPort())
    warp.SetScaleFactor(scale)
    warp.UseNormalOn()
    warp.SetNormal(0.0, 0.0, 1.0)

    lut = lookup_table(a.levels, z0, z1)
    fill = vtkPolyDataMapper()
    if a.fill == "banded":
        bands = vtkBandedPolyDataContourFilter()
        bands.SetInputConnection(warp.GetOutputPort())
        bands.GenerateValues(a.levels + 1, z0, z1)
        bands.SetScalarModeToIndex()  # band k (0 .. levels - 1) has index k
        bands.Update()
        fill.SetInputConnection(bands.GetOutputPort())
        fill.SetScalarModeToUseCellData()
        band_lut = lookup_table(a.levels, -0.5, a.levels - 0.5)
        fill.SetLookupTable(band_lut)
        fill.SetScalarRange(-0.5, a.levels - 0.5)
    else:
        warp.Update()
        fill.SetInputConnection(warp.GetOutputPort())
        fill.SetScalarModeToUsePointData()
        fill.SetLookupTable(lut)
        fill.SetScalarRange(z0, z1)
        fill.InterpolateScalarsBeforeMappingOn()

    contours = vtkContourFilter()
    contours.SetInputData(image)
    contours.GenerateValues(a.levels + 1, z0, z1)
    contours.ComputeScalarsOn()
    lift = vtkWarpScalar()
    lift.SetInputConnection(contours.GetOutputPort())
    lift.SetScaleFactor(scale)
    lift.UseNormalOn()
    lift.SetNormal(0.0, 0.0, 1.0)
    lift.Update()
    t_pipeline = time.perf_counter() - t

    t = time.perf_counter()
    vtkMapper.SetResolveCoincidentTopologyToPolygonOffset()
    vtkMapper.SetResolveCoincidentTopologyPolygonOffsetParameters(4.0, 4.0)
    fill_actor = vtkActor()
    fill_actor.SetMapper(fill)
    fill_actor.GetProperty().LightingOff()
    lines = vtkPolyDataMapper()
    lines.SetInputConnection(lift.GetOutputPort())
    lines.ScalarVisibilityOff()
    line_actor = vtkActor()
    line_actor.SetMapper(lines)
    line_actor.GetProperty().SetColor(0.0, 0.0, 0.0)
    line_actor.GetProperty().LightingOff()
    # Lines on the surface lose to its depth where it is steep even with polygon offset:
    # raise them by 0.3 % of the exaggerated Z range.
    line_actor.SetPosition(0.0, 0.0, 0.003 * scale * (z1 - z0))

    renderer = vtkRenderer()
    renderer.SetBackground(1.0, 1.0, 1.0)
    renderer.AddActor(fill_actor)
    renderer.AddActor(line_actor)

    bounds = (x0, x1, y0, y1, z0 * scale, z1 * scale)
    camera = renderer.GetActiveCamera()
    camera.ParallelProjectionOn()
    centre = [(bounds[2 * i] + bounds[2 * i + 1]) / 2 for i in range(3)]
    elevation, turn = np.radians(30.0), np.radians(30.0)
    away = (-np.sin(turn) * np.cos(elevation), -np.cos(turn) * np.cos(elevation), np.sin(elevation))
    camera.SetFocalPoint(*centre)
    camera.SetPosition(*(c + 3.0 * scale * (z1 - z0) * d for c, d in zip(centre, away)))
    camera.SetViewUp(0.0, 0.0, 1.0)

    axes = vtkCubeAxesActor()
    axes.SetBounds(*bounds)
    axes.SetZAxisRange(z0, z1)
    axes.SetCamera(camera)
    axes.SetFlyModeToOuterEdges()
    axes.SetGridLineLocation(axes.VTK_GRID_LINES_FURTHEST)
    axes.DrawXGridlinesOn()
    axes.DrawYGridlinesOn()
    axes.DrawZGridlinesOn()
    axes.SetXTitle("X")
    axes.SetYTitle("Y")
    axes.SetZTitle("Z")
    for i in range(3):
        axes.GetTitleTextProperty(i).SetColor(0.0, 0.0, 0.0)
        axes.GetLabelTextProperty(i).SetColor(0.0, 0.0, 0.0)
    for prop in (axes.GetXAxesLinesProperty(), axes.GetYAxesLinesProperty(),
                 axes.GetZAxesLinesProperty()):
        prop.SetColor(0.0, 0.0, 0.0)
    for prop in (axes.GetXAxesGridlinesProperty(), axes.GetYAxesGridlinesProperty(),
                 axes.GetZAxesGridlinesProperty()):
        prop.SetColor(0.6, 0.6, 0.6)
    renderer.AddActor(axes)
    renderer.ResetCamera(*bounds)
    camera.Zoom(0.95)

    legend = vtkScalarBarActor()
    legend.SetLookupTable(lut)
    legend.SetTitle("Z")
    legend.SetNumberOfLabels(a.levels + 1)
    legend.SetLabelFormat("%.0f")
    legend.UnconstrainedFontSizeOn()
    legend.GetTitleTextProperty().SetFontSize(12)
    legend.GetLabelTextProperty().SetFontSize(11)
    legend.GetLabelTextProperty().ItalicOff()
    legend.GetTitleTextProperty().ItalicOff()
    legend.GetLabelTextProperty().ShadowOff()
    legend.GetTitleTextProperty().ShadowOff()
    legend.GetTitleTextProperty().SetColor(0.0, 0.0, 0.0)
    legend.GetLabelTextProperty().SetColor(0.0, 0.0, 0.0)
    legend.GetPositionCoordinate().SetCoordinateSystemToNormalizedViewport()
    legend.GetPositionCoordinate().SetValue(0.9, 0.06)
    legend.SetWidth(0.08)
    legend.SetHeight(0.86)
    renderer.AddActor2D(legend)

    title = vtkTextActor()
    title.SetInput(os.path.basename(a.grid))
    title.GetTextProperty().SetColor(0.0, 0.0, 0.0)
    title.GetTextProperty().SetFontSize(13)
    title.GetTextProperty().BoldOn()
    title.GetTextProperty().SetJustificationToCentered()
    title.GetTextProperty().SetVerticalJustificationToTop()
    title.GetPositionCoordinate().SetCoordinateSystemToNormalizedDisplay()
    title.GetPositionCoordinate().SetValue(0.5, 0.98)

    window = vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.SetSize(width, height)
    window.AddRenderer(renderer)
    renderer.AddActor2D(title)
    window.Render()
    t_render = time.perf_counter() - t

    t = time.perf_counter()
    grab = vtkWindowToImageFilter()
    grab.SetInput(window)
    grab.ReadFrontBufferOff()
    grab.ShouldRerenderOff()  # the frame is already drawn
    writer = vtkPNGWriter()
    writer.SetFileName(a.png)
    writer.SetInputConnection(grab.GetOutputPort())
    writer.Write()
    t_png = time.perf_counter() - t

    print(f"timings: read {t_read:.3f} s, pipeline {t_pipeline:.3f} s, render {t_render:.3f} s, "
          f"png {t_png:.3f} s, total {time.perf_counter() - START:.3f} s", file=sys.stderr)


if __name__ == "__main__":
    main()
