// The ordered list of object references behind every collection of the object model: 1-based positions,
// optional text keys, insertion before or after a place.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/HostServices.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk {

// How a host names an item: by 1-based position (a number is rounded as hosts round) or by key.
using Index = std::variant<double, std::string>;

inline Index AtPosition(std::int32_t position) { return static_cast<double>(position); }

template <class Object>
class ObjectList {
 public:
  using Reference = std::shared_ptr<Object>;

  std::int32_t Count() const { return static_cast<std::int32_t>(entries_.size()); }

  // The item at `index`, or an empty reference where there is none; never an error.
  Reference Find(const Index& index) const {
    const auto place = FindPlace(index);
    return place ? entries_[*place].object : nullptr;
  }

  // Appends, or inserts before or after a place. Error 91 for an empty reference, 5 where both places are
  // given or the key is taken, 9 or 5 for a position or key that is not there.
  void Add(Reference object, const std::optional<Index>& before, const std::optional<Index>& after,
           std::string key = {}) {
    Deref(object);
    if (before && after) throw InvalidCall();
    if (!key.empty() && FindPlace(key)) throw InvalidCall();
    std::size_t place = entries_.size();
    if (before) place = PlaceOf(*before);
    if (after) place = PlaceOf(*after) + 1;
    entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(place),
                    Entry{std::move(object), std::move(key)});
  }

  // Error 9 for a position, 5 for a key that is not there.
  void Remove(const Index& index) {
    const auto entry = entries_.begin() + static_cast<std::ptrdiff_t>(PlaceOf(index));
    // Kept until the list is whole again: releasing an object may call back into it.
    const Reference released = entry->object;
    entries_.erase(entry);
  }

  void RemoveAll() {
    for (std::int32_t position = Count(); position >= 1; position = std::min(position - 1, Count())) {
      Remove(AtPosition(position));
    }
  }

 private:
  struct Entry {
    Reference object;
    std::string key;
  };

  std::optional<std::size_t> FindPlace(const Index& index) const {
    if (const auto* key = std::get_if<std::string>(&index)) {
      for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!key->empty() && LowerCase(entries_[i].key) == LowerCase(*key)) return i;
      }
      return std::nullopt;
    }
    const double position = std::nearbyint(std::get<double>(index));
    if (!(position >= 1 && position <= static_cast<double>(entries_.size()))) return std::nullopt;
    return static_cast<std::size_t>(position) - 1;
  }

  std::size_t PlaceOf(const Index& index) const {
    const auto place = FindPlace(index);
    if (!place) throw std::holds_alternative<std::string>(index) ? InvalidCall() : SubscriptOutOfRange();
    return *place;
  }

  std::vector<Entry> entries_;
};

}  // namespace tesk
