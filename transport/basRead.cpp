// The routing tables and the code that walks them.
#include "transport/basRead.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "engine/clsTeskReader.h"

namespace tesk {
namespace {

// ---- Which family drives which reader types. 37 is driven as an EZData reader; 45 and 46 by nobody.

struct FamilyRoute {
  Family family;
  std::array<std::int32_t, 10> types;  // 0 fills up
};

constexpr FamilyRoute kFamilies[] = {
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

// ---- Which types print, and when. 19 and 38 are left out on purpose although their family prints.

enum class PrintWhen { NotSkipped, Always };  // Always: afterwards the disposed flag is the skip flag

struct PrintRoute {
  PrintWhen when;
  std::array<std::int32_t, 10> types;
};

constexpr PrintRoute kPrinting[] = {
    {PrintWhen::NotSkipped, {2, 3, 4, 5, 6, 25, 26, 31, 32}},
    {PrintWhen::Always, {7, 8, 9, 10}},
    {PrintWhen::NotSkipped, {30, 33, 34, 36}},
    {PrintWhen::NotSkipped, {42, 43}},
    {PrintWhen::NotSkipped, {44}},
};

// ---- Which types are rejected and ejected. 16, 17, 19, 20, 21, 27, 28, 35, 38 and 41 have no routine: the
// call does nothing at the scanner.

enum class RejectWhen { Always, RejecterSet };
enum class Disposed { Always, WhenEjected, WhenEjectedAndCancelled };

struct DisposalRoute {
  RejectWhen rejectWhen;
  Disposed disposed;
  std::array<std::int32_t, 10> types;
};

constexpr DisposalRoute kDisposal[] = {
    {RejectWhen::Always, Disposed::Always, {1, 18, 39, 40}},
    {RejectWhen::RejecterSet, Disposed::Always, {2, 3, 4, 5, 6, 25, 26, 31, 32}},
    {RejectWhen::Always, Disposed::Always, {7, 8, 9, 10}},
    {RejectWhen::Always, Disposed::Always, {11, 12, 13, 14, 15, 29}},
    {RejectWhen::Always, Disposed::WhenEjected, {22}},
    {RejectWhen::Always, Disposed::WhenEjected, {23, 37}},
    {RejectWhen::Always, Disposed::Always, {24}},
    {RejectWhen::Always, Disposed::WhenEjectedAndCancelled, {30, 33, 34, 36}},
    {RejectWhen::Always, Disposed::WhenEjectedAndCancelled, {42, 43}},
    {RejectWhen::Always, Disposed::WhenEjected, {44}},
};

// ---- What closing yields, beyond what the driver says.

enum class CloseYields { DriversResult, True, False };

constexpr struct {
  Family family;
  CloseYields yields;
} kClosing[] = {
    {Family::Chatsworth, CloseYields::True},           // has no close routine
    {Family::PeripheralDynamics, CloseYields::False},  // kept: its result never reaches the host
};

template <class Route, std::size_t N>
const Route* RouteOf(const Route (&table)[N], teskReaderType type) {
  if (type <= teskReaderTypeNone) return nullptr;
  for (const Route& route : table) {
    if (std::ranges::find(route.types, static_cast<std::int32_t>(type)) != route.types.end()) return &route;
  }
  return nullptr;
}

const Driver* DriverOf(teskReaderType type) {
  const auto family = FamilyOf(type);
  return family ? FindDriver(*family) : nullptr;
}

// ---- Opening

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
  port.SetSettings(NumberText(reader.BaudRate()) + "," + reader.Parity() + "," +
                   NumberText(reader.DataBits()) + "," + NumberText(reader.StopBits()));
  port.SetPortOpen(true);
}

bool Initialise(clsTeskReader& reader) {
  const auto profile = Deref(reader.Profiles()).Item(NumberText(reader.ReaderType()));
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

std::optional<Family> FamilyOf(teskReaderType type) {
  const FamilyRoute* route = RouteOf(kFamilies, type);
  return route != nullptr ? std::optional(route->family) : std::nullopt;
}

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
    if (driver == nullptr) return false;
    const bool result = driver->closeReader == nullptr || driver->closeReader(reader);
    for (const auto& rule : kClosing) {
      if (rule.family == driver->family) return rule.yields == CloseYields::True;
    }
    return result;
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
    const PrintRoute* route = RouteOf(kPrinting, reader.ReaderType());
    const Driver* driver = DriverOf(reader.ReaderType());
    if (route == nullptr || driver == nullptr || driver->print == nullptr) return false;
    if (skip && route->when == PrintWhen::NotSkipped) return false;
    const bool printed = driver->print(reader, skip);
    if (route->when == PrintWhen::Always) disposed = skip;
    return printed;
  });
}

void basRead::ReaderReject(clsTeskReader& reader) {
  const DisposalRoute* route = RouteOf(kDisposal, reader.ReaderType());
  const Driver* driver = DriverOf(reader.ReaderType());
  if (route == nullptr || driver == nullptr) return;
  if (route->rejectWhen == RejectWhen::RejecterSet && !reader.Rejecter()) return;
  driver->rejectPage(reader);
}

void basRead::ReaderEject(clsTeskReader& reader, bool& disposed) {
  const DisposalRoute* route = RouteOf(kDisposal, reader.ReaderType());
  const Driver* driver = DriverOf(reader.ReaderType());
  if (route == nullptr || driver == nullptr) return;
  const bool ejected = driver->ejectPage(reader);
  if (route->disposed == Disposed::WhenEjected) disposed = ejected;
  if (route->disposed == Disposed::WhenEjectedAndCancelled) disposed = ejected && reader.CancelScan();
}

}  // namespace tesk
