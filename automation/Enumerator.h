// The enumerators of the server, all over a snapshot: what happens to a collection meanwhile does not
// concern them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "automation/Com.h"
#include "automation/HelperObject.h"
#include "base/HostServices.h"

namespace tesk::automation {

// Interface: IEnumVARIANT and its like. Kept owns one item, in clones too; Item is what Next hands out;
// `void HandOut(const Kept&, Item&)` makes the caller's copy.
template <class Interface, class Kept, class Item, void (*HandOut)(const Kept&, Item&)>
class Enumerator final : public HelperObject<Interface> {
 public:
  explicit Enumerator(std::vector<Kept> items) : items_(std::move(items)) {}

  STDMETHODIMP Next(ULONG wanted, Item* items, ULONG* fetched) override {
    if (items == nullptr || (fetched == nullptr && wanted != 1)) return E_POINTER;
    const std::size_t count = std::min<std::size_t>(wanted, items_.size() - next_);
    for (std::size_t i = 0; i < count; ++i) HandOut(items_[next_ + i], items[i]);
    next_ += count;
    if (fetched != nullptr) *fetched = static_cast<ULONG>(count);
    return count == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG wanted) override {
    const std::size_t count = std::min<std::size_t>(wanted, items_.size() - next_);
    next_ += count;
    return count == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    next_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(Interface** clone) override {
    if (clone == nullptr) return E_POINTER;
    *clone = nullptr;
    const auto error = Attempt([&] {
      auto* copy = new Enumerator(items_);
      copy->next_ = next_;
      copy->AddRef();
      *clone = copy;
    });
    return error ? E_OUTOFMEMORY : S_OK;
  }

 private:
  std::vector<Kept> items_;
  std::size_t next_ = 0;
};

inline void HandOutVariant(const ComPtr<IDispatch>& kept, VARIANT& item) {
  item.vt = VT_DISPATCH;
  kept.CopyTo(&item.pdispVal);
}

using VariantEnumerator = Enumerator<IEnumVARIANT, ComPtr<IDispatch>, VARIANT, HandOutVariant>;

}  // namespace tesk::automation
