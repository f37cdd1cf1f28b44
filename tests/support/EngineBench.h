// An engine over a dispatch that only records what it is asked: what the engine itself does, without drivers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TestBench.h"

namespace tesk::test {

// "Init Read Close".
inline std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// A dispatch that answers as told and keeps the calls in order.
class FakeDispatch : public ReaderDispatch {
 public:
  bool ReaderInit(clsTeskReader& reader) override { return Answer("Init", reader, init); }
  bool ReaderClose(clsTeskReader& reader) override { return Answer("Close", reader, true); }
  bool ReaderRead(clsTeskReader& reader) override {
    const bool result = sheets != 0;
    if (sheets > 0) --sheets;
    if (inEveryCall) inEveryCall();
    if (onRead) onRead(reader);
    if (result) reader.StoreSheet(Numbered(++fed));
    return Answer("Read", reader, result);
  }
  bool ReaderPrint(clsTeskReader&, bool skip, bool& disposed) override {
    if (inEveryCall) inEveryCall();
    calls.emplace_back(skip ? "Print(skip)" : "Print");
    if (printDisposes) disposed = skip;
    return print;
  }
  void ReaderReject(clsTeskReader&) override { calls.emplace_back("Reject"); }
  void ReaderEject(clsTeskReader&, bool& disposed) override {
    if (inEveryCall) inEveryCall();
    calls.emplace_back("Eject");
    if (ejectFails) disposed = false;
  }

  // A sheet whose mark, timing marks and text are its number.
  static Sheet Numbered(std::int16_t number) {
    Sheet sheet{.side1 = SideArray(1, 1), .side1TimingMarks = number, .texts = {std::to_string(number)}};
    sheet.side1.At(1, 1) = number;
    return sheet;
  }

  std::vector<std::string> calls;
  std::int16_t fed = 0;
  int sheets = -1;  // how many there are; below 0: any number
  bool init = true;
  bool print = true;
  bool printDisposes = false;
  bool ejectFails = false;
  std::function<void(clsTeskReader&)> onRead;
  std::function<void()> inEveryCall;

 private:
  bool Answer(const char* call, clsTeskReader& reader, bool result) {
    if (inEveryCall && result) inEveryCall();
    calls.emplace_back(call);
    if (!result) reader.SetCancelScan(true);
    return result;
  }
};

// An engine without hardware and a host that records. Beside it another engine, of another family, reads a
// sheet of its own in every call of the first one's driver.
class EngineTest : public ::testing::Test {
 protected:
  EngineTest() {
    reader->AddEvents(events);
    neighbour->SetReaderType(teskReaderTypeSekonicSR430);
    neighbour->SetCancelScan(false);
    dispatch->inEveryCall = [this] { NeighbourReads(); };
  }
  ~EngineTest() override {
    if (reader) reader->RemoveEvents(events);
    dispatch->inEveryCall = nullptr;
  }

  // Its communications form has nothing connected to it.
  std::shared_ptr<clsTeskReader> NewReader() const { return NewReader(dispatch); }
  static std::shared_ptr<clsTeskReader> NewReader(std::shared_ptr<ReaderDispatch> dispatch) {
    auto time = std::make_shared<VirtualTime>();
    auto form = CreateReader(ReaderParts{.serial = nullptr, .loop = time, .clock = time})->fComm();
    return std::make_shared<clsTeskReader>(
        EngineSeams{.comm = form, .loop = time, .clock = time, .dispatch = std::move(dispatch)});
  }

  void NeighbourReads() {
    const int sheet = neighbourDispatch->fed + 1;
    EXPECT_TRUE(neighbour->ReadPage());
    EXPECT_EQ(neighbour->Side1Array().At(1, 1), sheet);
    EXPECT_EQ(neighbour->Side1TimingMarks(), sheet);
    EXPECT_EQ(neighbour->ReaderType(), teskReaderTypeSekonicSR430);
  }

  void ActivatePrinter() {
    reader->SetReaderType(teskReaderTypeNCSOpScan2);
    reader->Printer()->SetEnabled(true);
    reader->Printer()->SetActive(true);
  }

  RecordingHost host;
  RecordingEvents events;
  std::shared_ptr<FakeDispatch> dispatch = std::make_shared<FakeDispatch>();
  std::shared_ptr<clsTeskReader> reader = NewReader();
  std::shared_ptr<FakeDispatch> neighbourDispatch = std::make_shared<FakeDispatch>();
  std::shared_ptr<clsTeskReader> neighbour = NewReader(neighbourDispatch);
};

}  // namespace tesk::test
