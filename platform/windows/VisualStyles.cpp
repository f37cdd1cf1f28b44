// An activation context from the own resources: it holds for our windows and leaves the host's as they are.
#include "platform/windows/VisualStyles.h"

#include <commctrl.h>

#include "platform/windows/visualStylesResource.h"

namespace tesk::platform {

HINSTANCE OwnModule() {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(reinterpret_cast<const void*>(&OwnModule)), &module);
  return module;
}

VisualStyles::VisualStyles() {
  ACTCTXW wanted{};
  wanted.cbSize = sizeof wanted;
  wanted.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  wanted.hModule = OwnModule();
  wanted.lpResourceName = MAKEINTRESOURCEW(TESK_VISUAL_STYLES);
  context_ = ::CreateActCtxW(&wanted);
  if (context_ != INVALID_HANDLE_VALUE) ::ActivateActCtx(context_, &cookie_);
  INITCOMMONCONTROLSEX classes{sizeof classes, ICC_STANDARD_CLASSES | ICC_UPDOWN_CLASS};
  ::InitCommonControlsEx(&classes);
}

VisualStyles::~VisualStyles() {
  if (cookie_ != 0) ::DeactivateActCtx(0, cookie_);
  if (context_ != INVALID_HANDLE_VALUE) ::ReleaseActCtx(context_);
}

}  // namespace tesk::platform
