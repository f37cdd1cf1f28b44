// Routing, opening and closing of the port, and what the dispatch reports.
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/conversions.h"
#include "profiles/families.h"
#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"
#include "transport/dispatch/basRead.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::shared_ptr<simulator::Scanner> ScanMark() {
  return simulator::CreateScanner(teskReaderTypeScantronScanMark2500, {.count = 2});
}

TEST(Routing, EveryTypeHasTheFamilyThatHostsKnow) {
  const std::map<Family, std::set<int>> families = {
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
  std::map<Family, std::set<int>> found;
  for (int type = -1; type <= 47; ++type) {
    if (const auto family = FamilyOf(static_cast<teskReaderType>(type))) found[*family].insert(type);
  }
  EXPECT_EQ(found, families);
}

struct PortCase {
  std::int16_t port;
  bool reported;
};

class PortRange : public ::testing::TestWithParam<PortCase> {};

TEST_P(PortRange, OutsideOneToSixteenIsReportedBeforeAnythingIsOpened) {
  Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
  bench.serial->port = 16;
  bench.reader->SetPort(GetParam().port);
  EXPECT_EQ(bench.reader->StartReader(), !GetParam().reported);
  EXPECT_EQ(bench.reader->CancelScan(), GetParam().reported);
  if (!GetParam().reported) return;
  EXPECT_THAT(bench.serial->asked, IsEmpty());
  ASSERT_THAT(bench.host.Sources(), ElementsAre("basRead.ReaderInit"));
  EXPECT_EQ(bench.host.errors[0].number, 8002);
  EXPECT_EQ(bench.host.errors[0].title, "Invalid Port Number");
  EXPECT_EQ(
      bench.host.errors[0].message,
      "An error has occurred attempting to initialize the selected COM port: " + NumberText(GetParam().port) +
          ". Please verify the COM port number and settings and then retry the operation.");
}

INSTANTIATE_TEST_SUITE_P(Ports, PortRange,
                         ::testing::Values(PortCase{0, true}, PortCase{17, true}, PortCase{-1, true},
                                           PortCase{16, false}),
                         [](const auto& info) { return "Case" + std::to_string(info.index); });

TEST(Opening, PortThatCannotBeOpenedSaysWhyAndLeavesARetryPossible) {
  Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
  bench.reader->SetPort(5);
  EXPECT_FALSE(bench.reader->StartReader());
  ASSERT_THAT(bench.host.errors, SizeIs(1));
  EXPECT_EQ(bench.host.errors[0].number, 8002);
  EXPECT_EQ(bench.host.errors[0].detail, "No such port");
  bench.reader->SetPort(3);
  EXPECT_TRUE(bench.reader->StartReader());
}

TEST(Opening, SettingsReachTheLineInTheFormOfNoLocale) {
  struct Case {
    float stopBits;
    const char* parity;
    int baud;
    int bits;
    const char* text;
  };
  for (const Case& c : {Case{1, "N", 9600, 8, "9600,N,8,1"}, Case{1.5F, "E", 1200, 7, "1200,E,7,1.5"},
                        Case{2, "O", 256000, 5, "256000,O,5,2"}}) {
    Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
    bench.reader->SetStopBits(c.stopBits);
    bench.reader->SetParity(c.parity);
    bench.reader->SetBaudRate(static_cast<teskReaderBaudRate>(c.baud));
    bench.reader->SetDataBits(static_cast<teskReaderDataBits>(c.bits));
    bench.reader->SetFlowControl(teskReaderFlowControlBoth);
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_EQ(bench.reader->fComm()->mscComm()->Settings(), c.text);
    EXPECT_EQ(bench.serial->settings.bitRate, c.baud);
    EXPECT_EQ(bench.serial->settings.stopBits, c.stopBits);
    EXPECT_EQ(bench.serial->settings.handshaking, teskReaderFlowControlBoth);
  }
}

TEST(Opening, SettingsThatNoLineHasAreRefused) {
  const std::pair<const char*, void (*)(clsTeskReader&)> kCases[] = {
      {"bit rate", [](clsTeskReader& r) { r.SetBaudRate(static_cast<teskReaderBaudRate>(4800)); }},
      {"parity", [](clsTeskReader& r) { r.SetParity("X"); }},
      {"no parity", [](clsTeskReader& r) { r.SetParity(""); }},
      {"two parities", [](clsTeskReader& r) { r.SetParity("N,8"); }},
      {"data bits", [](clsTeskReader& r) { r.SetDataBits(static_cast<teskReaderDataBits>(9)); }},
      {"stop bits", [](clsTeskReader& r) { r.SetStopBits(3); }},
      {"handshaking", [](clsTeskReader& r) { r.SetFlowControl(static_cast<teskReaderFlowControl>(4)); }},
  };
  for (const auto& [name, spoil] : kCases) {
    Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
    spoil(*bench.reader);
    EXPECT_FALSE(bench.reader->StartReader()) << name;
    ASSERT_THAT(bench.host.errors, SizeIs(1)) << name;
    EXPECT_EQ(bench.host.errors[0].number, 8002) << name;
    EXPECT_FALSE(bench.serial->open) << name;
  }
}

TEST(Opening, TimeOutOutsideItsRangeBecomesTenSeconds) {
  for (const auto& [given, used] : {std::pair{0, 10}, {601, 10}, {-3, 10}, {600, 600}, {1, 1}}) {
    Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
    bench.reader->SetTimeOut(given);
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_EQ(bench.reader->TimeOut(), used);
    EXPECT_EQ(bench.reader->fComm()->tmrScan()->Interval(), used * 1000);
  }
}

TEST(Opening, TypeThatIsRoutedNowhereCancelsTheScan) {
  for (const auto type :
       {teskReaderTypeNone, teskReaderTypeSekonicSR8000Hybrid, teskReaderTypeDatawinHemeraC}) {
    Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
    bench.reader->SetReaderType(type);
    EXPECT_FALSE(bench.reader->StartReader()) << type;
    EXPECT_TRUE(bench.reader->CancelScan()) << type;
    EXPECT_FALSE(bench.reader->EndReader()) << type;
    EXPECT_FALSE(bench.serial->open) << type;
    bench.reader->EjectPage();
    EXPECT_EQ(bench.serial->sent, "") << type;
  }
}

TEST(Closing, PortIsClosedEvenWhenTheScannerDoesNotAnswer) {
  Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
  ASSERT_TRUE(bench.reader->StartReader());
  bench.serial->behaviour.silentAfter = 0;
  EXPECT_FALSE(bench.reader->EndReader());
  EXPECT_FALSE(bench.serial->open);
}

TEST(Reading, CommunicationsFormThatGoesIsClosedOnceNoRoutineUsesIt) {
  Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
  const auto held = bench.reader->fComm();
  ASSERT_TRUE(bench.reader->StartReader());
  bench.time->onMessages = [&](int) {
    bench.reader->SetfComm(nullptr);
    EXPECT_TRUE(bench.serial->open) << "a routine waits with it";
  };
  bench.reader->ReadPage();
  EXPECT_EQ(bench.reader->fComm(), nullptr);
  EXPECT_FALSE(bench.serial->open);
  bench.time->onMessages = nullptr;
  bench.reader->SetfComm(held);
  ASSERT_TRUE(bench.reader->StartReader());
  bench.reader->SetfComm(held);
  bench.reader->SetfComm(std::make_shared<frmComm>(held->mscComm(), held->tmrScan()));
  EXPECT_TRUE(bench.serial->open) << "the same control is in use still";
  bench.reader->SetfComm(nullptr);
  EXPECT_FALSE(bench.serial->open);
}

TEST(Reading, CommunicationsFormSetToNothingIsReportedAndFails) {
  Bench bench(teskReaderTypeScantronScanMark2500, ScanMark());
  ASSERT_TRUE(bench.reader->StartReader());
  bench.reader->SetfComm(nullptr);
  EXPECT_FALSE(bench.serial->open);
  EXPECT_FALSE(bench.reader->ReadPage());
  EXPECT_TRUE(bench.reader->CancelScan());
  EXPECT_FALSE(bench.reader->EndReader());
  ASSERT_FALSE(bench.host.errors.empty());
  EXPECT_EQ(bench.host.errors[0].number, 91);
}

}  // namespace
}  // namespace tesk::test
