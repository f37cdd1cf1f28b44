// The simulated ScanMark scanners: what they refuse, what they send, how sheets go through them, and what
// happens when a fault is ordered. Time is a number that the tests move.
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/Simulators.h"

namespace tesk::simulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Commands = std::vector<std::string>;

// A host that says one thing at a time and takes what is due at once.
struct Host {
  explicit Host(teskReaderType reader, Options options = {})
      : scanner(CreateScanner(reader, std::move(options))) {}

  std::string Send(const std::string& bytes) {
    scanner->Receive(bytes, now);
    return scanner->Send(now);
  }
  std::string Say(const std::string& command) { return Send("\x1B" + command + "\r"); }
  void Download(const Commands& commands) {
    for (const std::string& command : commands) EXPECT_EQ(Say(command), "\r") << command;
  }
  std::string Wait(Milliseconds time) {
    now += time;
    return scanner->Send(now);
  }

  std::unique_ptr<SheetScanner> scanner;
  Time now{};
};

const Commands kSmallForm{"SRST", "FRM=FS 2 0 48 N N N", "FRM=DK 1 1 1 2 48 L 2 48", "FRM=LS", "PRN$ 1 N"};
Options Blank(std::size_t count, std::vector<Fault> faults = {}) {
  return {.sheets = std::vector<Sheet>(count, Sheet{SideArray(2, 48), {}, {}}), .faults = std::move(faults)};
}

std::string Zeros(std::size_t count) { return std::string(count, '0'); }

TEST(ScanMarkSimulator, RefusesAndRecordsWhatNoHostMaySay) {
  const auto small = teskReaderTypeScantronScanMark2000;
  const auto big = teskReaderTypeScantronScanMark5500;
  const auto raw = teskReaderTypeScantron8000;
  const std::string open = "FRM=FS 10 8 48 N N N";
  const struct {
    teskReaderType reader;
    std::string before;  // none where it is empty
    std::string command;
    const char* complaint;
  } cases[] = {
      {big, "", "", "unknown command"},
      {big, "", "THR= 35", "scanner without one"},
      {raw, "", "THR= 100", "read threshold outside"},
      {big, "", "FRM=FS 10  0 48 N N N", "ill-formed form start"},
      {big, "", "FRM=FS 10 0 49 N N N", "columns outside"},
      {small, "", "FRM=FS 10 8 48 N N N", "scanner of one side"},
      {big, "", "FRM=LS", "not started"},
      {big, "", "FRM=DK 1 1 1 2 48 L 2 48", "outside a form"},
      {big, open, "FRM=DK 1 1 1 2 48 R 2 48", "ill-formed region"},
      {big, open, "FRM=DK 1 2 1 1 48 L 2 48", "lies past its last"},
      {big, open, "FRM=DK 2 1 1 9 48 L 9 48", "inside the sheet"},
      {big, open, "FRM=DK 1 1 1 6 1 L 3 1", "counts do not fit"},
      {big, open, "READ 5 Y", "middle of a form"},
      {raw, open, "FRM=MC Y N 1 1 1 1 10 3 L 10 3 101", "mask"},
      {raw, open, "FRM=MC Y N 1 3 1 1 10 3 L 10 3 111", "ill-formed mark columns"},
      {big, "", "PRN$ 1  N", "ill-formed imprinter command"},
      {big, "", "EJCT A " + std::string(126, 'x'), "more than 125"},
      {small, "", "EJCT C", "without a reject exit"},
  };
  for (const auto& [reader, before, command, complaint] : cases) {
    Host host(reader);
    if (!before.empty()) host.Download({before});
    EXPECT_EQ(host.Say(command), "\a") << command;
    EXPECT_THAT(host.scanner->Complaints(), ElementsAre(HasSubstr(complaint)));
  }
}

TEST(ScanMarkSimulator, RecordsBrokenFraming) {
  const std::tuple<std::string, std::string, std::size_t> cases[] = {
      {"\x1BQSTS", "", 0},  // no end yet
      {"\x1BSRST\x1BSRST\r", "\r", 1},
      {"\x1BSRST\r\n\x1BPRN$ 1 N\r", "\r\r", 1},
      {"\x1B" + std::string(1500, 'A') + "\r", "\a", 2}};
  for (const auto& [sent, answer, complaints] : cases) {
    Host host(teskReaderTypeScantronScanMark2500);
    EXPECT_EQ(host.Send(sent), answer) << Quoted(sent);
    EXPECT_EQ(host.scanner->Complaints().size(), complaints) << Quoted(sent);
  }
}

