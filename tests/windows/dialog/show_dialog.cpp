// Shows the setup dialog of one reader until somebody closes it, for pictures.
//   show_dialog TYPE
#include <cstdlib>
#include <memory>
#include <thread>

#include "assembly/assembly.h"
#include "platform/Platform.h"
#include "platform/windows/SystemFunction.h"

namespace {

// Without a window manager no window is the active one; the picture shows the dialog as a user sees it.
void PaintAsActive() {
  for (int i = 0; i < 50; ++i) {
    ::Sleep(100);
    if (const HWND dialog = FindWindowW(L"#32770", L"Scanner Settings"))
      SendMessageW(dialog, WM_NCACTIVATE, TRUE, 0);
  }
}

}  // namespace

int main(int count, char** words) {
  using namespace tesk;
  auto* const makeAware = platform::UserFunction<BOOL WINAPI()>("SetProcessDPIAware");
  if (makeAware != nullptr) makeAware();
  const auto reader = CreateReader({.serial = platform::CreateSerialSystem(),
                                    .loop = platform::CreateHostLoop(),
                                    .clock = platform::CreateClock()});
  const int type = count > 1 ? std::atoi(words[1]) : 0;
  if (!reader->LoadDefaults(static_cast<teskReaderType>(type))) return 1;
  reader->SetPort(3);
  std::thread(PaintAsActive).detach();
  return reader->ShowOptions(nullptr) ? 0 : 2;
}
