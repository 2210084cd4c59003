#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace orvane {

/// A one-dimensional array of doubles as a host hands it over: values plus an explicit
/// lower bound, so that a caller's bounds are checked, not assumed. Built implicitly from
/// a std::vector<double> (lower bound 0). An empty array has bounds 0 and -1.
class Array {
 public:
  Array() = default;
  /// Values with lower bound 0.
  Array(std::vector<double> values);  // NOLINT(google-explicit-constructor)
  /// Values with lower bound 0.
  Array(std::initializer_list<double> values);
  /// Values whose first element has index lowerBound. Error 5 if the upper bound would
  /// not fit a 32-bit index.
  Array(std::int32_t lowerBound, std::vector<double> values);

  /// Index of the first element.
  std::int32_t LowerBound() const noexcept { return lower_; }
  /// Index of the last element; LowerBound() - 1 when empty.
  std::int32_t UpperBound() const noexcept;
  /// Number of elements.
  std::size_t Size() const noexcept { return values_.size(); }
  /// True when there are no elements.
  bool Empty() const noexcept { return values_.empty(); }

  /// The element at index i (between the bounds); error 9 outside them.
  double At(std::int32_t i) const;
  /// Writable element at index i; error 9 outside the bounds.
  double& At(std::int32_t i);

  /// All elements from LowerBound() on.
  const std::vector<double>& Values() const noexcept { return values_; }

 private:
  std::size_t Offset(std::int32_t i) const;

  std::int32_t lower_ = 0;
  std::vector<double> values_;
};

/// A two-dimensional array of doubles with explicit bounds per dimension. Dimension 1
/// runs along X, dimension 2 along Y; the flat values are stored with the second index
/// running fastest: element (i, j) is values[(i - lower1) * count2 + (j - lower2)].
class Array2D {
 public:
  Array2D() = default;
  /// count1 x count2 values with both lower bounds 0. Error 5 when the sizes disagree.
  Array2D(std::vector<double> values, std::size_t count1, std::size_t count2);
  /// The same with explicit lower bounds.
  Array2D(std::vector<double> values, std::size_t count1, std::size_t count2,
          std::int32_t lower1, std::int32_t lower2);

  /// Lower bound of dimension 1 (X) or 2 (Y); error 9 for another dimension.
  std::int32_t LowerBound(int dimension) const;
  /// Upper bound of dimension 1 (X) or 2 (Y); error 9 for another dimension.
  std::int32_t UpperBound(int dimension) const;
  /// Number of elements along dimension 1 or 2; error 9 for another dimension.
  std::size_t Count(int dimension) const;
  /// Total number of elements.
  std::size_t Size() const noexcept { return values_.size(); }

  /// The element at (i, j); error 9 outside the bounds.
  double At(std::int32_t i, std::int32_t j) const;
  /// Writable element at (i, j); error 9 outside the bounds.
  double& At(std::int32_t i, std::int32_t j);

  /// The flat values, second index fastest.
  const std::vector<double>& Values() const noexcept { return values_; }

 private:
  std::size_t Offset(std::int32_t i, std::int32_t j) const;

  std::vector<double> values_;
  std::size_t count1_ = 0;
  std::size_t count2_ = 0;
  std::int32_t lower1_ = 0;
  std::int32_t lower2_ = 0;
};

}  // namespace orvane
