// The current look of the system's controls, for windows that are made while an object of this class lives.
// The program that links this carries VisualStyles.rc; without it, or on a system that lacks the controls, the
// old look remains.
#pragma once

#include "platform/windows/WindowsApi.h"

namespace tesk::platform {

class VisualStyles {
 public:
  VisualStyles();
  VisualStyles(const VisualStyles&) = delete;
  VisualStyles& operator=(const VisualStyles&) = delete;
  ~VisualStyles();

 private:
  HANDLE context_;
  ULONG_PTR cookie_ = 0;
};

// The library or program that this code is part of.
HINSTANCE OwnModule();

}  // namespace tesk::platform
