// The tables of models and families.
#include "profiles/models.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "base/tables.h"

namespace tesk {
namespace {

// ---- Families

constexpr FamilyTraits kFamilies[] = {
    {.family = Family::Unrouted},
    {.family = Family::Apperson},
    {.family = Family::OpScan, .mostRows = 150, .mostBarcodes = INT32_MAX, .blankBarcode = "?"},
    {.family = Family::SekonicSerial,
     .mostRows = 999,
     .mostBarcodes = 8,
     .mostInWindow = 99,
     .toldSizes = true},
    {.family = Family::ScanMark,
     .mostRows = INT16_MAX,
     .mostInWindow = INT16_MAX,
     .heldImprint = 125,
     .toldSizes = true,
     .wholeRows = true,
     .frontFirst = true,
     .holdsSheets = true},
    {.family = Family::Chatsworth,
     .mostRows = 126,
     .marksAlone = true,
     .identifies = true,
     .nothingToClose = true},
    {.family = Family::EZData, .identifies = true},
    {.family = Family::PeripheralDynamics, .mostRows = 500, .marksAlone = true},
    {.family = Family::SekonicUsb, .mostRows = 200, .mostBarcodes = 99, .byLibrary = true},
    {.family = Family::SekonicHybrid},
    {.family = Family::Datawin},
};

static_assert(InOrder(kFamilies, &FamilyTraits::family));

constexpr const FamilyTraits& TraitsOf(const Model& model) {
  return kFamilies[static_cast<std::size_t>(model.family)];
}

// ---- Imprinters: Enabled, lines, least and largest position, characters, distance at first

using enum Imprinter::Setting;
constexpr Imprinter kUnknown = {Ignored, 0, -1, -1, -1, 0};
constexpr Imprinter kNone = {StaysOff, 0, -1, -1, -1, 0};
constexpr Imprinter kOpScan = {Taken, 1, 0, 24, 24, 0};
constexpr Imprinter kOpScan5 = {Taken, 1, 0, 40, 40, 0};
constexpr Imprinter kOpScan6 = {Taken, 1, 0, 25, 25, 0};
constexpr Imprinter kOpScan7 = {Taken, 1, 10, 25, 25, 0};
constexpr Imprinter kOpScan8 = {Taken, 1, 10, 54, 54, 0};
constexpr Imprinter kSekonic = {Taken, 3, 10, 245, 41, 245};
constexpr Imprinter kSR8000 = {Taken, 1, 0, 355, 42, 245};
constexpr Imprinter kScanMark = {Taken, 1, 0, 135, 135, 0};
constexpr Imprinter kDatawin = {Taken, 1, -1, -1, 200, 0};  // takes a text but no position

// ---- Models

using enum Family;
using enum Printing;
using enum Sending;
using enum Support;
constexpr bool T = true;
constexpr bool F = false;

// clang-format off

// Reader type, family, imprinter, printing, sending on, scores itself, support.
// Deliberate: the ACF-100 is driven as an EZData reader; the SR-410 and SR-430 neither print nor send sheets on,
// although their family does; the last two scanners are routed nowhere.
constexpr Model kModels[] = {
    {teskReaderTypeNone,                      Unrouted,           kUnknown,  Never,         Nothing,               F, NoDriver},
    {teskReaderTypeAppersonAdvantageLink,     Apperson,           kNone,     Never,         Plain,                 F, NoDriver},
    {teskReaderTypeNCSOpScan2,                OpScan,             kOpScan,   UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeNCSOpScan3,                OpScan,             kOpScan,   UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeNCSOpScan4,                OpScan,             kOpScan,   UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeNCSOpScan5,                OpScan,             kOpScan5,  UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeNCSOpScan7,                OpScan,             kOpScan7,  UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeScanningSystemsSR601,      SekonicSerial,      kSekonic,  Always,        Plain,                 F, Simulated},
    {teskReaderTypeScanningSystemsSR607,      SekonicSerial,      kSekonic,  Always,        Plain,                 F, Simulated},
    {teskReaderTypeScanningSystemsSR700351,   SekonicSerial,      kSekonic,  Always,        Plain,                 F, Simulated},
    {teskReaderTypeScanningSystemsSR700352,   SekonicSerial,      kSekonic,  Always,        Plain,                 F, Simulated},
    {teskReaderTypeScantronScanMark2000,      ScanMark,           kScanMark, Never,         Plain,                 F, Simulated},
    {teskReaderTypeScantronScanMark2250,      ScanMark,           kScanMark, Never,         Plain,                 F, Simulated},
    {teskReaderTypeScantronScanMark2500,      ScanMark,           kScanMark, Never,         Plain,                 F, Simulated},
    {teskReaderTypeScantronScanMark4000,      ScanMark,           kScanMark, Never,         Plain,                 F, Simulated},
    {teskReaderTypeScantronScanMark5500,      ScanMark,           kScanMark, Never,         Plain,                 F, Simulated},
    {teskReaderTypeScantron8000,              ScanMark,           kScanMark, Never,         Nothing,               F, Simulated},
    {teskReaderTypeScantron8400,              ScanMark,           kScanMark, Never,         Nothing,               F, Simulated},
    {teskReaderTypeAppersonGradeMaster,       Apperson,           kNone,     Never,         Plain,                 F, NoDriver},
    {teskReaderTypeScanningSystemsSR410,      SekonicSerial,      kUnknown,  Never,         Nothing,               F, Simulated},
    {teskReaderTypeChatsworthOMR1100,         Chatsworth,         kNone,     Never,         Nothing,               F, PublicNotes},
    {teskReaderTypeChatsworthOMR2000,         Chatsworth,         kNone,     Never,         Nothing,               F, NoDriver},
    {teskReaderTypeChatsworthALSAccelScanOMR, Chatsworth,         kNone,     Never,         AsEjected,             F, NoDriver},
    {teskReaderTypeNCSEZData,                 EZData,             kNone,     Never,         AsEjected,             T, NoDriver},
    {teskReaderTypePDIVMR138,                 PeripheralDynamics, kUnknown,  Never,         Plain,                 F, Simulated},
    {teskReaderTypeNCSOpScan6,                OpScan,             kOpScan6,  UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeNCSOpScan8,                OpScan,             kOpScan8,  UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeScantronScanMarkES2010,    ScanMark,           kScanMark, Never,         Nothing,               F, Simulated},
    {teskReaderTypeScantronScanMarkES2260,    ScanMark,           kScanMark, Never,         Nothing,               F, Simulated},
    {teskReaderTypeScantronScanMarkES2800,    ScanMark,           kScanMark, Never,         Plain,                 F, Simulated},
    {teskReaderTypeSekonicSR2300,             SekonicUsb,         kSekonic,  UnlessSkipped, AsEjectedAndCancelled, F, Simulated},
    {teskReaderTypeNCSOpScaniNSIGHT4,         OpScan,             kOpScan,   UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeNCSOpScaniNSIGHT2,         OpScan,             kOpScan,   UnlessSkipped, RejectsToRejecter,     T, Simulated},
    {teskReaderTypeSekonicSR3500,             SekonicUsb,         kSekonic,  UnlessSkipped, AsEjectedAndCancelled, F, Simulated},
    {teskReaderTypeSekonicSR6500,             SekonicUsb,         kSekonic,  UnlessSkipped, AsEjectedAndCancelled, F, Simulated},
    {teskReaderTypeChatsworthACF200,          Chatsworth,         kNone,     Never,         Nothing,               F, NoDriver},
    {teskReaderTypeSekonicSR1800,             SekonicUsb,         kSekonic,  UnlessSkipped, AsEjectedAndCancelled, F, Simulated},
    {teskReaderTypeChatsworthACF100,          EZData,             kNone,     Never,         AsEjected,             F, NoDriver},
    {teskReaderTypeSekonicSR430,              SekonicSerial,      kUnknown,  Never,         Nothing,               F, Simulated},
    {teskReaderTypeAppersonBenchMark3000,     Apperson,           kUnknown,  Never,         Plain,                 F, NoDriver},
    {teskReaderTypeAppersonAdvantage1200,     Apperson,           kUnknown,  Never,         Plain,                 F, NoDriver},
    {teskReaderTypeChatsworthACP200,          Chatsworth,         kNone,     Never,         Nothing,               F, NoDriver},
    {teskReaderTypeSekonicSR3500Hybrid,       SekonicHybrid,      kSekonic,  UnlessSkipped, AsEjectedAndCancelled, F, NoDriver},
    {teskReaderTypeSekonicSR6500Hybrid,       SekonicHybrid,      kSekonic,  UnlessSkipped, AsEjectedAndCancelled, F, NoDriver},
    {teskReaderTypeDatawinAXM960,             Datawin,            kDatawin,  UnlessSkipped, AsEjected,             F, NoDriver},
    {teskReaderTypeSekonicSR8000Hybrid,       Unrouted,           kSR8000,   Never,         Nothing,               F, NoDriver},
    {teskReaderTypeDatawinHemeraC,            Unrouted,           kDatawin,  Never,         Nothing,               F, NoDriver},
};

// clang-format on

constexpr bool IsMember(std::int32_t type) { return type >= 0 && type <= kLastReaderType; }

static_assert(InOrder(kModels, &Model::type) && std::size(kModels) == std::size_t{kLastReaderType} + 1,
              "one row per reader type, in the order of the types");

static_assert(std::ranges::all_of(kModels,
                                  [](const Model& model) {
                                    return model.support == NoDriver || TraitsOf(model).mostRows > 0;
                                  }),
              "a model that is supported is of a family that reads sheets");

}  // namespace

const Model& ModelOf(teskReaderType type) { return kModels[IsMember(type) ? type : teskReaderTypeNone]; }

const FamilyTraits& FamilyOf(teskReaderType type) { return TraitsOf(ModelOf(type)); }

}  // namespace tesk
