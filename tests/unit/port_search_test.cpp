// The search over the ports, the identification request and the firmware text, with simulated readers behind
// the ports.
#include <map>
#include <numeric>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Ports = std::vector<std::int16_t>;

const std::string kRequest = std::string("\x12\x1BV\x12") + "E";
constexpr auto kReader = teskReaderTypeChatsworthOMR2000;

std::shared_ptr<simulator::SheetScanner> Identifying(std::vector<simulator::Fault> faults = {},
                                                     simulator::Timings timings = {}) {
  return simulator::CreateScanner(kReader, {.faults = std::move(faults), .timings = timings});
}

Ports Range(std::int16_t first, std::int16_t last) {
  Ports ports(static_cast<std::size_t>(last - first + 1));
  std::iota(ports.begin(), ports.end(), first);
  return ports;
}

// A reader of `type` on port 9, a scanner behind port 3.
struct SearchBench : Bench {
  explicit SearchBench(teskReaderType type = kReader,
                       std::shared_ptr<simulator::Scanner> scanner = Identifying())
      : Bench(type, std::move(scanner)) {
    reader->SetPort(9);
  }
};

TEST(Locate, AsksTheStartPortFirstAndThenAllSixteenInOrder) {
  const struct {
    std::int16_t start, at;  // at 0: nowhere
    Ports asked;
  } cases[] = {{0, 3, Range(1, 3)},   {5, 5, {5}},
               {5, 2, {5, 1, 2}},     {1, 0, {1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}},
               {0, 16, Range(1, 16)}, {0, 0, Range(1, 16)},
               {17, 1, {1}},          {-4, 2, Range(1, 2)},
               {20, 0, Range(1, 16)}, {16, 16, {16}},
               {1, 2, {1, 1, 2}}};
  for (const auto& [start, at, asked] : cases) {
    SearchBench bench;
    bench.serial->port = at;
    EXPECT_EQ(bench.reader->Locate(start), at != 0) << start;
    EXPECT_EQ(bench.serial->asked, asked) << start;
    EXPECT_EQ(bench.reader->Port(), at != 0 ? at : 9) << start;
    EXPECT_TRUE(bench.host.errors.empty() && bench.host.messages.empty());
  }
}

TEST(Locate, AndFirmwareAreOfferedWhereProfileAndFamilySaySo) {
  for (std::int32_t number = -1; number <= kLastReaderType + 1; ++number) {
    const auto type = static_cast<teskReaderType>(number);
    SearchBench bench;
    bench.reader->LoadDefaults(type);
    bench.reader->SetPort(3);
    bench.host.errors.clear();
    const bool firmware = (type >= 20 && type <= 23) || type == 35 || type == 37 || type == 41;
    const bool locate = firmware && type != 35 && type != 41;
    std::string text;
    EXPECT_EQ(bench.reader->Locate(3), locate) << number;
    EXPECT_EQ(bench.reader->Firmware(text), firmware) << number;
    EXPECT_EQ(text, firmware ? "OMR-1100 - Version 1.04" : "") << number;
    EXPECT_EQ(bench.serial->asked, Ports(std::size_t{locate} + std::size_t{firmware}, 3)) << number;
    EXPECT_FALSE(bench.serial->open);
    EXPECT_THAT(bench.host.errors, IsEmpty()) << number;
  }
  for (const auto& [type, identifies] :
       {std::pair{teskReaderTypeNCSOpScan2, false}, {teskReaderTypeChatsworthACF200, true}}) {
    SearchBench bench(type);
    bench.reader->Profile()->SetLocateEnabled(true);
    EXPECT_EQ(bench.reader->Locate(3), identifies);
    EXPECT_EQ(bench.serial->asked.empty(), !identifies);
  }
}

