#pragma once

// Between numpy and the library: arrays checked and copied in, results copied out, and
// progress callbacks that may be called from the library's worker threads. Internal to
// the Python module.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "orvane/data/data_set.h"

namespace orvane::python {

namespace py = pybind11;

// The values of a real array (any integer or floating dtype) of ndim dimensions, as
// doubles in C order (a strided view, such as a column, is read through its strides).
// Other kinds of data and other dimensions raise orvane.Error (error 13 for the type, 5
// for the dimensions) naming it.
std::vector<double> Doubles(const py::handle& object, const char* name, int ndim, std::vector<std::size_t>* shape = nullptr);

// x and y of one length (and z, when given), 1-D.
void SameLength(const std::vector<double>& x, const std::vector<double>& y, const std::vector<double>* z = nullptr);

// A grid given as x (nx), y (ny) and Z (ny, nx), numpy's row-per-Y order, as the
// library's lists: z[i * ny + j] = Z[j, i].
GridFile GridIn(const py::handle& x, const py::handle& y, const py::handle& z);

// A 1-D float64 array of the values.
py::array_t<double> Array1(std::span<const double> values);
// The library's z[i * ny + j] as a (ny, nx) array, Z[j, i].
py::array_t<double> Array2(const GridFile& grid);
// A polyline's vertices as an (n, 2) array.
py::array_t<double> Vertices(const Polyline& line);
// Contour lines as Python has them: per level, a list of (n, 2) arrays.
py::list LinesOut(const std::vector<std::vector<Polyline>>& lines);

// A Python progress callback, callable(done, total) -> bool or None, handed to the
// library, which may call it from any of its threads: it takes the GIL for the call. A
// false result stops the run (orvane.Error 18); an exception in the callback stops it
// too and is raised again by Rethrow.
class Progress {
 public:
  explicit Progress(py::object callback) : callback_(std::move(callback)) {}
  ResamplingProgress Callback();
  // Raises the callback's exception, if it raised one (the GIL held).
  void Rethrow();

 private:
  py::object callback_;
  std::optional<py::error_already_set> error_;
};

// Raises orvane.Error from Python's side.
[[noreturn]] void Fail(std::int32_t number, const std::string& text);

// Registers the Surface classes (surface.cpp).
void AddSurface(py::module_& m);

}  // namespace orvane::python
