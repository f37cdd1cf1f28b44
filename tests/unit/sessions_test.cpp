// The recorded sessions, replayed on virtual time: the same bytes must go out and the same sheets come in.
// And the reader of traces, which trusts nothing.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandError.h"
#include "cli/scan/BatchHost.h"
#include "cli/scan/scanSetup.h"
#include "cli/simulated/SimulatedScanner.h"
#include "cli/trace/TraceFile.h"
#include "cli/values.h"
#include "tests/support/ScanCommand.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using simulator::Direction;
using simulator::Milliseconds;
using simulator::Recorded;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

std::string FileText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// What the setting was on the command line.
std::vector<std::string> OptionsOf(const std::string& name, const std::string& value) {
  static const std::map<std::string, std::string> kOptions = {
      {"Side1", "--side1"},      {"Side2", "--side2"},         {"Windows", "--window"},
      {"Barcodes", "--barcode"}, {"Imprint", "--imprint"},     {"ImprintPosition", "--imprint-position"},
      {"Dispose", "--dispose"},  {"MaxSheets", "--max-sheets"}};
  const auto option = kOptions.find(name);
  if (option == kOptions.end()) return {"--set=" + name + "=" + value};
  if (value == "none" && name != "Dispose") return {};
  std::vector<std::string> options;
  for (const auto& one : cli::SplitText(value, ';')) {
    options.push_back(option->second);
    options.push_back(one);
  }
  return options;
}

// The scan that the settings of a trace describe.
cli::ScanPlan PlanOf(const cli::RecordedTrace& trace) {
  std::vector<std::string> arguments{"--reader", std::to_string(std::int32_t{trace.reader}), "--port", "sim"};
  for (const auto& [name, value] : trace.settings) {
    for (auto& option : OptionsOf(name, value)) arguments.push_back(std::move(option));
  }
  return ParseScan(std::move(arguments));
}

// What a scan writes.
struct Outcome : cli::SheetTaker {
  std::string sheets;
  std::string messages;
  std::vector<std::string> complaints;

  void Keep(const clsTeskReader&, const cli::SheetRecord&) override {}
  void Settle(const clsTeskReader&, const cli::SheetRecord& record) override {
    sheets += cli::NdjsonText(record);
  }
};

Outcome ReplaySession(cli::RecordedTrace trace) {
  Outcome outcome;
  const cli::ScanPlan plan = PlanOf(trace);
  const auto time = std::make_shared<VirtualTime>();
  const auto scanner = std::make_shared<simulator::Replay>(std::move(trace.session), time->Now());
  time->nextDue = [scanner] { return scanner->NextDue(); };
  const auto engine = CreateReader(
      {.serial = std::make_shared<cli::SimulatedSerial>(scanner, time), .loop = time, .clock = time});
  std::ostringstream messages;
  const auto console = std::make_shared<cli::Console>(messages, false);
  const auto host = std::make_shared<cli::ConsoleHost>(console);
  engine->SetError(host);
  cli::ConfigureEngine(plan, *engine);
  cli::BatchHost batch(*engine, plan,
                       {.console = console,
                        .host = host,
                        .activity = std::make_shared<cli::LineActivity>(time),
                        .clock = time,
                        .interrupted = [] { return 0; },
                        .taker = outcome});
  engine->AddEvents(batch);
  std::int32_t count = 0;
  engine->ReadBatch(!plan.imprints.empty(), plan.maxSheets, count);
  engine->RemoveEvents(batch);
  SetError(nullptr);
  scanner->End();
  outcome.messages = messages.str();
  outcome.complaints = scanner->Complaints();
  return outcome;
}

