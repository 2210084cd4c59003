// The inverse-distance resampler.
//
// The rule, per grid point, over the input points in order: an exact hit (within the
// tolerance in X and in Y) gives that point's Z; otherwise num += Z / d and den += 1 / d
// with d = (dx^2 + dy^2)^p, skipping d = 0; the estimate is num / den, or 0 without
// weight. The grid computation keeps exactly these operations in exactly this order for
// every grid point, but runs them for a whole column of grid points at once (input
// points outer, grid points inner), which the compiler turns into vector arithmetic, and
// spreads the columns over threads. IEEE division and multiplication are correctly
// rounded at any vector width and nothing is fused, so every value is bit for bit the
// one EstimateAt computes.
//
// With a search neighbourhood (MaxPoints, Radius) each node takes the nearest points a
// k-d tree finds instead, summed from the nearest out; a node with none in range is blank.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <nanoflann.hpp>

#include "interpolator.h"
#include "orvane/core/error.h"
#include "orvane/resample/resampling.h"

namespace orvane {

namespace {

constexpr double kHitTolerance = 2.2204460492503102e-14;
constexpr std::size_t kNoHit = static_cast<std::size_t>(-1);

// Adds every input point's weighted Z to num and den for the grid points (x, gy[j]), for
// one of the powers handled by a single operation (Power 1 or 2) or by pow.
template <int Kind>
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
__attribute__((target_clones("avx512f", "avx2", "default")))
#endif
void Accumulate(double x, const double* gy, std::size_t m, const double* xs, const double* ys,
                const double* zs, std::size_t n, double p, double* num, double* den,
                std::size_t* hit) {
  for (std::size_t k = 0; k < n; ++k) {
    const double dx = std::fabs(xs[k] - x);
    const double dx2 = dx * dx;
    const double yk = ys[k];
    const double zk = zs[k];
    if (dx < kHitTolerance) {
      for (std::size_t j = 0; j < m; ++j) {
        if (hit[j] == kNoHit && std::fabs(yk - gy[j]) < kHitTolerance) hit[j] = k;
      }
    }
    if constexpr (Kind == 1 || Kind == 2) {
      // Far enough along X that d = s or s * s cannot vanish: no test is needed (an
      // overflow to infinity adds 0, as the rule does).
      if (dx > 1e-70) {
        for (std::size_t j = 0; j < m; ++j) {
          const double dy = std::fabs(yk - gy[j]);
          const double s = dx2 + dy * dy;
          const double d = Kind == 1 ? s : s * s;
          num[j] += zk / d;
          den[j] += 1.0 / d;
        }
        continue;
      }
    }
    for (std::size_t j = 0; j < m; ++j) {
      const double dy = std::fabs(yk - gy[j]);
      const double s = dx2 + dy * dy;
      double d;
      if constexpr (Kind == 0) {
        d = 1.0;
      } else if constexpr (Kind == 1) {
        d = s;
      } else if constexpr (Kind == 2) {
        d = s * s;
      } else {
        d = std::pow(s, p);
      }
      // Adding 0 leaves the sums exactly as they are (they are never -0).
      const bool weighted = d != 0.0;
      num[j] += weighted ? zk / d : 0.0;
      den[j] += weighted ? 1.0 / d : 0.0;
    }
  }
}

}  // namespace

double InverseDistanceResampler::Power(double s, double p) {
  if (p == 0.0) return 1.0;
  if (p == 1.0) return s;
  if (p == 2.0) return s * s;
  return std::pow(s, p);
}

double InverseDistanceResampler::EstimateAt(double x, double y, const std::vector<double>& xs,
                                            const std::vector<double>& ys,
                                            const std::vector<double>& zs, double power, std::size_t skip) {
  double num = 0.0;
  double den = 0.0;
  for (std::size_t k = 0; k < xs.size(); ++k) {
    if (k == skip) continue;
    const double dx = std::fabs(xs[k] - x);
    const double dy = std::fabs(ys[k] - y);
    if (dx < kHitTolerance && dy < kHitTolerance) return zs[k];
    const double d = Power(dx * dx + dy * dy, power);
    if (d != 0.0) {
      num = num + zs[k] / d;
      den = den + 1.0 / d;
    }
  }
  return den == 0.0 ? 0.0 : num / den;
}

std::vector<double> InverseDistanceResampler::Grid(const std::vector<double>& gridX,
                                                   const std::vector<double>& gridY,
                                                   const std::vector<double>& xs,
                                                   const std::vector<double>& ys,
                                                   const std::vector<double>& zs, double power,
                                                   const ProgressCallback& progress) {
  const std::size_t nx = gridX.size();
  const std::size_t ny = gridY.size();
  std::vector<double> z(nx * ny);
  auto column = [&](std::size_t i, std::vector<double>& num, std::vector<double>& den,
                    std::vector<std::size_t>& hit) {
    num.assign(ny, 0.0);
    den.assign(ny, 0.0);
    hit.assign(ny, kNoHit);
    const auto run = [&](auto kind) {
      Accumulate<decltype(kind)::value>(gridX[i], gridY.data(), ny, xs.data(), ys.data(),
                                        zs.data(), xs.size(), power, num.data(), den.data(),
                                        hit.data());
    };
    if (power == 0.0) {
      run(std::integral_constant<int, 0>{});
    } else if (power == 1.0) {
      run(std::integral_constant<int, 1>{});
    } else if (power == 2.0) {
      run(std::integral_constant<int, 2>{});
    } else {
      run(std::integral_constant<int, 3>{});
    }
    for (std::size_t j = 0; j < ny; ++j) {
      double& out = z[i * ny + j];
      if (hit[j] != kNoHit) {
        out = zs[hit[j]];
      } else {
        out = den[j] == 0.0 ? 0.0 : num[j] / den[j];
      }
    }
  };
  // Columns are independent.
  RunProgress run(progress, static_cast<std::int64_t>(nx * ny));
  ParallelFor(nx, static_cast<std::int64_t>(ny), run, [&](std::size_t i) {
    std::vector<double> num, den;
    std::vector<std::size_t> hit;
    column(i, num, den, hit);
  });
  run.ThrowIfCancelled();
  return z;
}

namespace {

struct Cloud {
  const std::vector<double>* x;
  const std::vector<double>* y;
  std::size_t kdtree_get_point_count() const { return x->size(); }
  double kdtree_get_pt(std::size_t i, std::size_t d) const { return d == 0 ? (*x)[i] : (*y)[i]; }
  template <class Box>
  bool kdtree_get_bbox(Box&) const {
    return false;
  }
};

using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>, Cloud, 2, std::uint32_t>;

// The search neighbourhood of the local method around one query point.
class Neighbourhood {
 public:
  Neighbourhood(const std::vector<double>& xs, const std::vector<double>& ys, const std::vector<double>& zs,
                double power, std::int32_t maxPoints, double radius)
      : xs_(xs), ys_(ys), zs_(zs), power_(power), maxPoints_(maxPoints), radius_(radius),
        cloud_{&xs, &ys}, tree_(2, cloud_, nanoflann::KDTreeSingleIndexAdaptorParams(16)),
        k_(maxPoints > 0 ? std::min<std::size_t>(static_cast<std::size_t>(maxPoints), xs.size()) : xs.size()),
        limit_(radius > 0.0 ? radius * radius : std::numeric_limits<double>::infinity()) {}

