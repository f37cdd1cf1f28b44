// An engine over a driver and a host that only play a part: what the engine itself does, in one account.
#pragma once

#include <cctype>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TestBench.h"

namespace tesk::test {

// The engine's driver routines, port search, setup dialog and sink of events. Each notes itself, and may call
// the engine then. Sheets are numbered, and each has its number as its mark, its timing marks and its text.
class EngineBench : public ReaderEvents, public ReaderDispatch, public PortSearch {
 public:
  // With an imprinter that is active.
  EngineBench() {
    reader->AddEvents(*this);
    reader->SetReaderType(teskReaderTypeNCSOpScan2);
    reader->Printer()->SetEnabled(true);
    reader->Printer()->SetActive(true);
    host.onError = [this] { Note("error" + std::to_string(host.errors.back().number)); };
  }
  EngineBench(const EngineBench&) = delete;
  EngineBench& operator=(const EngineBench&) = delete;
  ~EngineBench() override {
    host.onError = nullptr;
    if (reader) reader->RemoveEvents(*this);
  }

  // Makes calls, one for each letter, and tells what happened in its order, with the answers.
  //   s StartReader   r ReadPage   p ReadPage(True)   e EjectPage   j RejectPage   x EndReader   l Locate
  //   f Firmware   b ReadBatch   B ReadBatch(True), both with the digit that follows as limit
  //   c cancels   0-9 the count   m the highest count   a turns the imprinter on or off   n takes it away
  //   o lets go of the reader
  std::string Do(std::string_view calls) {
    const std::weak_ptr<clsTeskReader> watch = reader;
    Call(calls);
    const auto left = watch.lock();
    if (left ? left->CancelScan() : !reader) happened += left ? " cancelled" : " gone";
    return std::exchange(happened, {}).substr(1);
  }

  // Its communications form has nothing connected to it.
  std::shared_ptr<clsTeskReader> NewReader() {
    auto time = std::make_shared<VirtualTime>();
    auto form = CreateReader(ReaderParts{.serial = nullptr, .loop = time, .clock = time})->fComm();
    const std::shared_ptr<EngineBench> self(std::shared_ptr<void>(), this);  // not owned: the test does
    return std::make_shared<clsTeskReader>(
        EngineSeams{.comm = form, .loop = time, .clock = time, .dispatch = self, .portSearch = self});
  }

  RecordingHost host;
  std::shared_ptr<clsTeskReader> reader = NewReader();
  // By what is noted: the calls that are made there the first time. ! turns the driver's answer or the event's
  // argument round.
  std::map<std::string, std::string> does;
  std::string happened;

 private:
  void Call(std::string_view calls) {
    clsTeskReader& r = *engine_;
    for (std::size_t i = 0; i < calls.size(); ++i) {
      const char call = calls[i];
      std::string text;
      const bool limited =
          i + 1 < calls.size() && std::isdigit(static_cast<unsigned char>(calls[i + 1])) != 0;
      if (call == 's') Answered("s", r.StartReader());
      if (call == 'r' || call == 'p') {
        const bool ok = r.ReadPage(call == 'p');
        Answered({call}, ok, std::to_string(r.Side1TimingMarks()));
      }
      if (call == 'e') r.EjectPage();
      if (call == 'j') r.RejectPage();
      if (call == 'x') Answered("x", r.EndReader());
      if (call == 'l') Answered("l", r.Locate());
      if (call == 'f') Answered("f", r.Firmware(text));
      if (call == 'b' || call == 'B') {
        const bool ok = r.ReadBatch(call == 'B', limited ? calls[++i] - '0' : -1, count_);
        Answered({call}, ok, std::to_string(count_));
      }
      if (call == 'c') r.SetCancelScan(true);
      if (call >= '0' && call <= '9') count_ = call - '0';
      if (call == 'm') count_ = std::numeric_limits<std::int32_t>::max();
      if (call == 'a') r.Printer()->SetActive(!r.Printer()->Active());
      if (call == 'n') r.SetPrinter(nullptr);
      if (call == 'o') reader.reset();
    }
  }
  void Answered(const std::string& call, bool ok, const std::string& shown = {}) {
    happened += " " + call + (ok ? "+" : "-") + shown;
  }

