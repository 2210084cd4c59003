// The kriging engine.
//
// Ordinary kriging in variogram form: for a point x0 the weights lambda and the Lagrange
// multiplier mu solve
//   [ Gamma  1 ] [ lambda ]   [ gamma0 ]
//   [ 1^T    0 ] [  mu    ] = [   1    ]
// with Gamma_ij = gamma(|xi - xj|) and gamma0_i = gamma(|xi - x0|); the estimate is
// lambda^T z and the kriging variance lambda^T gamma0 + mu. The matrix does not depend
// on x0, so the global calculation factorises it once and solves the dual system
// A w = [z; 0]: the estimate is then w^T [gamma0; 1], one pass over the points per grid
// value. Block kriging solves the small system of each grid value's nearest points.
// Leave-one-out cross-validation reads each point's estimate from the others off the
// same factorisation (see the header); the literal refit per point is the tests' oracle.

#include "orvane_kriging/kriging.h"

#include <Eigen/Dense>
#include <nanoflann.hpp>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

// Points in one neighbourhood of block kriging.
constexpr std::size_t kNeighbourhood = 32;
// The largest global system solved (its matrix alone takes 2 GB).
constexpr std::size_t kMaxGlobalPoints = 16384;
// Reciprocal condition below which a system counts as singular.
constexpr double kMinReciprocalCondition = 1e-13;

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

using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>, Cloud, 2,
                                                 std::uint32_t>;

}  // namespace

struct KrigingEngine {
  std::vector<double> x, y, z;
  std::vector<double> gridX, gridY;
  bool block = true;
  bool crossValidation = false;
  std::int32_t model = 0;
  double range = 1.0, nugget = 1.0, sill = 2.0;

  std::vector<double> values, variances;
  std::thread worker;
  std::atomic<bool> running{false};
  std::atomic<bool> cancel{false};
  std::atomic<std::int32_t> progress{0};
  std::int32_t status = kKrigingNotReady;
  std::string error = "No calculation has been made.";
  std::unique_ptr<Eigen::PartialPivLU<Eigen::MatrixXd>> globalSystem;  // kept for variances

  double Gamma(double h) const {
    if (h == 0.0) return 0.0;
    const double t = h / range;
    double f;
    switch (model) {
      case 1: f = t < 1.0 ? 1.5 * t - 0.5 * t * t * t : 1.0; break;
      case 2: f = 1.0 - std::exp(-3.0 * t); break;
      case 3: f = 1.0 - std::exp(-3.0 * t * t); break;
      default: f = std::min(t, 1.0); break;
    }
    return nugget + (sill - nugget) * f;
  }

  void Fail(std::int32_t code, std::string text) {
    status = code;
    error = std::move(text);
  }

  // The bordered matrix over the given points.
  Eigen::MatrixXd System(const std::vector<std::uint32_t>& points) const {
    const auto n = static_cast<Eigen::Index>(points.size());
    Eigen::MatrixXd a(n + 1, n + 1);
    for (Eigen::Index i = 0; i < n; ++i) {
      const std::size_t pi = points[static_cast<std::size_t>(i)];
      a(i, i) = 0.0;
      for (Eigen::Index j = i + 1; j < n; ++j) {
        const std::size_t pj = points[static_cast<std::size_t>(j)];
        a(i, j) = a(j, i) = Gamma(std::hypot(x[pi] - x[pj], y[pi] - y[pj]));
      }
      a(i, n) = a(n, i) = 1.0;
    }
    a(n, n) = 0.0;
    return a;
  }

  void Run();
  void RunGlobal();
  // The factorised system of every point; none (after Fail) when there are too many
  // points or the system is singular.
  std::unique_ptr<Eigen::PartialPivLU<Eigen::MatrixXd>> FactoriseAll();
  void FailSingularNeighbourhood() {
    Fail(kKrigingSingular, "A kriging system of a neighbourhood is singular: points coincide, "
                           "or the model cannot tell them apart.");
  }
  void RunBlock();
  void RunCrossValidation();
  // The estimate and variance at (px, py) from the points near (indices), with the
  // right-hand side's gammas already in b; false when the system is singular.
  bool SolveNear(const std::vector<std::uint32_t>& near, Eigen::VectorXd& b, double& estimate, double& variance) const;
  // Calls body(i) for i in 0..count-1 over the machine's threads, adding step to the
  // progress after each; false if cancelled.
  template <class Body>
  bool ParallelFor(std::size_t count, std::int32_t step, Body body);
  // Calls column(i) for every grid column over the machine's threads; false if cancelled.
  template <class Column>
  bool ForEachColumn(Column column);
};