TEST(Sessions, GoOverTheWireByteByByteAsRecordedAndReadTheSameSheets) {
  std::set<std::string> families;
  for (const auto& entry : fs::directory_iterator(TESKREAD_TEST_DATA "/../sessions")) {
    fs::path path = entry.path();
    if (path.extension() != ".trace") continue;
    SCOPED_TRACE(path.filename().string());
    families.insert(path.filename().string().substr(0, path.filename().string().find('-')));
    cli::RecordedTrace trace = cli::ReadTraceFile(path.string());
    EXPECT_THAT(trace.comments, ElementsAre(testing::StartsWith("model: "), testing::StartsWith("from: "),
                                            testing::StartsWith("shows: ")));
    const Outcome outcome = ReplaySession(trace);
    EXPECT_THAT(outcome.complaints, IsEmpty());
    EXPECT_EQ(outcome.sheets, FileText(path.replace_extension(".ndjson")));
    EXPECT_EQ(outcome.messages, FileText(path.replace_extension(".messages")));

    // A host that sends one other byte is caught at it.
    const auto last = std::ranges::find(trace.session.rbegin(), trace.session.rend(), Direction::FromHost,
                                        &Recorded::direction);
    ASSERT_NE(last, trace.session.rend());
    last->bytes.back() = static_cast<char>(last->bytes.back() ^ 1);
    EXPECT_THAT(ReplaySession(trace).complaints,
                ElementsAre(AllOf(HasSubstr("line " + std::to_string(last->line) + " "),
                                  HasSubstr("byte " + std::to_string(last->bytes.size()) + " of "))));
  }
  EXPECT_THAT(families, ElementsAre("opscan", "scanmark", "sekonic", "vmr138"));
}

std::vector<Recorded> ShortSession() {
  return {{Direction::FromHost, "READ", Milliseconds(0), 7, "0.1"},
          {Direction::ToHost, "one", Milliseconds(100), 8, "0.2"},
          {Direction::ToHost, "two", Milliseconds(50), 9, "0.25"},
          {Direction::FromHost, "\x1bQ\r", Milliseconds(0), 10, "0.3"}};
}

TEST(Replay, AnswersWithTheRecordedDelays) {
  const simulator::Time start{};
  simulator::Replay replay(ShortSession(), start);
  replay.Receive("REA", start);
  EXPECT_FALSE(replay.NextDue());
  replay.Receive("D", start);
  EXPECT_EQ(replay.Send(start + Milliseconds(99)), "");
  EXPECT_EQ(replay.Send(start + Milliseconds(100)), "one");
  EXPECT_EQ(replay.Send(start + Milliseconds(149)), "");
  EXPECT_EQ(replay.Send(start + Milliseconds(150)), "two");
  replay.Receive("\x1bQ\r", start);
  replay.End();
  EXPECT_THAT(replay.Complaints(), IsEmpty());
}

TEST(Replay, SaysWhereTheHostPartsAndIsSilentFromThenOn) {
  const std::pair<const char*, const char*> differences[] = {
      {"REXD",
       "line 7 (0.1 s), byte 3 of 4: expected \"A\", got \"X\"; the record is \"READ\", the host sent "
       "\"REX\""},
      {"READ\x1bR\r",
       "line 10 (0.3 s), byte 2 of 3: expected \"Q\", got \"R\"; the record is \"<1B>Q<0D>\", "
       "the host sent \"<1B>R\""},
      {"READ\x1bQ\rX", "at the end of the session, after line 10 (0.3 s): expected nothing more, got \"X\""},
      {"READ\x1b",
       "line 10 (0.3 s), byte 2 of 3: expected \"Q<0D>\", got nothing more; records of the host's "
       "that were not sent whole: 1"},
      {"",
       "line 7 (0.1 s), byte 1 of 4: expected \"READ\", got nothing more; records of the host's that were "
       "not sent whole: 2"},
  };
  for (const auto& [sent, complaint] : differences) {
    simulator::Replay replay(ShortSession(), {});
    replay.Receive(sent, {});
    if (!replay.Complaints().empty()) {
      EXPECT_FALSE(replay.NextDue());
    }
    replay.End();
    EXPECT_THAT(replay.Complaints(), ElementsAre(complaint));
  }
}

