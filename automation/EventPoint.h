// The engine's events on the automation border: the connection point that hosts attach their sinks to, and
// the calls to them.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "automation/Com.h"
#include "automation/Enumerator.h"
#include "automation/Module.h"
#include "engine/Seams.h"

namespace tesk::automation {

// Part of its owner, whose references it counts. Every sink is called with what the one before it left in
// the arguments; a change that is no value of its type is left out. A sink that fails harms nobody; one
// that has gone is forgotten.
class EventPoint : public IConnectionPoint, public ReaderEvents {
 public:
  // beforeEach runs before each sink is called, whenLost where an event reached nobody: the last sink has gone without
  // detaching, as a host does that ends in the middle, or one in another process did not take it. Both may be empty.
  explicit EventPoint(IConnectionPointContainer& owner, std::function<void()> beforeEach = {},
                      std::function<void()> whenLost = {})
      : owner_(owner), beforeEach_(std::move(beforeEach)), whenLost_(std::move(whenLost)) {}
  virtual ~EventPoint();

  STDMETHODIMP QueryInterface(REFIID id, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override { return owner_.AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return owner_.Release(); }

  STDMETHODIMP GetConnectionInterface(IID* id) override;
  STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
  STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
  STDMETHODIMP Unadvise(DWORD cookie) override;
  STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

  void BeforeSheet(bool& bInitializePrinter) override;
  void PreprocessSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                       bool& bReject) override;
  void ReadSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                 const std::string& sSide1FileName, const std::string& sSide2FileName,
                 const std::string& sSide1ItemCoordinates, const std::string& sSide2ItemCoordinates) override;
  void AfterSheet(bool& bCancelScan) override;
  void BeforePrint(bool& bCancel) override;
  void AfterPrint() override;
  void TranslateData(std::shared_ptr<HostObject>& oData, SideArray& iSide1Array, SideArray& iSide2Array,
                     BarcodeArray& sBarcodeArray, bool& bNeedsMoreData) override;
  void GetQuestionsOnPage(std::int16_t& iPage, std::int16_t& iNumberQuestions) override;

 private:
  using Connection = std::pair<DWORD, ComPtr<IDispatch>>;

  bool Connected(DWORD cookie) const;
  template <class... Values>
  void Fire(DISPID id, Values&... values);
  // False where the event did not reach a sink in another process; its arguments then mean nothing.
  bool Call(const Connection& connection, DISPID id, std::vector<VARIANT>& reversed);

  IConnectionPointContainer& owner_;
  std::function<void()> beforeEach_;
  std::function<void()> whenLost_;
  std::vector<Connection> connections_;
  DWORD lastCookie_ = 0;
};

}  // namespace tesk::automation