TEST(ScanMarkSimulator, LateDataSurviveAResetAndOtherUnsentDataDoNot) {
  Options options = Blank(2, {{FaultKind::Late, 2}});
  options.timings.reading = Milliseconds(500);
  options.timings.late = Milliseconds(12000);
  Host host(teskReaderTypeScantronScanMark5500, options);
  host.Download(kSmallForm);
  EXPECT_EQ(host.Say("READ 5 Y"), "");
  EXPECT_EQ(host.Say("SRST"), "\r");
  EXPECT_EQ(host.Wait(Milliseconds(60000)), "");

  host.Download(kSmallForm);
  EXPECT_EQ(host.Say("READ 5 Y"), "");
  host.Wait(Milliseconds(10000));
  EXPECT_EQ(host.Say("SRST"), "");
  EXPECT_EQ(host.Wait(Milliseconds(2499)), "");
  EXPECT_EQ(host.Wait(Milliseconds(1)), Zeros(96) + "\r" + "\r");
}

TEST(ScanMarkSimulator, SendsValuesOnTheModelsScaleAlsoThoseThatLookLikeTheEnd) {
  SideArray side(1, 6);
  const std::int16_t values[] = {0, 12, 13, 14, 99, 150};
  for (std::int32_t i = 0; i < 6; ++i) side.At(1, i + 1) = values[i];
  const std::pair<teskReaderType, std::string> models[] = {
      {teskReaderTypeScantronScanMarkES2800, "0<=>??\r"},
      {teskReaderTypeScantron8400, std::string("\x00\x0C\x0D\x0E\x63\x63\r", 7)}};
  for (const auto& [reader, sent] : models) {
    Host host(reader, {.sheets = {{side, {}, {}}}});
    host.Download({"FRM=FS 1 0 6 N N N", "FRM=DK 1 1 1 1 6 C 6 1", "FRM=LS"});
    EXPECT_EQ(host.Say("READ 5 Y"), sent);
  }
}

TEST(ScanMarkSimulator, HoldsASheetUntilTheHostDisposesOfIt) {
  Host host(teskReaderTypeScantronScanMark5500, Blank(5));
  host.Download(kSmallForm);
  host.Download({"PRN$ 1 Y"});
  host.Say("READ 5 Y E");
  EXPECT_TRUE(host.scanner->Disposals().empty());
  EXPECT_EQ(host.Say("READ 5 Y E"), "\a");
  EXPECT_EQ(host.scanner->Complaints().size(), 1U);
  host.Download({"EJCT A   graded"});
  host.Say("READ 5 Y E");
  host.Download({"PRN$ 1 N ", "EJCT C"});
  host.Say("READ 5 Y E");
  host.Download({"EJCT A late"});
  host.Say("READ 5 Y");
  host.Download({"EJCT A x", "EJCT C"});
  host.Say("READ 5 Y E");
  host.Download({"SRST", "EJCT A "});

  const std::vector<Disposal> expected{
      {1, Exit::Accepted, true, "  graded", true}, {2, Exit::Rejected, true, "", false},
      {3, Exit::Accepted, true, "late", false},  // the reject has switched the imprinter off
      {4, Exit::Accepted, false, "x", false},    // it had gone on by itself
      {5, Exit::Passed, true, "", false},        // let go by the reset
  };
  EXPECT_EQ(host.scanner->Disposals(), expected);
  EXPECT_EQ(host.scanner->SheetsLeft(), 0U);
}

TEST(ScanMarkSimulator, DeliversNoFasterThanThePaceAndKeepsTheOrder) {
  Options options = Blank(1);
  options.timings.answer = Milliseconds(20);
  Host host(teskReaderTypeScantronScanMark5500, options);
  host.scanner->PaceAt(1000);
  EXPECT_FALSE(host.scanner->NextDue().has_value());
  EXPECT_EQ(host.Say("QSTS"), "");
  EXPECT_EQ(host.scanner->NextDue(), host.now + Milliseconds(21));
  EXPECT_EQ(host.Wait(Milliseconds(20)), "");
  EXPECT_EQ(host.Wait(Milliseconds(3)).size(), 3U);
  EXPECT_EQ(host.Say("PRN$ 1 N").size(), 0U);
  EXPECT_EQ(host.Wait(Milliseconds(9)).size(), 9U);
  EXPECT_EQ(host.Wait(Milliseconds(11)), "");
  EXPECT_EQ(host.Wait(Milliseconds(1)), "\r");
  host.scanner->PaceAt(0);
  host.Say("QSTS");
  EXPECT_EQ(host.Wait(Milliseconds(20)).size(), 12U);
}

}  // namespace
}  // namespace tesk::simulator
