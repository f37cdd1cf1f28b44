// What the dispatch does with each operation, opening and closing of the port, and what it reports.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "drivers/Driver.h"
#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"
#include "transport/dispatch/basRead.h"

namespace tesk::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;
using Int16s = std::vector<std::int16_t>;

constexpr auto kScanMark = teskReaderTypeScantronScanMark2500;

// A reader with two sheets before it.
struct DispatchBench : Bench {
  explicit DispatchBench(teskReaderType type = kScanMark)
      : Bench(type, simulator::CreateScanner(type, {.count = 2})) {}
};

TEST(Opening, PortOutsideOneToSixteenIsReportedBeforeAnythingIsOpened) {
  for (const std::int16_t port : Int16s{-1, 0, 1, 16, 17}) {
    DispatchBench bench;
    bench.serial->port = port;
    bench.reader->SetPort(port);
    const bool taken = port == 1 || port == 16;
    EXPECT_EQ(bench.reader->StartReader(), taken) << port;
    EXPECT_EQ(bench.reader->CancelScan(), !taken) << port;
    EXPECT_EQ(bench.serial->asked, taken ? Int16s{port} : Int16s{});
    if (taken) continue;
    ASSERT_THAT(bench.host.errors, SizeIs(1));
    const ErrorReport& error = bench.host.errors[0];
    EXPECT_EQ(NumberText(error.number) + " " + error.source + " | " + error.title + " | " + error.message +
                  error.detail,
              "8002 Quillon Reader - basRead.ReaderInit | Invalid Port Number | An error has occurred "
              "attempting to initialize the selected COM port: " +
                  NumberText(port) +
                  ". Please verify the COM port number and settings and then retry the operation.");
  }
}

TEST(Opening, PortThatCannotBeOpenedSaysWhyAndLeavesARetryPossible) {
  DispatchBench bench;
  bench.reader->SetPort(5);
  EXPECT_FALSE(bench.reader->StartReader());
  EXPECT_EQ(bench.host.errors.at(0).detail, "No such port");
  bench.reader->SetPort(3);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_TRUE(bench.reader->StartReader()) << "also while the port is open";
}

TEST(Opening, SettingsReachTheLineInTheFormOfNoLocaleAndThoseOfNoLineAreRefused) {
  struct Case {
    int baud;
    const char* parity;
    int bits;
    float stopBits;
    int flowControl;
    const char* text;  // null: refused
  };
  for (const Case& c : {Case{9600, "N", 8, 1, 0, "9600,N,8,1"}, Case{1200, "E", 7, 1.5F, 3, "1200,E,7,1.5"},
                        Case{256000, "O", 5, 2, 2, "256000,O,5,2"}, Case{4800, "N", 8, 1, 0, nullptr},
                        Case{9600, "X", 8, 1, 0, nullptr}, Case{9600, "", 8, 1, 0, nullptr},
                        Case{9600, "N,8", 8, 1, 0, nullptr}, Case{9600, "N", 9, 1, 0, nullptr},
                        Case{9600, "N", 8, 3, 0, nullptr}, Case{9600, "N", 8, 1, 4, nullptr}}) {
    DispatchBench bench;
    bench.reader->SetBaudRate(static_cast<teskReaderBaudRate>(c.baud));
    bench.reader->SetParity(c.parity);
    bench.reader->SetDataBits(static_cast<teskReaderDataBits>(c.bits));
    bench.reader->SetStopBits(c.stopBits);
    bench.reader->SetFlowControl(static_cast<teskReaderFlowControl>(c.flowControl));
    EXPECT_EQ(bench.reader->StartReader(), c.text != nullptr);
    EXPECT_EQ(bench.serial->open, c.text != nullptr);
    if (c.text == nullptr) {
      EXPECT_EQ(bench.host.errors.at(0).number, 8002);
      continue;
    }
    const LineSettings& line = bench.serial->settings;
    EXPECT_EQ(bench.reader->fComm()->mscComm()->Settings(), c.text);
    EXPECT_EQ(std::tuple(line.bitRate, line.stopBits, line.handshaking),
              std::tuple(c.baud, c.stopBits, c.flowControl));
  }
}

TEST(Opening, TimeOutOutsideItsRangeBecomesTenSeconds) {
  for (const auto& [given, used] : {std::pair{0, 10}, {601, 10}, {-3, 10}, {600, 600}, {1, 1}}) {
    DispatchBench bench;
    bench.reader->SetTimeOut(given);
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_EQ((std::pair{bench.reader->TimeOut(), bench.reader->fComm()->tmrScan()->Interval()}),
              (std::pair{used, used * 1000}));
  }
}

TEST(Closing, PortIsClosedWhateverTheDriverSaysAndHostsAreToldByTheFamily) {
  struct Case {
    teskReaderType type;
    bool starts, silent, closes;
  };
  for (const Case& c : {Case{kScanMark, true, false, true}, Case{kScanMark, true, true, false},
                        Case{teskReaderTypePDIVMR138, true, false, false},
                        Case{teskReaderTypeChatsworthOMR2000, false, false, true},
                        Case{teskReaderTypeNCSEZData, false, false, false},
                        Case{teskReaderTypeSekonicSR8000Hybrid, false, false, false},
                        Case{teskReaderTypeDatawinHemeraC, false, false, false},
                        Case{teskReaderTypeNone, false, false, false}}) {
    DispatchBench bench(c.type);
    bench.reader->SetReaderType(c.type);
    EXPECT_EQ(bench.reader->StartReader(), c.starts) << c.type;
    EXPECT_EQ(bench.reader->CancelScan(), !c.starts) << c.type;
    if (c.silent) bench.serial->behaviour.silentAfter = 0;
    EXPECT_EQ(bench.reader->EndReader(), c.closes) << c.type;
    EXPECT_FALSE(bench.serial->open) << c.type;
    EXPECT_EQ(bench.serial->sent.empty(), !c.starts) << c.type;
  }
}