template <class Body>
bool KrigingEngine::ParallelFor(std::size_t count, std::int32_t step, Body body) {
  const std::size_t threads = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, std::max<std::size_t>(count, 1));
  std::vector<std::thread> pool;
  for (std::size_t t = 0; t < threads; ++t) {
    pool.emplace_back([&, t] {
      for (std::size_t i = t; i < count && !cancel.load(std::memory_order_relaxed); i += threads) {
        body(i);
        progress.fetch_add(step, std::memory_order_relaxed);
      }
    });
  }
  for (std::thread& th : pool) th.join();
  return !cancel.load();
}

template <class Column>
bool KrigingEngine::ForEachColumn(Column column) {
  return ParallelFor(gridX.size(), static_cast<std::int32_t>(gridY.size()), column);
}

std::unique_ptr<Eigen::PartialPivLU<Eigen::MatrixXd>> KrigingEngine::FactoriseAll() {
  const std::size_t n = x.size();
  if (n > kMaxGlobalPoints) {
    Fail(kKrigingTooLarge, "A global kriging system of " + std::to_string(n) +
                               " points would not fit in memory (at most " +
                               std::to_string(kMaxGlobalPoints) + "); use block kriging.");
    return nullptr;
  }
  std::vector<std::uint32_t> all(n);
  for (std::size_t i = 0; i < n; ++i) all[i] = static_cast<std::uint32_t>(i);
  auto lu = std::make_unique<Eigen::PartialPivLU<Eigen::MatrixXd>>(System(all));
  const double rcond = lu->rcond();
  if (!(rcond > kMinReciprocalCondition)) {
    Fail(kKrigingSingular, "The kriging system is singular (reciprocal condition " + std::to_string(rcond) +
                               "): points coincide, or the model cannot tell them apart.");
    return nullptr;
  }
  return lu;
}

void KrigingEngine::RunGlobal() {
  const std::size_t n = x.size();
  std::unique_ptr<Eigen::PartialPivLU<Eigen::MatrixXd>> lu = FactoriseAll();
  if (!lu) return;
  Eigen::VectorXd rhs(static_cast<Eigen::Index>(n) + 1);
  for (std::size_t i = 0; i < n; ++i) rhs(static_cast<Eigen::Index>(i)) = z[i];
  rhs(static_cast<Eigen::Index>(n)) = 0.0;
  const Eigen::VectorXd w = lu->solve(rhs);
  if (!w.allFinite()) {
    Fail(kKrigingSingular, "The kriging system could not be solved: its solution is not finite.");
    return;
  }
  const std::size_t ny = gridY.size();
  const bool done = ForEachColumn([&](std::size_t i) {
    for (std::size_t j = 0; j < ny; ++j) {
      double estimate = w(static_cast<Eigen::Index>(n));
      for (std::size_t k = 0; k < n; ++k) {
        estimate += w(static_cast<Eigen::Index>(k)) * Gamma(std::hypot(x[k] - gridX[i], y[k] - gridY[j]));
      }
      values[i * ny + j] = estimate;
    }
  });
  if (!done) return;
  globalSystem = std::move(lu);
  status = kKrigingOk;
}

void KrigingEngine::RunBlock() {
  const Cloud cloud{&x, &y};
  const Tree tree(2, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(16));
  const std::size_t k = std::min(kNeighbourhood, x.size());
  const std::size_t ny = gridY.size();
  std::atomic<bool> singular{false};
  const bool done = ForEachColumn([&](std::size_t i) {
    std::vector<std::uint32_t> near(k);
    std::vector<double> distances(k);
    Eigen::VectorXd b(static_cast<Eigen::Index>(k) + 1);
    for (std::size_t j = 0; j < ny; ++j) {
      const double query[2] = {gridX[i], gridY[j]};
      tree.knnSearch(query, k, near.data(), distances.data());
      for (std::size_t m = 0; m < k; ++m) {
        b(static_cast<Eigen::Index>(m)) = Gamma(std::sqrt(distances[m]));
      }
      if (!SolveNear(near, b, values[i * ny + j], variances[i * ny + j])) singular = true;
    }
  });
  if (!done) return;
  if (singular) {
    FailSingularNeighbourhood();
    return;
  }
  status = kKrigingOk;
}