// A good trace; the tests below spoil it.
std::vector<std::string> GoodTrace() {
  return {"teskread-trace 1",
          "version 1",
          "reader 15 a scanner",
          "settings Duplex=true",
          "",
          "   0.000000 open 1 9600,N,8,1 none",
          "   0.100000 > 41 0D |A.|",
          "   0.100000 wait 1000",
          "   1.100000 end timed out",
          "  61.350000 < 42 |B|",
          "  99.000000 < 43 |C|",
          "  99.100000 close"};
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += line + "\n";
  return text;
}

std::string RefusalOf(const std::string& text) {
  std::istringstream stream(text);
  try {
    cli::ReadTrace(stream, "t");
  } catch (const cli::CommandFailure& failure) {
    return failure.what();
  }
  return "taken";
}

TEST(TraceFile, KeepsADelayThatTheHostWaitedOutAndShortensOthers) {
  std::istringstream stream(Joined(GoodTrace()));
  const auto trace = cli::ReadTrace(stream, "t");
  ASSERT_EQ(trace.session.size(), 3U);
  EXPECT_EQ(trace.session[0].bytes, "A\r");
  EXPECT_EQ(trace.session[1].delay, Milliseconds(61'250));
  EXPECT_EQ(trace.session[2].delay, cli::kLongestReplayedDelay);
  EXPECT_EQ(trace.session[2].line, 11U);
}

TEST(TraceFile, IsRefusedWithTheLineThatIsWrong) {
  const struct {
    std::size_t line;  // from 1
    const char* text;
    const char* refusal;
  } spoiled[] = {
      {1, "teskread-trace 2", "this is no trace"},
      {2, "version ", "\"version V\" is expected"},
      {3, "reader 99 x", "the reader \"99\""},
      {4, "settings Duplex", "\"Duplex\" is no NAME=VALUE"},
      {5, "x", "an empty line is expected"},
      {6, "   0.000000 open 1 9600,X,8,1 none", "\"X\" is no parity"},
      {6, "   0.000000 close", "the port is not open"},
      {7, "   0.100000 > 41 0D |AB|", "are not the 2 bytes before it"},
      {7, "   0.100000 > 4g |A|", "1 to 16 bytes"},
      {7, "   0.1 > 41 |A|", "no six decimals"},
      {7, "   0.100000 ? 41 |A|", "is no event"},
      {7, "", "the event is missing"},
      {9, "   1.100000 end of it", "is no end of a wait"},
      {9, "   1.100000 wait 5", "a wait begins before"},
      {10, "   0.500000 < 42 |B|", "the time is before"},
      {12, "  99.100000 open 1 9600,N,8,1 none", "the port is open already"},
  };
  for (const auto& [line, text, refusal] : spoiled) {
    auto lines = GoodTrace();
    lines[line - 1] = text;
    EXPECT_THAT(RefusalOf(Joined(lines)),
                AllOf(HasSubstr("t, line " + std::to_string(line) + ": "), HasSubstr(refusal)));
  }
}

TEST(TraceFile, IsRefusedWhereverALineWasCut) {
  const std::string text = Joined(GoodTrace());
  ASSERT_EQ(RefusalOf(text), "taken");
  for (std::size_t length = 0; length < text.size(); ++length) {
    const std::string cut = text.substr(0, length);
    const bool wholeLine = cut.ends_with('\n');
    const bool bytes = cut.find("|A.|\n") != std::string::npos;
    const auto line = std::count(cut.begin(), cut.end(), '\n') + 1;
    EXPECT_THAT(RefusalOf(cut), HasSubstr(wholeLine && bytes ? "taken" : "t, line " + std::to_string(line)));
  }
}

TEST(TraceFile, SettingsHoldAnyByte) {
  std::string value;
  for (int byte = 0; byte < 256; ++byte) value += static_cast<char>(byte);
  EXPECT_EQ(cli::UnescapedSetting(cli::EscapedSetting(value)), value);
  EXPECT_EQ(cli::EscapedSetting(value).find_first_of(" ;"), std::string::npos);
}

}  // namespace
}  // namespace tesk::test
