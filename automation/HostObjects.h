// Objects of a host's that the engine keeps: the answer key, the owner of a dialog, the error object.
#pragma once

#include <cstdint>
#include <memory>

#include "automation/HostCalls.h"
#include "automation/Module.h"
#include "base/HostServices.h"
#include "engine/Seams.h"

namespace tesk::automation {

// A reference to an object of the host's, released with it.
class HostReference : public HostObject, private LivingObject {
 public:
  explicit HostReference(IDispatch* object) : object_(object) {}
  ~HostReference() override;
  IDispatch* Get() const { return object_.Get(); }
  // Its property hWnd where it has one.
  std::intptr_t WindowHandle() const override;

 private:
  ComPtr<IDispatch> object_;
};

// A reference to an object of the host's that engines on several threads call: every call goes to the
// apartment that the object came from.
class SharedReference : private LivingObject {
 public:
  // Error 51 where the system cannot pass the object on.
  explicit SharedReference(IDispatch* object);
  ~SharedReference();
  // As this thread is to call it; error 91 once the object's apartment has ended.
  ComPtr<IDispatch> Here() const;

 private:
  DWORD cookie_ = 0;
};

// What owns a dialog: an object with a window handle, the handle itself, or nothing (empty). Error 13 for
// anything else.
std::shared_ptr<HostObject> WindowOwnerOf(const VARIANT& value);

// The error object, one for all engines. A call that fails falls back to the English text or to the library's
// own box.
class HostErrorObject : public HostServices {
 public:
  // Error 13 for an object without LoadString, RaiseError or Silent.
  explicit HostErrorObject(IDispatch* object);

  std::string LoadString(const std::string& text) override;
  // False also for a host without MsgBoxEx.
  bool MsgBoxEx(const std::string& title, const std::string& text) override;
  // RaiseError(line, number, source, message, title)
  void RaiseError(const ErrorReport& report) override;
  bool Silent() const override;
  void SetSilent(bool silent) override;

 private:
  SharedReference object_;
};

// The message box of this system.
std::shared_ptr<MessageBox> OwnBox();

}  // namespace tesk::automation