TEST(Locate, SendsTheRequestAloneOnTheEnginesLineAndLeavesTheFormAsItFoundIt) {
  for (const std::int16_t at : Ports{3, 0}) {
    const auto scanner = Identifying();
    SearchBench bench(kReader, scanner);
    bench.serial->port = at;
    bench.reader->SetBaudRate(teskReaderBaudRate19200);
    bench.reader->SetFlowControl(teskReaderFlowControlHardware);
    SerialControl& port = *bench.reader->fComm()->mscComm();
    port.SetCommPort(7);
    port.SetSettings("300,M,5,1.5");
    port.SetHandshaking(3);
    port.SetInputLen(12);
    const auto timer = bench.reader->fComm()->tmrScan();
    timer->SetInterval(12'345);
    EXPECT_EQ(bench.reader->Locate(), at == 3);
    EXPECT_EQ(bench.serial->sent, at == 3 ? kRequest : "");
    EXPECT_EQ(std::tuple(port.CommPort(), port.Settings(), port.Handshaking(), port.InputLen()),
              std::tuple(7, "300,M,5,1.5", 3, 12));
    EXPECT_EQ(timer->Interval(), 12'345);
    EXPECT_FALSE(timer->Enabled() || bench.serial->open);
    EXPECT_TRUE(bench.reader->CancelScan()) << "as a reader that is not started";
    EXPECT_THAT(scanner->Complaints(), IsEmpty());
    if (at == 0) continue;
    EXPECT_EQ(bench.time->Elapsed(), 0ms) << "an answer that is there is not waited for";
    const LineSettings& line = bench.serial->settings;
    EXPECT_EQ(std::tuple(line.bitRate, line.parity, line.dataBits, line.handshaking),
              std::tuple(19200, 'E', 7, teskReaderFlowControlHardware));
  }
}

// A reader whose sixteen ports are there and keep silent, but those that fail to open.
struct SilentBench : SerialSystem {
  SilentBench() { reader->LoadDefaults(kReader); }
  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings&) override {
    struct Silence : SerialLine {
      std::string Read() override { return {}; }
      void Write(std::string_view) override {}
    };
    asked.push_back(port);
    if (const auto fault = faults.find(port); fault != faults.end()) throw RunTimeError(fault->second, "No");
    return std::make_unique<Silence>();
  }

  RecordingHost host;
  Ports asked;
  std::map<std::int16_t, std::int32_t> faults;  // by port: the error at opening
  std::shared_ptr<VirtualTime> time = std::make_shared<VirtualTime>();
  std::shared_ptr<clsTeskReader> reader = CreateReader(ReaderParts{
      .serial = std::shared_ptr<SilentBench>(std::shared_ptr<void>(), this), .loop = time, .clock = time});
};

TEST(Locate, WaitsForASilentPortByAClockOfItsOwnAndPassesOverThoseThatDoNotOpen) {
  SilentBench silent;
  silent.reader->SetTimeOut(600);
  EXPECT_FALSE(silent.reader->Locate(5));
  EXPECT_EQ(silent.asked.size(), 17U);
  EXPECT_EQ(silent.time->Elapsed(), 17 * 580ms) << "64 characters and half a second, up to the next poll";
  SilentBench bench;
  for (std::int16_t port = 1; port <= 16; ++port) {
    constexpr std::array kErrors{kErrorPort, kErrorPortInUse, kErrorLineSettings, kErrorLineWrite};
    bench.faults[port] = kErrors.at(static_cast<std::size_t>(port) % kErrors.size());
  }
  EXPECT_FALSE(bench.reader->Locate());
  EXPECT_EQ(bench.asked, Range(1, 16));
  EXPECT_EQ(bench.time->Elapsed(), 0ms);
  EXPECT_THAT(bench.host.errors, IsEmpty());
  bench.asked.clear();
  bench.reader->SetParity("X");
  EXPECT_FALSE(bench.reader->Locate());
  EXPECT_THAT(bench.host.Sources(), ElementsAre("clsTeskReader.Locate")) << "no other port would mend it";
  EXPECT_THAT(bench.asked, IsEmpty());
}

TEST(Locate, EndsWhenTheHostGivesUp) {
  SilentBench bench;
  bench.time->onMessages = [&](int turn) {
    EXPECT_FALSE(bench.reader->Locate(1)) << "within a search";
    EXPECT_FALSE(turn == 100 && bench.reader->EndReader());
  };
  EXPECT_FALSE(bench.reader->Locate());
  EXPECT_EQ(bench.asked, Range(1, 2));
  EXPECT_LE(bench.time->Elapsed(), 1010ms);
  EXPECT_TRUE(bench.reader->CancelScan());
}

TEST(Locate, ClosesThePortThatAFailedStartLeftOpenAndFirmwareReportsOneThatDoesNotOpen) {
  SearchBench bench;
  std::string firmware;
  EXPECT_FALSE(bench.reader->Firmware(firmware));
  EXPECT_THAT(bench.serial->asked, ElementsAre(9));
  EXPECT_THAT(bench.host.Sources(), ElementsAre("clsTeskReader.Firmware"));
  bench.host.errors.clear();
  bench.reader->SetPort(3);
  ASSERT_FALSE(bench.reader->StartReader()) << "a reader without a driver";
  ASSERT_TRUE(bench.serial->open);
  EXPECT_TRUE(bench.reader->Locate());
  EXPECT_FALSE(bench.reader->StartReader());
  EXPECT_TRUE(bench.reader->Firmware(firmware));
  EXPECT_FALSE(bench.serial->open || !bench.host.errors.empty());
}

TEST(Locate, AndFirmwareTouchNothingWhileTheReaderIsStarted) {
  constexpr auto kScanMark = teskReaderTypeScantronScanMark2500;
  Bench bench(kScanMark, simulator::CreateScanner(kScanMark, {.count = 1}));
  ASSERT_TRUE(bench.reader->StartReader());
  const std::string before = bench.serial->sent;
  bench.reader->SetReaderType(kReader);
  std::string text = "as it was";
  EXPECT_FALSE(bench.reader->Locate() || bench.reader->Firmware(text) || bench.reader->CancelScan());
  EXPECT_EQ(text + bench.serial->sent, "as it was" + before);
  EXPECT_TRUE(bench.serial->open);
  EXPECT_THAT(bench.host.Sources(), ElementsAre("clsTeskReader.Locate", "clsTeskReader.Firmware"));
}

// Says the same to every request, piece by piece.
class Answering : public simulator::Scanner {
 public:
  explicit Answering(std::vector<std::string> pieces) : pieces_(std::move(pieces)) {}

 private:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    if (byte != 'E') return;
    for (const std::string& piece : pieces_) Reply(piece, now, simulator::Milliseconds(60));
  }
  std::vector<std::string> pieces_;
};

