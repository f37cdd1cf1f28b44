// The collection that hosts see: an ObjectList whose errors are reported under the collection's name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/HostServices.h"
#include "base/ObjectList.h"

namespace tesk {

// Only AddKeyed throws. The list shares its objects with whoever added or fetched them.
template <class Object>
class ReportingList {
 public:
  using Reference = typename ObjectList<Object>::Reference;

  // className: "clsTeskReaderBarcodes"; errors are reported under "clsTeskReaderBarcodes.Remove" and so on.
  // The text must outlive the list.
  explicit ReportingList(std::string_view className) : className_(className) {}

  std::int32_t Count() const { return list_.Count(); }

  // Empty where there is no item at `index`; that is no error.
  Reference Item(const Index& index) const {
    return Guarded(Source("Item"), [&] { return list_.Find(index); });
  }

  // Whatever goes wrong while fetching is swallowed.
  bool Exists(const Index& index) const {
    bool found = false;
    Attempt([&] { found = list_.Find(index) != nullptr; });
    return found;
  }

  // Appends, or inserts before or after a place; giving both is an error, as is an empty reference.
  void Add(Reference object, const std::optional<Index>& before = {},
           const std::optional<Index>& after = {}) {
    Guarded(Source("Add"), [&] { list_.Add(std::move(object), before, after); });
  }

  // Throws instead of reporting (error 5 for a key that is taken): for routines that fill the list and
  // report under a name of their own.
  void AddKeyed(Reference object, std::string key) { list_.Add(std::move(object), {}, {}, std::move(key)); }

  void Remove(const Index& index) {
    Guarded(Source("Remove"), [&] { list_.Remove(index); });
  }

  void RemoveAll() {
    Guarded(Source("RemoveAll"), [&] { list_.RemoveAll(); });
  }

 private:
  std::string Source(std::string_view operation) const {
    return std::string(className_).append(".").append(operation);
  }

  std::string_view className_;
  ObjectList<Object> list_;
};

}  // namespace tesk
