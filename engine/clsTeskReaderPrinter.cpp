// What the imprinters of the scanner models offer, as one table.
#include "engine/clsTeskReaderPrinter.h"

#include <type_traits>

namespace tesk {
namespace {

// What becomes of a host's setting of Enabled.
enum class Switch { kGiven, kNever, kIgnored };

// A set of reader types, one bit per value.
template <class... Type>
constexpr std::uint64_t Types(Type... types) {
  static_assert((std::is_same_v<Type, teskReaderType> && ...));
  return ((std::uint64_t{1} << types) | ...);
}

struct Imprinter {
  std::uint64_t types;
  Switch enabling;
  std::int16_t bufferCount;
  std::int32_t minPosition;
  std::int32_t maxPosition;
  std::int32_t maxCharacters;
  std::int16_t firstDistance;  // the print position that SetType sets

  constexpr bool Serves(teskReaderType type) const {
    return type >= 0 && type < 64 && (types >> type & 1) != 0;
  }
};

// Types, Enabled, BufferCount, MinPosition, MaxPosition, MaxCharacters, Distance at first. The DATAWIN
// imprinters take a text but no position.
constexpr Imprinter kImprinters[] = {
    {Types(teskReaderTypeNCSOpScan2, teskReaderTypeNCSOpScan3, teskReaderTypeNCSOpScan4,
           teskReaderTypeNCSOpScaniNSIGHT4, teskReaderTypeNCSOpScaniNSIGHT2),
     Switch::kGiven, 1, 0, 24, 24, 0},
    {Types(teskReaderTypeNCSOpScan5), Switch::kGiven, 1, 0, 40, 40, 0},
    {Types(teskReaderTypeNCSOpScan7), Switch::kGiven, 1, 10, 25, 25, 0},
    {Types(teskReaderTypeNCSOpScan6), Switch::kGiven, 1, 0, 25, 25, 0},
    {Types(teskReaderTypeNCSOpScan8), Switch::kGiven, 1, 10, 54, 54, 0},
    {Types(teskReaderTypeScanningSystemsSR601, teskReaderTypeScanningSystemsSR607,
           teskReaderTypeScanningSystemsSR700351, teskReaderTypeScanningSystemsSR700352,
           teskReaderTypeSekonicSR2300, teskReaderTypeSekonicSR3500, teskReaderTypeSekonicSR6500,
           teskReaderTypeSekonicSR1800, teskReaderTypeSekonicSR3500Hybrid, teskReaderTypeSekonicSR6500Hybrid),
     Switch::kGiven, 3, 10, 245, 41, 245},
    {Types(teskReaderTypeScantronScanMark2000, teskReaderTypeScantronScanMark2250,
           teskReaderTypeScantronScanMark2500, teskReaderTypeScantronScanMark4000,
           teskReaderTypeScantronScanMark5500, teskReaderTypeScantron8000, teskReaderTypeScantron8400,
           teskReaderTypeScantronScanMarkES2010, teskReaderTypeScantronScanMarkES2260,
           teskReaderTypeScantronScanMarkES2800),
     Switch::kGiven, 1, 0, 135, 135, 0},
    {Types(teskReaderTypeDatawinAXM960, teskReaderTypeDatawinHemeraC), Switch::kGiven, 1, -1, -1, 200, 0},
    {Types(teskReaderTypeSekonicSR8000Hybrid), Switch::kGiven, 1, 0, 355, 42, 245},
    {Types(teskReaderTypeAppersonAdvantageLink, teskReaderTypeAppersonGradeMaster,
           teskReaderTypeChatsworthOMR1100, teskReaderTypeChatsworthOMR2000,
           teskReaderTypeChatsworthALSAccelScanOMR, teskReaderTypeNCSEZData, teskReaderTypeChatsworthACF200,
           teskReaderTypeChatsworthACF100, teskReaderTypeChatsworthACP200),
     Switch::kNever, 0, -1, -1, -1, 0},
};

constexpr Imprinter kUnknown = {0, Switch::kIgnored, 0, -1, -1, -1, 0};

consteval bool NoTypeTwice() {
  std::uint64_t seen = 0;
  for (const Imprinter& imprinter : kImprinters) {
    if ((seen & imprinter.types) != 0) return false;
    seen |= imprinter.types;
  }
  return true;
}
static_assert(NoTypeTwice());

const Imprinter& ImprinterOf(teskReaderType type) {
  for (const Imprinter& imprinter : kImprinters) {
    if (imprinter.Serves(type)) return imprinter;
  }
  return kUnknown;
}

}  // namespace

void clsTeskReaderPrinter::SetType(teskReaderType value) {
  type_ = value;
  distance_ = ImprinterOf(type_).firstDistance;
}

void clsTeskReaderPrinter::SetEnabled(bool value) {
  const Switch enabling = ImprinterOf(type_).enabling;
  if (enabling != Switch::kIgnored) enabled_ = value && enabling == Switch::kGiven;
}

std::int16_t clsTeskReaderPrinter::FilledBufferCount() const {
  const std::string* buffers[] = {&buffer1_, &buffer2_, &buffer3_};
  std::int16_t filled = 0;
  for (int i = 0; i < BufferCount(); ++i) {
    if (!buffers[i]->empty()) ++filled;
  }
  return filled;
}

std::int16_t clsTeskReaderPrinter::BufferCount() const { return ImprinterOf(type_).bufferCount; }

std::int32_t clsTeskReaderPrinter::MinPosition() const {
  return enabled_ ? ImprinterOf(type_).minPosition : -1;
}

std::int32_t clsTeskReaderPrinter::MaxPosition() const {
  return enabled_ ? ImprinterOf(type_).maxPosition : -1;
}

std::int32_t clsTeskReaderPrinter::MaxCharacters() const {
  return enabled_ ? ImprinterOf(type_).maxCharacters : -1;
}

}  // namespace tesk
