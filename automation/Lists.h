// The collections of the model as hosts hold them.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "automation/Enumerator.h"
#include "automation/Wire.h"

namespace tesk::automation {

// What every collection answers alike. ItemOf(position) yields the item at a 1-based position.
template <class Native>
class ListMembers : public Members<Native> {
 public:
  using Members<Native>::Members;
  TESK_GET(std::int32_t, Count)
  STDMETHODIMP RemoveAll() override {
    return this->Do([this] { this->Library().RemoveAll(); });
  }
  STDMETHODIMP get__NewEnum(IUnknown** value) override {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return this->Do([&] {
      std::vector<ComPtr<IDispatch>> items;
      for (std::int32_t position = 1; position <= this->Library().Count(); ++position) {
        items.push_back(Adopt<IDispatch>(Wrap(this->ItemAt(position))));
      }
      auto* enumerator = new VariantEnumerator(std::move(items));
      enumerator->AddRef();
      *value = enumerator;
    });
  }

 private:
  auto ItemAt(std::int32_t position) {
    if constexpr (requires { this->Library().Item(position); }) {
      return this->Library().Item(position);
    } else {
      return this->Library().Item(AtPosition(position));
    }
  }
};

// The collections whose places are variants. An index that is neither a number nor a text finds nothing; to
// remove it is an error like any other, which the collection reports.
template <class Native, class Item>
class IndexedMembers : public ListMembers<Native> {
 public:
  using ListMembers<Native>::ListMembers;
  STDMETHODIMP get_Item(VARIANT Index, WireType<std::shared_ptr<Item>>* value) override {
    return this->template Give<std::shared_ptr<Item>>(value, [&] { return Find(Index); });
  }
  STDMETHODIMP Exists(VARIANT Index, VARIANT_BOOL* result) override {
    return this->template Give<bool>(result, [&] { return Find(Index) != nullptr; });
  }
  STDMETHODIMP Remove(VARIANT Index) override {
    return this->Do([&] { this->Library().Remove(PlaceOrNone(Index)); });
  }

 private:
  // A key that no item has stands for what is no place at all.
  static tesk::Index PlaceOrNone(const VARIANT& index) {
    tesk::Index place = std::string();
    Attempt([&] { place = IndexOf(index); });
    return place;
  }
  std::shared_ptr<Item> Find(const VARIANT& index) { return this->Library().Item(PlaceOrNone(index)); }
};

class BarcodesObject final : public IndexedMembers<tesk::clsTeskReaderBarcodes, tesk::clsTeskReaderBarcode> {
 public:
  using IndexedMembers::IndexedMembers;
  STDMETHODIMP Add(::_clsTeskReaderBarcode* Item, VARIANT Before, VARIANT After) override;
};

class WindowsObject final : public ListMembers<tesk::clsTeskReaderWindows> {
 public:
  using ListMembers::ListMembers;
  STDMETHODIMP Add(::_clsTeskReaderWindow* Item, VARIANT Before, VARIANT After) override;
  STDMETHODIMP Remove(LONG Position) override;
  STDMETHODIMP get_Item(LONG Position, ::_clsTeskReaderWindow** value) override;
  STDMETHODIMP Exists(LONG Position, VARIANT_BOOL* result) override;
};

class ProfilesObject final : public IndexedMembers<tesk::clsTeskReaderProfiles, tesk::clsTeskReaderProfile> {
 public:
  using IndexedMembers::IndexedMembers;
  TESK_PROPERTY(tesk::teskProfileType, ProfileType)
};

}  // namespace tesk::automation
