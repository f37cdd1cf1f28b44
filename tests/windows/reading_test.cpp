// Sheets through the registered server from a real serial port.
#include "tests/windows/Reading.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tesk::test {
namespace {

using Names = std::vector<std::string>;

VARIANT_BOOL& BooleanIn(const HostDispatch::Arguments& arguments, std::size_t place) {
  EXPECT_EQ(VT_BYREF | VT_BOOL, arguments.at(place)->vt);
  return *arguments.at(place)->pboolVal;
}

SAFEARRAY*& ArrayIn(const HostDispatch::Arguments& arguments, std::size_t place, VARTYPE type) {
  EXPECT_EQ(VT_BYREF | VT_ARRAY | type, arguments.at(place)->vt);
  return *arguments.at(place)->pparray;
}

TEST_F(Reading, OfARejectedSheetLeavesOutItsReading) {
  ASSERT_TRUE(Start(kSheetsPort));
  sink->handlers["PreprocessSheet"] = [this](const HostDispatch::Arguments& arguments) {
    BooleanIn(arguments, 3) = VARIANT_TRUE;
    EXPECT_EQ(S_OK, reader->RejectPage());
  };
  ASSERT_TRUE(ReadPage());
  EXPECT_EQ((Names{"BeforeSheet", "PreprocessSheet", "AfterSheet"}), sink->names);
  sink->handlers.clear();
  EXPECT_TRUE(ReadPage()) << "the next sheet comes as always";
}

TEST_F(Reading, HandsWhatOneSinkChangedToTheNextAndToTheNextEvent) {
  ASSERT_TRUE(Start(kSheetsPort));
  const ComPtr<EventSink> second = new EventSink;
  second->Connect(reader.Get());
  sink->handlers["PreprocessSheet"] = [](const HostDispatch::Arguments& arguments) {
    LONG place[] = {2, 3};
    SHORT mark = 4711;
    EXPECT_EQ(S_OK, SafeArrayPutElement(ArrayIn(arguments, 0, VT_I2), place, &mark));
    SAFEARRAY*& barcodes = ArrayIn(arguments, 2, VT_BSTR);
    SafeArrayDestroy(barcodes);
    barcodes = automation::NewArray(BarcodeArray{"first", "zweite \xC3\xA4"});
  };
  int seen = 0;
  const auto check = [&seen](const HostDispatch::Arguments& arguments) {
    ++seen;
    EXPECT_EQ(4711, automation::SideArrayOf(ArrayIn(arguments, 0, VT_I2)).At(2, 3));
    EXPECT_EQ((BarcodeArray{"first", "zweite \xC3\xA4"}),
              automation::BarcodeArrayOf(ArrayIn(arguments, 2, VT_BSTR)));
  };
  second->handlers["PreprocessSheet"] = check;
  second->handlers["ReadSheet"] = check;
  ASSERT_TRUE(ReadPage());
  EXPECT_EQ(2, seen);
  second->Disconnect();
}

TEST_F(Reading, IgnoresWhatASinkLeavesThatIsNoSideArray) {
  ASSERT_TRUE(Start(kSheetsPort));
  sink->handlers["PreprocessSheet"] = [](const HostDispatch::Arguments& arguments) {
    SAFEARRAY*& side = ArrayIn(arguments, 0, VT_I2);
    SafeArrayDestroy(side);
    side = automation::NewArray(BarcodeArray{"no", "marks"});
  };
  ASSERT_TRUE(ReadPage());
  EXPECT_TRUE(PlaceOfSheet(SideOf(reader.Get(), &_clsTeskReader::get_Side1Array)));
}

TEST_F(Reading, CountsABatchToItsLimitOrToWhereAfterSheetEndsIt) {
  ASSERT_TRUE(Start(kSheetsPort));
  ASSERT_TRUE(EndReader());
  EjectEverySheet();
  const struct {
    LONG first, limit;
    std::vector<LONG> counts;
    bool endsItself;
  } batches[] = {{0, 3, {1, 2, 3}, false}, {10, -1, {11, 12}, true}};
  for (const auto& [first, limit, counts, endsItself] : batches) {
    LONG count = first;
    std::vector<LONG> shown;
    sink->handlers["AfterSheet"] = [&](const HostDispatch::Arguments& arguments) {
      shown.push_back(count);
      if (endsItself && shown.size() == 2) BooleanIn(arguments, 0) = VARIANT_TRUE;
    };
    VARIANT_BOOL read = VARIANT_FALSE;
    VARIANT_BOOL cancel = VARIANT_FALSE;
    ASSERT_EQ(S_OK, reader->ReadBatch(VARIANT_FALSE, limit, &count, &read));
    reader->get_CancelScan(&cancel);
    EXPECT_EQ(VARIANT_TRUE, read);
    EXPECT_EQ(counts, shown);
    EXPECT_EQ(counts.back(), count);
    EXPECT_EQ(VARIANT_TRUE, cancel);
  }
}

TEST_F(Reading, GivesASheetThatAnEventReadsAndTheOuterOneOnceEach) {
  ASSERT_TRUE(Start(kSheetsPort));
  bool nested = false;
  sink->handlers["PreprocessSheet"] = [&](const HostDispatch::Arguments&) {
    reader->EjectPage();
    if (!std::exchange(nested, true)) {
      EXPECT_TRUE(ReadPage());
    }
  };
  std::vector<std::size_t> places;
  const auto note = [&](const HostDispatch::Arguments& arguments) {
    const SideArray handed = automation::SideArrayOf(ArrayIn(arguments, 0, VT_I2));
    EXPECT_EQ(handed, SideOf(reader.Get(), &_clsTeskReader::get_Side1Array));
    places.push_back(PlaceOfSheet(handed).value_or(0));
  };
  sink->handlers["ReadSheet"] = note;
  // Called after the first sink has read the inner sheet.
  const ComPtr<EventSink> second = new EventSink;
  second->Connect(reader.Get());
  second->handlers["PreprocessSheet"] = note;
  ASSERT_TRUE(ReadPage());
  ASSERT_EQ(4U, places.size());
  const std::size_t inner = places[0];
  EXPECT_EQ((std::vector<std::size_t>{inner, inner, inner - 1, inner - 1}), places);
  second->Disconnect();
}

TEST_F(Reading, CountsInAScriptsVariableWhereWhatTheHostWritesCountsToo) {
  ASSERT_TRUE(Start(kSheetsPort));
  ASSERT_TRUE(EndReader());
  EjectEverySheet();
  const Variant initialize(false);
  const Variant most(std::int32_t{10});
  Variant counter(std::int32_t{5});
  VARIANT reference = {};
  reference.vt = VT_BYREF | VT_VARIANT;
  reference.pvarVal = &counter;
  std::vector<std::int32_t> shown;
  sink->handlers["AfterSheet"] = [&](const HostDispatch::Arguments&) {
    shown.push_back(automation::Int32Of(counter));
    if (shown.size() == 1) counter.lVal = 9;
  };
  automation::CallMethod(*reader.Get(), L"ReadBatch", {&initialize, &most, &reference});
  EXPECT_EQ((std::vector<std::int32_t>{6, 10}), shown);
  EXPECT_EQ(10, automation::Int32Of(counter));
  const Variant one(std::int32_t{1});
  EXPECT_TRUE(
      automation::BooleanOf(automation::CallMethod(*reader.Get(), L"ReadBatch", {&initialize, &one})));
}

TEST_F(Reading, ReportsAPortThatIsNotThereWithTheAnswerOfTheReport) {
  EXPECT_FALSE(Start(16));
  ASSERT_EQ(1U, errors->reports.size());
  EXPECT_EQ(0U, errors->reports[0].find("8002 Quillon Reader - basRead.ReaderInit "));
}

// ---- Waiting

// What the window messages of the host do while the reader waits for a sheet.
std::function<void()> duringWait;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR timer, DWORD) {
  KillTimer(nullptr, timer);
  if (duringWait) duringWait();
}

