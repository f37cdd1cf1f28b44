// The contract that every serial driver keeps with a port that misbehaves, generated over all reader types
// that have a driver: nothing hangs, a failed read leaves the engine's arrays as they were, a read that
// succeeds has the marks of the sheet, and the port is closed at the end.
#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "profiles/models.h"
#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

int casesRun = 0;

class CountPrinter : public ::testing::Environment {
  void TearDown() override { std::cout << "contract cases run: " << casesRun << '\n'; }
};

[[maybe_unused]] const auto* const kCountPrinter =
    ::testing::AddGlobalTestEnvironment(new CountPrinter);  // NOLINT: the framework owns it

constexpr std::int16_t kRows = 4;
const SideArray kUntouched = [] {
  SideArray sentinel(1, 1);
  sentinel.At(1, 1) = 777;
  return sentinel;
}();

std::vector<teskReaderType> SerialTypesWithADriver() {
  std::vector<teskReaderType> types;
  const clsTeskReaderProfiles profiles;
  for (const ReaderTypeName& name : ReaderTypeNames()) {
    const auto profile = profiles.Item(NumberText(name.type));
    const bool serial = profile && profile->InterfaceType() == teskReaderInterfaceTypeSerial;
    if (serial && !DriverModule(name.type).empty()) types.push_back(name.type);
  }
  return types;
}

// A scanner that answers whatever it hears with random bytes.
class Babbler : public simulator::Scanner {
 public:
  Babbler(std::uint32_t seed, std::size_t length, simulator::Milliseconds delay)
      : state_(seed), length_(length), delay_(delay) {}

 private:
  void OnByte(std::uint8_t, simulator::Time now) override {
    std::string bytes;
    for (std::size_t i = 0; i < length_; ++i) {
      state_ = state_ * 1664525U + 1013904223U;
      bytes += static_cast<char>(state_ >> 24U);
    }
    Reply(bytes, now, delay_);
  }

  std::uint32_t state_;
  std::size_t length_;
  simulator::Milliseconds delay_;
};

struct Outcome {
  bool started = false;
  bool read = false;
  bool closed = false;
  bool hung = false;
  SideArray side1;
  SideArray side2;
  int turns = 0;
  std::size_t delivered = 0;
  std::size_t messages = 0;
  std::size_t messagesBefore = 0;  // the cancel
  std::optional<Milliseconds> cancelledAt;
  Milliseconds endedAt{};
};

// One session of start, one sheet, eject and end over a port with the given behaviour.
class Session {
 public:
  explicit Session(teskReaderType type) : type_(type) {}

  PortBehaviour behaviour;
  std::shared_ptr<simulator::Scanner> scanner;  // empty: the model's own simulator
  int cancelAtTurn = 0;                         // 0: never

  Outcome Run() {
    ++casesRun;
    if (!scanner) {
      scanner = simulator::CreateScanner(
          type_, {.count = 1, .seed = 3, .geometry = simulator::Geometry{kRows, 48, true}});
    }
    Bench bench(type_, scanner);
    SetUp(bench);
    Outcome outcome;
    Watch(bench, outcome);
    if (const auto error = Attempt([&] { Drive(bench, outcome); })) outcome.hung = true;
    outcome.closed = !bench.serial->open;
    outcome.messages = bench.host.messages.size() + bench.host.errors.size();
    outcome.endedAt = bench.time->Elapsed();
    outcome.side1 = bench.reader->Side1Array();
    outcome.side2 = bench.reader->Side2Array();
    for (const auto& traffic : scanner->Transcript()) {
      if (traffic.direction == simulator::Direction::ToHost) outcome.delivered += traffic.bytes.size();
    }
    return outcome;
  }

 private:
  void SetUp(Bench& bench) const {
    clsTeskReader& reader = *bench.reader;
    bench.serial->behaviour = behaviour;
    for (auto set : {&clsTeskReader::SetSide1Rows, &clsTeskReader::SetSide2Rows}) {
      (reader.*set)(From1({kRows}));
    }
    reader.SetDuplexForm(reader.Duplex());
    reader.StoreSheet({.side1 = kUntouched, .side2 = kUntouched});
  }

