// The imprinter of the current scanner model: what it offers, and the host's texts and switches.
#pragma once

#include <cstdint>
#include <string>

#include "base/enumerations.h"

namespace tesk {

// Nothing here can fail, so nothing is reported.
class clsTeskReaderPrinter {
 public:
  // The engine calls it whenever its reader type changes. Resets Distance and leaves the switches as they
  // are.
  void SetType(teskReaderType value);

  // Whether the host wants to print. Setting it stays False for models that have no imprinter and is ignored
  // for models that nothing is known of.
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool value);
  // Whether this sheet's imprint was asked for when its reading began. The setter is the engine's; hosts only
  // read.
  bool Initialized() const { return initialized_; }
  void SetInitialized(bool value) { initialized_ = value; }
  // Switched with Enabled on both sides: True is stored, and read back, only while Enabled is True.
  bool Active() const { return active_ && enabled_; }
  void SetActive(bool value) { active_ = enabled_ && value; }

  // The lines to print.
  const std::string& Buffer1() const { return buffer1_; }
  void SetBuffer1(const std::string& value) { buffer1_ = value; }
  const std::string& Buffer2() const { return buffer2_; }
  void SetBuffer2(const std::string& value) { buffer2_ = value; }
  const std::string& Buffer3() const { return buffer3_; }
  void SetBuffer3(const std::string& value) { buffer3_ = value; }

  // How many of the model's buffers are not empty.
  std::int16_t FilledBufferCount() const;
  std::int16_t BufferCount() const;  // 0..3
  // -1 while Enabled is False, and where the model states none.
  std::int32_t MinPosition() const;
  std::int32_t MaxPosition() const;
  std::int32_t MaxCharacters() const;

  // The print position in the model's own units; not checked against the range above.
  std::int16_t Distance() const { return distance_; }
  void SetDistance(std::int16_t value) { distance_ = value; }

 private:
  teskReaderType type_ = teskReaderTypeNone;
  bool enabled_ = false;
  bool initialized_ = false;
  bool active_ = false;
  std::string buffer1_;
  std::string buffer2_;
  std::string buffer3_;
  std::int16_t distance_ = 0;
};

}  // namespace tesk