  // True: the answer or the argument is to be turned round.
  bool Note(const std::string& what) {
    happened += " " + what;
    const auto found = does.extract(what);
    if (found) Call(found.mapped());
    return found && found.mapped().find('!') != std::string::npos;
  }
  // With the number of the sheet that the reader shows, and nothing else than that sheet.
  bool NoteSheet(const std::string& event) {
    const std::int16_t sheet = engine_->Side1TimingMarks();
    const std::string number = std::to_string(sheet);
    EXPECT_EQ(engine_->Side1Array().At(1, 1), sheet) << event << number;
    EXPECT_EQ(engine_->BarcodeTexts(), BarcodeArray{number}) << event << number;
    return Note(event + number);
  }

  void BeforeSheet(bool& print) override { print = print != Note(print ? "Before+" : "Before"); }
  void PreprocessSheet(SideArray& side1, SideArray&, BarcodeArray& texts, bool& reject) override {
    EXPECT_TRUE(side1 == engine_->Side1Array() && texts == engine_->BarcodeTexts());
    reject = NoteSheet("Pre");
  }
  void ReadSheet(SideArray& side1, SideArray&, BarcodeArray& texts, const std::string&, const std::string&,
                 const std::string&, const std::string&) override {
    EXPECT_TRUE(side1 == engine_->Side1Array() && texts == engine_->BarcodeTexts());
    NoteSheet("Read");
  }
  void BeforePrint(bool& cancel) override { cancel = NoteSheet("BeforePrint"); }
  void AfterPrint() override { NoteSheet("AfterPrint"); }
  void AfterSheet(bool& cancel) override { cancel = cancel != NoteSheet("After"); }

  bool ReaderInit(clsTeskReader& r) override { return Succeeds(r, "init"); }
  bool ReaderClose(clsTeskReader& r) override { return Succeeds(r, "close"); }
  bool ReaderRead(clsTeskReader& r) override {
    const auto number = static_cast<std::int16_t>(fed_ + 1);
    if (!Succeeds(r, "feed" + std::to_string(number))) return r.SetSide1TimingMarks(-1), false;
    Sheet sheet{.side1 = SideArray(1, 1), .side1TimingMarks = number, .texts = {std::to_string(number)}};
    sheet.side1.At(1, 1) = fed_ = number;
    r.StoreSheet(std::move(sheet));
    return true;
  }
  // A print that fails though it only was to send the sheet on has sent it on.
  bool ReaderPrint(clsTeskReader&, bool skip, bool& disposed) override {
    const bool fails = Note(skip ? "print(skip)" : "print");
    disposed = disposed || (skip && fails);
    return !fails;
  }
  void ReaderReject(clsTeskReader&) override { Note("reject"); }
  void ReaderEject(clsTeskReader&, bool& disposed) override { disposed = !Note("eject"); }
  bool Locate(clsTeskReader& r, std::int16_t) override { return Succeeds(r, "locate"); }
  bool Firmware(clsTeskReader& r, std::string&) override { return Succeeds(r, "firmware"); }
  bool Succeeds(clsTeskReader& r, const std::string& call) {
    const bool fails = Note(call);
    if (fails) r.SetCancelScan(true);
    return !fails;
  }

  clsTeskReader* engine_ = reader.get();  // while calls run that outlive the last reference
  std::int16_t fed_ = 0;
  std::int32_t count_ = 0;
};

struct EngineCase {
  const char* calls;
  const char* does;  // "Read1:ej feed2:!"
  const char* happens;
};

inline void Play(const std::vector<EngineCase>& cases) {
  for (const EngineCase& c : cases) {
    EngineBench bench;
    std::istringstream does(c.does);
    for (std::string one; does >> one;)
      bench.does[one.substr(0, one.find(':'))] = one.substr(one.find(':') + 1);
    EXPECT_EQ(bench.Do(c.calls), c.happens) << c.calls << " where " << c.does;
  }
}

}  // namespace tesk::test
