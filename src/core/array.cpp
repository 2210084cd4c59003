#include "orvane/core/array.h"

#include <limits>
#include <string>
#include <utility>

#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr std::int64_t kMaxIndex = std::numeric_limits<std::int32_t>::max();

// Both bounds of a dimension must be representable as 32-bit indices.
void CheckExtent(std::int32_t lower, std::size_t count) {
  if (count > 0 && static_cast<std::int64_t>(lower) + static_cast<std::int64_t>(count) - 1 >
                       kMaxIndex) {
    throw Error(5, kRuntimeSource,
                "An array of " + std::to_string(count) + " elements starting at index " +
                    std::to_string(lower) + " does not fit 32-bit indices.");
  }
}

std::size_t CheckedOffset(std::int32_t i, std::int32_t lower, std::size_t count) {
  const std::int64_t offset = static_cast<std::int64_t>(i) - lower;
  if (offset < 0 || static_cast<std::uint64_t>(offset) >= count) {
    throw Error(9, kRuntimeSource);
  }
  return static_cast<std::size_t>(offset);
}

std::int32_t UpperOf(std::int32_t lower, std::size_t count) {
  return static_cast<std::int32_t>(static_cast<std::int64_t>(lower) +
                                   static_cast<std::int64_t>(count) - 1);
}

}  // namespace

Array::Array(std::vector<double> values) : Array(0, std::move(values)) {}

Array::Array(std::initializer_list<double> values) : Array(0, std::vector<double>(values)) {}

Array::Array(std::int32_t lowerBound, std::vector<double> values)
    : lower_(lowerBound), values_(std::move(values)) {
  CheckExtent(lower_, values_.size());
}

std::int32_t Array::UpperBound() const noexcept { return UpperOf(lower_, values_.size()); }

std::size_t Array::Offset(std::int32_t i) const { return CheckedOffset(i, lower_, Size()); }

double Array::At(std::int32_t i) const { return values_[Offset(i)]; }

double& Array::At(std::int32_t i) { return values_[Offset(i)]; }

Array2D::Array2D(std::vector<double> values, std::size_t count1, std::size_t count2)
    : Array2D(std::move(values), count1, count2, 0, 0) {}

Array2D::Array2D(std::vector<double> values, std::size_t count1, std::size_t count2,
                 std::int32_t lower1, std::int32_t lower2)
    : values_(std::move(values)),
      count1_(count1),
      count2_(count2),
      lower1_(lower1),
      lower2_(lower2) {
  CheckExtent(lower1_, count1_);
  CheckExtent(lower2_, count2_);
  // count1 * count2 must equal the number of values, without overflowing the product.
  const bool fits = count1_ == 0 || count2_ <= std::numeric_limits<std::size_t>::max() / count1_;
  if (!fits || count1_ * count2_ != values_.size()) {
    throw Error(5, kRuntimeSource,
                "A two-dimensional array of " + std::to_string(count1_) + " by " +
                    std::to_string(count2_) + " elements cannot hold " +
                    std::to_string(values_.size()) + " values.");
  }
}

std::int32_t Array2D::LowerBound(int dimension) const {
  if (dimension == 1) return lower1_;
  if (dimension == 2) return lower2_;
  throw Error(9, kRuntimeSource);
}

std::int32_t Array2D::UpperBound(int dimension) const {
  return UpperOf(LowerBound(dimension), Count(dimension));
}

std::size_t Array2D::Count(int dimension) const {
  if (dimension == 1) return count1_;
  if (dimension == 2) return count2_;
  throw Error(9, kRuntimeSource);
}

std::size_t Array2D::Offset(std::int32_t i, std::int32_t j) const {
  return CheckedOffset(i, lower1_, count1_) * count2_ + CheckedOffset(j, lower2_, count2_);
}

double Array2D::At(std::int32_t i, std::int32_t j) const { return values_[Offset(i, j)]; }

double& Array2D::At(std::int32_t i, std::int32_t j) { return values_[Offset(i, j)]; }

}  // namespace orvane
