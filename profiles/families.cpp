// The families and their tables.
#include "profiles/families.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tesk {
namespace {

using Types = std::array<std::int32_t, 10>;  // 0 fills up

template <class Value>
struct Row {
  Value value;
  Types types;
};

// 37 is driven as an EZData reader; 45 and 46 by nobody.
constexpr Row<Family> kFamilies[] = {
    {Family::Apperson, {1, 18, 39, 40}},
    {Family::OpScan, {2, 3, 4, 5, 6, 25, 26, 31, 32}},
    {Family::SekonicSerial, {7, 8, 9, 10, 19, 38}},
    {Family::ScanMark, {11, 12, 13, 14, 15, 16, 17, 27, 28, 29}},
    {Family::Chatsworth, {20, 21, 22, 35, 41}},
    {Family::EZData, {23, 37}},
    {Family::PeripheralDynamics, {24}},
    {Family::SekonicUsb, {30, 33, 34, 36}},
    {Family::SekonicHybrid, {42, 43}},
    {Family::Datawin, {44}},
};

// 19 and 38 are left out on purpose although their family prints.
constexpr Row<PrintWhen> kPrinting[] = {
    {PrintWhen::NotSkipped, {2, 3, 4, 5, 6, 25, 26, 31, 32}},
    {PrintWhen::Always, {7, 8, 9, 10}},
    {PrintWhen::NotSkipped, {30, 33, 34, 36}},
    {PrintWhen::NotSkipped, {42, 43}},
    {PrintWhen::NotSkipped, {44}},
};

// 16, 17, 19, 20, 21, 27, 28, 35, 38 and 41 have no routine.
constexpr Row<DisposalRoute> kDisposal[] = {
    {{RejectWhen::Always, Disposed::Always}, {1, 18, 39, 40}},
    {{RejectWhen::RejecterSet, Disposed::Always}, {2, 3, 4, 5, 6, 25, 26, 31, 32}},
    {{RejectWhen::Always, Disposed::Always}, {7, 8, 9, 10}},
    {{RejectWhen::Always, Disposed::Always}, {11, 12, 13, 14, 15, 29}},
    {{RejectWhen::Always, Disposed::WhenEjected}, {22}},
    {{RejectWhen::Always, Disposed::WhenEjected}, {23, 37}},
    {{RejectWhen::Always, Disposed::Always}, {24}},
    {{RejectWhen::Always, Disposed::WhenEjectedAndCancelled}, {30, 33, 34, 36}},
    {{RejectWhen::Always, Disposed::WhenEjectedAndCancelled}, {42, 43}},
    {{RejectWhen::Always, Disposed::WhenEjected}, {44}},
};

template <class Value, std::size_t kCount>
std::optional<Value> ValueOf(const Row<Value> (&rows)[kCount], teskReaderType type) {
  if (type <= teskReaderTypeNone) return std::nullopt;
  for (const auto& row : rows) {
    if (std::ranges::find(row.types, static_cast<std::int32_t>(type)) != row.types.end()) return row.value;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Family> FamilyOf(teskReaderType type) { return ValueOf(kFamilies, type); }
std::optional<PrintWhen> PrintingOf(teskReaderType type) { return ValueOf(kPrinting, type); }
std::optional<DisposalRoute> DisposalOf(teskReaderType type) { return ValueOf(kDisposal, type); }
bool HoldsSheets(teskReaderType type) { return FamilyOf(type) == Family::ScanMark; }

}  // namespace tesk
