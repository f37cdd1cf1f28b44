// The read windows of a sheet, used where the recognition mode is by window.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "base/ReportingList.h"
#include "engine/clsTeskReaderWindow.h"

namespace tesk {

// Ordered, positions from 1, shared objects. No operation throws; errors are reported under
// "clsTeskReaderWindows".
class clsTeskReaderWindows {
 public:
  clsTeskReaderWindows() = default;
  clsTeskReaderWindows(const clsTeskReaderWindows&) = delete;
  clsTeskReaderWindows& operator=(const clsTeskReaderWindows&) = delete;

  std::int32_t Count() const { return list_.Count(); }
  // Appends, or inserts before or after a place; giving both is an error.
  void Add(std::shared_ptr<clsTeskReaderWindow> item, const std::optional<Index>& before = {},
           const std::optional<Index>& after = {}) {
    list_.Add(std::move(item), before, after);
  }
  void Remove(std::int32_t position) { list_.Remove(AtPosition(position)); }
  void RemoveAll() { list_.RemoveAll(); }
  // Empty where there is none.
  std::shared_ptr<clsTeskReaderWindow> Item(std::int32_t position) const {
    return list_.Item(AtPosition(position));
  }
  bool Exists(std::int32_t position) const { return list_.Exists(AtPosition(position)); }

 private:
  ReportingList<clsTeskReaderWindow> list_{"clsTeskReaderWindows"};
};

}  // namespace tesk
