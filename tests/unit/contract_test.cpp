// The contract that every serial driver keeps with a port that misbehaves, generated over all reader types
// that have a driver: nothing hangs, a failed read leaves the engine's arrays as they were, a read that
// succeeds has the marks of the sheet, and the port is closed at the end.
#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <gtest/gtest.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "profiles/models.h"
#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

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

// How sheets are read. The types that have a driver are read by whole pages; some read by other forms as well.
struct Form {
  std::string name;
  teskReaderType type;
  void (*set)(Bench&) = [](Bench&) {};
  BarcodeArray barcodes = {};  // on every sheet; empty: as the sheets come
};

std::vector<simulator::Sheet> Stock(const Form& form, int sheets) {
  if (FamilyOf(form.type).marksAlone) return simulator::GenerateSheets(sheets, 5, {kRows, 12, false}, 255);
  auto stock = simulator::GenerateSheets(sheets, 5, {kRows, 48, true}, 9);
  for (auto& sheet : stock) sheet.barcodes = form.barcodes.empty() ? sheet.barcodes : form.barcodes;
  return stock;
}

struct Read {
  SideArray side1;
  SideArray side2;
  std::int16_t marks1;
  std::int16_t marks2;
  BarcodeArray texts;
  bool operator==(const Read&) const = default;
};

// What a host has of so many sheets, which it reads on after a failure, as operators do.
struct Session {
  int sheets = 3;
  PortBehaviour behaviour = {};
  std::shared_ptr<simulator::Scanner> scanner = nullptr;  // empty: the model's own simulator
  int cancelAtTurn = 0;                                   // 0: never
};

struct Outcome {
  std::vector<Read> sheets;
  bool failed = false;
  bool untouched = true;  // the arrays, by every failed read
  bool toldOfEveryFailure = true;
  bool hung = false;
  bool closed = false;
  int turns = 0;
  std::size_t told = 0;
  std::size_t toldBefore = 0;  // the cancel
  std::optional<Milliseconds> cancelledAt;
  Milliseconds endedAt{};
  std::size_t delivered = 0;
  std::vector<std::size_t> answers;  // where in the scanner's bytes each answer begins
};

std::size_t Told(const Bench& bench) { return bench.host.messages.size() + bench.host.errors.size(); }

// The host gives up after ten minutes, or at the turn that the case names. A driver that does not notice is stopped by
// force and has hung.
void Watch(Bench& bench, int cancelAtTurn, Outcome& outcome) {
  bench.time->onMessages = [&bench, &outcome, cancelAtTurn](int turn) {
    outcome.turns = turn;
    if (turn == cancelAtTurn || bench.time->Elapsed() > 10min) {
      bench.reader->SetCancelScan(true);
      if (!outcome.cancelledAt) outcome.toldBefore = Told(bench);
      if (!outcome.cancelledAt) outcome.cancelledAt = bench.time->Elapsed();
    }
    if (bench.time->Elapsed() > 60min) throw std::runtime_error("hangs");
  };
}

// One read. False where the host has to start anew.
bool ReadOne(Bench& bench, Outcome& outcome) {
  clsTeskReader& reader = *bench.reader;
  const std::size_t told = Told(bench);
  const SideArray side1 = reader.Side1Array();
  const SideArray side2 = reader.Side2Array();
  if (reader.ReadPage()) {
    // OpScan readers warn of lines of a wrong length and go on: the operator has been told.
    if (Told(bench) == told) {
      outcome.sheets.push_back({reader.Side1Array(), reader.Side2Array(), reader.Side1TimingMarks(),
                                reader.Side2TimingMarks(), reader.BarcodeTexts()});
    }
    reader.EjectPage();
    return true;
  }
  outcome.untouched = outcome.untouched && reader.Side1Array() == side1 && reader.Side2Array() == side2;
  outcome.toldOfEveryFailure = outcome.toldOfEveryFailure && Told(bench) != told;
  return false;
}

void Drive(Bench& bench, int sheets, Outcome& outcome) {
  bool running = bench.reader->StartReader();
  outcome.failed = !running;
  for (int left = sheets; left > 0 && bench.time->Elapsed() < 9min; --left) {
    if (running && ReadOne(bench, outcome)) continue;
    outcome.failed = true;
    bench.reader->EndReader();
    running = left > 1 && bench.reader->StartReader();
  }
  bench.reader->EndReader();
}