bool KrigingEngine::SolveNear(const std::vector<std::uint32_t>& near, Eigen::VectorXd& b, double& estimate,
                             double& variance) const {
  const std::size_t k = near.size();
  const Eigen::PartialPivLU<Eigen::MatrixXd> lu(System(near));
  b(static_cast<Eigen::Index>(k)) = 1.0;
  const Eigen::VectorXd lambda = lu.solve(b);
  estimate = 0.0;
  variance = lambda(static_cast<Eigen::Index>(k));
  for (std::size_t m = 0; m < k; ++m) {
    estimate += lambda(static_cast<Eigen::Index>(m)) * z[near[m]];
    variance += lambda(static_cast<Eigen::Index>(m)) * b(static_cast<Eigen::Index>(m));
  }
  return std::isfinite(estimate) && lu.rcond() > kMinReciprocalCondition;
}

void KrigingEngine::RunCrossValidation() {
  const std::size_t n = x.size();
  if (block && n - 1 > kNeighbourhood) {
    // Each point from its nearest other points: one more is searched, and the point
    // itself (or, among coincident points, the farthest found) is left out.
    const Cloud cloud{&x, &y};
    const Tree tree(2, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(16));
    std::atomic<bool> singular{false};
    const bool done = ParallelFor(n, 1, [&](std::size_t i) {
      std::vector<std::uint32_t> found(kNeighbourhood + 1);
      std::vector<double> distances(kNeighbourhood + 1);
      const double query[2] = {x[i], y[i]};
      tree.knnSearch(query, kNeighbourhood + 1, found.data(), distances.data());
      std::vector<std::uint32_t> near;
      Eigen::VectorXd b(static_cast<Eigen::Index>(kNeighbourhood) + 1);
      for (std::size_t m = 0; m <= kNeighbourhood && near.size() < kNeighbourhood; ++m) {
        if (found[m] == i) continue;
        b(static_cast<Eigen::Index>(near.size())) = Gamma(std::sqrt(distances[m]));
        near.push_back(found[m]);
      }
      if (!SolveNear(near, b, values[i], variances[i])) singular = true;
    });
    if (!done) return;
    if (singular) {
      FailSingularNeighbourhood();
      return;
    }
    status = kKrigingOk;
    return;
  }
  const std::unique_ptr<Eigen::PartialPivLU<Eigen::MatrixXd>> factors = FactoriseAll();
  if (!factors) return;
  const Eigen::PartialPivLU<Eigen::MatrixXd>& lu = *factors;
  const auto rows = static_cast<Eigen::Index>(n) + 1;
  Eigen::VectorXd rhs = Eigen::VectorXd::Zero(rows);
  for (std::size_t i = 0; i < n; ++i) rhs(static_cast<Eigen::Index>(i)) = z[i];
  const Eigen::VectorXd w = lu.solve(rhs);
  // The diagonal of the inverse, a batch of unit vectors at a time.
  constexpr std::size_t kBatch = 256;
  const std::size_t batches = (n + kBatch - 1) / kBatch;
  const bool done = ParallelFor(batches, 0, [&](std::size_t batch) {
    const std::size_t start = batch * kBatch;
    const std::size_t count = std::min(kBatch, n - start);
    Eigen::MatrixXd e = Eigen::MatrixXd::Zero(rows, static_cast<Eigen::Index>(count));
    for (std::size_t c = 0; c < count; ++c) e(static_cast<Eigen::Index>(start + c), static_cast<Eigen::Index>(c)) = 1.0;
    const Eigen::MatrixXd inverse = lu.solve(e);
    for (std::size_t c = 0; c < count; ++c) {
      const auto i = static_cast<Eigen::Index>(start + c);
      const double diagonal = inverse(i, static_cast<Eigen::Index>(c));
      values[start + c] = z[start + c] - w(i) / diagonal;
      variances[start + c] = -1.0 / diagonal;
    }
    progress.fetch_add(static_cast<std::int32_t>(count), std::memory_order_relaxed);
  });
  if (!done) return;
  if (!std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); })) {
    Fail(kKrigingSingular, "The kriging system could not be solved: its solution is not finite.");
    return;
  }
  status = kKrigingOk;
}