TEST(Reading, OneThatFailsLeavesNothingOfTheSheetBeforeAndCancels) {
  DispatchBench bench(teskReaderTypeNCSOpScan8);
  ASSERT_TRUE(bench.reader->StartReader());
  bench.reader->SetSide1TimingMarks(7);
  bench.reader->SetSide2TimingMarks(8);
  bench.reader->SetHopperEmpty(true);
  bench.serial->behaviour.silentAfter = 0;
  EXPECT_FALSE(bench.reader->ReadPage());
  EXPECT_EQ(bench.reader->Side1TimingMarks() + bench.reader->Side2TimingMarks(), -2);
  EXPECT_FALSE(bench.reader->HopperEmpty());
  EXPECT_TRUE(bench.reader->CancelScan());
}

// Printing, rejecting and ejecting: whether anything goes over the wire, and what becomes of the disposed flag.
TEST(Sending, ReachesTheScannerWhereTheModelsRowSaysSo) {
  struct Case {
    teskReaderType type;
    bool prints, printsSkipped, rejects, rejectsToRejecter, ejects;
  };
  constexpr bool T = true, F = false;
  for (const Case& c :
       {Case{teskReaderTypeNCSOpScan8, T, F, F, T, T},
        Case{teskReaderTypeScanningSystemsSR607, T, T, T, T, T},
        Case{teskReaderTypeScanningSystemsSR410, F, F, F, F, F},
        Case{teskReaderTypeScantronScanMark5500, F, F, T, T, T},
        Case{teskReaderTypeScantron8400, F, F, F, F, F}, Case{teskReaderTypePDIVMR138, F, F, T, T, T},
        Case{teskReaderTypeDatawinAXM960, F, F, F, F, F}}) {
    DispatchBench bench(c.type);
    bench.reader->StartReader();
    bench.reader->Printer()->SetEnabled(true);
    bench.reader->Printer()->SetBuffer1("Room 7");
    basRead dispatch;
    const auto sends = [&](auto&& operation) {
      bench.serial->sent.clear();
      operation();
      return !bench.serial->sent.empty();
    };
    for (const bool skip : {false, true}) {
      bool disposed = !skip;
      bool printed = false;
      EXPECT_EQ(sends([&] { printed = dispatch.ReaderPrint(*bench.reader, skip, disposed); }),
                skip ? c.printsSkipped : c.prints)
          << c.type;
      EXPECT_TRUE(!printed || (c.prints && !skip)) << c.type << ": a sheet passed over is none printed";
      EXPECT_EQ(disposed, c.printsSkipped ? skip : !skip) << c.type;
      bench.reader->SetRejecter(skip);
      EXPECT_EQ(sends([&] { dispatch.ReaderReject(*bench.reader); }), skip ? c.rejectsToRejecter : c.rejects)
          << c.type;
      EXPECT_EQ(sends([&] { dispatch.ReaderEject(*bench.reader, disposed); }), c.ejects) << c.type;
    }
    bool disposed = true;
    bench.serial->behaviour.silentAfter = 0;
    dispatch.ReaderEject(*bench.reader, disposed);
    EXPECT_TRUE(disposed) << c.type << ": an eject that is not confirmed is not repeated";
  }
}

TEST(Models, AreSupportedExactlyWhereThereIsADriverAndASimulator) {
  for (const ReaderTypeName& name : ReaderTypeNames()) {
    const bool supported = ModelOf(name.type).support != Support::NoDriver;
    const bool simulated = !simulator::FaultKinds(name.type).empty() || FamilyOf(name.type).byLibrary;
    EXPECT_EQ(DriverOf(name.type) != nullptr, supported) << name.enumerator;
    EXPECT_EQ(simulated, supported || FamilyOf(name.type).identifies) << name.enumerator;
  }
}

TEST(Reading, CommunicationsFormThatGoesIsClosedOnceNoRoutineUsesIt) {
  DispatchBench bench;
  const auto held = bench.reader->fComm();
  ASSERT_TRUE(bench.reader->StartReader());
  bench.time->onMessages = [&](int) {
    bench.reader->SetfComm(nullptr);
    EXPECT_TRUE(bench.serial->open) << "a routine waits with it";
  };
  bench.reader->ReadPage();
  EXPECT_FALSE(bench.reader->fComm() || bench.serial->open);
  bench.time->onMessages = nullptr;
  bench.reader->SetfComm(held);
  ASSERT_TRUE(bench.reader->StartReader());
  bench.reader->SetfComm(held);
  bench.reader->SetfComm(std::make_shared<frmComm>(held->mscComm(), held->tmrScan()));
  EXPECT_TRUE(bench.serial->open) << "the same control is in use still";
  bench.reader->SetfComm(nullptr);
  EXPECT_FALSE(bench.serial->open);
  bench.host.errors.clear();
  EXPECT_FALSE(bench.reader->ReadPage() || !bench.reader->CancelScan() || bench.reader->EndReader());
  EXPECT_EQ(bench.host.errors.at(0).number, 91);
}

}  // namespace
}  // namespace tesk::test