  // The host gives up after half an hour, or at the turn that the case names. A driver that does not notice
  // is stopped by force and has hung.
  void Watch(Bench& bench, Outcome& outcome) const {
    bench.time->onMessages = [this, &bench, &outcome](int turn) {
      outcome.turns = turn;
      if (turn == cancelAtTurn || bench.time->Elapsed() > 30min) {
        bench.reader->SetCancelScan(true);
        if (!outcome.cancelledAt) {
          outcome.cancelledAt = bench.time->Elapsed();
          outcome.messagesBefore = bench.host.messages.size() + bench.host.errors.size();
        }
      }
      if (bench.time->Elapsed() > 60min) throw std::runtime_error("hangs");
    };
  }

  static void Drive(Bench& bench, Outcome& outcome) {
    outcome.started = bench.reader->StartReader();
    if (outcome.started) outcome.read = bench.reader->ReadPage();
    bench.reader->EjectPage();
    bench.reader->EndReader();
  }

  teskReaderType type_;
};

// ---- Whole batches on a line that lies

struct Read {
  SideArray side1;
  SideArray side2;
  std::int16_t marks1;
  std::int16_t marks2;
  BarcodeArray texts;
  bool operator==(const Read&) const = default;
};

std::size_t Told(const Bench& bench) { return bench.host.messages.size() + bench.host.errors.size(); }

// What a host has of a batch of three sheets that it repeats once after a failure, as operators do.
struct Batch {
  std::vector<Read> sheets;
  bool failed = false;
  bool toldOfEveryFailure = true;
  bool hung = false;
  std::size_t delivered = 0;
  std::vector<std::size_t> answers;  // where in the scanner's bytes each answer begins
};

// How a batch is read. The types that have a driver are read by whole pages; some read by other forms as well.
struct Form {
  std::string name;
  teskReaderType type;
  void (*set)(Bench&) = [](Bench&) {};
  BarcodeArray barcodes = {};  // on every sheet; empty: as the sheets come
};

std::vector<simulator::Sheet> Stock(const Form& form) {
  if (form.type == teskReaderTypePDIVMR138) return simulator::GenerateSheets(3, 5, {kRows, 12, false}, 255);
  auto sheets = simulator::GenerateSheets(3, 5, {kRows, 48, true}, 9);
  for (auto& sheet : sheets) sheet.barcodes = form.barcodes.empty() ? sheet.barcodes : form.barcodes;
  return sheets;
}

Batch RunBatch(const Form& form, const PortBehaviour& behaviour) {
  ++casesRun;
  const std::shared_ptr<simulator::Scanner> scanner =
      simulator::CreateScanner(form.type, {.sheets = Stock(form)});
  Bench bench(form.type, scanner);
  clsTeskReader& reader = *bench.reader;
  bench.serial->behaviour = behaviour;
  bench.SetExtents(kRows, 3, reader.Duplex());
  form.set(bench);
  Batch batch;
  bench.time->onMessages = [&](int) {
    if (bench.time->Elapsed() > 10min) reader.SetCancelScan(true);
    if (bench.time->Elapsed() > 60min) throw std::runtime_error("hangs");
  };
  const auto error = Attempt([&] {
    bool running = reader.StartReader();
    for (int left = 3; left > 0 && bench.time->Elapsed() < 9min; --left) {
      const std::size_t told = Told(bench);
      if (running && reader.ReadPage()) {
        // OpScan readers warn of lines of a wrong length and go on: the operator has been told.
        if (Told(bench) == told) {
          batch.sheets.push_back({reader.Side1Array(), reader.Side2Array(), reader.Side1TimingMarks(),
                                  reader.Side2TimingMarks(), reader.BarcodeTexts()});
        }
        reader.EjectPage();
        continue;
      }
      batch.failed = true;
      if (running && Told(bench) == told) batch.toldOfEveryFailure = false;
      reader.EndReader();
      running = reader.StartReader();
    }
    reader.EndReader();
  });
  batch.hung = error.has_value();
  for (const auto& traffic : scanner->Transcript()) {
    if (traffic.direction == simulator::Direction::FromHost) continue;
    batch.answers.push_back(batch.delivered);
    batch.delivered += traffic.bytes.size();
  }
  return batch;
}

// Every sheet that was handed over is one of the stack, in its order, each once.
bool InOrder(const std::vector<Read>& sheets, const std::vector<Read>& good) {
  auto next = good.begin();
  for (const Read& sheet : sheets) {
    next = std::find(next, good.end(), sheet);
    if (next == good.end()) return false;
    ++next;
  }
  return true;
}

