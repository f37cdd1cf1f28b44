// The host's controls.
#include "automation/HostComm.h"

#include <algorithm>
#include <chrono>

#include "automation/HostCalls.h"
#include "automation/HostObjects.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk::automation {
namespace {

using SteadyClock = std::chrono::steady_clock;

void RequireMembers(IDispatch& object, std::initializer_list<const wchar_t*> names) {
  for (const wchar_t* name : names) {
    if (!HasMember(object, name)) throw TypeMismatch();
  }
}

std::int16_t Int16Property(IDispatch& object, const wchar_t* name) {
  return Narrow<std::int16_t>(Int32Of(GetProperty(object, name)));
}

class HostSerial : public SerialControl {
 public:
  HostSerial(IDispatch* form, IDispatch* control) : form_(form), control_(control) {
    RequireMembers(Control(), {L"CommPort", L"Settings", L"Handshaking", L"PortOpen", L"InputLen",
                               L"InBufferCount", L"Input", L"Output"});
  }

  IDispatch* Form() const { return form_.Get(); }

  std::int16_t CommPort() const override { return Int16Property(Control(), L"CommPort"); }
  void SetCommPort(std::int16_t port) override {
    PutProperty(Control(), L"CommPort", Variant(std::int32_t{port}));
  }
  std::string Settings() const override { return TextOf(GetProperty(Control(), L"Settings")); }
  void SetSettings(const std::string& settings) override {
    PutProperty(Control(), L"Settings", Variant(settings));
  }
  std::int32_t Handshaking() const override { return Int32Of(GetProperty(Control(), L"Handshaking")); }
  void SetHandshaking(std::int32_t handshaking) override {
    PutProperty(Control(), L"Handshaking", Variant(handshaking));
  }
  bool PortOpen() const override { return BooleanOf(GetProperty(Control(), L"PortOpen")); }
  void SetPortOpen(bool open) override {
    rest_.clear();
    PutProperty(Control(), L"PortOpen", Variant(open));
  }
  std::int16_t InputLen() const override { return Int16Property(Control(), L"InputLen"); }
  void SetInputLen(std::int16_t length) override {
    PutProperty(Control(), L"InputLen", Variant(std::int32_t{length}));
  }

  std::int32_t InBufferCount() override {
    const std::int32_t waiting = Int32Of(GetProperty(Control(), L"InBufferCount"));
    if (waiting < 0) throw TypeMismatch();
    return Narrow<std::int32_t>(std::int64_t{waiting} + static_cast<std::int64_t>(rest_.size()));
  }

  // A control that ignores InputLen hands over more; the rest is for the next reading.
  std::string Input() override {
    if (rest_.empty()) rest_ = BytesOf(GetProperty(Control(), L"Input"));
    const auto length = static_cast<std::size_t>(std::max<std::int16_t>(InputLen(), 0));
    const std::size_t taken = length == 0 ? rest_.size() : std::min(rest_.size(), length);
    std::string bytes = rest_.substr(0, taken);
    rest_.erase(0, taken);
    return bytes;
  }

  void Output(std::string_view bytes) override { PutProperty(Control(), L"Output", BytesVariant(bytes)); }

 private:
  IDispatch& Control() const { return *control_.Get(); }

  HostReference form_;
  HostReference control_;
  std::string rest_;
};

// A host's timer ticks by messages of the host, which may never come: it counts as run out a second after
// its interval at the latest.
class HostTimer : public OneShotTimer {
 public:
  explicit HostTimer(IDispatch* timer) : timer_(timer) { RequireMembers(Timer(), {L"Enabled", L"Interval"}); }

  bool Enabled() const override {
    return SteadyClock::now() < latest_ && BooleanOf(GetProperty(Timer(), L"Enabled"));
  }
  void SetEnabled(bool enabled) override {
    PutProperty(Timer(), L"Enabled", Variant(enabled));
    latest_ = SteadyClock::now() + std::chrono::milliseconds(Interval()) + std::chrono::seconds(1);
  }
  std::int32_t Interval() const override {
    return std::max<std::int32_t>(Int32Of(GetProperty(Timer(), L"Interval")), 0);
  }
  void SetInterval(std::int32_t milliseconds) override {
    PutProperty(Timer(), L"Interval", Variant(milliseconds));
  }

 private:
  IDispatch& Timer() const { return *timer_.Get(); }

  HostReference timer_;
  SteadyClock::time_point latest_{};
};

}  // namespace

std::shared_ptr<frmComm> FormOf(IDispatch* object) {
  RequireMembers(*object, {L"mscComm", L"tmrScan"});
  const auto control = GetObjectProperty(*object, L"mscComm");
  const auto timer = GetObjectProperty(*object, L"tmrScan");
  return std::make_shared<frmComm>(std::make_shared<HostSerial>(object, control.Get()),
                                   std::make_shared<HostTimer>(timer.Get()));
}

IDispatch* HostFormBehind(const frmComm& form) {
  const auto* serial = dynamic_cast<const HostSerial*>(form.mscComm().get());
  return serial != nullptr ? serial->Form() : nullptr;
}

}  // namespace tesk::automation
