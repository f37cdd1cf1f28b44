// The barcode definitions of a sheet.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "base/ReportingList.h"
#include "engine/clsTeskReaderBarcode.h"

namespace tesk {

// Ordered, positions from 1, no keys, shared objects. No operation throws; errors are reported under
// "clsTeskReaderBarcodes".
class clsTeskReaderBarcodes {
 public:
  clsTeskReaderBarcodes() = default;
  clsTeskReaderBarcodes(const clsTeskReaderBarcodes&) = delete;
  clsTeskReaderBarcodes& operator=(const clsTeskReaderBarcodes&) = delete;

  std::int32_t Count() const { return list_.Count(); }
  // Empty where there is none.
  std::shared_ptr<clsTeskReaderBarcode> Item(const Index& index) const { return list_.Item(index); }
  bool Exists(const Index& index) const { return list_.Exists(index); }
  // Appends, or inserts before or after a place; giving both is an error.
  void Add(std::shared_ptr<clsTeskReaderBarcode> item, const std::optional<Index>& before = {},
           const std::optional<Index>& after = {}) {
    list_.Add(std::move(item), before, after);
  }
  void Remove(const Index& index) { list_.Remove(index); }
  void RemoveAll() { list_.RemoveAll(); }

 private:
  ReportingList<clsTeskReaderBarcode> list_{"clsTeskReaderBarcodes"};
};

}  // namespace tesk
