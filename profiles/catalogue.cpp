// The catalogue's tables and the profile that a pair of rows describes.
#include "profiles/catalogue.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "profiles/catalogueCells.h"

namespace tesk {
namespace {

// Identity, serial line and thresholds of a model.
struct IdentityRow {
  teskReaderType type;
  teskProfileType group;  // the filter bit that admits the model; none: always admitted
  teskReaderInterfaceType interfaceType;
  std::int32_t baudRate;
  std::int32_t dataBits;    // 0 where there is no serial line
  std::string_view parity;  // likewise empty
  float stopBits;           // likewise 0
  teskReaderFlowControl flowControl;
  PairCell serialFields;  // of all five line settings alike
  std::int16_t markCutOff;
  DiscriminationCell markDiscrimination;
  ThresholdCell recognitionThreshold;
  std::int16_t erasureThreshold;
  std::int16_t maxCols;
  bool locate;
  bool firmware;
};

// What the same model can do.
struct CapabilityRow {
  teskReaderType type;
  SwitchCell readerGrade;
  SwitchCell barcode;
  SwitchCell duplex;
  SwitchCell feeder;
  SwitchCell rejecter;
  SwitchCell printer;
  SwitchCell windowing;
  SwitchCell imaging;
  SwitchCell continuous;
  ColorDepthCell colorDepth;
  ResolutionCell resolution;
  bool printerPositionEnabled;
  PairCell sleepTime;
  PairCell timeOut;
  PairCell port;
};

// The words of the tables.
constexpr auto Always = teskProfileTypeNone;
constexpr auto AP = teskProfileTypeAP;
constexpr auto CT = teskProfileTypeCT;
constexpr auto Datawin = teskProfileTypeDatawin;
constexpr auto PDI = teskProfileTypePDI;
constexpr auto Scantron = teskProfileTypeScantron;
constexpr auto Sekonic = teskProfileTypeSekonic;
constexpr auto Serial = teskReaderInterfaceTypeSerial;
constexpr auto USB = teskReaderInterfaceTypeUSB;
constexpr auto None = teskReaderFlowControlNone;
constexpr auto Hardware = teskReaderFlowControlHardware;
constexpr bool T = true;
constexpr bool F = false;

// clang-format off

// Reader type, group, interface, baud, data bits, parity, stop bits, flow, serial fields,
// MarkCutOff, MarkDiscrimination, RecognitionThreshold (min-max), ErasureThreshold, MaxCols, Locate, Firmware
constexpr IdentityRow kIdentities[] = {
    {teskReaderTypeNone,                       Always,   Serial, 9600,  0, "",  0, None,     "ev", 0,   "0",          "0 (0-0)",           0,   0,  F, F},
    {teskReaderTypeAppersonAdvantage1200,      AP,       Serial, 38400, 8, "N", 1, None,     "ev", 0,   "0",          "1 (0-0)",           1,   12, F, F},
    {teskReaderTypeAppersonAdvantageLink,      AP,       Serial, 19200, 8, "N", 1, None,     "ev", 20,  "10 (e)",     "15 (0-31) (e)",     8,   12, F, F},
    {teskReaderTypeAppersonBenchMark3000,      AP,       Serial, 38400, 8, "N", 1, None,     "ev", 0,   "0",          "1 (0-0)",           1,   15, F, F},
    {teskReaderTypeAppersonGradeMaster,        AP,       Serial, 19200, 8, "N", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, F, F},
    {teskReaderTypeChatsworthACF100,           CT,       Serial, 9600,  7, "E", 1, None,     "--", 4,   "9 (hidden)", "8 (0-9) (e)",       5,   12, T, T},
    {teskReaderTypeChatsworthACF200,           CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, F, T},
    {teskReaderTypeChatsworthACP200,           CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, F, T},
    {teskReaderTypeChatsworthALSAccelScanOMR,  CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, T, T},
    {teskReaderTypeChatsworthOMR1100,          CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, T, T},
    {teskReaderTypeChatsworthOMR2000,          CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, T, T},
    {teskReaderTypeDatawinAXM960,              Datawin,  Serial, 19200, 8, "N", 1, Hardware, "ev", 6,   "3 (e)",      "1 (1-8) (e)",       1,   12, F, F},
    {teskReaderTypePDIVMR138,                  PDI,      Serial, 9600,  8, "N", 1, None,     "ev", 250, "5 (e)",      "240 (192-254) (e)", 190, 14, F, F},
    {teskReaderTypeScantron8000,               Scantron, Serial, 9600,  8, "N", 2, None,     "ev", 65,  "10 (e)",     "35 (0-99) (e)",     20,  48, F, F},
    {teskReaderTypeScantron8400,               Scantron, Serial, 9600,  8, "N", 2, None,     "ev", 65,  "10 (e)",     "35 (0-99) (e)",     20,  48, F, F},
    {teskReaderTypeNCSEZData,                  Scantron, Serial, 9600,  7, "E", 1, None,     "--", 4,   "9 (hidden)", "4 (0-9) (e)",       2,   12, T, T},
    {teskReaderTypeNCSOpScan2,                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScaniNSIGHT2,          Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScan3,                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScan4,                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScaniNSIGHT4,          Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScan5,                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScan6,                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScan7,                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeNCSOpScan8,                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMark2000,       Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMark2250,       Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMark2500,       Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMark4000,       Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMark5500,       Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMarkES2010,     Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMarkES2260,     Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScantronScanMarkES2800,     Scantron, Serial, 9600,  8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {teskReaderTypeScanningSystemsSR410,       Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 6,   "3 (e)",      "1 (1-8) (e)",       1,   12, F, F},
    {teskReaderTypeSekonicSR430,               Sekonic,  Serial, 38400, 7, "N", 2, Hardware, "ev", 6,   "3 (e)",      "1 (1-16) (e)",      1,   12, F, F},
    {teskReaderTypeScanningSystemsSR601,       Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeScanningSystemsSR607,       Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeScanningSystemsSR700351,    Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeScanningSystemsSR700352,    Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeSekonicSR1800,              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeSekonicSR2300,              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeSekonicSR3500,              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeSekonicSR3500Hybrid,        Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeSekonicSR6500,              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeSekonicSR6500Hybrid,        Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {teskReaderTypeSekonicSR8000Hybrid,        Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
};

// Reader type, ReaderGrade, Barcode, Duplex, Feeder, Rejecter, Printer, Windowing, Imaging, Continuous,
// ColorDepth, Resolution, PrinterPositionEnabled, SleepTime, TimeOut, Port
constexpr CapabilityRow kCapabilities[] = {
    {teskReaderTypeNone,                      "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeAppersonAdvantage1200,     "0ev", "1-v", "1-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeAppersonAdvantageLink,     "0ev", "1-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeAppersonBenchMark3000,     "0ev", "1-v", "0-v", "0-v", "1-v", "0-v", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeAppersonGradeMaster,       "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeChatsworthACF100,          "0--", "0--", "0--", "0--", "1--", "0--", "0--", "0--", "0--", "0--", "200--", T, "--", "--", "ev"},
    {teskReaderTypeChatsworthACF200,          "0-v", "0-v", "0-v", "0ev", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeChatsworthACP200,          "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeChatsworthALSAccelScanOMR, "0-v", "0-v", "0-v", "0-v", "1ev", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeChatsworthOMR1100,         "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeChatsworthOMR2000,         "0-v", "0-v", "0-v", "1-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeDatawinAXM960,             "0-v", "1-v", "1-v", "1-v", "1-v", "1-v", "0-v", "0--", "0--", "0--", "200--", F, "ev", "ev", "ev"},
    {teskReaderTypePDIVMR138,                 "0-v", "0-v", "0-v", "0-v", "1ev", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantron8000,              "0-v", "0-v", "1ev", "1ev", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantron8400,              "0-v", "0-v", "1ev", "1ev", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSEZData,                 "0--", "0--", "0--", "0--", "1--", "0--", "0--", "0--", "0--", "0--", "200--", T, "--", "--", "ev"},
    {teskReaderTypeNCSOpScan2,                "0ev", "0ev", "0ev", "0-v", "0-v", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScaniNSIGHT2,         "0ev", "0ev", "0ev", "0-v", "0-v", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScan3,                "0ev", "0ev", "0ev", "1-v", "0ev", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScan4,                "0ev", "0ev", "0ev", "1-v", "0ev", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScaniNSIGHT4,         "0ev", "0ev", "0ev", "1-v", "0ev", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScan5,                "0-v", "0ev", "0ev", "1-v", "0-v", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScan6,                "0-v", "0ev", "0ev", "1-v", "0-v", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScan7,                "0-v", "0ev", "0ev", "1-v", "1-v", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeNCSOpScan8,                "0-v", "0ev", "0ev", "1-v", "1-v", "0ev", "0--", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMark2000,      "0-v", "0-v", "0-v", "0-v", "0-v", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMark2250,      "0-v", "0-v", "1-v", "0-v", "0-v", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMark2500,      "0-v", "0-v", "1ev", "1-v", "0ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMark4000,      "0-v", "0-v", "1-v", "1-v", "1ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMark5500,      "0-v", "0-v", "1-v", "1-v", "1ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMarkES2010,    "0-v", "0-v", "0-v", "0-v", "0-v", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMarkES2260,    "0-v", "0-v", "1-v", "1ev", "0-v", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScantronScanMarkES2800,    "0-v", "0-v", "1ev", "1-v", "0ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScanningSystemsSR410,      "0-v", "0-v", "0-v", "1-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeSekonicSR430,              "0-v", "0-v", "0-v", "1-v", "0-v", "0-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScanningSystemsSR601,      "0-v", "0ev", "0-v", "1-v", "0ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScanningSystemsSR607,      "0-v", "0ev", "1-v", "1-v", "0ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScanningSystemsSR700351,   "0-v", "0ev", "0-v", "1-v", "0ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeScanningSystemsSR700352,   "0-v", "0ev", "1-v", "1-v", "0ev", "0ev", "1ev", "0--", "0--", "0--", "200--", T, "ev", "ev", "ev"},
    {teskReaderTypeSekonicSR1800,             "0-v", "0ev", "0ev", "1-v", "0-v", "0ev", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "-v"},
    {teskReaderTypeSekonicSR2300,             "0-v", "0ev", "1ev", "1-v", "0ev", "0ev", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "-v"},
    {teskReaderTypeSekonicSR3500,             "0-v", "0ev", "1ev", "1-v", "0ev", "0ev", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "-v"},
    {teskReaderTypeSekonicSR3500Hybrid,       "0-v", "0ev", "1ev", "1-v", "0ev", "0ev", "0-v", "1ev", "0--", "1ev", "200ev", T, "ev", "ev", "-v"},
    {teskReaderTypeSekonicSR6500,             "0-v", "0ev", "1ev", "1-v", "1-v", "1-v", "0-v", "0--", "0--", "0--", "200--", T, "ev", "ev", "-v"},
    {teskReaderTypeSekonicSR6500Hybrid,       "0-v", "0ev", "1ev", "1-v", "1-v", "1-v", "0-v", "1ev", "0--", "1ev", "200ev", T, "ev", "ev", "-v"},
    {teskReaderTypeSekonicSR8000Hybrid,       "0-v", "1ev", "1ev", "1-v", "1ev", "1ev", "0-v", "1ev", "1ev", "1ev", "200ev", T, "-v", "-v", "-v"},
};

// clang-format on

constexpr bool ListedOnce(const IdentityRow& row) {
  return std::ranges::count(kIdentities, row.type, &IdentityRow::type) == 1;
}
static_assert(std::ranges::all_of(kIdentities, ListedOnce) &&
                  std::size(kIdentities) == std::size_t{kLastReaderType},
              "one row per reader type but the HEMERA C, which hosts are deliberately not offered");
static_assert(std::ranges::equal(kIdentities, kCapabilities, {}, &IdentityRow::type, &CapabilityRow::type),
              "both tables list the same models in the same order");

using Profile = clsTeskReaderProfile;
using BooleanSetter = void (Profile::*)(bool);

struct SwitchColumn {
  SwitchCell CapabilityRow::*cell;
  BooleanSetter setValue;
  BooleanSetter setEnabled;
  BooleanSetter setVisible;
};

constexpr SwitchColumn kSwitches[] = {
    {&CapabilityRow::readerGrade, &Profile::SetReaderGrade, &Profile::SetReaderGradeEnabled,
     &Profile::SetReaderGradeVisible},
    {&CapabilityRow::barcode, &Profile::SetBarcode, &Profile::SetBarcodeEnabled, &Profile::SetBarcodeVisible},
    {&CapabilityRow::duplex, &Profile::SetDuplex, &Profile::SetDuplexEnabled, &Profile::SetDuplexVisible},
    {&CapabilityRow::feeder, &Profile::SetFeeder, &Profile::SetFeederEnabled, &Profile::SetFeederVisible},
    {&CapabilityRow::rejecter, &Profile::SetRejecter, &Profile::SetRejecterEnabled,
     &Profile::SetRejecterVisible},
    {&CapabilityRow::printer, &Profile::SetPrinter, &Profile::SetPrinterEnabled, &Profile::SetPrinterVisible},
    {&CapabilityRow::windowing, &Profile::SetWindowing, &Profile::SetWindowingEnabled,
     &Profile::SetWindowingVisible},
    {&CapabilityRow::imaging, &Profile::SetImaging, &Profile::SetImagingEnabled, &Profile::SetImagingVisible},
    {&CapabilityRow::continuous, &Profile::SetContinuous, &Profile::SetContinuousEnabled,
     &Profile::SetContinuousVisible},
};

struct PairSetters {
  BooleanSetter setEnabled;
  BooleanSetter setVisible;
};

constexpr PairSetters kSerialFields[] = {
    {&Profile::SetBaudRateEnabled, &Profile::SetBaudRateVisible},
    {&Profile::SetDataBitsEnabled, &Profile::SetDataBitsVisible},
    {&Profile::SetParityEnabled, &Profile::SetParityVisible},
    {&Profile::SetStopBitsEnabled, &Profile::SetStopBitsVisible},
    {&Profile::SetFlowControlEnabled, &Profile::SetFlowControlVisible},
};

void SetSerialLine(Profile& profile, const IdentityRow& row) {
  profile.SetInterfaceType(row.interfaceType);
  profile.SetBaudRate(static_cast<teskReaderBaudRate>(row.baudRate));
  profile.SetDataBits(static_cast<teskReaderDataBits>(row.dataBits));
  profile.SetParity(std::string(row.parity));
  profile.SetStopBits(row.stopBits);
  profile.SetFlowControl(row.flowControl);
  for (const PairSetters& field : kSerialFields) {
    (profile.*field.setEnabled)(row.serialFields.enabled);
    (profile.*field.setVisible)(row.serialFields.visible);
  }
}

void SetThresholds(Profile& profile, const IdentityRow& row) {
  profile.SetMarkCutOff(row.markCutOff);
  profile.SetMarkDiscrimination(row.markDiscrimination.value);
  profile.SetMarkDiscriminationEnabled(row.markDiscrimination.enabled);
  profile.SetMarkDiscriminationVisible(row.markDiscrimination.visible);
  profile.SetRecognitionThreshold(row.recognitionThreshold.value);
  profile.SetRecognitionThresholdMinimum(row.recognitionThreshold.minimum);
  profile.SetRecognitionThresholdMaximum(row.recognitionThreshold.maximum);
  profile.SetRecognitionThresholdEnabled(row.recognitionThreshold.enabled);
  profile.SetErasureThreshold(row.erasureThreshold);
}

void SetCapabilities(Profile& profile, const CapabilityRow& row) {
  for (const SwitchColumn& column : kSwitches) {
    const SwitchCell& cell = row.*column.cell;
    (profile.*column.setValue)(cell.value == 1);
    (profile.*column.setEnabled)(cell.enabled);
    (profile.*column.setVisible)(cell.visible);
  }
  profile.SetColorDepth(static_cast<teskReaderColorDepth>(row.colorDepth.value));
  profile.SetColorDepthEnabled(row.colorDepth.enabled);
  profile.SetColorDepthVisible(row.colorDepth.visible);
  profile.SetResolution(row.resolution.value);
  profile.SetResolutionEnabled(row.resolution.enabled);
  profile.SetResolutionVisible(row.resolution.visible);
  profile.SetPrinterPositionEnabled(row.printerPositionEnabled);
  profile.SetSleepTimeEnabled(row.sleepTime.enabled);
  profile.SetSleepTimeVisible(row.sleepTime.visible);
  profile.SetTimeOutEnabled(row.timeOut.enabled);
  profile.SetTimeOutVisible(row.timeOut.visible);
  profile.SetPortEnabled(row.port.enabled);
  profile.SetPortVisible(row.port.visible);
}

// A new profile of the model whose rows stand at `index`.
Profile ProfileAt(std::size_t index) {
  const IdentityRow& row = kIdentities[index];
  Profile profile;
  profile.SetReaderType(row.type);
  profile.SetMaxCols(row.maxCols);
  profile.SetLocateEnabled(row.locate);
  profile.SetFirmwareEnabled(row.firmware);
  SetSerialLine(profile, row);
  SetThresholds(profile, row);
  SetCapabilities(profile, kCapabilities[index]);
  return profile;
}

}  // namespace

std::vector<clsTeskReaderProfile> Catalogue(teskProfileType makers) {
  std::vector<clsTeskReaderProfile> profiles;
  for (std::size_t i = 0; i < std::size(kIdentities); ++i) {
    const teskProfileType group = kIdentities[i].group;
    if (group == Always || (group & makers) != 0) profiles.push_back(ProfileAt(i));
  }
  return profiles;
}

clsTeskReaderProfile ProfileOf(teskReaderType type) {
  const auto* row = std::ranges::find(kIdentities, type, &IdentityRow::type);
  if (row == std::end(kIdentities)) return {};
  return ProfileAt(static_cast<std::size_t>(row - std::begin(kIdentities)));
}

std::int16_t DarkestMark(teskReaderType type) {
  return std::max<std::int16_t>(ProfileOf(type).RecognitionThresholdMaximum(), 1);
}

}  // namespace tesk
