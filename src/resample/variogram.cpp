// Experimental semi-variograms and their weighted least-squares fit.
//
// The bins follow the usual geostatistical convention: a cutoff of a third of the
// bounding box's diagonal, 15 equal classes, each class's distance the mean of its pairs'.
// The fit minimises sum N_h / h^2 (gamma_h - model(h))^2. For a given range the model is
// linear in the nugget and the partial sill, so those two come exactly from a 2 x 2
// weighted least-squares system (kept at 0 or above); the range is found by a scan over
// a logarithmic ladder followed by a golden-section search round the best rung. The
// error as a function of the range is not always unimodal: the scan keeps the fit from a
// local minimum that a descent from one starting value could end in.

#include "orvane/resample/variogram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <string_view>

#include "orvane/core/error.h"
#include "orvane/resample/resampling.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Variogram";

[[noreturn]] void Fail(const std::string& text) { throw Error(5, kSource, text); }

// f(t) of a model, t = h / range.
double Shape(std::int32_t model, double t) {
  switch (model) {
    case orvKrigingMSVLinear:
      return std::min(t, 1.0);
    case orvKrigingMSVSpherical:
      return t < 1.0 ? 1.5 * t - 0.5 * t * t * t : 1.0;
    case orvKrigingMSVExponential:
      return 1.0 - std::exp(-3.0 * t);
    default:
      return 1.0 - std::exp(-3.0 * t * t);
  }
}

struct Fit {
  double nugget = 0.0, psill = 0.0, sse = std::numeric_limits<double>::infinity();
};

// The best nugget and partial sill (both 0 or more) for one range, and its error.
Fit FitSills(std::span<const VariogramBin> bins, std::int32_t model, double range) {
  double sw = 0, swf = 0, swff = 0, swg = 0, swfg = 0;
  std::vector<double> f(bins.size()), w(bins.size());
  for (std::size_t k = 0; k < bins.size(); ++k) {
    const VariogramBin& b = bins[k];
    w[k] = static_cast<double>(b.pairs) / (b.distance * b.distance);
    f[k] = Shape(model, b.distance / range);
    sw += w[k];
    swf += w[k] * f[k];
    swff += w[k] * f[k] * f[k];
    swg += w[k] * b.gamma;
    swfg += w[k] * f[k] * b.gamma;
  }
  const auto error = [&](double c0, double p) {
    double sse = 0;
    for (std::size_t k = 0; k < bins.size(); ++k) {
      const double r = bins[k].gamma - c0 - p * f[k];
      sse += w[k] * r * r;
    }
    return sse;
  };
  // The unconstrained solution, then the edges of the feasible quarter-plane.
  std::array<std::pair<double, double>, 3> candidates{};
  std::size_t count = 0;
  const double det = sw * swff - swf * swf;
  if (det > 1e-14 * sw * swff) {
    const double c0 = (swff * swg - swf * swfg) / det, p = (sw * swfg - swf * swg) / det;
    if (c0 >= 0.0 && p >= 0.0) candidates[count++] = {c0, p};
  }
  if (count == 0) {
    if (swff > 0.0) candidates[count++] = {0.0, std::max(0.0, swfg / swff)};
    candidates[count++] = {std::max(0.0, swg / sw), 0.0};
  }
  Fit best;
  for (std::size_t k = 0; k < count; ++k) {
    const double sse = error(candidates[k].first, candidates[k].second);
    if (sse < best.sse) best = {candidates[k].first, candidates[k].second, sse};
  }
  return best;
}

void CheckBins(std::span<const VariogramBin> bins) {
  if (bins.size() < 2) Fail("A variogram fit needs at least two distance classes.");
  if (std::all_of(bins.begin(), bins.end(), [](const VariogramBin& b) { return b.gamma == 0.0; })) {
    Fail("Every semivariance is 0: the values do not vary, so no model can be fitted.");
  }
  for (const VariogramBin& b : bins) {
    if (!(std::isfinite(b.distance) && b.distance > 0.0 && std::isfinite(b.gamma) && b.gamma >= 0.0 && b.pairs > 0)) {
      Fail("Each distance class needs a distance above 0, a finite semivariance of 0 or more, and pairs.");
    }
  }
}

}  // namespace

