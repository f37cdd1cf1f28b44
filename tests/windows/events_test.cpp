// Sinks that behave badly, over a communications form of the host's own with a scanner in memory behind it.
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "automation/EventPoint.h"
#include "automation/HostObjects.h"
#include "simulator/Simulators.h"
#include "tests/windows/Reading.h"

namespace tesk::test {
namespace {

using Names = std::vector<std::string>;

// mscComm and tmrScan as a host would bring them along.
class HostForm : public HostDispatch {
 public:
  HostForm() : scanner(simulator::CreateScanner(tesk::teskReaderTypeScantronScanMark5500, {})) {
    serial_ = new HostDispatch;
    timer_ = new HostDispatch;
    for (const wchar_t* name : {L"CommPort", L"Settings", L"Handshaking", L"PortOpen", L"InputLen"}) {
      serial_->Holds(name, values_[name]);
    }
    for (const wchar_t* name : {L"Enabled", L"Interval"}) timer_->Holds(name, values_[name]);
    serial_->On(L"InBufferCount", [this](WORD, const Arguments&, VARIANT* result) {
      waiting_ += scanner->Send(Now());
      return Give(result, Variant(static_cast<std::int32_t>(waiting_.size())));
    });
    serial_->On(L"Input", [this](WORD, const Arguments&, VARIANT* result) {
      waiting_ += scanner->Send(Now());
      return Give(result, automation::BytesVariant(std::exchange(waiting_, {})));
    });
    serial_->On(L"Output", [this](WORD, const Arguments& arguments, VARIANT*) {
      scanner->Receive(automation::BytesOf(*arguments.at(0)), Now());
      return S_OK;
    });
    On(L"mscComm",
       [this](WORD, const Arguments&, VARIANT* result) { return Give(result, Variant(serial_.Get())); });
    On(L"tmrScan",
       [this](WORD, const Arguments&, VARIANT* result) { return Give(result, Variant(timer_.Get())); });
  }

  std::unique_ptr<simulator::SheetScanner> scanner;
  HostDispatch& Serial() { return *serial_.Get(); }

 private:
  static simulator::Time Now() { return std::chrono::steady_clock::now(); }
  static HRESULT Give(VARIANT* result, Variant value) {
    std::swap<VARIANT>(*result, value);
    return S_OK;
  }