Outcome Played(const Form& form, const Session& session) {
  std::shared_ptr<simulator::Scanner> scanner = session.scanner;
  if (!scanner) scanner = simulator::CreateScanner(form.type, {.sheets = Stock(form, session.sheets)});
  Bench bench(form.type, scanner);
  bench.serial->behaviour = session.behaviour;
  bench.SetExtents(kRows, 3, bench.reader->Duplex());
  bench.reader->StoreSheet({.side1 = kUntouched, .side2 = kUntouched});
  form.set(bench);
  Outcome outcome;
  Watch(bench, session.cancelAtTurn, outcome);
  outcome.hung = Attempt([&] { Drive(bench, session.sheets, outcome); }).has_value();
  outcome.closed = !bench.serial->open;
  outcome.told = Told(bench);
  outcome.endedAt = bench.time->Elapsed();
  for (const auto& traffic : scanner->Transcript()) {
    if (traffic.direction == simulator::Direction::FromHost) continue;
    outcome.answers.push_back(outcome.delivered);
    outcome.delivered += traffic.bytes.size();
  }
  return outcome;
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

class Contract : public ::testing::TestWithParam<Form> {
 protected:
  void SetUp() override {
    good = Of({.sheets = sheets});
    ASSERT_EQ(good.sheets.size(), static_cast<std::size_t>(sheets))
        << "the model's own simulator was not read";
    ASSERT_FALSE(good.failed);
  }

  static Outcome Of(const Session& session) { return Played(GetParam(), session); }
  // With these marks or none, whatever the port did: nothing hangs, stays open or is changed by a failed read.
  void Check(const Outcome& outcome, const std::string& what) const {
    EXPECT_FALSE(outcome.hung) << what << ": hangs";
    EXPECT_TRUE(outcome.closed) << what << ": the port was left open";
    EXPECT_TRUE(outcome.untouched) << what << ": a failed read changed the arrays";
    const bool right = GetParam().barcodes.empty()
                           ? InOrder(outcome.sheets, good.sheets)
                           : InOrder(WithoutTexts(outcome.sheets), WithoutTexts(good.sheets));
    EXPECT_TRUE(right) << what << ": a sheet that is not of this stack";
  }

  Outcome good;
  int sheets = 1;
};

// Whole batches on a line that lies.
class LyingLine : public Contract {
 protected:
  LyingLine() { sheets = 3; }

  // The marks are right, or the sheet is refused and somebody is told.
  Outcome Lie(const PortBehaviour& behaviour, const std::string& what, bool tells = true) const {
    const Outcome batch = Of({.behaviour = behaviour});
    Check(batch, what);
    EXPECT_TRUE(batch.toldOfEveryFailure || !tells) << what << ": refused without a word";
    return batch;
  }

  // Whether this byte of the scanner's belongs to a sheet's data, by the length of its answer.
  bool InData(std::size_t at) const {
    constexpr std::size_t kLongestStatus = 60;
    const auto end = std::upper_bound(good.answers.begin(), good.answers.end(), at);
    return (end == good.answers.end() ? good.delivered : *end) - *(end - 1) > kLongestStatus;
  }

  // The sanitizers see the same code in fewer places.
  std::size_t Step() const { return std::getenv("TESKREAD_QUICK") != nullptr ? 7 : 1; }
};

TEST_P(LyingLine, EveryAnswerInTwoPiecesReadsTheSame) {
  for (std::size_t cut = 1; cut < good.delivered && !HasFailure(); cut += Step()) {
    const std::string what = "pause after byte " + std::to_string(cut);
    EXPECT_EQ(Lie({.pauseAfter = cut, .pause = 500ms}, what).sheets, good.sheets) << what;
  }
}

TEST_P(LyingLine, LateAnswersAreNeverTakenForOthers) {
  for (const std::size_t answer : good.answers) {
    for (const auto late : {900ms, 9900ms, 10100ms, 11000ms, 25000ms}) {
      if (HasFailure()) return;
      // A scanner that goes on feeding while its line is dead takes sheets that nobody asks for again.
      const bool tells = ModelOf(GetParam().type).family != Family::Chatsworth;
      Lie({.pauseAfter = answer, .pause = late},
          "answer at byte " + std::to_string(answer) + " late by " + std::to_string(late.count()), tells);
    }
  }
}

TEST_P(LyingLine, BytesThatNobodySentAreNoMarks) {
  for (std::size_t i = 0; i < good.answers.size(); ++i) {
    const std::size_t end = i + 1 < good.answers.size() ? good.answers[i + 1] : good.delivered;
    for (const char byte : {'X', '0', '7', ' ', '\r', '\n', '\x15', '\0', '\xFF'}) {
      if (HasFailure()) return;
      const std::string what =
          " answer at byte " + std::to_string(good.answers[i]) + ", " + Caret({&byte, 1});
      Lie({.alien = {{good.answers[i], false, byte}}}, "before" + what);
      Lie({.alien = {{end - 1, true, byte}}}, "behind" + what);
    }
  }
}

std::string_view Terminators(teskReaderType type) {
  const Family family = ModelOf(type).family;
  if (family == Family::SekonicSerial) return "\r ,";
  if (family == Family::OpScan) return "\r\n\x15";
  return family == Family::ScanMark ? "\r" : "\r\n";
}

// A status that says nothing known refuses the sheet in silence.
TEST_P(LyingLine, BytesDamagedIntoTerminatorsEndNoSheet) {
  for (std::size_t at = 0; at < good.delivered && !HasFailure(); at += Step()) {
    for (const char byte : Terminators(GetParam().type)) {
      Lie({.damage = {{at, byte}}}, "byte " + std::to_string(at) + " damaged into " + Caret({&byte, 1}),
          InData(at));
    }
  }
}

// The forms of which a single alien byte in the middle of an answer is to be noticed as well.
class LyingForm : public LyingLine {};

TEST_P(LyingForm, OneAlienByteAnywhereIsNoMark) {
  for (std::size_t at = 0; at < good.delivered && !HasFailure(); at += Step()) {
    for (const char byte : std::string("X7 \r,")) {
      Lie({.alien = {{at, false, byte}}}, "before byte " + std::to_string(at) + " " + Caret({&byte, 1}),
          false);
    }
  }
}

TEST_P(Contract, EveryCutOfAGoodSessionFailsOrReadsRight) {
  for (std::size_t cut = 0; cut < good.delivered && !HasFailure(); ++cut) {
    const Outcome outcome = Of({.sheets = 1, .behaviour = {.silentAfter = cut}});
    Check(outcome, "cut after byte " + std::to_string(cut));
    EXPECT_TRUE(cut > 0 || outcome.sheets.empty());
  }
}

TEST_P(Contract, DeviceThatVanishesIsAnErrorAtOnce) {
  for (std::size_t cut = 0; cut < good.delivered && !HasFailure(); ++cut) {
    const Outcome outcome = Of({.sheets = 1, .behaviour = {.goneAfter = cut}});
    const std::string what = "gone after byte " + std::to_string(cut);
    Check(outcome, what);
    EXPECT_TRUE(!outcome.failed || outcome.told > 0) << what << ": nobody was told";
    EXPECT_LT(outcome.endedAt, good.endedAt + 5s) << what << ": waited for a device that is gone";
  }
}

TEST_P(Contract, EverySplitOfAGoodSessionAndBytesOneByOneReadTheSame) {
  for (std::size_t split = 0; split < good.delivered && !HasFailure(); ++split) {
    const PortBehaviour oneByOne{.chunk = 1};
    const Outcome outcome =
        Of({.sheets = 1, .behaviour = split == 0 ? oneByOne : PortBehaviour{.pauseAfter = split}});
    EXPECT_EQ(outcome.sheets, good.sheets) << "split after byte " << split;
  }
}

TEST_P(Contract, CancelAtEveryPollLeavesTheRightMarksOrNone) {
  for (int turn = 1; turn <= good.turns && !HasFailure(); ++turn) {
    Check(Of({.sheets = 1, .cancelAtTurn = turn}), "cancelled at turn " + std::to_string(turn));
  }
}

TEST_P(Contract, CancelEndsTheWaitForBytesThatNeverComeQuicklyAndQuietly) {
  // The pauses that protocols prescribe after a sheet's end may still pass.
  constexpr auto kQuickly = 3s;
  for (std::size_t cut = 0; cut < good.delivered && !HasFailure(); cut += 1 + good.delivered / 60) {
    Session dead{.sheets = 1, .behaviour = {.silentAfter = cut}};
    dead.cancelAtTurn = std::max(1, Of(dead).turns / 2);
    const Outcome outcome = Of(dead);
    const std::string what = "silent after byte " + std::to_string(cut) + ", cancelled";
    Check(outcome, what);
    EXPECT_LT(outcome.endedAt - outcome.cancelledAt.value_or(0ms), kQuickly) << what;
    EXPECT_EQ(outcome.told, outcome.toldBefore) << what;
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
    const Outcome outcome = Of({.sheets = 1, .scanner = std::make_shared<Dripper>(), .cancelAtTurn = turn});
    EXPECT_FALSE(outcome.hung || !outcome.closed || !outcome.untouched) << turn;
    if (outcome.cancelledAt) {
      EXPECT_LT(outcome.endedAt - *outcome.cancelledAt, 5s) << "turn " << turn;
    }
  }
}

TEST_P(Contract, GarbageNeverHangsOrTouchesTheArraysOfAFailedRead) {
  using simulator::Milliseconds;
  const std::pair<std::size_t, Milliseconds> kKinds[] = {
      {1, Milliseconds(0)}, {60, Milliseconds(0)}, {900, Milliseconds(0)}, {60, Milliseconds(12'000)}};
  for (std::uint32_t seed = 1; seed <= 25 && !HasFailure(); ++seed) {
    for (const auto& [length, delay] : kKinds) {
      const Outcome outcome = Of({.sheets = 1, .scanner = std::make_shared<Babbler>(seed, length, delay)});
      EXPECT_FALSE(outcome.hung || !outcome.closed || !outcome.untouched)
          << "garbage of " << length << " bytes, seed " << seed;
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

const auto kNameOfForm = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(AllSerialReaders, Contract, ::testing::ValuesIn(Pages()), kNameOfForm);
INSTANTIATE_TEST_SUITE_P(AllSerialReaders, LyingLine, ::testing::ValuesIn(Pages()), kNameOfForm);
INSTANTIATE_TEST_SUITE_P(Forms, LyingLine, ::testing::ValuesIn(kForms), kNameOfForm);
INSTANTIATE_TEST_SUITE_P(Forms, LyingForm, ::testing::ValuesIn(kForms), kNameOfForm);

}  // namespace
}  // namespace tesk::test