  Neighbourhood(const Neighbourhood&) = delete;
  Neighbourhood& operator=(const Neighbourhood&) = delete;

  // A search's working space; one per thread.
  struct Scratch {
    std::vector<std::uint32_t> index;
    std::vector<double> distance;
    std::vector<std::pair<std::uint32_t, double>> within;
  };

  // The estimate at (x, y) from the nearest points in range, the point numbered skip left
  // out; NaN when none is in range.
  double EstimateAt(double x, double y, Scratch& scratch, std::size_t skip = kNoHit) const {
    std::vector<std::uint32_t>& index = scratch.index;
    std::vector<double>& distance = scratch.distance;
    std::vector<std::pair<std::uint32_t, double>>& within = scratch.within;
    const double query[2] = {x, y};
    std::size_t found = 0;
    if (maxPoints_ > 0 || radius_ <= 0.0) {
      // One more when a point is to be left out, so that k others remain.
      const std::size_t k = std::min(k_ + (skip == kNoHit ? 0 : 1), xs_.size());
      index.resize(k);
      distance.resize(k);
      found = tree_.knnSearch(query, k, index.data(), distance.data());
      while (found > 0 && distance[found - 1] > limit_) --found;  // nearest first
    } else {
      within.clear();
      found = tree_.radiusSearch(query, limit_, within, nanoflann::SearchParams(32, 0.0F, true));
      index.resize(found);
      for (std::size_t m = 0; m < found; ++m) index[m] = within[m].first;
    }
    double num = 0.0, den = 0.0;
    std::size_t taken = 0;
    for (std::size_t m = 0; m < found && taken < k_; ++m) {
      const std::size_t p = index[m];
      if (p == skip) continue;
      ++taken;
      const double dx = std::fabs(xs_[p] - x), dy = std::fabs(ys_[p] - y);
      if (dx < kHitTolerance && dy < kHitTolerance) return zs_[p];
      const double d = InverseDistanceResampler::Power(dx * dx + dy * dy, power_);
      if (d != 0.0) {
        num += zs_[p] / d;
        den += 1.0 / d;
      }
    }
    if (taken == 0) return std::numeric_limits<double>::quiet_NaN();
    return den == 0.0 ? 0.0 : num / den;
  }

