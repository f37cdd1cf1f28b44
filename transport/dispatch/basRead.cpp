// The routing of operations to the driver of the reader type.
#include "transport/dispatch/basRead.h"

#include <cstdint>
#include <string>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Driver.h"
#include "engine/clsTeskReader.h"
#include "profiles/models.h"
#include "transport/SerialPort.h"

namespace tesk {
namespace {

constexpr std::int32_t kFirstPort = 1;
constexpr std::int32_t kLastPort = 16;
constexpr std::int32_t kLongestTimeOut = 600;  // seconds
constexpr std::int32_t kUsualTimeOut = 10;     // seconds
constexpr std::int32_t kInvalidPortNumber = 8002;

// Whatever goes wrong at opening is reported as a matter of the port.
void ReportPortError(const clsTeskReader& reader, const RunTimeError* cause) {
  const std::string message = LoadString(
      "An error has occurred attempting to initialize the selected COM port: %1. Please verify the COM port "
      "number and settings and then retry the operation.");
  std::string detail;
  if (cause != nullptr) {
    detail = cause->Description();
    if (!cause->Detail().empty()) detail += "|" + cause->Detail();
  }
  ReportError(ErrorReport{.number = kInvalidPortNumber,
                          .source = "basRead.ReaderInit",
                          .message = Replace(message, "%1", NumberText(reader.Port())),
                          .title = LoadString("Invalid Port Number"),
                          .detail = detail});
}

void OpenPort(const clsTeskReader& reader, SerialControl& port) {
  // A start that failed leaves the port open until the reader is ended; a new start begins afresh.
  if (port.PortOpen()) port.SetPortOpen(false);
  port.SetHandshaking(reader.FlowControl());
  port.SetCommPort(reader.Port());
  port.SetSettings(SettingsText(reader.BaudRate(), reader.Parity(), reader.DataBits(), reader.StopBits()));
  port.SetPortOpen(true);
}

bool Initialise(clsTeskReader& reader) {
  const auto profile = reader.Profile();
  if (!profile) return false;
  const auto comm = reader.fComm();
  if (profile->InterfaceType() == teskReaderInterfaceTypeSerial) {
    if (reader.Port() < kFirstPort || reader.Port() > kLastPort) {
      ReportPortError(reader, nullptr);
      return false;
    }
    OpenPort(reader, *Deref(comm).mscComm());
  }
  if (reader.TimeOut() < 1 || reader.TimeOut() > kLongestTimeOut) reader.SetTimeOut(kUsualTimeOut);
  Deref(comm).tmrScan()->SetInterval(reader.TimeOut() * 1000);
  const Driver* driver = DriverOf(reader.ReaderType());
  return driver != nullptr && driver->initReader(reader);
}

}  // namespace

bool basRead::ReaderInit(clsTeskReader& reader) {
  bool ready = false;
  if (const auto error = Attempt([&] { ready = Initialise(reader); })) {
    ready = false;
    ReportPortError(reader, &*error);
  }
  if (!ready) reader.SetCancelScan(true);
  return ready;
}

bool basRead::ReaderClose(clsTeskReader& reader) {
  const bool closed = Guarded("basRead.ReaderClose", [&] {
    const Driver* driver = DriverOf(reader.ReaderType());
    return driver != nullptr ? driver->closeReader(reader) : FamilyOf(reader.ReaderType()).nothingToClose;
  });
  const bool released = Guarded("basRead.ReaderClose", [&] {
    const auto comm = reader.fComm();
    if (Deref(comm).mscComm()->PortOpen()) comm->mscComm()->SetPortOpen(false);
    return true;
  });
  return closed && released;
}

bool basRead::ReaderRead(clsTeskReader& reader) {
  const bool read = Guarded("basRead.ReaderRead", [&] {
    reader.SetSide1TimingMarks(-1);
    reader.SetSide2TimingMarks(-1);
    reader.SetHopperEmpty(false);
    const Driver* driver = DriverOf(reader.ReaderType());
    auto sheet = driver != nullptr ? driver->readPage(reader) : std::nullopt;
    if (sheet) reader.StoreSheet(std::move(*sheet));
    return sheet.has_value();
  });
  if (!read) reader.SetCancelScan(true);
  return read;
}

bool basRead::ReaderPrint(clsTeskReader& reader, bool skip, bool& disposed) {
  return Guarded("basRead.ReaderPrint", [&] {
    const Printing printing = ModelOf(reader.ReaderType()).printing;
    const Driver* driver = DriverOf(reader.ReaderType());
    if (printing == Printing::Never || driver == nullptr) return false;
    if (skip && printing == Printing::UnlessSkipped) return false;
    const bool printed = driver->print(reader, skip);
    if (printing == Printing::Always) disposed = skip;
    return printed;
  });
}

void basRead::ReaderReject(clsTeskReader& reader) {
  const Sending sending = ModelOf(reader.ReaderType()).sending;
  const Driver* driver = DriverOf(reader.ReaderType());
  if (sending == Sending::Nothing || driver == nullptr) return;
  if (sending == Sending::RejectsToRejecter && !reader.Rejecter()) return;
  driver->rejectPage(reader);
}

void basRead::ReaderEject(clsTeskReader& reader, bool& disposed) {
  const Sending sending = ModelOf(reader.ReaderType()).sending;
  const Driver* driver = DriverOf(reader.ReaderType());
  if (sending == Sending::Nothing || driver == nullptr) return;
  const bool ejected = driver->ejectPage(reader);
  if (sending == Sending::AsEjected) disposed = ejected;
  if (sending == Sending::AsEjectedAndCancelled) disposed = ejected && reader.CancelScan();
}

}  // namespace tesk
