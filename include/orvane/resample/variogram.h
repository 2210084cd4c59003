#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace orvane {

/// How ExperimentalVariogram bins the pairs of points.
struct VariogramOptions {
  double cutoff = 0.0;  ///< largest pair distance taken; 0: 0.99999 of a third of the bounding box's diagonal (gstat's default)
  std::int32_t bins = 15;  ///< equal-width distance classes from 0 to the cutoff, 1 to 1000
  bool directional = false;  ///< only pairs whose direction lies within tolerance of direction
  double direction = 0.0;    ///< degrees clockwise from the +Y axis (north), as an azimuth
  double tolerance = 22.5;   ///< degrees either side of direction, 0 to 90
};

/// One distance class of an experimental semi-variogram.
struct VariogramBin {
  double distance = 0.0;  ///< the mean distance of the class's pairs
  double gamma = 0.0;     ///< the semivariance: the mean of (z_i - z_j)^2 / 2 over the pairs
  std::int64_t pairs = 0;  ///< how many pairs the class holds
};

/// The experimental semi-variogram of points (x, y, z): pairs at distances up to the
/// cutoff, in options.bins classes (k w, (k + 1) w] of width w = cutoff / bins, as gstat
/// bins them (a pair on a boundary goes in the lower class, one at no distance in the
/// first). Classes with no pairs are left out. Lists of different
/// lengths, fewer than two points, NaN or infinite values, or bad options raise error 5
/// (source "Orvada.Variogram").
std::vector<VariogramBin> ExperimentalVariogram(std::span<const double> x, std::span<const double> y,
                                                std::span<const double> z, const VariogramOptions& options = {});

/// A model semi-variogram in the kriging engine's terms: gamma(0) = 0 and, for h > 0,
/// nugget + psill * f(h / range), f as in EKrigingModelSemiVariogramType (spherical and
/// linear reach the sill at the range; exponential and Gaussian reach 95 % of it there).
struct VariogramModel {
  std::int32_t model = 1;  ///< an EKrigingModelSemiVariogramType value
  double nugget = 0.0;     ///< the jump at the origin, 0 or more
  double psill = 0.0;      ///< the partial sill: the sill less the nugget, 0 or more
  double range = 1.0;      ///< the range, above 0
  double sse = 0.0;        ///< the weighted sum of squared errors of the fit, sum N_h / h^2 (gamma - model)^2

  /// The semivariance at distance h.
  double Gamma(double h) const;
  /// The model's name: "linear", "spherical", "exponential" or "gaussian".
  const char* Name() const;
};

/// The model that Name() calls name; -1 for any other name.
std::int32_t VariogramModelNumber(std::string_view name);

/// Fits one model to the bins by weighted least squares with weights N_h / h^2: the
/// nugget and partial sill, not negative, exactly for each range, and the range that
/// gives the least error. Fewer than two bins, bins whose semivariances are all 0 (values
/// that do not vary), or a model outside 0..3 raise error 5.
VariogramModel FitVariogram(std::span<const VariogramBin> bins, std::int32_t model);

/// Fits the four models (linear, spherical, exponential, Gaussian); the best (least
/// weighted error) first.
std::vector<VariogramModel> FitVariograms(std::span<const VariogramBin> bins);

/// The model that fits the points' variogram (default bins) best, or the fit of the
/// given model (0..3), for kriging with: a Gaussian model's nugget is at least a
/// millionth of its sill, without which its kriging system is too ill-conditioned to
/// solve. Of more than mostPoints points every k-th is taken, which bounds the pairs to
/// bin. Errors as for ExperimentalVariogram and FitVariogram.
VariogramModel BestVariogramModel(std::span<const double> x, std::span<const double> y, std::span<const double> z,
                                  std::size_t mostPoints = 5000, std::int32_t model = -1);

}  // namespace orvane
