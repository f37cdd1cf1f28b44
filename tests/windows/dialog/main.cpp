// A program that knows about resolutions, so that the dialog is drawn in the screen's own dots.
#include <gtest/gtest.h>

#include "platform/windows/SystemFunction.h"

int main(int count, char** words) {
  auto* const makeAware = tesk::platform::UserFunction<BOOL WINAPI()>("SetProcessDPIAware");
  if (makeAware != nullptr) makeAware();
  testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
