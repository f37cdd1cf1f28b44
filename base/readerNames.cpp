// The names of the scanner models: enumerator and display name of each reader type.
#include "base/readerNames.h"

#include <cstddef>
#include <iterator>

#include "base/HostServices.h"
#include "base/tables.h"

namespace tesk {
namespace {

constexpr ReaderTypeName kNames[] = {
    {teskReaderTypeNone, "teskReaderTypeNone", "None"},
    {teskReaderTypeAppersonAdvantageLink, "teskReaderTypeAppersonAdvantageLink", "Apperson Advantage Link"},
    {teskReaderTypeNCSOpScan2, "teskReaderTypeNCSOpScan2", "Scantron OpScan 2"},
    {teskReaderTypeNCSOpScan3, "teskReaderTypeNCSOpScan3", "Scantron OpScan 3"},
    {teskReaderTypeNCSOpScan4, "teskReaderTypeNCSOpScan4", "Scantron OpScan 4/4U"},
    {teskReaderTypeNCSOpScan5, "teskReaderTypeNCSOpScan5", "Scantron OpScan 5"},
    {teskReaderTypeNCSOpScan7, "teskReaderTypeNCSOpScan7", "Scantron OpScan 7"},
    {teskReaderTypeScanningSystemsSR601, "teskReaderTypeScanningSystemsSR601", "Sekonic SR-601"},
    {teskReaderTypeScanningSystemsSR607, "teskReaderTypeScanningSystemsSR607", "Sekonic SR-607"},
    {teskReaderTypeScanningSystemsSR700351, "teskReaderTypeScanningSystemsSR700351", "Sekonic SR-700-351"},
    {teskReaderTypeScanningSystemsSR700352, "teskReaderTypeScanningSystemsSR700352", "Sekonic SR-700-352"},
    {teskReaderTypeScantronScanMark2000, "teskReaderTypeScantronScanMark2000", "Scantron Scanmark 2000"},
    {teskReaderTypeScantronScanMark2250, "teskReaderTypeScantronScanMark2250", "Scantron Scanmark 2250"},
    {teskReaderTypeScantronScanMark2500, "teskReaderTypeScantronScanMark2500", "Scantron Scanmark 2500"},
    {teskReaderTypeScantronScanMark4000, "teskReaderTypeScantronScanMark4000", "Scantron Scanmark 4000"},
    {teskReaderTypeScantronScanMark5500, "teskReaderTypeScantronScanMark5500", "Scantron Scanmark 5500"},
    {teskReaderTypeScantron8000, "teskReaderTypeScantron8000", "Scantron 8000"},
    {teskReaderTypeScantron8400, "teskReaderTypeScantron8400", "Scantron 8400"},
    {teskReaderTypeAppersonGradeMaster, "teskReaderTypeAppersonGradeMaster", "Apperson GradeMaster"},
    {teskReaderTypeScanningSystemsSR410, "teskReaderTypeScanningSystemsSR410", "Sekonic SR-410"},
    {teskReaderTypeChatsworthOMR1100, "teskReaderTypeChatsworthOMR1100", "Chatsworth Data OMR1100"},
    {teskReaderTypeChatsworthOMR2000, "teskReaderTypeChatsworthOMR2000", "Chatsworth Data OMR2000"},
    {teskReaderTypeChatsworthALSAccelScanOMR, "teskReaderTypeChatsworthALSAccelScanOMR",
     "Chatsworth Data ALS AccelScan OMR"},
    {teskReaderTypeNCSEZData, "teskReaderTypeNCSEZData", "Scantron EZData"},
    {teskReaderTypePDIVMR138, "teskReaderTypePDIVMR138", "Peripheral Dynamics Inc. VMR138"},
    {teskReaderTypeNCSOpScan6, "teskReaderTypeNCSOpScan6", "Scantron OpScan 6"},
    {teskReaderTypeNCSOpScan8, "teskReaderTypeNCSOpScan8", "Scantron OpScan 8"},
    {teskReaderTypeScantronScanMarkES2010, "teskReaderTypeScantronScanMarkES2010",
     "Scantron Scanmark ES 2010"},
    {teskReaderTypeScantronScanMarkES2260, "teskReaderTypeScantronScanMarkES2260",
     "Scantron Scanmark ES 2260"},
    {teskReaderTypeScantronScanMarkES2800, "teskReaderTypeScantronScanMarkES2800",
     "Scantron Scanmark ES 2800"},
    {teskReaderTypeSekonicSR2300, "teskReaderTypeSekonicSR2300", "Sekonic SR2300 (USB)"},
    {teskReaderTypeNCSOpScaniNSIGHT4, "teskReaderTypeNCSOpScaniNSIGHT4", "Scantron iNSIGHT 4 (OMR)"},
    {teskReaderTypeNCSOpScaniNSIGHT2, "teskReaderTypeNCSOpScaniNSIGHT2", "Scantron iNSIGHT 2 (OMR)"},
    {teskReaderTypeSekonicSR3500, "teskReaderTypeSekonicSR3500", "Sekonic SR3500 (USB)"},
    {teskReaderTypeSekonicSR6500, "teskReaderTypeSekonicSR6500", "Sekonic SR6500 (USB)"},
    {teskReaderTypeChatsworthACF200, "teskReaderTypeChatsworthACF200", "Chatsworth Data ACF-200"},
    {teskReaderTypeSekonicSR1800, "teskReaderTypeSekonicSR1800", "Sekonic SR1800 (USB)"},
    {teskReaderTypeChatsworthACF100, "teskReaderTypeChatsworthACF100", "Chatsworth Data ACP-100"},
    {teskReaderTypeSekonicSR430, "teskReaderTypeSekonicSR430", "Sekonic SR-430"},
    {teskReaderTypeAppersonBenchMark3000, "teskReaderTypeAppersonBenchMark3000", "Apperson BenchMark 3000"},
    {teskReaderTypeAppersonAdvantage1200, "teskReaderTypeAppersonAdvantage1200", "Apperson Advantage 1200"},
    {teskReaderTypeChatsworthACP200, "teskReaderTypeChatsworthACP200", "Chatsworth Data ACP-200"},
    {teskReaderTypeSekonicSR3500Hybrid, "teskReaderTypeSekonicSR3500Hybrid", "Sekonic SR3500 Hybrid (USB)"},
    {teskReaderTypeSekonicSR6500Hybrid, "teskReaderTypeSekonicSR6500Hybrid", "Sekonic SR6500 Hybrid (USB)"},
    {teskReaderTypeDatawinAXM960, "teskReaderTypeDatawinAXM960", "DATAWIN AXM 960"},
    {teskReaderTypeSekonicSR8000Hybrid, "teskReaderTypeSekonicSR8000Hybrid", "Sekonic SR8000 Hybrid (USB)"},
    {teskReaderTypeDatawinHemeraC, "teskReaderTypeDatawinHemeraC", "DATAWIN HEMERA C"},
};

static_assert(InOrder(kNames, &ReaderTypeName::type) && std::size(kNames) == std::size_t{kLastReaderType} + 1,
              "one name per reader type, in the order of the types");

}  // namespace

std::span<const ReaderTypeName> ReaderTypeNames() { return kNames; }

bool IsReader(teskReaderType type) { return type > teskReaderTypeNone && type <= kLastReaderType; }

std::string ReaderName(teskReaderType type) {
  if (type == teskReaderTypeNone) return LoadString("None");
  return IsReader(type) ? std::string(kNames[type].displayName) : std::string();
}

}  // namespace tesk
