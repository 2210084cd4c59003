// The orvane Python module's compiled part (orvane._orvane): the library's gridding,
// triangulation, contouring and variogram functions on numpy arrays, the GIL released
// while they work, and orvane.Error for the library's errors. The package's Python part
// (orvane/__init__.py) gives them their keyword arguments and defaults.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "arrays.h"
#include "core/parallel.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/resample/cross_validation.h"
#include "orvane/resample/resampling.h"
#include "orvane/resample/variogram.h"

namespace orvane::python {

namespace {

py::handle errorType;  // orvane.Error, made at import and held by the module

constexpr const char* kSource = "orvane";

}  // namespace

void Fail(std::int32_t number, const std::string& text) { throw Error(number, kSource, text); }

std::vector<double> Doubles(const py::handle& object, const char* name, int ndim, std::vector<std::size_t>* shape) {
  py::array array;
  try {
    array = py::array::ensure(object);
  } catch (const py::error_already_set&) {
  }
  if (!array) Fail(13, std::string(name) + " must be an array of numbers");
  const char kind = array.dtype().kind();
  if (kind != 'f' && kind != 'i' && kind != 'u') {
    Fail(13, std::string(name) + " must hold real numbers, not " + py::str(array.dtype()).cast<std::string>());
  }
  if (array.ndim() != ndim) {
    Fail(5, std::string(name) + " must be a " + std::to_string(ndim) + "-D array, not " + std::to_string(array.ndim()) + "-D");
  }
  const auto doubles = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(array);
  if (!doubles) Fail(13, std::string(name) + " cannot be read as float64");
  if (shape != nullptr) {
    shape->clear();
    for (py::ssize_t k = 0; k < doubles.ndim(); ++k) shape->push_back(static_cast<std::size_t>(doubles.shape(k)));
  }
  return std::vector<double>(doubles.data(), doubles.data() + doubles.size());
}

void SameLength(const std::vector<double>& x, const std::vector<double>& y, const std::vector<double>* z) {
  if (y.size() != x.size() || (z != nullptr && z->size() != x.size())) {
    Fail(5, "x, y" + std::string(z != nullptr ? " and z" : "") + " must have the same length (" + std::to_string(x.size()) +
                ", " + std::to_string(y.size()) + (z != nullptr ? ", " + std::to_string(z->size()) : std::string()) + ")");
  }
}

GridFile GridIn(const py::handle& x, const py::handle& y, const py::handle& z) {
  GridFile grid;
  grid.x = Doubles(x, "x", 1);
  grid.y = Doubles(y, "y", 1);
  std::vector<std::size_t> shape;
  const std::vector<double> values = Doubles(z, "z", 2, &shape);
  const std::size_t nx = grid.x.size(), ny = grid.y.size();
  if (shape[0] != ny || shape[1] != nx) {
    Fail(5, "a grid's z must have the shape (len(y), len(x)) = (" + std::to_string(ny) + ", " + std::to_string(nx) +
                "), not (" + std::to_string(shape[0]) + ", " + std::to_string(shape[1]) + ")");
  }
  grid.z.resize(nx * ny);
  for (std::size_t j = 0; j < ny; ++j) {
    for (std::size_t i = 0; i < nx; ++i) grid.z[i * ny + j] = values[j * nx + i];
  }
  return grid;
}

py::array_t<double> Array1(std::span<const double> values) {
  py::array_t<double> out(static_cast<py::ssize_t>(values.size()));
  if (!values.empty()) std::memcpy(out.mutable_data(), values.data(), values.size() * sizeof(double));
  return out;
}

py::array_t<double> Array2(const GridFile& grid) {
  const std::size_t nx = grid.x.size(), ny = grid.y.size();
  py::array_t<double> out({static_cast<py::ssize_t>(ny), static_cast<py::ssize_t>(nx)});
  double* data = out.mutable_data();
  for (std::size_t j = 0; j < ny; ++j) {
    for (std::size_t i = 0; i < nx; ++i) data[j * nx + i] = grid.z[i * ny + j];
  }
  return out;
}

py::array_t<double> Vertices(const Polyline& line) {
  py::array_t<double> out({static_cast<py::ssize_t>(line.x.size()), py::ssize_t{2}});
  double* data = out.mutable_data();
  for (std::size_t k = 0; k < line.x.size(); ++k) {
    data[2 * k] = line.x[k];
    data[2 * k + 1] = line.y[k];
  }
  return out;
}

py::list LinesOut(const std::vector<std::vector<Polyline>>& lines) {
  py::list out;
  for (const std::vector<Polyline>& level : lines) {
    py::list pieces;
    for (const Polyline& line : level) pieces.append(Vertices(line));
    out.append(pieces);
  }
  return out;
}

ResamplingProgress Progress::Callback() {
  if (callback_.is_none()) return {};
  return [this](std::int64_t done, std::int64_t total) {
    py::gil_scoped_acquire gil;
    if (error_) return false;
    try {
      const py::object answer = callback_(done, total);
      return answer.is_none() || answer.cast<bool>();
    } catch (py::error_already_set& e) {
      error_ = std::move(e);
      return false;
    }
  };
}

void Progress::Rethrow() {
  if (error_) {
    py::error_already_set e = std::move(*error_);
    error_.reset();
    throw e;
  }
}

namespace {

// The model numbered by its name; an unknown name raises orvane.Error.
std::int32_t ModelNumber(const std::string& name) {
  const std::int32_t model = VariogramModelNumber(name);
  if (model < 0) Fail(5, "model must be linear, spherical, exponential or gaussian, not " + name);
  return model;
}

template <class T>
std::optional<T> Option(const py::dict& options, const char* key) {
  if (!options.contains(key) || options[key].is_none()) return std::nullopt;
  return options[key].cast<T>();
}

// The Resampling that the options describe for points x, y, z (see orvane.grid).
void Configure(const py::dict& options, const std::vector<double>& x, const std::vector<double>& y,
               const std::vector<double>& z, Resampling& settings) {
  const std::string method = Option<std::string>(options, "method").value_or("idw");
  if (method == "idw") {
    settings.SetResamplerType(orvResamplerTypeInverseDistance);
    settings.InverseDistance().SetWeightingPower(Option<double>(options, "power").value_or(2.0));
    const std::int64_t most = Option<std::int64_t>(options, "max_points").value_or(0);
    if (most < 0 || most > std::numeric_limits<std::int32_t>::max()) Fail(5, "max_points must be 0 (all) or more");
    settings.InverseDistance().SetMaxPoints(static_cast<std::int32_t>(most));
    settings.InverseDistance().SetRadius(Option<double>(options, "radius").value_or(0.0));
  } else if (method == "kriging") {
    settings.SetResamplerType(orvResamplerTypeKriging);
    Kriging& kriging = settings.Kriging();
    const std::optional<std::string> name = Option<std::string>(options, "model");
    const std::int32_t model = name ? ModelNumber(*name) : -1;  // -1: the best model
    const std::optional<double> nugget = Option<double>(options, "nugget"), sill = Option<double>(options, "sill"),
                                range = Option<double>(options, "range");
    kriging.SetBlockMode(Option<bool>(options, "block").value_or(true));
    if (model < 0 || !nugget || !sill || !range) {
      // What is not given is fitted to the points' variogram, as orvane grid does.
      const VariogramModel fit = BestVariogramModel(x, y, z, 5000, model);
      kriging.SetModelSemiVariogram(fit.model);
      kriging.SetNugget(fit.nugget);
      kriging.SetSill(fit.nugget + fit.psill);
      kriging.SetAutoSetRange(false);
      kriging.SetRange(fit.range);
    }
    if (model >= 0) kriging.SetModelSemiVariogram(model);
    if (nugget) kriging.SetNugget(*nugget);
    if (sill) kriging.SetSill(*sill);
    if (range) {
      kriging.SetAutoSetRange(false);
      kriging.SetRange(*range);
    }
  } else if (method == "nn") {
    settings.SetResamplerType(orvResamplerTypeNNGridR);
    NNGridR& nn = settings.NNGridR();
    nn.SetUseGradients(Option<bool>(options, "gradients").value_or(false));
    nn.SetTautness(Option<double>(options, "tautness").value_or(1.0));
    nn.SetParameter("Extrap", Option<bool>(options, "extrapolate").value_or(false) ? 1.0 : 0.0);
    if (!Option<bool>(options, "rescale").value_or(false) && !x.empty()) {
      // In data units: the method's unit square stretched back by the points' spans.
      const auto [x0, x1] = std::minmax_element(x.begin(), x.end());
      const auto [y0, y1] = std::minmax_element(y.begin(), y.end());
      nn.SetParameter("MagX", *x1 > *x0 ? *x1 - *x0 : 1.0);
      nn.SetParameter("MagY", *y1 > *y0 ? *y1 - *y0 : 1.0);
    }
  } else {
    Fail(5, "method must be \"idw\", \"kriging\" or \"nn\", not \"" + method + "\"");
  }
  settings.SetBlankOutsideHull(Option<bool>(options, "blank_outside_hull").value_or(false));
}

py::array_t<std::int32_t> Triangulate(const py::handle& xs, const py::handle& ys) {
  const std::vector<double> x = Doubles(xs, "x", 1), y = Doubles(ys, "y", 1);
  SameLength(x, y);
  std::vector<std::int32_t> v;
  {
    py::gil_scoped_release release;
    DataSet data;
    data.DataAsSparseGridSet(x, y, std::vector<double>(x.size(), 0.0));
    v = data.MeshTriangleVertices();
  }
  py::array_t<std::int32_t> out({static_cast<py::ssize_t>(v.size() / 3), py::ssize_t{3}});
  if (!v.empty()) std::memcpy(out.mutable_data(), v.data(), v.size() * sizeof(std::int32_t));
  return out;
}

py::tuple Grid(const py::handle& xs, const py::handle& ys, const py::handle& zs, const py::handle& nodesX,
               const py::handle& nodesY, const py::dict& options, bool variance, py::object progress) {
  const std::vector<double> x = Doubles(xs, "x", 1), y = Doubles(ys, "y", 1), z = Doubles(zs, "z", 1);
  SameLength(x, y, &z);
  const std::vector<double> gx = Doubles(nodesX, "nodes_x", 1), gy = Doubles(nodesY, "nodes_y", 1);
  Resampling settings;
  Configure(options, x, y, z, settings);
  Progress report(std::move(progress));
  GridFile grid, variances;
  {
    py::gil_scoped_release release;
    try {
      grid = ResampleOnto(settings, x, y, z, gx, gy, report.Callback(), variance ? &variances : nullptr);
    } catch (const Error&) {
      py::gil_scoped_acquire gil;
      report.Rethrow();
      throw;
    }
  }
  if (variance) return py::make_tuple(Array2(grid), Array2(variances));
  return py::make_tuple(Array2(grid));
}

// A data set of the grid (x, y, Z) or of the points (x, y, z).
void Load(DataSet& data, const py::handle& xs, const py::handle& ys, const py::handle& zs) {
  const py::array z = py::array::ensure(zs);
  if (z && z.ndim() == 2) {
    const GridFile grid = GridIn(xs, ys, zs);
    py::gil_scoped_release release;
    data.DataAsBlankedGridSet(grid.x, grid.y, grid.z);
    return;
  }
  const std::vector<double> x = Doubles(xs, "x", 1), y = Doubles(ys, "y", 1), values = Doubles(zs, "z", 1);
  SameLength(x, y, &values);
  py::gil_scoped_release release;
  data.DataAsSparseGridSet(x, y, values);
}

py::list ContourLines(const py::handle& xs, const py::handle& ys, const py::handle& zs, const py::handle& levelsIn,
                      bool tiesAbove) {
  const std::vector<double> levels = Doubles(levelsIn, "levels", 1);
  DataSet data;
  Load(data, xs, ys, zs);
  std::vector<std::vector<Polyline>> lines;
  {
    py::gil_scoped_release release;
    lines = data.ContourLines(levels, tiesAbove);
  }
  return LinesOut(lines);
}

py::list ContourBands(const py::handle& xs, const py::handle& ys, const py::handle& zs, const py::handle& levelsIn,
                      bool tiesAbove) {
  const std::vector<double> levels = Doubles(levelsIn, "levels", 1);
  DataSet data;
  Load(data, xs, ys, zs);
  std::vector<std::vector<Polygon>> bands;
  {
    py::gil_scoped_release release;
    bands = data.ContourBands(levels, tiesAbove);
  }
  py::list out;
  for (const std::vector<Polygon>& band : bands) {
    py::list polygons;
    for (const Polygon& polygon : band) {
      py::list rings;
      for (const Polyline& ring : polygon.rings) rings.append(Vertices(ring));
      polygons.append(rings);
    }
    out.append(polygons);
  }
  return out;
}

py::dict Variogram(const py::handle& xs, const py::handle& ys, const py::handle& zs, double cutoff, std::int32_t bins,
                   std::optional<double> direction, double tolerance) {
  const std::vector<double> x = Doubles(xs, "x", 1), y = Doubles(ys, "y", 1), z = Doubles(zs, "z", 1);
  SameLength(x, y, &z);
  VariogramOptions options;
  options.cutoff = cutoff;
  options.bins = bins;
  options.directional = direction.has_value();
  options.direction = direction.value_or(0.0);
  options.tolerance = tolerance;
  std::vector<VariogramBin> result;
  {
    py::gil_scoped_release release;
    result = ExperimentalVariogram(x, y, z, options);
  }
  std::vector<double> distance, gamma;
  py::array_t<std::int64_t> pairs(static_cast<py::ssize_t>(result.size()));
  for (std::size_t k = 0; k < result.size(); ++k) {
    distance.push_back(result[k].distance);
    gamma.push_back(result[k].gamma);
    pairs.mutable_data()[k] = result[k].pairs;
  }
  py::dict out;
  out["distance"] = Array1(distance);
  out["gamma"] = Array1(gamma);
  out["pairs"] = pairs;
  return out;
}

py::dict ModelDict(const VariogramModel& m) {
  py::dict d;
  d["model"] = m.Name();
  d["nugget"] = m.nugget;
  d["psill"] = m.psill;
  d["range"] = m.range;
  d["sse"] = m.sse;
  return d;
}

py::list FitVariogram(const py::dict& bins, std::optional<std::string> model) {
  const std::vector<double> distance = Doubles(bins["distance"], "distance", 1), gamma = Doubles(bins["gamma"], "gamma", 1),
                            pairs = Doubles(bins["pairs"], "pairs", 1);
  SameLength(distance, gamma, &pairs);
  std::vector<VariogramBin> in;
  for (std::size_t k = 0; k < distance.size(); ++k) in.push_back({distance[k], gamma[k], static_cast<std::int64_t>(pairs[k])});
  py::list out;
  if (model) {
    out.append(ModelDict(orvane::FitVariogram(in, ModelNumber(*model))));
  } else {
    for (const VariogramModel& m : FitVariograms(in)) out.append(ModelDict(m));
  }
  return out;
}

py::dict CrossValidate(const py::handle& xs, const py::handle& ys, const py::handle& zs, const py::dict& options,
                       py::object progress) {
  const std::vector<double> x = Doubles(xs, "x", 1), y = Doubles(ys, "y", 1), z = Doubles(zs, "z", 1);
  SameLength(x, y, &z);
  Resampling settings;
  Configure(options, x, y, z, settings);
  Progress report(std::move(progress));
  CrossValidation cv;
  {
    py::gil_scoped_release release;
    try {
      cv = orvane::CrossValidate(settings, x, y, z, report.Callback());
    } catch (const Error&) {
      py::gil_scoped_acquire gil;
      report.Rethrow();
      throw;
    }
  }
  std::vector<double> predicted, variance;
  for (const CrossValidationPoint& p : cv.points) {
    predicted.push_back(p.predicted);
    variance.push_back(p.variance);
  }
  py::dict out;
  out["points"] = cv.summary.count;
  out["skipped"] = cv.summary.skipped;
  out["me"] = cv.summary.me;
  out["rmse"] = cv.summary.rmse;
  out["mae"] = cv.summary.mae;
  out["medae"] = cv.summary.medae;
  if (settings.ResamplerType() == orvResamplerTypeKriging) out["msdr"] = cv.summary.msdr;
  out["predicted"] = Array1(predicted);
  if (settings.ResamplerType() == orvResamplerTypeKriging) out["variance"] = Array1(variance);
  return out;
}

}  // namespace

}  // namespace orvane::python