void KrigingEngine::Run() {
  globalSystem.reset();
  progress = 0;
  if (crossValidation) {
    if (x.size() < 2) {
      Fail(kKrigingNotReady, "Cross-validation needs two points or more.");
    } else {
      values.assign(x.size(), 0.0);
      variances.assign(x.size(), 0.0);
      try {
        RunCrossValidation();
      } catch (const std::bad_alloc&) {
        Fail(kKrigingTooLarge, "The kriging calculation ran out of memory.");
      }
      if (cancel) Fail(kKrigingCancelled, "The kriging calculation was cancelled.");
    }
  } else if (x.empty() || gridX.empty() || gridY.empty()) {
    Fail(kKrigingNotReady, "Points and grid coordinates must be set before calculating.");
  } else {
    values.assign(gridX.size() * gridY.size(), 0.0);
    variances.assign(values.size(), 0.0);
    try {
      if (block && x.size() > kNeighbourhood) {
        RunBlock();
      } else {
        RunGlobal();
      }
    } catch (const std::bad_alloc&) {
      Fail(kKrigingTooLarge, "The kriging calculation ran out of memory.");
    }
    if (cancel) Fail(kKrigingCancelled, "The kriging calculation was cancelled.");
  }
  running = false;
}

namespace {

bool Finite(const double* v, std::int32_t n) {
  for (std::int32_t i = 0; i < n; ++i) {
    if (!std::isfinite(v[i])) return false;
  }
  return true;
}

// Refuses changes while a calculation runs.
bool Idle(KrigingHandle h) { return h != nullptr && !h->running.load(); }

}  // namespace

extern "C" {

KrigingHandle KrigingCreate() { return new KrigingEngine(); }

void KrigingDelete(KrigingHandle h) {
  if (h == nullptr) return;
  h->cancel = true;
  if (h->worker.joinable()) h->worker.join();
  delete h;
}

std::int32_t KrigingSetData(KrigingHandle h, std::int32_t count, const double* x, const double* y,
                            const double* z) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (count < 1 || x == nullptr || y == nullptr || z == nullptr || !Finite(x, count) ||
      !Finite(y, count) || !Finite(z, count)) {
    return kKrigingBadArgument;
  }
  h->x.assign(x, x + count);
  h->y.assign(y, y + count);
  h->z.assign(z, z + count);
  return kKrigingOk;
}

std::int32_t KrigingSetGridCoordinate(KrigingHandle h, std::int32_t nx, const double* x,
                                      std::int32_t ny, const double* y) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (nx < 1 || ny < 1 || x == nullptr || y == nullptr || !Finite(x, nx) || !Finite(y, ny)) {
    return kKrigingBadArgument;
  }
  h->gridX.assign(x, x + nx);
  h->gridY.assign(y, y + ny);
  return kKrigingOk;
}

std::int32_t KrigingSetBlockKriging(KrigingHandle h, bool block) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  h->block = block;
  return kKrigingOk;
}

std::int32_t KrigingSetCrossValidation(KrigingHandle h, bool on) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  h->crossValidation = on;
  return kKrigingOk;
}

std::int32_t KrigingSetModel(KrigingHandle h, std::int32_t model) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (model < 0 || model > 3) return kKrigingBadArgument;
  h->model = model;
  return kKrigingOk;
}

std::int32_t KrigingGetModel(KrigingHandle h) { return h == nullptr ? -1 : h->model; }

std::int32_t KrigingSetRange(KrigingHandle h, double range) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (!(std::isfinite(range) && range > 0.0)) return kKrigingBadArgument;
  h->range = range;
  return kKrigingOk;
}

double KrigingGetRange(KrigingHandle h) { return h == nullptr ? 0.0 : h->range; }

