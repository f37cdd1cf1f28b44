// Reading and writing a host's variable while a batch runs.
#include "automation/BatchCount.h"

#include "automation/Values.h"
#include "base/HostServices.h"

namespace tesk::automation {

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

std::int32_t BatchCount::Count() {
  if (argument_ == nullptr) return *count_;
  const std::int32_t now = Int32Of(*argument_);
  if (now != seen_) *count_ = now;
  seen_ = now;
  return *count_;
}

void BatchCount::SetCount(std::int32_t count) {
  *count_ = count;
  if (argument_ == nullptr) return;
  const auto error = Attempt([&] {
    Store(*argument_, Variant(count));
    seen_ = Int32Of(*argument_);
  });
  if (!error) return;
  // Left in the copy alone, which the late-bound call then cannot hand back either.
  argument_ = nullptr;
  throw *error;
}

}  // namespace tesk::automation
