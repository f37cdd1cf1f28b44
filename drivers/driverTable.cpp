// The drivers that exist. A new driver is one row here.
#include "drivers/Driver.h"
#include "drivers/basScantron.h"
#include "engine/clsTeskReader.h"

namespace tesk {
namespace {

constexpr Driver kDrivers[] = {
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
};

}  // namespace

const Driver* FindDriver(Family family) {
  for (const Driver& driver : kDrivers) {
    if (driver.family == family) return &driver;
  }
  return nullptr;
}

}  // namespace tesk
