// The catalogue's tables and the profile that a pair of rows describes.
//
// teskReaderTypeDatawinHemeraC has a name and a driver but deliberately no row: the setup dialog does not
// offer it.
#include "profiles/catalogue.h"

#include <cstddef>
#include <iterator>
#include <string>

namespace tesk {
namespace {

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

// #, reader type, reader name, group, interface, baud, data bits, parity, stop bits, flow, serial fields,
// MarkCutOff, MarkDiscrimination, RecognitionThreshold (min-max), ErasureThreshold, MaxCols, Locate, Firmware
constexpr IdentityRow kIdentities[] = {
    {1,  teskReaderTypeNone,                      "None",                              Always,   Serial, 9600,  0, "",  0, None,     "ev", 0,   "0",          "0 (0-0)",           0,   0,  F, F},
    {2,  teskReaderTypeAppersonAdvantage1200,     "Apperson Advantage 1200",           AP,       Serial, 38400, 8, "N", 1, None,     "ev", 0,   "0",          "1 (0-0)",           1,   12, F, F},
    {3,  teskReaderTypeAppersonAdvantageLink,     "Apperson Advantage Link",           AP,       Serial, 19200, 8, "N", 1, None,     "ev", 20,  "10 (e)",     "15 (0-31) (e)",     8,   12, F, F},
    {4,  teskReaderTypeAppersonBenchMark3000,     "Apperson BenchMark 3000",           AP,       Serial, 38400, 8, "N", 1, None,     "ev", 0,   "0",          "1 (0-0)",           1,   15, F, F},
    {5,  teskReaderTypeAppersonGradeMaster,       "Apperson GradeMaster",              AP,       Serial, 19200, 8, "N", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, F, F},
    {6,  teskReaderTypeChatsworthACF100,          "Chatsworth Data ACP-100",           CT,       Serial, 9600,  7, "E", 1, None,     "--", 4,   "9 (hidden)", "8 (0-9) (e)",       5,   12, T, T},
    {7,  teskReaderTypeChatsworthACF200,          "Chatsworth Data ACF-200",           CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, F, T},
    {8,  teskReaderTypeChatsworthACP200,          "Chatsworth Data ACP-200",           CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, F, T},
    {9,  teskReaderTypeChatsworthALSAccelScanOMR, "Chatsworth Data ALS AccelScan OMR", CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, T, T},
    {10, teskReaderTypeChatsworthOMR1100,         "Chatsworth Data OMR1100",           CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, T, T},
    {11, teskReaderTypeChatsworthOMR2000,         "Chatsworth Data OMR2000",           CT,       Serial, 9600,  7, "E", 1, None,     "ev", 1,   "1",          "1 (0-0)",           1,   12, T, T},
    {12, teskReaderTypeDatawinAXM960,             "DATAWIN AXM 960",                   Datawin,  Serial, 19200, 8, "N", 1, Hardware, "ev", 6,   "3 (e)",      "1 (1-8) (e)",       1,   12, F, F},
    {13, teskReaderTypePDIVMR138,                 "Peripheral Dynamics Inc. VMR138",   PDI,      Serial, 9600,  8, "N", 1, None,     "ev", 250, "5 (e)",      "240 (192-254) (e)", 190, 14, F, F},
    {14, teskReaderTypeScantron8000,              "Scantron 8000",                     Scantron, Serial, 9600,  8, "N", 2, None,     "ev", 65,  "10 (e)",     "35 (0-99) (e)",     20,  48, F, F},
    {15, teskReaderTypeScantron8400,              "Scantron 8400",                     Scantron, Serial, 9600,  8, "N", 2, None,     "ev", 65,  "10 (e)",     "35 (0-99) (e)",     20,  48, F, F},
    {16, teskReaderTypeNCSEZData,                 "Scantron EZData",                   Scantron, Serial, 9600,  7, "E", 1, None,     "--", 4,   "9 (hidden)", "4 (0-9) (e)",       2,   12, T, T},
    {17, teskReaderTypeNCSOpScan2,                "Scantron OpScan 2",                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {18, teskReaderTypeNCSOpScaniNSIGHT2,         "Scantron iNSIGHT 2 (OMR)",          Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {19, teskReaderTypeNCSOpScan3,                "Scantron OpScan 3",                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {20, teskReaderTypeNCSOpScan4,                "Scantron OpScan 4/4U",              Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {21, teskReaderTypeNCSOpScaniNSIGHT4,         "Scantron iNSIGHT 4 (OMR)",          Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {22, teskReaderTypeNCSOpScan5,                "Scantron OpScan 5",                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {23, teskReaderTypeNCSOpScan6,                "Scantron OpScan 6",                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {24, teskReaderTypeNCSOpScan7,                "Scantron OpScan 7",                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {25, teskReaderTypeNCSOpScan8,                "Scantron OpScan 8",                 Scantron, Serial, 38400, 7, "O", 2, Hardware, "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {26, teskReaderTypeScantronScanMark2000,      "Scantron Scanmark 2000",            Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {27, teskReaderTypeScantronScanMark2250,      "Scantron Scanmark 2250",            Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {28, teskReaderTypeScantronScanMark2500,      "Scantron Scanmark 2500",            Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {29, teskReaderTypeScantronScanMark4000,      "Scantron Scanmark 4000",            Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {30, teskReaderTypeScantronScanMark5500,      "Scantron Scanmark 5500",            Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {31, teskReaderTypeScantronScanMarkES2010,    "Scantron Scanmark ES 2010",         Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {32, teskReaderTypeScantronScanMarkES2260,    "Scantron Scanmark ES 2260",         Scantron, Serial, 19200, 8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {33, teskReaderTypeScantronScanMarkES2800,    "Scantron Scanmark ES 2800",         Scantron, Serial, 9600,  8, "N", 2, None,     "ev", 10,  "3 (e)",      "7 (0-15) (e)",      5,   48, F, F},
    {34, teskReaderTypeScanningSystemsSR410,      "Sekonic SR-410",                    Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 6,   "3 (e)",      "1 (1-8) (e)",       1,   12, F, F},
    {35, teskReaderTypeSekonicSR430,              "Sekonic SR-430",                    Sekonic,  Serial, 38400, 7, "N", 2, Hardware, "ev", 6,   "3 (e)",      "1 (1-16) (e)",      1,   12, F, F},
    {36, teskReaderTypeScanningSystemsSR601,      "Sekonic SR-601",                    Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {37, teskReaderTypeScanningSystemsSR607,      "Sekonic SR-607",                    Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {38, teskReaderTypeScanningSystemsSR700351,   "Sekonic SR-700-351",                Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {39, teskReaderTypeScanningSystemsSR700352,   "Sekonic SR-700-352",                Sekonic,  Serial, 9600,  7, "N", 2, Hardware, "ev", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {40, teskReaderTypeSekonicSR1800,             "Sekonic SR1800 (USB)",              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {41, teskReaderTypeSekonicSR2300,             "Sekonic SR2300 (USB)",              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {42, teskReaderTypeSekonicSR3500,             "Sekonic SR3500 (USB)",              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {43, teskReaderTypeSekonicSR3500Hybrid,       "Sekonic SR3500 Hybrid (USB)",       Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {44, teskReaderTypeSekonicSR6500,             "Sekonic SR6500 (USB)",              Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {45, teskReaderTypeSekonicSR6500Hybrid,       "Sekonic SR6500 Hybrid (USB)",       Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
    {46, teskReaderTypeSekonicSR8000Hybrid,       "Sekonic SR8000 Hybrid (USB)",       Sekonic,  USB,    9600,  0, "",  0, None,     "-v", 10,  "2 (e)",      "5 (0-15) (e)",      3,   48, F, F},
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

consteval bool TablesMatch() {
  if (std::size(kIdentities) != std::size(kCapabilities)) return false;
  for (std::size_t i = 0; i < std::size(kIdentities); ++i) {
    if (kIdentities[i].number != static_cast<std::int16_t>(i + 1)) return false;
    if (kIdentities[i].type != kCapabilities[i].type) return false;
  }
  return true;
}
static_assert(TablesMatch(), "the two tables list the same models in the same order, numbered from 1");

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

}  // namespace

std::span<const IdentityRow> IdentityRows() { return kIdentities; }

std::span<const CapabilityRow> CapabilityRows() { return kCapabilities; }

clsTeskReaderProfile ProfileOf(const IdentityRow& identity, const CapabilityRow& capabilities) {
  clsTeskReaderProfile profile;
  profile.SetReaderType(identity.type);
  profile.SetMaxCols(identity.maxCols);
  profile.SetLocateEnabled(identity.locate);
  profile.SetFirmwareEnabled(identity.firmware);
  SetSerialLine(profile, identity);
  SetThresholds(profile, identity);
  SetCapabilities(profile, capabilities);
  return profile;
}

}  // namespace tesk