std::int32_t KrigingSetSill(KrigingHandle h, double nugget, double sill) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (!std::isfinite(nugget) || !std::isfinite(sill)) return kKrigingBadArgument;
  h->nugget = nugget;
  h->sill = sill;
  return kKrigingOk;
}

std::int32_t KrigingGetSill(KrigingHandle h, double* nugget, double* sill) {
  if (h == nullptr || nugget == nullptr || sill == nullptr) return kKrigingBadArgument;
  *nugget = h->nugget;
  *sill = h->sill;
  return kKrigingOk;
}

std::int32_t KrigingCalculate(KrigingHandle h) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (h->worker.joinable()) h->worker.join();
  h->cancel = false;
  h->running = true;
  h->Run();
  return h->status;
}

std::int32_t KrigingCalculateInThread(KrigingHandle h) {
  if (!Idle(h)) return h == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (h->worker.joinable()) h->worker.join();
  h->cancel = false;
  h->running = true;
  h->worker = std::thread([h] { h->Run(); });
  return kKrigingOk;
}

bool KrigingIsFinish(KrigingHandle h) { return h == nullptr || !h->running.load(); }

std::int32_t KrigingGetCurrentProgress(KrigingHandle h) { return h == nullptr ? 0 : h->progress.load(); }

std::int32_t KrigingGetMaxProgressBar(KrigingHandle h) {
  if (h == nullptr) return 0;
  return static_cast<std::int32_t>(h->crossValidation ? h->x.size() : h->gridX.size() * h->gridY.size());
}

void KrigingCancel(KrigingHandle h) {
  if (h != nullptr) h->cancel = true;
}

std::int32_t KrigingGetValues(KrigingHandle h, double* values) {
  if (!Idle(h) || values == nullptr) return h == nullptr || values == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (h->worker.joinable()) h->worker.join();
  if (h->status != kKrigingOk) return h->status;
  std::copy(h->values.begin(), h->values.end(), values);
  return kKrigingOk;
}

std::int32_t KrigingGetEstimation(KrigingHandle h, double* variances) {
  if (!Idle(h) || variances == nullptr) return h == nullptr || variances == nullptr ? kKrigingBadArgument : kKrigingBusy;
  if (h->worker.joinable()) h->worker.join();
  if (h->status != kKrigingOk) return h->status;
  if (h->globalSystem) {
    // Global: solve for every grid value's weights at once, then lambda^T gamma0 + mu.
    const std::size_t n = h->x.size();
    const std::size_t ny = h->gridY.size();
    const std::size_t m = h->gridX.size() * ny;
    const auto rows = static_cast<Eigen::Index>(n) + 1;
    constexpr std::size_t kBatch = 512;
    for (std::size_t start = 0; start < m; start += kBatch) {
      const std::size_t count = std::min(kBatch, m - start);
      Eigen::MatrixXd b(rows, static_cast<Eigen::Index>(count));
      for (std::size_t c = 0; c < count; ++c) {
        const std::size_t node = start + c;
        const double gx = h->gridX[node / ny];
        const double gy = h->gridY[node % ny];
        for (std::size_t k = 0; k < n; ++k) {
          b(static_cast<Eigen::Index>(k), static_cast<Eigen::Index>(c)) = h->Gamma(std::hypot(h->x[k] - gx, h->y[k] - gy));
        }
        b(rows - 1, static_cast<Eigen::Index>(c)) = 1.0;
      }
      const Eigen::MatrixXd lambda = h->globalSystem->solve(b);
      for (std::size_t c = 0; c < count; ++c) {
        // b ends in 1, so the product adds mu to lambda^T gamma0.
        const auto col = static_cast<Eigen::Index>(c);
        h->variances[start + c] = lambda.col(col).dot(b.col(col));
      }
    }
  }
  std::copy(h->variances.begin(), h->variances.end(), variances);
  return kKrigingOk;
}

std::int32_t KrigingGetLastStatus(KrigingHandle h) { return h == nullptr ? kKrigingBadArgument : h->status; }

const char* KrigingGetLastError(KrigingHandle h) {
  return h == nullptr ? "No kriging engine." : h->status == kKrigingOk ? "" : h->error.c_str();
}

}  // extern "C"
