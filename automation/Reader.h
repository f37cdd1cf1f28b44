// The engine as hosts hold it.
#pragma once

#include "automation/EventPoint.h"
#include "automation/Wire.h"

namespace tesk::automation {

class ReaderObject final : public Members<tesk::clsTeskReader>, public IConnectionPointContainer {
 public:
  explicit ReaderObject(std::shared_ptr<tesk::clsTeskReader> reader);
  ~ReaderObject() override;

  STDMETHODIMP QueryInterface(REFIID id, void** object) override {
    return Members::QueryInterface(id, object);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return Members::AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return Members::Release(); }

  // Notes the host's own variable where it calls ReadBatch late bound.
  STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* wrong) override;

  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
  STDMETHODIMP FindConnectionPoint(REFIID id, IConnectionPoint** point) override;

  // ---- Properties

  TESK_OBJECT_PROPERTY(std::shared_ptr<clsTeskReaderBarcodes>, Barcodes)
  TESK_OBJECT_PROPERTY(std::shared_ptr<clsTeskReaderWindows>, Windows)
  TESK_OBJECT_PROPERTY(std::shared_ptr<clsTeskReaderProfiles>, Profiles)
  TESK_OBJECT_PROPERTY(std::shared_ptr<clsTeskReaderPrinter>, Printer)
  STDMETHODIMP get_fComm(IDispatch** value) override;
  STDMETHODIMP putref_fComm(IDispatch* value) override;
  TESK_OBJECT_PROPERTY(std::shared_ptr<HostObject>, AnswerKey)
  STDMETHODIMP get_HelpID(::teskReaderHelpID eHelpIDType, LONG* value) override;
  STDMETHODIMP put_HelpID(::teskReaderHelpID eHelpIDType, LONG value) override;
  TESK_PROPERTY(std::string, HelpFile)
  TESK_PROPERTY(bool, ImagingEnabled)
  TESK_PROPERTY(bool, ReaderGrade)
  TESK_PROPERTY(bool, Duplex)
  TESK_PROPERTY(bool, DuplexForm)
  TESK_PROPERTY(bool, Barcode)
  TESK_PROPERTY(bool, Image)
  TESK_PROPERTY(bool, Feeder)
  TESK_PROPERTY(bool, Rejecter)
  TESK_PROPERTY(bool, Windowing)
  TESK_PROPERTY(bool, Continuous)
  TESK_PROPERTY(tesk::teskReaderBaudRate, BaudRate)
  TESK_PROPERTY(tesk::teskReaderDataBits, DataBits)
  TESK_PROPERTY(tesk::teskReaderFlowControl, FlowControl)
  TESK_PROPERTY(std::string, Parity)
  TESK_PROPERTY(float, StopBits)
  TESK_PROPERTY(std::int16_t, Port)
  TESK_PROPERTY(std::int32_t, SleepTime)
  TESK_PROPERTY(std::int32_t, TimeOut)
  TESK_PROPERTY(tesk::teskReaderColorDepth, ColorDepth)
  TESK_PROPERTY(std::int16_t, Resolution)
  TESK_PROPERTY(std::int16_t, MarkCutOff)
  TESK_PROPERTY(std::int16_t, MarkDiscrimination)
  TESK_PROPERTY(std::int16_t, RecognitionThreshold)
  TESK_PROPERTY(std::int16_t, ErasureThreshold)
  TESK_PROPERTY(std::int16_t, RecognitionThresholdMax)
  TESK_PROPERTY(tesk::teskRecognitionType, RecognitionMode)
  TESK_PROPERTY(tesk::teskReaderType, ReaderType)
  TESK_GET(std::string, ReaderName)
  TESK_PROPERTY(bool, CancelScan)
  TESK_GET(std::int16_t, Side1TimingMarks)
  TESK_GET(std::int16_t, Side2TimingMarks)
  TESK_GET(SideArray, Side1Array)
  TESK_GET(SideArray, Side2Array)
  TESK_ARRAY_PROPERTY(Int16Array, Side1Rows)
  TESK_ARRAY_PROPERTY(Int16Array, Side1Cols)
  TESK_ARRAY_PROPERTY(Int16Array, Side2Rows)
  TESK_ARRAY_PROPERTY(Int16Array, Side2Cols)
  TESK_PROPERTY(std::string, Side1Image)
  TESK_PROPERTY(std::string, Side2Image)
  TESK_PROPERTY(std::string, Side1Coordinates)
  TESK_PROPERTY(std::string, Side2Coordinates)

  // ---- Methods

  STDMETHODIMP StartReader(VARIANT_BOOL* result) override;
  STDMETHODIMP ReadPage(VARIANT_BOOL InitializePrinter, VARIANT_BOOL* result) override;
  STDMETHODIMP ReadBatch(VARIANT_BOOL InitializePrinter, LONG lMaxSheets, LONG* lSheetCount,
                         VARIANT_BOOL* result) override;
  STDMETHODIMP EndReader(VARIANT_BOOL* result) override;
  STDMETHODIMP RejectPage() override;
  STDMETHODIMP EjectPage() override;
  STDMETHODIMP LoadDefaults(::teskReaderType eReaderType, VARIANT_BOOL* result) override;
  STDMETHODIMP LoadSettings(::teskReaderRegistryKey lRegistryKey, BSTR sRegistrySubKey,
                            VARIANT_BOOL* result) override;
  STDMETHODIMP SaveSettings(::teskReaderRegistryKey lRegistryKey, BSTR sRegistrySubKey,
                            VARIANT_BOOL* result) override;
  STDMETHODIMP SetError(IDispatch** oErr, VARIANT_BOOL* result) override;
  STDMETHODIMP ShowOptions(VARIANT fParent, VARIANT_BOOL* result) override;
  STDMETHODIMP Locate(SHORT iStartPort, VARIANT_BOOL* result) override;
  STDMETHODIMP Firmware(BSTR* sReturn, VARIANT_BOOL* result) override;

 private:
  void* FurtherInterface(REFIID id) override;

  EventPoint events_;
  VARIANT* batchCount_ = nullptr;
};

}  // namespace tesk::automation
