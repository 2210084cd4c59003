#pragma once

// The kriging engine: ordinary kriging of scattered points onto a grid with a model
// semi-variogram, calculated on a worker thread of its own. Flat functions on a handle;
// one handle per calculation, always released with KrigingDelete.
//
// Models, with h the distance, a the range, c0 the nugget and C the (total) sill:
// gamma(0) = 0 and, for h > 0, gamma(h) = c0 + (C - c0) f(h / a) with
//   0 linear       f(t) = min(t, 1)
//   1 spherical    f(t) = 1.5 t - 0.5 t^3 below 1, else 1
//   2 exponential  f(t) = 1 - exp(-3 t)
//   3 Gaussian     f(t) = 1 - exp(-3 t^2)
// Without block kriging one system over all points is solved (factorised once; each
// grid value then costs one pass over the points). With block kriging each grid value
// comes from the system of its 32 nearest points; with no more points than that, the
// global system is used, so both give the same values.
//
// Cross-validation (KrigingSetCrossValidation) estimates each point from the others
// instead: leave one out. Globally this needs no refit: with B the inverse of the bordered
// matrix of all points and w = B [z; 0], point i's estimate from the others is
// z_i - w_i / B_ii and its kriging variance -1 / B_ii. With block kriging each point
// solves the system of its 32 nearest other points.

#include <cstdint>

extern "C" {

struct KrigingEngine;
typedef KrigingEngine* KrigingHandle;

// Status codes of the calls.
enum KrigingStatus : std::int32_t {
  kKrigingOk = 0,
  kKrigingBadArgument = 1,   // a missing handle, bad counts, non-finite values
  kKrigingNotReady = 2,      // data or grid missing, or no finished calculation
  kKrigingSingular = 3,      // the kriging system cannot be solved
  kKrigingTooLarge = 4,      // the global system would not fit in memory
  kKrigingCancelled = 5,     // KrigingCancel stopped the calculation
  kKrigingBusy = 6,          // a calculation is running on the handle
};

// A new engine with the linear model, nugget 1, sill 2, range 1, block kriging on.
KrigingHandle KrigingCreate();
// Cancels any running calculation, waits for it and releases the engine.
void KrigingDelete(KrigingHandle h);
// Copies count points.
std::int32_t KrigingSetData(KrigingHandle h, std::int32_t count, const double* x, const double* y,
                            const double* z);
// Copies the grid's X (nx values) and Y (ny values) coordinates.
std::int32_t KrigingSetGridCoordinate(KrigingHandle h, std::int32_t nx, const double* x,
                                      std::int32_t ny, const double* y);
std::int32_t KrigingSetBlockKriging(KrigingHandle h, bool block);
// With on, a calculation gives each point's leave-one-out estimate and variance (one
// value per point, in input order) instead of the grid's; needs two points or more.
std::int32_t KrigingSetCrossValidation(KrigingHandle h, bool on);
// Model 0..3 as above.
std::int32_t KrigingSetModel(KrigingHandle h, std::int32_t model);
std::int32_t KrigingGetModel(KrigingHandle h);
std::int32_t KrigingSetRange(KrigingHandle h, double range);
double KrigingGetRange(KrigingHandle h);
std::int32_t KrigingSetSill(KrigingHandle h, double nugget, double sill);
std::int32_t KrigingGetSill(KrigingHandle h, double* nugget, double* sill);
// Calculates on the calling thread.
std::int32_t KrigingCalculate(KrigingHandle h);
// Starts the calculation on the engine's worker thread and returns at once.
std::int32_t KrigingCalculateInThread(KrigingHandle h);
// True when no calculation is running (finished, failed, cancelled or never started).
bool KrigingIsFinish(KrigingHandle h);
// Grid values (or points, when cross-validating) done so far, out of KrigingGetMaxProgressBar.
std::int32_t KrigingGetCurrentProgress(KrigingHandle h);
std::int32_t KrigingGetMaxProgressBar(KrigingHandle h);
// Asks a running calculation to stop; it ends with kKrigingCancelled.
void KrigingCancel(KrigingHandle h);
// The kriging variance of each grid value (nx * ny, X index first), computed on request;
// of each point when cross-validating.
std::int32_t KrigingGetEstimation(KrigingHandle h, double* variances);
// The estimates (nx * ny, X index first; one per point when cross-validating) of the last
// finished calculation.
std::int32_t KrigingGetValues(KrigingHandle h, double* values);
// The status of the last calculation and a description of what went wrong.
std::int32_t KrigingGetLastStatus(KrigingHandle h);
const char* KrigingGetLastError(KrigingHandle h);

}  // extern "C"
