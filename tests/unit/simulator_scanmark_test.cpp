// The simulated ScanMark scanners: what they refuse, what they send, how sheets go through them, and what
// happens when a fault is ordered. Time is a number that the tests move.
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/Simulators.h"

namespace tesk::simulator {
namespace {

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
constexpr char kReady = 33;
constexpr char kIdle = 32;

std::string Status(char statusClass, char detail, char flags) {
  return std::string("0") + statusClass + detail + "00000" + flags + "000";
}

// A side whose value at (row, column) is row + column, kept below 10.
SideArray Counting(std::int32_t rows, std::int32_t columns) {
  SideArray side(rows, columns);
  for (std::int32_t row = 1; row <= rows; ++row) {
    for (std::int32_t column = 1; column <= columns; ++column) {
      side.At(row, column) = static_cast<std::int16_t>((row + column) % 10);
    }
  }
  return side;
}

Options Stock(std::vector<Sheet> sheets) {
  Options options;
  options.sheets = std::move(sheets);
  return options;
}

Options Blank(std::size_t count, std::vector<Fault> faults = {}) {
  Options options = Stock(std::vector<Sheet>(count, Sheet{SideArray(2, 48), {}, {}}));
  options.faults = std::move(faults);
  return options;
}

std::string Zeros(std::size_t count) { return std::string(count, '0'); }

TEST(ScanMarkSimulator, RefusesAndRecordsEveryIllFormedCommand) {
  const Commands none;
  const Commands open{"FRM=FS 10 8 48 N N N"};
  struct Case {
    teskReaderType reader;
    Commands before;
    std::string command;
    std::string complaint;
  };
  const auto small = teskReaderTypeScantronScanMark2000;
  const auto big = teskReaderTypeScantronScanMark5500;
  const auto raw = teskReaderTypeScantron8000;
  const std::vector<Case> cases{
      {big, none, "", "unknown command"},
      {big, none, "srst", "unknown command"},
      {big, none, "SRST ", "ill-formed reset"},
      {big, none, "QSTS ", "ill-formed status query"},
      {big, none, "THR= 35", "scanner without one"},
      {raw, none, "THR=35", "unknown command"},
      {raw, none, "THR=  35", "read threshold outside"},
      {raw, none, "THR= 035", "read threshold outside"},
      {raw, none, "THR= 100", "read threshold outside"},
      {raw, none, "THR= -1", "read threshold outside"},
      {raw, none, "THR= ", "read threshold outside"},
      {big, none, "FRM=FS 10 0 48 N N", "ill-formed form start"},
      {big, none, "FRM=FS 10 0 48 N N N ", "ill-formed form start"},
      {big, none, "FRM=FS 10  0 48 N N N", "ill-formed form start"},
      {big, none, "FRM=FS 010 0 48 N N N", "ill-formed form start"},
      {big, none, "FRM=FS 40000 0 48 N N N", "ill-formed form start"},
      {big, none, "FRM=FS 10 0 49 N N N", "columns outside"},
      {big, none, "FRM=FS 10 0 0 N N N", "columns outside"},
      {small, none, "FRM=FS 10 8 48 N N N", "scanner of one side"},
      {big, none, "FRM=LS", "not started"},
      {big, none, "FRM=DK 1 1 1 2 48 L 2 48", "outside a form"},
      {big, open, "FRM=DK 3 1 1 2 48 L 2 48", "ill-formed region"},
      {big, open, "FRM=DK 1 1 1 2 48 R 2 48", "ill-formed region"},
      {big, open, "FRM=DK 1 1 1 2 48 L 2 48 ", "ill-formed region"},
      {big, open, "FRM=DK 1 2 1 1 48 L 2 48", "lies past its last"},
      {big, open, "FRM=DK 1 1 5 1 4 L 1 2", "lies past its last"},
      {big, open, "FRM=DK 1 0 1 2 48 L 2 48", "inside the sheet"},
      {big, open, "FRM=DK 1 1 1 11 48 L 11 48", "inside the sheet"},
      {big, open, "FRM=DK 2 1 1 9 48 L 9 48", "inside the sheet"},
      {big, open, "FRM=DK 1 1 1 2 49 L 2 49", "inside the sheet"},
      {big, open, "FRM=DK 1 1 1 2 48 C 2 48", "counts do not fit"},
      {big, open, "FRM=DK 1 1 1 6 1 L 3 1", "counts do not fit"},
      {big, open, "FRM=DK 1 1 1 2 48 L 0 48", "counts do not fit"},
      {big, open, "FRM=MC Y N 1 1 1 1 10 48 L 10 48 1", "takes regions"},
      {big, open, "FRM=LS ", "ill-formed end"},
      {big, open, "READ 5 Y", "middle of a form"},
      {big, open, "PRN$ 1 Y", "middle of a form"},
      {raw, open, "FRM=MC Y N 1 1 1 1 10 3 L 10 3 11", "mask"},
      {raw, open, "FRM=MC Y N 1 1 1 1 10 3 L 10 3 101", "mask"},
      {raw, open, "FRM=MC Y N 1 1 1 1 9 3 L 9 3 111", "whole side"},
      {raw, open, "FRM=MC Y N 1 1 1 1 10 3 L 9 3 111", "whole side"},
      {raw, open, "FRM=MC Y N 1 3 1 1 10 3 L 10 3 111", "ill-formed mark columns"},
      {big, none, "PRN$ 1 Y ", "ill-formed imprinter command"},
      {big, none, "PRN$ 1  N", "ill-formed imprinter command"},
      {big, none, "READ 5 Y", "without a form"},
      {big, none, "READ 5 Y ", "ill-formed read"},
      {big, none, "READ 5 N", "unknown command"},
      {big, none, "EJCT A", "ill-formed eject"},
      {big, none, "EJCT B", "ill-formed eject"},
      {big, none, "EJCT C ", "ill-formed eject"},
      {big, none, "EJCT A a\tb", "ill-formed eject"},
      {big, none, "EJCT A " + std::string(126, 'x'), "more than 125"},
      {small, none, "EJCT C", "without a reject exit"},
  };
  for (const Case& c : cases) {
    Host host(c.reader);
    host.Download(c.before);
    EXPECT_EQ(host.Say(c.command), "?") << c.command;
    ASSERT_EQ(host.scanner->Complaints().size(), 1U) << c.command;
    EXPECT_NE(host.scanner->Complaints()[0].find(c.complaint), std::string::npos)
        << host.scanner->Complaints()[0];
  }
}

TEST(ScanMarkSimulator, AcknowledgesEveryWellFormedCommandWithoutComplaint) {
  const std::vector<std::pair<teskReaderType, Commands>> sessions{
      {teskReaderTypeScantronScanMark2000, kSmallForm},
      {teskReaderTypeScantronScanMark5500,
       {"SRST", "FRM=FS 10 8 40 N N N", "FRM=DK 1 1 2 9 14 L 5 4", "FRM=DK 1 3 3 3 3 C 1 1",
        "FRM=DK 2 1 1 8 48 C 48 8", "FRM=FS 0 0 0 N N N", "FRM=FS -1 0 48 N N N", "FRM=LS", "PRN$ 1 Y",
        "PRN$ 1 N ", "EJCT C", "EJCT A ", "EJCT A " + std::string(125, 'x'), "SRST"}},
      {teskReaderTypeScantron8400,
       {"THR= 0", "THR= 99", "FRM=FS 3 2 4 N N N", "FRM=MC Y N 1 1 1 1 3 4 L 3 4 1111",
        "FRM=MC Y N 1 2 1 1 2 5 L 2 5 11111", "FRM=LS"}},
  };
  for (const auto& [reader, commands] : sessions) {
    Host host(reader);
    host.Download(commands);
    EXPECT_TRUE(host.scanner->Complaints().empty());
  }
}

TEST(ScanMarkSimulator, RecordsBrokenFraming) {
  struct Case {
    std::string sent, answer;
    std::size_t complaints;
  };
  const std::vector<Case> cases{
      {"\x1BQSTS", "", 0},              // no end yet
      {"QSTS\r", "?", 1},               // no escape
      {"\r", "?", 1},                   // nothing at all
      {"\x1BSRST\x1BSRST\r", "\r", 1},  // the first without an end
      {"\x1BSRST\r\n\x1BPRN$ 1 N\r", "\r\r", 1},
      {"\x1B" + std::string(1500, 'A') + "\r", "?", 2},
  };
  for (const Case& c : cases) {
    Host host(teskReaderTypeScantronScanMark2500);
    EXPECT_EQ(host.Send(c.sent), c.answer) << Quoted(c.sent);
    EXPECT_EQ(host.scanner->Complaints().size(), c.complaints) << Quoted(c.sent);
  }
}

TEST(ScanMarkSimulator, SendsAPageRowByRowWith48ValuesARowSide1First) {
  Host host(teskReaderTypeScantronScanMark5500, Stock({{Counting(3, 48), Counting(1, 20), {}}}));
  host.Download({"FRM=FS 2 2 40 N N N", "FRM=DK 1 1 1 2 40 L 2 40", "FRM=DK 2 1 1 2 40 L 2 40", "FRM=LS"});
  std::string expected;
  const auto row = [&](std::int32_t first, std::int32_t filled) {
    for (std::int32_t i = 0; i < 48; ++i)
      expected += i < filled ? static_cast<char>('0' + (first + i) % 10) : '0';
  };
  row(2, 40);  // the sheet is larger than the form
  row(3, 40);
  row(2, 20);  // and its back is smaller
  row(0, 0);
  EXPECT_EQ(host.Say("READ 5 Y"), expected + "\r");
}

TEST(ScanMarkSimulator, SendsAWholeSideAsAPageOnlyWhereItIsOne) {
  struct Case {
    teskReaderType reader;
    Commands regions;
    std::size_t values;
  };
  const std::vector<Case> cases{
      {teskReaderTypeScantronScanMark5500, {"FRM=DK 1 1 1 2 5 L 2 5"}, 96},
      {teskReaderTypeScantronScanMark5500, {"FRM=DK 1 1 1 2 5 C 5 2"}, 10},
      {teskReaderTypeScantronScanMark5500, {"FRM=DK 1 1 1 2 5 L 2 3"}, 6},
      {teskReaderTypeScantronScanMark5500, {"FRM=DK 1 1 1 2 5 L 2 5", "FRM=DK 1 1 1 1 1 L 1 1"}, 11},
      {teskReaderTypeScantronScanMark5500, {"FRM=DK 1 1 1 2 5 L 2 5", "FRM=DK 2 1 1 2 9 L 2 9"}, 192},
      {teskReaderTypeScantronScanMark5500, {"FRM=DK 2 1 1 2 9 L 2 9"}, 18},
      {teskReaderTypeScantron8000, {"FRM=DK 1 1 1 2 5 L 2 5"}, 10},
      {teskReaderTypeScantron8000, {"FRM=MC Y N 1 1 1 1 2 5 L 2 5 11111"}, 96},
  };
  for (const Case& c : cases) {
    Host host(c.reader, Blank(1));
    host.Download({"FRM=FS 2 2 5 N N N"});
    host.Download(c.regions);
    host.Download({"FRM=LS"});
    EXPECT_EQ(host.Say("READ 5 Y").size(), c.values + 1) << c.regions.back();
  }
}

TEST(ScanMarkSimulator, SendsWindowsInTheOrderOfDownloadAndOfTheirOrientation) {
  Host host(teskReaderTypeScantronScanMark4000, Stock({{Counting(10, 48), Counting(10, 48), {}}}));
  host.Download({"FRM=FS 10 10 48 N N N", "FRM=DK 1 2 3 6 4 L 3 2", "FRM=DK 1 2 3 6 4 C 2 3",
                 "FRM=DK 2 1 1 1 9 L 1 3", "FRM=LS"});
  EXPECT_EQ(host.Say("READ 5 Y"),
            "567890"
            "579680"
            "260"
            "\r");
  EXPECT_TRUE(host.scanner->Complaints().empty());
}

TEST(ScanMarkSimulator, TakesASheetForTheDefinitionWithItsNumberOfRows) {
  Host host(teskReaderTypeScantronScanMark5500,
            Stock({{SideArray(2, 48), {}, {}}, {SideArray(7, 48), {}, {}}}));
  host.Download({"FRM=FS 1 0 48 N N N", "FRM=DK 1 1 1 1 1 L 1 1", "FRM=FS 2 0 48 N N N",
                 "FRM=DK 1 1 1 2 48 L 2 48", "FRM=LS"});
  EXPECT_EQ(host.Say("READ 5 Y"), Zeros(96) + "\r");
  EXPECT_EQ(host.Say("READ 5 Y"), "0\r");
}

TEST(ScanMarkSimulator, SendsValuesOnTheModelsScaleAlsoThoseThatLookLikeTheEnd) {
  SideArray side(1, 6);
  const std::int16_t values[] = {0, 12, 13, 14, 99, 150};
  for (std::int32_t i = 0; i < 6; ++i) side.At(1, i + 1) = values[i];
  const Commands form{"FRM=FS 1 0 6 N N N", "FRM=DK 1 1 1 1 6 C 6 1", "FRM=LS"};

  Host characters(teskReaderTypeScantronScanMarkES2800, Stock({{side, {}, {}}}));
  characters.Download(form);
  EXPECT_EQ(characters.Say("READ 5 Y"), "0<=>??\r");
  Host raw(teskReaderTypeScantron8400, Stock({{side, {}, {}}}));
  raw.Download(form);
  EXPECT_EQ(raw.Say("READ 5 Y"), std::string("\x00\x0C\x0D\x0E\x63\x63\r", 7));
}

TEST(ScanMarkSimulator, HoldsASheetUntilTheHostDisposesOfIt) {
  Host host(teskReaderTypeScantronScanMark5500, Blank(5));
  host.Download(kSmallForm);
  host.Download({"PRN$ 1 Y"});
  host.Say("READ 5 Y E");
  EXPECT_TRUE(host.scanner->Disposals().empty());
  EXPECT_EQ(host.Say("READ 5 Y E"), "?");
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

TEST(ScanMarkSimulator, FeederReportsReadyWhileSheetsLieInTheHopper) {
  Host host(teskReaderTypeScantronScanMark2500, Blank(2));
  host.Download(kSmallForm);
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kReady));
  host.Say("READ 5 Y E");
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kReady));
  host.Download({"EJCT A "});
  host.Say("READ 5 Y");
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kIdle));
  EXPECT_EQ(host.Say("READ 5 Y"), "?");
}