  std::map<std::wstring, Variant> values_;
  std::string waiting_;
  ComPtr<HostDispatch> serial_;
  ComPtr<HostDispatch> timer_;
};

class Events : public Reading {
 protected:
  void SetUp() override {
    Reading::SetUp();
    form = new HostForm;
    ASSERT_EQ(S_OK, reader->putref_fComm(form.Get()));
    ASSERT_TRUE(Start(1));
  }
  void TearDown() override {
    Reading::TearDown();
    EXPECT_EQ(Names(), form->scanner->Complaints());
  }
  ComPtr<HostForm> form;
};

TEST_F(Events, ComeFromAFormOfTheHostsWhichMayBeSetAgainAndGoesWithItsPortClosed) {
  const auto open = [this] {
    return automation::BooleanOf(automation::GetProperty(form->Serial(), L"PortOpen"));
  };
  ComPtr<IDispatch> asked;
  ASSERT_EQ(S_OK, reader->get_fComm(&asked));
  EXPECT_EQ(static_cast<IDispatch*>(form.Get()), asked.Get()) << "the host gets its own object back";
  ASSERT_EQ(S_OK, reader->putref_fComm(form.Get()));
  EXPECT_TRUE(open());
  ASSERT_TRUE(ReadPage());
  EXPECT_EQ((Names{"BeforeSheet", "PreprocessSheet", "ReadSheet", "AfterSheet"}), sink->names);
  ASSERT_EQ(S_OK, reader->putref_fComm(nullptr));
  EXPECT_FALSE(open());
}

TEST_F(Events, PassOverSinksThatFailAreGoneOrWereDetached) {
  const ComPtr<EventSink> failing = new EventSink;
  const ComPtr<EventSink> gone = new EventSink;
  const ComPtr<EventSink> detached = new EventSink;
  const ComPtr<EventSink> after = new EventSink;
  for (DISPID id = 1; id <= 8; ++id) {
    failing->On(
        L"x" + std::to_wstring(id), [](auto&&...) { return DISP_E_EXCEPTION; }, id);
  }
  int calls = 0;
  gone->On(
      L"gone", [&calls](auto&&...) { return ++calls, RPC_E_DISCONNECTED; }, 1);
  sink->handlers["BeforeSheet"] = [&](const HostDispatch::Arguments&) { detached->Disconnect(); };
  for (const auto& one : {failing, gone, detached, after}) one->Connect(reader.Get());
  EXPECT_TRUE(ReadAndEject());
  EXPECT_EQ(4U, sink->names.size());
  EXPECT_EQ(sink->names, after->names);
  EXPECT_EQ(Names(), detached->names);
  sink->handlers["PreprocessSheet"] = [this](const HostDispatch::Arguments&) { sink->Disconnect(); };
  EXPECT_TRUE(ReadAndEject());
  EXPECT_EQ(6U, sink->names.size()) << "it has detached itself";
  EXPECT_EQ(1, calls) << "who is gone is not called again";
  for (const auto& one : {failing, gone, after}) one->Disconnect();
}

// A sink, or a proxy of one in another process, fails from its second sheet on, so many times: how many of three sheets
// the batch feeds, and in how many calls it hands them out.
TEST_F(Events, EndABatchThatReachesNobodyAndWaitForAHostThatIsBusy) {
  const struct {
    HRESULT fails;
    bool elsewhere;
    int times;
    LONG sheets;
    int calls;
  } kCases[] = {
      {RPC_E_DISCONNECTED, true, 1, 2, 2},
      {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), true, 1, 2, 2},
      {RPC_E_CALL_CANCELED, true, 1, 2, 2},
      {RPC_E_CALL_REJECTED, true, 2, 3, 5},
      {RPC_E_CALL_REJECTED, false, 1, 3, 3},  // its own
      {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), false, 1, 3, 2},
      {E_FAIL, true, 1, 3, 3},
  };
  sink->Disconnect();
  for (const auto& c : kCases) {
    const ComPtr<EventSink> other = new EventSink;
    other->elsewhere = c.elsewhere;
    int calls = 0;
    other->On(
        L"ReadSheet",
        [&](auto&&...) {
          const bool fails = ++calls > 1 && calls <= 1 + c.times;
          const bool unseen = fails && c.elsewhere && c.fails == RPC_E_CALL_REJECTED;
          if (!unseen) reader->EjectPage();
          return fails ? c.fails : S_OK;
        },
        3);
    other->Connect(reader.Get());
    ASSERT_TRUE(Start(1));
    LONG count = 0;
    VARIANT_BOOL read = VARIANT_FALSE;
    EXPECT_EQ(S_OK, reader->ReadBatch(VARIANT_FALSE, 3, &count, &read));
    EXPECT_EQ(std::make_pair(c.sheets, c.calls), std::make_pair(count, calls)) << std::hex << c.fails;
    ASSERT_TRUE(EndReader());
    other->Disconnect();
  }
}

TEST_F(Events, SurviveTheReleaseOfTheReaderInOneOfThem) {
  sink->handlers["ReadSheet"] = [this](const HostDispatch::Arguments&) {
    sink->Disconnect();
    reader.Reset();
  };
  _clsTeskReader* const only = reader.Get();
  VARIANT_BOOL read = VARIANT_FALSE;
  EXPECT_EQ(S_OK, only->ReadPage(VARIANT_FALSE, &read));
  EXPECT_EQ(VARIANT_TRUE, read);
}

