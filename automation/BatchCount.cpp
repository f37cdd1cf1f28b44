// Reading and writing a host's variable while a batch runs.
#include "automation/BatchCount.h"

#include <utility>

#include "automation/Values.h"
#include "base/HostServices.h"
#include "base/conversions.h"

namespace tesk::automation {
namespace {

// What a chain of references to variants ends in: a script's variable, or a reference to a typed one.
VARIANT& End(VARIANT& argument) {
  VARIANT* at = &argument;
  while (at->vt == (VT_BYREF | VT_VARIANT) && at->pvarVal != nullptr) at = at->pvarVal;
  return *at;
}

void Write(VARIANT& variable, std::int32_t count) {
  switch (variable.vt) {
    case VT_BYREF | VT_I2:
      *variable.piVal = Narrow<SHORT>(count);
      break;
    case VT_BYREF | VT_I4:
    case VT_BYREF | VT_INT:
      *variable.plVal = count;
      break;
    default:
      if ((variable.vt & VT_BYREF) != 0) break;
      Variant fresh(count);
      std::swap<VARIANT>(variable, fresh);
  }
}

}  // namespace

VARIANT* ArgumentAt(DISPPARAMS* given, DISPID place) {
  if (given == nullptr || given->cNamedArgs > given->cArgs) return nullptr;
  for (UINT at = 0; at < given->cArgs; ++at) {
    const bool named = at < given->cNamedArgs;
    const DISPID stands = named ? given->rgdispidNamedArgs[at] : static_cast<DISPID>(given->cArgs - 1 - at);
    if (stands == place) return &given->rgvarg[at];
  }
  return nullptr;
}

BatchCount::BatchCount(LONG* count, VARIANT* argument)
    : count_(count != nullptr ? count : &own_), argument_(argument) {
  if (argument_ != nullptr && ((argument_->vt & VT_BYREF) == 0 || LeftOut(*argument_))) argument_ = nullptr;
}

BatchCount::~BatchCount() {
  Attempt([this] { *count_ = Count(); });
}

std::int32_t BatchCount::Count() { return argument_ != nullptr ? Int32Of(End(*argument_)) : *count_; }

void BatchCount::SetCount(std::int32_t count) {
  *count_ = count;
  if (argument_ != nullptr) Write(End(*argument_), count);
}

}  // namespace tesk::automation