// A barcode has no check of its own: a damaged character of one is a character.
std::vector<Read> WithoutTexts(std::vector<Read> sheets) {
  for (Read& sheet : sheets) sheet.texts.clear();
  return sheets;
}

class LyingLine : public ::testing::TestWithParam<Form> {
 protected:
  void SetUp() override {
    good = RunBatch(GetParam(), {});
    ASSERT_EQ(good.sheets.size(), 3U);
    ASSERT_FALSE(good.failed);
  }

  // The marks are right, or the sheet is refused and somebody is told.
  void Check(const Batch& batch, const std::string& what) const {
    EXPECT_FALSE(batch.hung) << what << ": hangs";
    const bool right = GetParam().barcodes.empty()
                           ? InOrder(batch.sheets, good.sheets)
                           : InOrder(WithoutTexts(batch.sheets), WithoutTexts(good.sheets));
    EXPECT_TRUE(right) << what << ": a sheet that is not of this stack";
    EXPECT_TRUE(batch.toldOfEveryFailure) << what << ": refused without a word";
  }

  // Whether this byte of the scanner's belongs to a sheet's data, by the length of its answer.
  bool InData(std::size_t at) const {
    constexpr std::size_t kLongestStatus = 60;
    const auto end = std::upper_bound(good.answers.begin(), good.answers.end(), at);
    return (end == good.answers.end() ? good.delivered : *end) - *(end - 1) > kLongestStatus;
  }

  // The sanitizers see the same code in fewer places.
  std::size_t Step() const { return std::getenv("TESKREAD_QUICK") != nullptr ? 7 : 1; }

  Batch good;
};

TEST_P(LyingLine, EveryAnswerInTwoPiecesReadsTheSame) {
  for (std::size_t cut = 1; cut < good.delivered; cut += Step()) {
    const Batch batch = RunBatch(GetParam(), {.pauseAfter = cut, .pause = 500ms});
    const std::string what = "pause after byte " + std::to_string(cut);
    Check(batch, what);
    EXPECT_EQ(batch.sheets, good.sheets) << what;
    if (HasFailure()) return;
  }
}

TEST_P(LyingLine, LateAnswersAreNeverTakenForOthers) {
  for (const std::size_t answer : good.answers) {
    for (const auto late : {900ms, 9900ms, 10100ms, 11000ms, 25000ms}) {
      Check(RunBatch(GetParam(), {.pauseAfter = answer, .pause = late}),
            "answer at byte " + std::to_string(answer) + " late by " + std::to_string(late.count()));
      if (HasFailure()) return;
    }
  }
}

TEST_P(LyingLine, BytesThatNobodySentAreNoMarks) {
  for (std::size_t i = 0; i < good.answers.size(); ++i) {
    const std::size_t end = i + 1 < good.answers.size() ? good.answers[i + 1] : good.delivered;
    for (const char byte : {'X', '0', '7', ' ', '\r', '\n', '\x15', '\0', '\xFF'}) {
      const std::string what = " answer at byte " + std::to_string(good.answers[i]) + ", byte " +
                               std::to_string(static_cast<unsigned char>(byte));
      Check(RunBatch(GetParam(), {.alien = {{good.answers[i], false, byte}}}), "before" + what);
      Check(RunBatch(GetParam(), {.alien = {{end - 1, true, byte}}}), "behind" + what);
      if (HasFailure()) return;
    }
  }
}

class Contract : public ::testing::TestWithParam<teskReaderType> {
 protected:
  void SetUp() override {
    good = Session(GetParam()).Run();
    ASSERT_TRUE(good.started && good.read) << "the model's own simulator was not read";
  }

  // What holds of every session, whatever the port did.
  void Check(const Outcome& outcome, const std::string& what) const {
    EXPECT_FALSE(outcome.hung) << what << ": hangs";
    EXPECT_TRUE(outcome.closed) << what << ": the port was left open";
    if (outcome.read) return;
    EXPECT_EQ(outcome.side1, kUntouched) << what << ": a failed read changed side 1";
    EXPECT_EQ(outcome.side2, kUntouched) << what << ": a failed read changed side 2";
  }

  // As Check; and what was read is right.
  void CheckMarks(const Outcome& outcome, const std::string& what) const {
    Check(outcome, what);
    if (!outcome.read) return;
    EXPECT_EQ(outcome.side1, good.side1) << what << ": wrong marks on side 1";
    EXPECT_EQ(outcome.side2, good.side2) << what << ": wrong marks on side 2";
  }

  Outcome good;
};