std::vector<VariogramBin> ExperimentalVariogram(std::span<const double> x, std::span<const double> y,
                                                std::span<const double> z, const VariogramOptions& options) {
  const std::size_t n = x.size();
  if (y.size() != n || z.size() != n) Fail("The X, Y and Z lists must have the same length.");
  if (n < 2) Fail("A variogram needs at least two points.");
  for (std::size_t k = 0; k < n; ++k) {
    if (!std::isfinite(x[k]) || !std::isfinite(y[k]) || !std::isfinite(z[k])) {
      Fail("The points must be finite numbers (point " + std::to_string(k + 1) + " is not).");
    }
  }
  if (options.bins < 1 || options.bins > 1000) Fail("The number of distance classes must be from 1 to 1000.");
  if (!(std::isfinite(options.cutoff) && options.cutoff >= 0.0)) Fail("The cutoff must be a finite distance of 0 or more.");
  if (options.directional && !(std::isfinite(options.direction) && options.tolerance >= 0.0 && options.tolerance <= 90.0)) {
    Fail("A direction must be finite and its tolerance from 0 to 90 degrees.");
  }
  double cutoff = options.cutoff;
  if (cutoff == 0.0) {
    const auto [x0, x1] = std::minmax_element(x.begin(), x.end());
    const auto [y0, y1] = std::minmax_element(y.begin(), y.end());
    const double dx = *x1 - *x0, dy = *y1 - *y0;
    // gstat's default: a third of the diagonal, shortened by a hundred-thousandth of it.
    cutoff = std::sqrt(dx * dx + dy * dy) / 3.0 * 0.99999;
  }
  if (!(cutoff > 0.0)) Fail("The points all lie at one place: there are no distances to bin.");
  const auto classes = static_cast<std::size_t>(options.bins);
  const double width = cutoff / static_cast<double>(classes);
  // The direction as a unit vector (azimuth: clockwise from +Y), and the cosine bound.
  const double azimuth = options.direction * std::numbers::pi / 180.0;
  const double ux = std::sin(azimuth), uy = std::cos(azimuth);
  const double minCos = std::cos(options.tolerance * std::numbers::pi / 180.0);
  std::vector<double> distance(classes, 0.0), squares(classes, 0.0);
  std::vector<std::int64_t> pairs(classes, 0);
  for (std::size_t i = 0; i + 1 < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      const double dx = x[j] - x[i], dy = y[j] - y[i];
      const double d = std::sqrt(dx * dx + dy * dy);  // as gstat measures it, to the last bit
      if (d > cutoff) continue;
      // Either way along the direction: the cosine's size against the bound.
      if (options.directional && !(d > 0.0 && std::fabs(dx * ux + dy * uy) >= minCos * d)) continue;
      // Classes (k w, (k + 1) w] against the boundaries k * w as computed: a pair on a
      // boundary goes in the lower class, one at no distance in the first.
      const auto upper = static_cast<std::size_t>(std::ceil(d / width));
      std::size_t k = std::min(upper == 0 ? 0 : upper - 1, classes - 1);
      while (k > 0 && d <= static_cast<double>(k) * width) --k;
      while (k + 1 < classes && d > static_cast<double>(k + 1) * width) ++k;
      const double dz = z[j] - z[i];
      distance[k] += d;
      squares[k] += dz * dz;
      ++pairs[k];
    }
  }
  std::vector<VariogramBin> bins;
  for (std::size_t k = 0; k < classes; ++k) {
    if (pairs[k] == 0) continue;
    const auto count = static_cast<double>(pairs[k]);
    bins.push_back({distance[k] / count, squares[k] / (2.0 * count), pairs[k]});
  }
  return bins;
}

double VariogramModel::Gamma(double h) const {
  if (h <= 0.0) return 0.0;
  return nugget + psill * Shape(model, h / range);
}

namespace {

constexpr std::array<std::string_view, 4> kModelNames{"linear", "spherical", "exponential", "gaussian"};

}  // namespace

const char* VariogramModel::Name() const {
  return model >= 0 && model <= 3 ? kModelNames[static_cast<std::size_t>(model)].data() : "unknown";
}

