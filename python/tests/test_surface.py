"""orvane.Surface: the control from Python, drawn off screen."""

import numpy as np
import pytest

import orvane

VIRIDIS_FIRST, VIRIDIS_MIDDLE, VIRIDIS_LAST = (68, 1, 84), (33, 144, 140), (253, 231, 37)


def ramp():
    """z = x over [0, 10] x [0, 5]: low on the left, high on the right."""
    xs, ys = np.linspace(0, 10, 41), np.linspace(0, 5, 21)
    return xs, ys, np.tile(xs, (len(ys), 1))


def test_a_map_has_the_asked_shape_and_the_colour_maps_colours_where_they_belong():
    s = orvane.Surface()
    s.plot_type = "2d"
    s.legend.visible = False
    s.samples = 1  # exact colours
    s.data_sets[0].set_grid(*ramp())
    s.contouring.levels = [2.5, 5, 7.5]
    image = s.render(400, 300)
    assert image.shape == (300, 400, 3) and image.dtype == np.uint8
    row = [tuple(int(c) for c in p) for p in image[150]]
    coloured = [i for i, p in enumerate(row) if max(p) - min(p) > 30]
    assert row[coloured[0]] == VIRIDIS_FIRST  # the low left edge
    assert row[coloured[-1]] == VIRIDIS_LAST  # the high right edge
    assert VIRIDIS_MIDDLE in row[coloured[0]:coloured[-1]]
    png = s._repr_png_()
    assert png[:8] == b"\x89PNG\r\n\x1a\n"


def test_the_object_model_and_the_state_round_trip(tmp_path):
    s = orvane.Surface()
    xs, ys, Z = ramp()
    Z[5:8, 5:8] = np.nan
    s.data_sets[0].set_grid(xs, ys, Z)
    s.axes.z.title = "Height"
    s.contouring.interpolate_colors = True
    s.contouring.colormap = "terrain"
    s.rotation = (60, 0, 30)
    s.title = "A ramp"
    s.data_sets.count = 2
    s.data_sets[1].set_points([0, 1, 0, 1], [0, 0, 1, 1], [1, 2, 3, 4])
    s.data_sets[1].view.transparency = 0.5
    assert s.data_sets[-1].triangles.shape == (2, 3)
    assert s.data_sets[0].limits == (0, 10, 0, 5, 0, 10)
    s.refresh()  # the scales and levels that follow the data, as a read State has them
    state = s.state
    t = orvane.Surface()
    t.state = state
    assert t.state == state
    assert (t.axes.z.title, t.contouring.interpolate_colors, t.rotation, t.title) == ("Height", True, (60, 0, 30), "A ramp")
    assert len(t.data_sets) == 2 and t.data_sets[1].view.transparency == pytest.approx(0.5)
    path = tmp_path / "ramp.png"
    t.to_png(str(path), 200, 150)
    assert path.read_bytes()[:4] == b"\x89PNG"


def test_refusals_leave_the_control_as_it_was():
    s = orvane.Surface()
    s.data_sets[0].set_grid(*ramp())
    before = s.state
    with pytest.raises(orvane.Error) as caught:
        s.state = b"not a state"
    assert caught.value.number != 0 and s.state == before
    with pytest.raises(orvane.Error) as caught:
        s.data_sets[3]
    assert caught.value.number == 9
    held = s.data_sets[0]
    s.data_sets.count = 1
    with pytest.raises(orvane.Error):
        s.plot_type = "4d"
    with pytest.raises(orvane.Error):
        s.render(0, 10)
    with pytest.raises(orvane.Error):
        s.contouring.colormap = "jet"
    assert held.limits[1] == 10
    s.data_sets.count = 2
    second = s.data_sets[1]
    s.data_sets.count = 1
    with pytest.raises(orvane.Error) as caught:
        second.limits  # its data set is gone
    assert caught.value.number == 9
    assert s.state == before
