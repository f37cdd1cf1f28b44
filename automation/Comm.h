// The communications form and its controls as hosts hold them.
#pragma once

#include "automation/Wire.h"

namespace tesk::automation {

class CommObject final : public Members<frmComm> {
 public:
  using Members::Members;
  STDMETHODIMP get_mscComm(IDispatch** value) override;
  STDMETHODIMP get_tmrScan(IDispatch** value) override;
};

class SerialObject final : public Members<SerialControl> {
 public:
  using Members::Members;
  TESK_PROPERTY(std::int16_t, CommPort)
  TESK_PROPERTY(std::string, Settings)
  STDMETHODIMP get_Handshaking(::teskReaderFlowControl* value) override;
  STDMETHODIMP put_Handshaking(::teskReaderFlowControl value) override;
  TESK_PROPERTY(bool, PortOpen)
  TESK_PROPERTY(std::int16_t, InputLen)
  TESK_GET(std::int32_t, InBufferCount)
  STDMETHODIMP get_Input(VARIANT* value) override;
  STDMETHODIMP put_Output(VARIANT value) override;
};

class TimerObject final : public Members<OneShotTimer> {
 public:
  using Members::Members;
  TESK_PROPERTY(bool, Enabled)
  TESK_PROPERTY(std::int32_t, Interval)
};

}  // namespace tesk::automation