TEST(Identification, IsALineWithAVersionThatEndsInTime) {
  const std::tuple<const char*, std::vector<std::string>, const char*> cases[] = {
      // pieces, what is taken as the firmware's text; null: nothing
      {"as seen", {"OMR-1100 - Version 1.04\r", "03/12/1999\r"}, "OMR-1100 - Version 1.04"},
      {"without the date", {"OMR-1100 - Version 1.04\r"}, "OMR-1100 - Version 1.04"},
      {"in pieces", {"OMR", "-1100 - Ver", "sion 1.0", "4\r03"}, "OMR-1100 - Version 1.04"},
      {"line ends before it", {"\r\n\r", "EZData Version 2\r\n"}, "EZData Version 2"},
      {"control characters in it", {"\x12\x01Version 3\x7F\r"}, "Version 3"},
      {"never ended", {"OMR-1100 - Version 1.04"}, nullptr},
      {"no version", {"OMR-1100\r03/12/1999\r"}, nullptr},
      {"a version in the second line only", {"Modem\rVersion 9\r"}, nullptr},
      {"line ends alone", {"\r\r\r\n"}, nullptr},
      {"an echo", {kRequest}, nullptr},
      {"endless", {std::string(100'000, 'V')}, nullptr},
      {"nothing", {}, nullptr},
  };
  for (const auto& [name, pieces, text] : cases) {
    SearchBench bench(kReader, std::make_shared<Answering>(pieces));
    bench.reader->SetPort(3);
    std::string firmware = "untouched";
    EXPECT_EQ(bench.reader->Firmware(firmware), text != nullptr) << name;
    EXPECT_EQ(firmware, text != nullptr ? text : "untouched") << name;
    EXPECT_EQ(bench.reader->Locate(3), text != nullptr) << name;
    EXPECT_FALSE(bench.serial->open || !bench.host.errors.empty()) << name;
  }
}

TEST(Identification, IsNothingThatWasSaidBeforeItWasAskedFor) {
  struct Early : Answering {
    Early() : Answering({"OMR-1100 - Version 1.04\r"}) { Reply("Modem\r", {}); }
  };
  SearchBench bench(kReader, std::make_shared<Early>());
  EXPECT_TRUE(bench.reader->Locate(3));
}

TEST(Identification, SurvivesEveryFaultOfTheScannerAndAPortThatDies) {
  using simulator::Fault;
  using simulator::FaultKind;
  std::vector<Fault> faults{
      {FaultKind::SilenceIdentify}, {FaultKind::GarbageIdentify}, {FaultKind::NoVersion}};
  for (std::size_t byte = 0; byte < 24; ++byte) faults.push_back({FaultKind::CutIdentify, 1, byte});
  for (const Fault& fault : faults) {
    SearchBench bench(kReader, Identifying({fault}));
    EXPECT_TRUE(bench.reader->Locate(3)) << static_cast<int>(fault.kind) << '@' << fault.byte;
    EXPECT_THAT(bench.serial->asked, ElementsAre(3, 1, 2, 3)) << "found at the second request";
  }
  for (std::size_t bytes = 0; bytes < 24; ++bytes) {
    SearchBench bench;
    bench.serial->behaviour.goneAfter = bytes;
    bench.serial->behaviour.chunk = 1;
    EXPECT_FALSE(bench.reader->Locate(3) || bench.serial->open || !bench.host.errors.empty()) << bytes;
  }
}

TEST(Identification, TakesAnAnswerAtTheSlowestLineAndNoneThatComesTooLate) {
  const auto slow = Identifying();
  slow->PaceAt(11);
  SearchBench bench(kReader, slow);
  bench.reader->SetBaudRate(teskReaderBaudRate110);
  EXPECT_TRUE(bench.reader->Locate(3));
  SearchBench late(kReader, Identifying({}, {.answer = simulator::Milliseconds(2000)}));
  EXPECT_FALSE(late.reader->Locate(3));
}

TEST(EZDataSimulator, RecordsWhateverIsNotTheRequest) {
  const auto scanner = Identifying();
  scanner->Receive("R", {});
  scanner->Receive(std::string("\x12\x1BV\x12") + "F", {});
  EXPECT_EQ(scanner->Send({}), "");
  scanner->Receive(kRequest, {});
  EXPECT_EQ(scanner->Send({}), "OMR-1100 - Version 1.04\r03/12/1999\r");
  EXPECT_THAT(scanner->Complaints(),
              ElementsAre("unknown command: \"R\"", "unknown command: \"<12><1B>V<12>F\""));
}

}  // namespace
}  // namespace tesk::test
