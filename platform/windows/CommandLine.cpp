// The program's command line, which main gets in the system's code page alone.
#include "platform/Platform.h"
#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"
// Needs what stands above.
#include <shellapi.h>

namespace tesk::platform {

std::vector<std::string> CommandLineTexts(int argc, char** argv) {
  int count = 0;
  wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (wide == nullptr) return {argv, argv + argc};
  std::vector<std::string> texts;
  for (int i = 0; i < count; ++i) texts.push_back(WideToUtf8(wide[i]));
  ::LocalFree(wide);
  return texts;
}

}  // namespace tesk::platform