 private:
  const std::vector<double>& xs_;
  const std::vector<double>& ys_;
  const std::vector<double>& zs_;
  double power_;
  std::int32_t maxPoints_;
  double radius_;
  Cloud cloud_;
  Tree tree_;
  std::size_t k_;
  double limit_;
};

}  // namespace

std::vector<double> InverseDistanceResampler::LocalGrid(const std::vector<double>& gridX, const std::vector<double>& gridY,
                                                        const std::vector<double>& xs, const std::vector<double>& ys,
                                                        const std::vector<double>& zs, double power,
                                                        std::int32_t maxPoints, double radius,
                                                        const ProgressCallback& progress) {
  const std::size_t nx = gridX.size(), ny = gridY.size();
  std::vector<double> z(nx * ny, std::numeric_limits<double>::quiet_NaN());
  if (xs.empty()) return z;
  const Neighbourhood near(xs, ys, zs, power, maxPoints, radius);
  RunProgress run(progress, static_cast<std::int64_t>(nx * ny));
  ParallelFor(nx, static_cast<std::int64_t>(ny), run, [&](std::size_t i) {
    Neighbourhood::Scratch scratch;
    for (std::size_t j = 0; j < ny; ++j) z[i * ny + j] = near.EstimateAt(gridX[i], gridY[j], scratch);
  });
  run.ThrowIfCancelled();
  return z;
}

void InverseDistanceResampler::LeaveOneOut(std::vector<double>& estimates, std::vector<double>& variances) {
  const orvane::InverseDistance& idw = settings_.InverseDistance();
  const double power = idw.WeightingPower();
  const std::size_t n = x_.size();
  estimates.assign(n, std::numeric_limits<double>::quiet_NaN());
  variances.clear();
  RunProgress run(progress_, static_cast<std::int64_t>(n));
  if (idw.MaxPoints() > 0 || idw.Radius() > 0.0) {
    const Neighbourhood near(x_, y_, z_, power, idw.MaxPoints(), idw.Radius());
    constexpr std::size_t kChunk = 256;
    ParallelFor((n + kChunk - 1) / kChunk, 0, run, [&](std::size_t chunk) {
      Neighbourhood::Scratch scratch;
      const std::size_t end = std::min(n, (chunk + 1) * kChunk);
      for (std::size_t i = chunk * kChunk; i < end; ++i) estimates[i] = near.EstimateAt(x_[i], y_[i], scratch, i);
      run.Advance(static_cast<std::int64_t>(end - chunk * kChunk));
    });
  } else {
    // Without the point itself no weight may be left (a single point): no estimate.
    ParallelFor(n, 1, run, [&](std::size_t i) {
      if (n > 1) estimates[i] = EstimateAt(x_[i], y_[i], x_, y_, z_, power, i);
    });
  }
  run.ThrowIfCancelled();
}

void InverseDistanceResampler::RefreshGrid() {
  GridAxes(gridX_, gridY_);
  const orvane::InverseDistance& idw = settings_.InverseDistance();
  if (idw.MaxPoints() > 0 || idw.Radius() > 0.0) {
    gridZ_ = LocalGrid(gridX_, gridY_, x_, y_, z_, idw.WeightingPower(), idw.MaxPoints(), idw.Radius(), progress_);
  } else {
    gridZ_ = Grid(gridX_, gridY_, x_, y_, z_, idw.WeightingPower(), progress_);
  }
  stale_ = false;
}

}  // namespace orvane