TEST_P(Contract, SilentScannerEndsEveryWait) {
  Session session(GetParam());
  session.behaviour.silentAfter = 0;
  const Outcome outcome = session.Run();
  Check(outcome, "silence");
  EXPECT_FALSE(outcome.read);
}

TEST_P(Contract, EveryCutOfAGoodSessionFailsOrReadsRight) {
  for (std::size_t cut = 0; cut < good.delivered; ++cut) {
    Session session(GetParam());
    session.behaviour.silentAfter = cut;
    CheckMarks(session.Run(), "cut after byte " + std::to_string(cut));
    if (HasFailure()) return;
  }
}

TEST_P(Contract, DeviceThatVanishesIsAnErrorAtOnce) {
  for (std::size_t cut = 0; cut < good.delivered; ++cut) {
    Session session(GetParam());
    session.behaviour.goneAfter = cut;
    const Outcome outcome = session.Run();
    const std::string what = "gone after byte " + std::to_string(cut);
    CheckMarks(outcome, what);
    EXPECT_TRUE(outcome.read || outcome.messages > 0) << what << ": nobody was told";
    EXPECT_LT(outcome.endedAt, good.endedAt + 5s) << what << ": waited for a device that is gone";
    if (HasFailure()) return;
  }
}

TEST_P(Contract, EverySplitOfAGoodSessionReadsTheSame) {
  for (std::size_t split = 1; split < good.delivered; ++split) {
    Session session(GetParam());
    session.behaviour.pauseAfter = split;
    const Outcome outcome = session.Run();
    CheckMarks(outcome, "split after byte " + std::to_string(split));
    EXPECT_TRUE(outcome.read) << "split after byte " << split;
    if (HasFailure()) return;
  }
}

TEST_P(Contract, BytesOneByOneReadTheSame) {
  Session session(GetParam());
  session.behaviour.chunk = 1;
  const Outcome outcome = session.Run();
  CheckMarks(outcome, "one by one");
  EXPECT_TRUE(outcome.read);
}

TEST_P(Contract, CancelAtEveryPollLeavesTheRightMarksOrNone) {
  for (int turn = 1; turn <= good.turns; ++turn) {
    Session session(GetParam());
    session.cancelAtTurn = turn;
    CheckMarks(session.Run(), "cancelled at turn " + std::to_string(turn));
    if (HasFailure()) return;
  }
}

TEST_P(Contract, CancelEndsTheWaitForBytesThatNeverComeQuicklyAndQuietly) {
  // The pauses that protocols prescribe after a sheet's end may still pass.
  constexpr auto kQuickly = 3s;
  for (std::size_t cut = 0; cut < good.delivered; cut += 1 + good.delivered / 60) {
    Session dead(GetParam());
    dead.behaviour.silentAfter = cut;
    dead.cancelAtTurn = std::max(1, dead.Run().turns / 2);
    dead.scanner = nullptr;
    const Outcome outcome = dead.Run();
    const std::string what = "silent after byte " + std::to_string(cut) + ", cancelled";
    CheckMarks(outcome, what);
    EXPECT_LT(outcome.endedAt - outcome.cancelledAt.value_or(0ms), kQuickly) << what;
    EXPECT_EQ(outcome.messages, outcome.messagesBefore) << what;
    if (HasFailure()) return;
  }
}

TEST_P(Contract, DrippingLineIsLeftAtACancel) {
  // A byte every 15 ms, for ever: never silent, never whole.
  class Dripper : public simulator::Scanner {
    void OnByte(std::uint8_t, simulator::Time now) override {
      for (int i = 1; i <= 2000; ++i) Reply("\r", now, simulator::Milliseconds(15 * i));
    }
  };
  for (const int turn : {3, 40, 200}) {
    Session session(GetParam());
    session.scanner = std::make_shared<Dripper>();
    session.cancelAtTurn = turn;
    const Outcome outcome = session.Run();
    Check(outcome, "dripping");
    if (outcome.cancelledAt) {
      EXPECT_LT(outcome.endedAt - *outcome.cancelledAt, 5s) << "turn " << turn;
    }
  }
}

