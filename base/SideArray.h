// The mark values of one side of a sheet, and the geometry lists that give their extents.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk {

// A dense grid of rows x columns darkness values, both indices from 1. A fresh grid is all 0; a default
// one is empty (0 x 0). Values are on the scanner model's own darkness scale.
class SideArray {
 public:
  SideArray() = default;
  // Extents below 1 give an empty grid.
  SideArray(std::int32_t rows, std::int32_t columns)
      : rows_(rows > 0 && columns > 0 ? rows : 0),
        columns_(rows > 0 && columns > 0 ? columns : 0),
        values_(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_)) {}

  std::int32_t Rows() const { return rows_; }
  std::int32_t Columns() const { return columns_; }
  bool Empty() const { return values_.empty(); }

  // Throws error 9 outside 1..Rows x 1..Columns.
  std::int16_t& At(std::int32_t row, std::int32_t column) { return values_[Position(row, column)]; }
  std::int16_t At(std::int32_t row, std::int32_t column) const { return values_[Position(row, column)]; }

  bool operator==(const SideArray&) const = default;

 private:
  std::size_t Position(std::int32_t row, std::int32_t column) const {
    if (row < 1 || row > rows_ || column < 1 || column > columns_) throw SubscriptOutOfRange();
    return static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(column - 1);
  }

  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
  std::vector<std::int16_t> values_;
};

// A one-dimensional array of 16-bit values with the lower bound that the host chose (0 or 1 in practice).
class Int16Array {
 public:
  Int16Array() = default;
  explicit Int16Array(std::vector<std::int16_t> elements, std::int32_t lowerBound = 1)
      : elements_(std::move(elements)), lowerBound_(lowerBound) {}

  bool Dimensioned() const { return !elements_.empty(); }
  std::int32_t LowerBound() const { return lowerBound_; }
  // Throws error 9 where the array was never dimensioned.
  std::int32_t UpperBound() const {
    if (!Dimensioned()) throw SubscriptOutOfRange();
    return Narrow<std::int32_t>(lowerBound_ + static_cast<std::int64_t>(elements_.size()) - 1);
  }
  // Throws error 9 outside the bounds.
  std::int16_t At(std::int32_t index) const {
    const std::int64_t offset = std::int64_t{index} - lowerBound_;
    if (offset < 0 || offset >= static_cast<std::int64_t>(elements_.size())) throw SubscriptOutOfRange();
    return elements_[static_cast<std::size_t>(offset)];
  }
  const std::vector<std::int16_t>& Elements() const { return elements_; }

  // The largest element among indices 1 to the upper bound, at least 0; element 0 and below do not count.
  std::int16_t LargestFromOne() const {
    std::int16_t largest = 0;
    for (std::size_t i = 0; i < elements_.size(); ++i) {
      if (lowerBound_ + static_cast<std::int64_t>(i) >= 1) largest = std::max(largest, elements_[i]);
    }
    return largest;
  }

  bool operator==(const Int16Array&) const = default;

 private:
  std::vector<std::int16_t> elements_;
  std::int32_t lowerBound_ = 1;
};

}  // namespace tesk
