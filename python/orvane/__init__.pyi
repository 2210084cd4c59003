# Type hints of the orvane package.
from typing import Any, Callable, Iterable, Optional, Sequence, Union

import numpy as np
import numpy.typing as npt

ArrayLike = npt.ArrayLike
Progress = Optional[Callable[[int, int], Optional[bool]]]

class Error(ValueError):
    """An error of the Orvane library."""
    number: int
    source: str
    description: str

def set_threads(count: int) -> None:
    """The threads each computation may use: 0 (the default) for every core."""

def triangulate(x: ArrayLike, y: ArrayLike) -> npt.NDArray[np.int32]:
    """The Delaunay triangles of the points: an (n, 3) array of point numbers."""

def grid_nodes(extent: Sequence[float], nx: Optional[int] = ..., ny: Optional[int] = ...,
               spacing: Union[float, Sequence[float], None] = ...) -> tuple[npt.NDArray[np.float64], npt.NDArray[np.float64]]:
    """The node coordinates (xs, ys) of a grid over extent."""

def grid(x: ArrayLike, y: ArrayLike, z: ArrayLike, method: str = ..., nx: Optional[int] = ..., ny: Optional[int] = ...,
         extent: Optional[Sequence[float]] = ..., spacing: Union[float, Sequence[float], None] = ..., *,
         nodes: Optional[tuple[ArrayLike, ArrayLike]] = ..., blank_outside_hull: Optional[bool] = ...,
         variance: bool = ..., progress: Progress = ..., **options: Any) -> tuple[npt.NDArray[np.float64], ...]:
    """Resamples scattered points onto a grid: (xs, ys, Z[, V]), Z of shape (ny, nx)."""

def grid_tiles(x: ArrayLike, y: ArrayLike, z: ArrayLike, extent: Sequence[float], spacing: Union[float, Sequence[float]],
               tile: int = ..., halo: Optional[float] = ..., method: str = ..., map: Callable[..., Iterable[Any]] = ...,
               **options: Any) -> tuple[npt.NDArray[np.float64], npt.NDArray[np.float64], npt.NDArray[np.float64]]:
    """The grid made in tiles, each from the points within halo of it."""

def contour_lines(x: ArrayLike, y: ArrayLike, z: ArrayLike, levels: Union[int, ArrayLike] = ..., *,
                  ties_above: bool = ...) -> list[list[npt.NDArray[np.float64]]]:
    """Per level, a list of (n, 2) vertex arrays."""

def contour_bands(x: ArrayLike, y: ArrayLike, z: ArrayLike, levels: Union[int, ArrayLike] = ..., *,
                  ties_above: bool = ...) -> list[list[list[npt.NDArray[np.float64]]]]:
    """Per band, polygons as lists of rings (outer first, then holes)."""

def variogram(x: ArrayLike, y: ArrayLike, z: ArrayLike, *, cutoff: float = ..., bins: int = ...,
              direction: Optional[float] = ..., tolerance: float = ...) -> dict[str, npt.NDArray[Any]]:
    """The experimental semi-variogram: distance, gamma and pairs."""

def fit_variogram(bins: dict[str, npt.NDArray[Any]], model: Optional[str] = ...) -> list[dict[str, Any]]:
    """Fitted models (model, nugget, psill, range, sse), the best first."""

def cross_validate(x: ArrayLike, y: ArrayLike, z: ArrayLike, method: str = ..., *, blank_outside_hull: Optional[bool] = ...,
                   progress: Progress = ..., **options: Any) -> dict[str, Any]:
    """Leave-one-out cross-validation: me, rmse, mae, medae (msdr for kriging) and per-point values."""

class Surface:
    """The plotting control on a headless host."""
    def __init__(self) -> None: ...
    data_sets: DataSets
    axes: Axes
    contouring: Contouring
    legend: Legend
    plot_type: str
    rotation: tuple[float, float, float]
    zoom: float
    lighting: bool
    samples: int
    title: str
    state: bytes
    formatting: bytes
    def show_sample_data(self) -> None: ...
    def refresh(self) -> None: ...
    def render(self, width: int = ..., height: int = ...) -> npt.NDArray[np.uint8]: ...
    def to_png(self, path: str, width: int = ..., height: int = ...) -> None: ...
    def _repr_png_(self) -> bytes: ...

class DataSets:
    count: int
    def __len__(self) -> int: ...
    def __getitem__(self, index: int) -> DataSet: ...

class DataSet:
    limits: tuple[float, float, float, float, float, float]
    triangles: npt.NDArray[np.int32]
    view: View
    def set_grid(self, x: ArrayLike, y: ArrayLike, z: ArrayLike) -> None: ...
    def set_points(self, x: ArrayLike, y: ArrayLike, z: ArrayLike) -> None: ...
    def clear(self) -> None: ...
    def contour_lines(self, levels: ArrayLike, ties_above: bool = ...) -> list[list[npt.NDArray[np.float64]]]: ...

class View:
    fill: bool
    lines: bool
    mesh: bool
    markers: bool
    labels: bool
    base: bool
    transparency: Optional[float]

class Axes:
    x: Axis
    y: Axis
    z: Axis
    equal_aspect: bool

class Axis:
    title: str
    labels_format: str
    limits: tuple[float, float]

class Contouring:
    levels: list[float]
    level_count: int
    interpolate_colors: bool
    exact_bands: bool
    colormap: str

class Legend:
    visible: bool
    even_bands: bool