TEST_P(Contract, GarbageNeverHangsOrTouchesTheArraysOfAFailedRead) {
  using simulator::Milliseconds;
  const std::pair<std::size_t, Milliseconds> kKinds[] = {
      {1, Milliseconds(0)}, {60, Milliseconds(0)}, {900, Milliseconds(0)}, {60, Milliseconds(12'000)}};
  for (std::uint32_t seed = 1; seed <= 25; ++seed) {
    for (const auto& [length, delay] : kKinds) {
      Session session(GetParam());
      session.scanner = std::make_shared<Babbler>(seed, length, delay);
      Check(session.Run(), "garbage of " + std::to_string(length) + " bytes, seed " + std::to_string(seed));
      if (HasFailure()) return;
    }
  }
}

std::string_view Terminators(teskReaderType type) {
  const Family family = ModelOf(type).family;
  if (family == Family::SekonicSerial) return "\r ,";
  if (family == Family::OpScan) return "\r\n\x15";
  return family == Family::ScanMark ? "\r" : "\r\n";
}

TEST_P(LyingLine, BytesDamagedIntoTerminatorsEndNoSheet) {
  for (std::size_t at = 0; at < good.delivered; at += Step()) {
    for (const char byte : Terminators(GetParam().type)) {
      Batch batch = RunBatch(GetParam(), {.damage = {{at, byte}}});
      // A status that says nothing known refuses the sheet in silence.
      batch.toldOfEveryFailure = batch.toldOfEveryFailure || !InData(at);
      Check(batch, "byte " + std::to_string(at) + " damaged into " + std::to_string(int{byte}));
      if (HasFailure()) return;
    }
  }
}

// The forms of which a single alien byte in the middle of an answer is to be noticed as well.
class LyingForm : public LyingLine {};

TEST_P(LyingForm, OneAlienByteAnywhereIsNoMark) {
  for (std::size_t at = 0; at < good.delivered; at += Step()) {
    for (const char byte : std::string("X7 \r,")) {
      Batch batch = RunBatch(GetParam(), {.alien = {{at, false, byte}}});
      batch.toldOfEveryFailure = true;  // a status that nobody knows refuses the sheet in silence
      Check(batch, "before byte " + std::to_string(at) + " " + std::to_string(int{byte}));
      if (HasFailure()) return;
    }
  }
}

void Windows(Bench& b) {
  b.AddWindow({1, 1, 3, 1, 1, 12, 1, 1});
  b.AddWindow({2, 1, 2, 2, 2, 5, 2, 1});
  b.AddWindow({2, 2, 2, 1, 1, 9, 1, 1});
}

const Form kForms[] = {
    {"Sr607Windows", teskReaderTypeScanningSystemsSR607, Windows},
    {"Sr601Windows", teskReaderTypeScanningSystemsSR601,
     [](Bench& b) {
       b.AddWindow({1, 1, 2, 1, 1, 9, 1, 1});
       b.AddWindow({1, 3, 1, 1, 4, 9, 1, 1});
     }},
    {"Sr607Barcodes",
     teskReaderTypeScanningSystemsSR607,
     [](Bench& b) {
       b.AddBarcodes(2);
       b.reader->SetSleepTime(1);  // the prescribed pause is not to cover the answer
     },
     {"471", "A11 "}},
    {"Sr700OneSideOfTwoHeads", teskReaderTypeScanningSystemsSR700352,
     [](Bench& b) {
       b.reader->SetDuplexForm(false);
       b.reader->SetRejecter(true);
     }},
    {"ScanMarkWindows", teskReaderTypeScantronScanMark2500, Windows},
};

std::string NameOf(teskReaderType type) {
  std::string name;
  for (const ReaderTypeName& entry : ReaderTypeNames()) {
    if (entry.type == type) name = entry.enumerator.substr(14);
  }
  return name;
}

std::vector<Form> Pages() {
  std::vector<Form> pages;
  for (const teskReaderType type : SerialTypesWithADriver()) pages.push_back({NameOf(type), type});
  return pages;
}

const auto kNameOfType = [](const auto& info) { return NameOf(info.param); };
const auto kNameOfForm = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(AllSerialReaders, Contract, ::testing::ValuesIn(SerialTypesWithADriver()),
                         kNameOfType);
INSTANTIATE_TEST_SUITE_P(AllSerialReaders, LyingLine, ::testing::ValuesIn(Pages()), kNameOfForm);
INSTANTIATE_TEST_SUITE_P(Forms, LyingLine, ::testing::ValuesIn(kForms), kNameOfForm);
INSTANTIATE_TEST_SUITE_P(Forms, LyingForm, ::testing::ValuesIn(kForms), kNameOfForm);

}  // namespace
}  // namespace tesk::test
