// The drivers that exist. A new driver is one row here.
#include "drivers/Driver.h"
#include "drivers/basNCS.h"
#include "drivers/basPeripheralDynamics.h"
#include "drivers/basScanningSystems.h"
#include "drivers/basScantron.h"
#include "drivers/basSekonicSR.h"
#include "engine/clsTeskReader.h"

namespace tesk {
namespace {

constexpr Driver kDrivers[] = {
    {.family = Family::OpScan,
     .module = "basNCS",
     .initReader = basNCS::InitReaderNCS,
     .closeReader = basNCS::CloseReaderNCS,
     .readPage = basNCS::ReadPageNCS,
     .rejectPage = [](clsTeskReader& r) { return basNCS::RejectPageNCS(r), true; },
     .ejectPage = [](clsTeskReader& r) { return basNCS::EjectPageNCS(r), true; },
     .print = [](clsTeskReader& r, bool) { return basNCS::PrintNCS(r); }},
    {.family = Family::SekonicSerial,
     .module = "basScanningSystems",
     .initReader = basScanningSystems::InitReaderSS,
     .closeReader = basScanningSystems::CloseReaderSS,
     .readPage = basScanningSystems::ReadPageSS,
     .rejectPage = [](clsTeskReader& r) { return basScanningSystems::RejectPageSS(r, r.Rejecter()); },
     .ejectPage = [](clsTeskReader& r) { return basScanningSystems::RejectPageSS(r, false); },
     .print = basScanningSystems::PrintSS},
    {.family = Family::ScanMark,
     .module = "basScantron",
     .initReader = basScantron::InitReaderST,
     .closeReader = basScantron::CloseReaderST,
     .readPage =
         [](clsTeskReader& r) {
           return r.RecognitionMode() == teskRecognitionTypePage ? basScantron::ReadPageST(r)
                                                                 : basScantron::ReadWindowsST(r);
         },
     .rejectPage = [](clsTeskReader& r) { return basScantron::RejectPageST(r, r.Rejecter()); },
     .ejectPage = [](clsTeskReader& r) { return basScantron::RejectPageST(r, false); },
     .print = nullptr},
    {.family = Family::PeripheralDynamics,
     .module = "basPeripheralDynamics",
     .initReader = basPeripheralDynamics::InitReaderPD,
     .closeReader = [](clsTeskReader& r) { return basPeripheralDynamics::CloseReaderPD(r), true; },
     .readPage = basPeripheralDynamics::ReadPagePD,
     .rejectPage = [](clsTeskReader& r) { return basPeripheralDynamics::RejectPagePD(r), true; },
     .ejectPage = [](clsTeskReader& r) { return basPeripheralDynamics::EjectPagePD(r), true; },
     .print = nullptr},
    {.family = Family::SekonicUsb,
     .module = "basSekonicSR",
     .initReader = basSekonicSR::InitReaderSR,
     .closeReader = basSekonicSR::CloseReaderSR,
     .readPage = [](clsTeskReader& r) { return basSekonicSR::ReadPageSR(r, r.RecognitionThreshold()); },
     .rejectPage = basSekonicSR::RejectPageSR,
     .ejectPage = basSekonicSR::EjectPageSR,
     .print =
         [](clsTeskReader& r, bool) {
           const auto printer = r.Printer();
           return basSekonicSR::PrintSR(r, Deref(printer));
         }},
};

}  // namespace

const Driver* FindDriver(Family family) {
  for (const Driver& driver : kDrivers) {
    if (driver.family == family) return &driver;
  }
  return nullptr;
}

}  // namespace tesk
