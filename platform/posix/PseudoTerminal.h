// A pseudo-terminal whose device end looks to a host like a serial port.
#pragma once

#include <string>

#include "platform/Platform.h"
#include "platform/posix/Descriptor.h"

namespace tesk::platform {

class PosixPseudoTerminal : public PseudoTerminal {
 public:
  // Throws error 8002 where the system has no pseudo-terminal left; for the link see CreatePseudoTerminal.
  explicit PosixPseudoTerminal(std::string link);
  PosixPseudoTerminal(const PosixPseudoTerminal&) = delete;
  PosixPseudoTerminal& operator=(const PosixPseudoTerminal&) = delete;
  // Removes the link, unless it points elsewhere by now.
  ~PosixPseudoTerminal() override;

  std::string DevicePath() const override { return device_; }
  std::string Replaced() const override { return replaced_; }
  std::string Read() override;
  std::size_t Write(std::string_view bytes) override;
  void Wait(Milliseconds atMost, bool forRoom) override;

 private:
  Descriptor master_;
  // Held open so that the master does not see a hang-up whenever a host leaves.
  Descriptor slave_;
  std::string device_;
  std::string link_;
  std::string replaced_;
};

}  // namespace tesk::platform