TEST_F(Events, ReportAHostControlThatAnswersNonsense) {
  const auto answers = [](Variant value) {
    const auto kept = std::make_shared<Variant>(std::move(value));
    return [kept](WORD, const HostDispatch::Arguments&, VARIANT* result) {
      return result != nullptr ? VariantCopy(result, kept.get()) : S_OK;
    };
  };
  const std::pair<const wchar_t*, HostDispatch::Handler> table[] = {
      {L"InBufferCount", answers(Variant(std::int32_t{-3}))},
      {L"Input", answers(Variant(std::string("no bytes \xE2\x82\xAC")))},
      {L"Output", [](auto&&...) { return DISP_E_EXCEPTION; }}};
  for (const auto& [member, handler] : table) {
    const ComPtr<HostForm> broken = new HostForm;
    broken->Serial().On(member, handler);
    ASSERT_EQ(S_OK, reader->putref_fComm(broken.Get()));
    errors->reports.clear();
    EXPECT_FALSE(Start(1) && ReadPage());
    EXPECT_FALSE(errors->reports.empty()) << std::string(member, member + wcslen(member));
    ASSERT_EQ(S_OK, reader->putref_fComm(form.Get()));
  }
}

// ---- Events that no driver of today raises

class Container : public IConnectionPointContainer {
 public:
  virtual ~Container() = default;
  STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
  STDMETHODIMP FindConnectionPoint(REFIID, IConnectionPoint** point) override {
    *point = &events;
    return S_OK;
  }
  automation::EventPoint events{*this};
};

TEST(EventPoint, HandsObjectsAndNumbersToTheSinkAndBack) {
  Container container;
  const ComPtr<EventSink> sink = new EventSink;
  DWORD cookie = 0;
  ASSERT_EQ(S_OK, container.events.Advise(static_cast<IDispatch*>(sink.Get()), &cookie));
  const ComPtr<HostDispatch> given = new HostDispatch;
  const ComPtr<HostDispatch> answered = new HostDispatch;
  sink->handlers["TranslateData"] = [&](const HostDispatch::Arguments& arguments) {
    ASSERT_EQ(VT_BYREF | VT_DISPATCH, arguments.at(0)->vt);
    EXPECT_EQ(static_cast<IDispatch*>(given.Get()), *arguments[0]->ppdispVal);
    (*arguments[0]->ppdispVal)->Release();
    ASSERT_EQ(S_OK, answered.CopyTo(reinterpret_cast<HostDispatch**>(arguments[0]->ppdispVal)));
    *arguments.at(4)->pboolVal = VARIANT_TRUE;
  };
  sink->handlers["GetQuestionsOnPage"] = [](const HostDispatch::Arguments& arguments) {
    EXPECT_EQ(2, *arguments.at(0)->piVal);
    *arguments.at(1)->piVal = 40;
  };
  std::shared_ptr<HostObject> data = std::make_shared<automation::HostReference>(given.Get());
  SideArray side1(2, 3);
  SideArray side2;
  // Does not come back from the border as it was; the sink leaves it alone.
  BarcodeArray barcodes{"\xFF"};
  bool needsMore = false;
  container.events.TranslateData(data, side1, side2, barcodes, needsMore);
  EXPECT_EQ(static_cast<IDispatch*>(answered.Get()), dynamic_cast<automation::HostReference&>(*data).Get());
  EXPECT_TRUE(needsMore);
  EXPECT_EQ(SideArray(2, 3), side1);
  EXPECT_EQ(BarcodeArray{"\xFF"}, barcodes);
  std::int16_t page = 2;
  std::int16_t questions = 0;
  container.events.GetQuestionsOnPage(page, questions);
  EXPECT_EQ(40, questions);
  EXPECT_EQ(S_OK, container.events.Unadvise(cookie));
  EXPECT_EQ(CONNECT_E_NOCONNECTION, container.events.Unadvise(cookie));
}

}  // namespace
}  // namespace tesk::test