std::int32_t VariogramModelNumber(std::string_view name) {
  for (std::size_t k = 0; k < kModelNames.size(); ++k) {
    if (kModelNames[k] == name) return static_cast<std::int32_t>(k);
  }
  return -1;
}

VariogramModel FitVariogram(std::span<const VariogramBin> bins, std::int32_t model) {
  if (model < 0 || model > 3) Fail("The model must be 0 (linear), 1 (spherical), 2 (exponential) or 3 (Gaussian).");
  CheckBins(bins);
  double nearest = bins.front().distance, farthest = bins.front().distance;
  for (const VariogramBin& b : bins) {
    nearest = std::min(nearest, b.distance);
    farthest = std::max(farthest, b.distance);
  }
  // Ranges from a tenth of the nearest class to ten times the farthest, 400 rungs.
  const double low = std::log(nearest / 10.0), high = std::log(farthest * 10.0);
  constexpr int kRungs = 400;
  const auto rung = [&](int k) { return std::exp(low + (high - low) * k / kRungs); };
  int best = 0;
  double bestSse = std::numeric_limits<double>::infinity();
  for (int k = 0; k <= kRungs; ++k) {
    const double sse = FitSills(bins, model, rung(k)).sse;
    if (sse < bestSse) {
      bestSse = sse;
      best = k;
    }
  }
  // Golden-section search between the neighbouring rungs, in log range.
  double a = std::log(rung(std::max(best - 1, 0))), b = std::log(rung(std::min(best + 1, kRungs)));
  const double ratio = (std::sqrt(5.0) - 1.0) / 2.0;
  const auto error = [&](double logRange) { return FitSills(bins, model, std::exp(logRange)).sse; };
  double c = b - ratio * (b - a), d = a + ratio * (b - a);
  double fc = error(c), fd = error(d);
  for (int step = 0; step < 200 && b - a > 1e-13; ++step) {
    if (fc < fd) {
      b = d;
      d = c;
      fd = fc;
      c = b - ratio * (b - a);
      fc = error(c);
    } else {
      a = c;
      c = d;
      fc = fd;
      d = a + ratio * (b - a);
      fd = error(d);
    }
  }
  double range = std::exp((a + b) / 2.0);
  Fit fit = FitSills(bins, model, range);
  if (bestSse < fit.sse) {  // a flat stretch: the rung itself was better
    range = rung(best);
    fit = FitSills(bins, model, range);
  }
  return VariogramModel{model, fit.nugget, fit.psill, range, fit.sse};
}

std::vector<VariogramModel> FitVariograms(std::span<const VariogramBin> bins) {
  std::vector<VariogramModel> models;
  for (std::int32_t model : {orvKrigingMSVLinear, orvKrigingMSVSpherical, orvKrigingMSVExponential, orvKrigingMSVGaussian}) {
    models.push_back(FitVariogram(bins, model));
  }
  std::stable_sort(models.begin(), models.end(), [](const VariogramModel& l, const VariogramModel& r) { return l.sse < r.sse; });
  return models;
}

VariogramModel BestVariogramModel(std::span<const double> x, std::span<const double> y, std::span<const double> z,
                                  std::size_t mostPoints, std::int32_t model) {
  const std::size_t n = x.size();
  if (y.size() != n || z.size() != n) Fail("The X, Y and Z lists must have the same length.");
  const std::size_t step = mostPoints == 0 ? 1 : std::max<std::size_t>(1, (n + mostPoints - 1) / mostPoints);
  std::vector<double> sx, sy, sz;
  for (std::size_t k = 0; k < n; k += step) {
    sx.push_back(x[k]);
    sy.push_back(y[k]);
    sz.push_back(z[k]);
  }
  const std::vector<VariogramBin> bins = ExperimentalVariogram(sx, sy, sz);
  VariogramModel best = model < 0 ? FitVariograms(bins).front() : FitVariogram(bins, model);
  // A Gaussian model without a nugget makes a kriging system too ill-conditioned to
  // solve wherever points are close against the range: a millionth of the sill keeps it
  // solvable and changes the fitted curve by as little.
  if (best.model == orvKrigingMSVGaussian) best.nugget = std::max(best.nugget, 1e-6 * (best.nugget + best.psill));
  return best;
}

}  // namespace orvane
