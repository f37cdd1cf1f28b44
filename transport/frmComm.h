// The hidden communications form: the serial-port control and the time-out timer of one engine.
#pragma once

#include <memory>
#include <utility>

#include "transport/OneShotTimer.h"
#include "transport/SerialControl.h"

namespace tesk {

// A host may replace the whole form, with controls of its own.
class frmComm {
 public:
  frmComm(std::shared_ptr<SerialControl> serial, std::shared_ptr<OneShotTimer> timer)
      : mscComm_(std::move(serial)), tmrScan_(std::move(timer)) {}
  // Never empty.
  const std::shared_ptr<SerialControl>& mscComm() const { return mscComm_; }
  const std::shared_ptr<OneShotTimer>& tmrScan() const { return tmrScan_; }

 private:
  std::shared_ptr<SerialControl> mscComm_;
  std::shared_ptr<OneShotTimer> tmrScan_;
};

}  // namespace tesk