TEST(ScanMarkSimulator, HandFedModelGetsTheNextSheetSomeTimeAfterTheLastOneLeft) {
  Options options = Blank(3);
  options.timings.reading = Milliseconds(1000);
  options.timings.insertion = Milliseconds(150);
  Host host(teskReaderTypeScantronScanMark2250, options);
  host.Download(kSmallForm);
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kReady));
  EXPECT_EQ(host.Say("READ 5 Y"), "");
  EXPECT_EQ(host.Wait(Milliseconds(999)), "");
  EXPECT_EQ(host.Wait(Milliseconds(1)), Zeros(96) + "\r");
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kIdle));
  host.Wait(Milliseconds(150));
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kReady));

  host.Say("READ 5 Y E");
  host.Wait(Milliseconds(60000));
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kIdle));  // the held sheet is in the way
  host.Download({"EJCT A "});
  host.Wait(Milliseconds(149));
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kIdle));
  host.Wait(Milliseconds(1));
  EXPECT_EQ(host.Say("QSTS"), Status('0', '0', kReady));
}

TEST(ScanMarkSimulator, StatusFaultIsToldOnceAtItsSheet) {
  struct Case {
    FaultKind kind;
    bool afterReading;
    std::string status;
  };
  const std::vector<Case> cases{
      {FaultKind::Jam, false, Status('0', '0', 96)},
      {FaultKind::JamReading, true, Status('0', '0', 96)},
      {FaultKind::DoubleFeed, true, Status('0', '0', 48)},
      {FaultKind::Timing, true, Status('1', ' ', 32)},
      {FaultKind::FormError, true, Status('1', 'F', 32)},
      {FaultKind::CommandError, false, Status('2', '0', 32)},
      {FaultKind::UnknownStatus, false, Status('9', '0', 32)},
      {FaultKind::ShortStatus, true, Status('0', '0', 32).substr(0, 7)},
      {FaultKind::Empty, false, Status('0', '0', 32)},
      {FaultKind::SilenceStatus, false, ""},
  };
  const std::string fine = Status('0', '0', kReady);
  for (const Case& c : cases) {
    SCOPED_TRACE(Describe(c.kind).name);
    Host host(teskReaderTypeScantronScanMark5500, Blank(3, {{c.kind, 2}}));
    host.Download(kSmallForm);
    EXPECT_EQ(host.Say("QSTS"), fine);
    host.Say("READ 5 Y");
    EXPECT_EQ(host.Say("QSTS"), fine);
    EXPECT_EQ(host.Say("QSTS"), c.afterReading ? fine : c.status);
    EXPECT_EQ(host.Say("QSTS"), fine);
    host.Say("READ 5 Y");
    EXPECT_EQ(host.Say("QSTS"), c.afterReading ? c.status : fine);
    EXPECT_EQ(host.Say("QSTS"), fine);
    EXPECT_TRUE(host.scanner->Complaints().empty());
  }
}

