// The count of a batch's sheets in the variable that a host gave to ReadBatch, early or late bound.
#pragma once

#include <optional>

#include "automation/Com.h"
#include "engine/Seams.h"

namespace tesk::automation {

// The argument that stands for parameter `place`, counted from 0; null where it was left out.
VARIANT* ArgumentAt(DISPPARAMS* given, DISPID place);

class BatchCount : public SheetCounter {
 public:
  // count: the early-bound variable, or the copy that a late-bound call has made of it; null: the host wants no
  // count. argument: what the late-bound call was given, null for an early-bound one. Both outlive this.
  BatchCount(LONG* count, VARIANT* argument);
  ~BatchCount() override;  // leaves the last count in the copy

  std::int32_t Count() override;
  void SetCount(std::int32_t count) override;

 private:
  LONG own_ = 0;
  LONG* count_;
  VARIANT* argument_;  // null: the count stands in count_ alone
  // What the host's variable made of the count: unlike it where that is a Boolean. Another value is the host's.
  std::optional<std::int32_t> seen_;
};

}  // namespace tesk::automation