class Waiting : public Reading {
 protected:
  // Hand-fed, so that the reader waits for a sheet for ever.
  void StartWaiting(std::function<void()> during) {
    ASSERT_TRUE(Start(kEmptyPort));
    reader->put_Feeder(VARIANT_FALSE);
    duringWait = std::move(during);
    SetTimer(nullptr, 0, 100, OnTimer);
  }
  void TearDown() override {
    duringWait = nullptr;
    Reading::TearDown();
  }
};

TEST_F(Waiting, EndsByCancelScanFromAWindowMessage) {
  StartWaiting([this] { reader->put_CancelScan(VARIANT_TRUE); });
  const ULONGLONG started = GetTickCount64();
  EXPECT_FALSE(ReadPage());
  EXPECT_GT(5000U, GetTickCount64() - started);
  EXPECT_EQ(Names(), errors->shown) << "a cancel is never a message";
}

TEST_F(Waiting, RefusesASecondOperationAndEndsByEndReader) {
  bool again = true;
  bool ended = true;
  StartWaiting([&] {
    again = ReadPage();
    ended = EndReader();
  });
  EXPECT_FALSE(ReadPage());
  EXPECT_FALSE(again);
  EXPECT_FALSE(ended) << "the wire is busy; the wait is told to end";
  EndReader();
  ComPtr<IDispatch> form;
  ASSERT_EQ(S_OK, reader->get_fComm(&form));
  const auto serial = automation::GetObjectProperty(*form.Get(), L"mscComm");
  EXPECT_FALSE(automation::BooleanOf(automation::GetProperty(*serial.Get(), L"PortOpen")));
}

TEST_F(Waiting, SurvivesTheReleaseOfItsLastReference) {
  StartWaiting([this] {
    reader->put_CancelScan(VARIANT_TRUE);
    sink->Disconnect();
    reader.Reset();
  });
  _clsTeskReader* const only = reader.Get();
  VARIANT_BOOL read = VARIANT_TRUE;
  EXPECT_EQ(S_OK, only->ReadPage(VARIANT_FALSE, &read));
  EXPECT_EQ(VARIANT_FALSE, read);
  errors.Reset();
  const auto last = NewReader();
  Install(last.Get(), nullptr);
}

}  // namespace
}  // namespace tesk::test