TEST(ScanMarkSimulator, DataFaultSpoilsItsSheetAlone) {
  const std::string whole = Zeros(96) + "\r";
  struct Case {
    Fault fault;
    std::string data;
  };
  const std::vector<Case> cases{
      {{FaultKind::Silence, 2}, ""},
      {{FaultKind::Overrun, 2}, Zeros(144) + "\r"},
      {{FaultKind::Short, 2}, Zeros(48) + "\r"},
      {{FaultKind::Cut, 2, 0}, ""},
      {{FaultKind::Cut, 2, 50}, Zeros(50)},
      {{FaultKind::Cut, 2, 5000}, Zeros(96)},
      {{FaultKind::Late, 2}, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Describe(c.fault.kind).name);
    Host host(teskReaderTypeScantronScanMark5500, Blank(3, {c.fault}));
    host.Download(kSmallForm);
    EXPECT_EQ(host.Say("READ 5 Y"), whole);
    EXPECT_EQ(host.Say("READ 5 Y"), c.data);
    host.Wait(Milliseconds(15000));
    EXPECT_EQ(host.Say("READ 5 Y"), whole);
  }
}

TEST(ScanMarkSimulator, GarbageIsAsLongAsTheDataAndFollowsTheSeed) {
  const auto garbage = [](std::uint64_t seed) {
    Options options = Blank(1, {{FaultKind::Garbage, 1}});
    options.seed = seed;
    Host host(teskReaderTypeScantronScanMark5500, options);
    host.Download(kSmallForm);
    return host.Say("READ 5 Y");
  };
  EXPECT_EQ(garbage(1).size(), 97U);
  const std::string bytes = garbage(1);
  EXPECT_GT(std::set<char>(bytes.begin(), bytes.end()).size(), 40U);
  EXPECT_EQ(garbage(1), garbage(1));
  EXPECT_NE(garbage(1), garbage(2));
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

TEST(ScanMarkSimulator, RefusesOrIgnoresTheNumberedCommandOnce) {
  struct Case {
    Fault fault;
    Commands taken;
    std::string command;
    std::string answer;
  };
  const Commands start{"SRST", "FRM=FS 9 9 48 N N N"};
  const Commands region{"SRST", "FRM=FS 9 9 48 N N N", "FRM=DK 1 1 1 9 48 L 9 48"};
  const std::vector<Case> cases{
      {{FaultKind::RefuseThreshold, 1}, {"SRST"}, "THR= 35", "?"},
      {{FaultKind::RefuseFormStart, 2}, start, "FRM=FS 9 9 48 N N N", "?"},
      {{FaultKind::RefuseRegion, 2}, region, "FRM=DK 2 1 1 9 48 L 9 48", "?"},
      {{FaultKind::RefuseFormEnd, 1}, start, "FRM=LS", "?"},
      {{FaultKind::RefusePrinter, 1}, {"SRST"}, "PRN$ 1 Y", "?"},
      {{FaultKind::SilenceReset, 2}, {"SRST"}, "SRST", ""},
      {{FaultKind::SilenceEject, 0}, {"SRST"}, "EJCT A ", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.command);
    Host host(teskReaderTypeScantron8000, Blank(1, {c.fault}));
    host.Download(c.taken);
    EXPECT_EQ(host.Say(c.command), c.answer);
    host.Download(c.taken);  // the next session meets no fault
    EXPECT_EQ(host.Say(c.command), "\r");
    EXPECT_TRUE(host.scanner->Complaints().empty());
  }
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

TEST(ScanMarkSimulator, TranscriptHoldsBothDirectionsInTheirOrder) {
  Host host(teskReaderTypeScantronScanMark5500, Blank(1));
  host.scanner->Receive("\x1BSR", host.now);
  host.Send("ST\r");
  host.Say("PRN$ 1 N");
  const std::deque<Traffic> expected{{Direction::FromHost, "\x1BSRST\r"},
                                     {Direction::ToHost, "\r"},
                                     {Direction::FromHost, "\x1BPRN$ 1 N\r"},
                                     {Direction::ToHost, "\r"}};
  EXPECT_EQ(host.scanner->Transcript(), expected);
}

TEST(ScanMarkSimulator, ItsMemoryOfALongLifeHasAnEnd) {
  Host host(teskReaderTypeScantronScanMark5500, Blank(1));
  host.scanner->KeepAtMost(12, 3);
  for (int i = 0; i < 50; ++i) host.Say("NONE");
  host.Say("PRN$ 1 N");
  const std::deque<Traffic> latest{{Direction::ToHost, "\r"}};
  EXPECT_EQ(host.scanner->Transcript(), latest);
  EXPECT_EQ(host.scanner->Complaints().size(), 3U);
  host.Send(std::string(40, 'x'));
  EXPECT_EQ(host.scanner->Transcript().back().bytes, std::string(11, 'x'));
}

TEST(Simulators, KnowTheScanMarkFamilyAndNobodyElseByMistake) {
  const std::set<std::int32_t> scanMarks{11, 12, 13, 14, 15, 16, 17, 27, 28, 29};
  const std::set<std::int32_t> oneSided{11, 27};
  for (const std::int32_t type : scanMarks) {
    Host host(static_cast<teskReaderType>(type));
    ASSERT_NE(host.scanner, nullptr) << type;
    EXPECT_EQ(host.scanner->SheetsLeft(), 20U);
    const bool twoSided = host.Say("FRM=FS 9 9 48 N N N") == "\r";
    EXPECT_EQ(twoSided, oneSided.count(type) == 0) << type;
  }
  for (const std::int32_t type : {-1, 0, 46, 47}) {
    EXPECT_EQ(CreateScanner(static_cast<teskReaderType>(type), {}), nullptr) << type;
    EXPECT_TRUE(FaultKinds(static_cast<teskReaderType>(type)).empty());
  }
}

}  // namespace
}  // namespace tesk::simulator