PYBIND11_MODULE(_orvane, m) {
  using namespace orvane::python;
  m.doc() = "The compiled part of the orvane package; use the functions of orvane itself.";
  errorType = py::handle(
      PyErr_NewExceptionWithDoc("orvane.Error",
                                "An error of the Orvane library: number, source and description, as the C++ "
                                "orvane::Error carries them.",
                                PyExc_ValueError, nullptr));
  m.attr("Error") = py::reinterpret_steal<py::object>(errorType);
  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) std::rethrow_exception(p);
    } catch (const orvane::Error& e) {
      const py::object error = errorType(e.Description());
      error.attr("number") = e.Number();
      error.attr("source") = e.Source();
      error.attr("description") = e.Description();
      PyErr_SetObject(errorType.ptr(), error.ptr());
    }
  });
  m.def("_triangulate", &Triangulate);
  m.def("_grid", &Grid);
  m.def("_contour_lines", &ContourLines);
  m.def("_contour_bands", &ContourBands);
  m.def("_variogram", &Variogram);
  m.def("_fit_variogram", &FitVariogram);
  m.def("_cross_validate", &CrossValidate);
  m.def("set_threads", [](unsigned count) { orvane::detail::SetThreadCount(count); },
        "The threads each computation may use: 0 (the default) for every core.");
  AddSurface(m);
}
