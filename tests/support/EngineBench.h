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

// A dispatch that answers as told and keeps the calls in order.
class FakeDispatch : public ReaderDispatch {
 public:
  bool ReaderInit(clsTeskReader& reader) override { return Answer("Init", reader, init); }
  bool ReaderClose(clsTeskReader& reader) override { return Answer("Close", reader, true); }
  bool ReaderRead(clsTeskReader& reader) override {
    const bool result = sheets != 0;
    if (sheets > 0) --sheets;
    if (onRead) onRead(reader);
    if (result) reader.StoreSheet(Numbered(++fed));
    return Answer("Read", reader, result);
  }
  bool ReaderPrint(clsTeskReader&, bool skip, bool& disposed) override {
    calls.emplace_back(skip ? "Print(skip)" : "Print");
    if (printDisposes) disposed = skip;
    return print;
  }
  void ReaderReject(clsTeskReader&) override { calls.emplace_back("Reject"); }
  void ReaderEject(clsTeskReader&, bool& disposed) override {
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

 private:
  bool Answer(const char* call, clsTeskReader& reader, bool result) {
    calls.emplace_back(call);
    if (!result) reader.SetCancelScan(true);
    return result;
  }
};

// An engine without hardware and a host that records.
class EngineTest : public ::testing::Test {
 protected:
  EngineTest() { reader->AddEvents(events); }
  ~EngineTest() override {
    if (reader) reader->RemoveEvents(events);
  }

  // Its communications form has nothing connected to it.
  std::shared_ptr<clsTeskReader> NewReader() const {
    auto time = std::make_shared<VirtualTime>();
    auto form = CreateReader(ReaderParts{.serial = nullptr, .loop = time, .clock = time})->fComm();
    return std::make_shared<clsTeskReader>(
        EngineSeams{.comm = form, .loop = time, .clock = time, .dispatch = dispatch});
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
};

}  // namespace tesk::test
