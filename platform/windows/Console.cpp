// The operator's console: standard error as message box, and the interrupt. Pseudo-terminals are missing.
#include <atomic>
#include <iostream>

#include "platform/Platform.h"
#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

std::atomic<int> interrupt{0};  // written on a thread of the system's

bool IsConsole(DWORD stream) {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(stream), &mode) != 0;
}

class ConsoleBox : public MessageBox {
 public:
  // A console takes text in any language only by its own call; a file or pipe gets UTF-8.
  void Show(const std::string& title, const std::string& text) override {
    const std::string shown = ConsoleText(title, text);
    if (!StandardErrorIsTerminal()) {
      std::cerr << shown << std::flush;
      return;
    }
    const std::wstring wide = Utf8ToWide(shown);
    DWORD written = 0;
    ::WriteConsoleW(::GetStdHandle(STD_ERROR_HANDLE), wide.data(), static_cast<DWORD>(wide.size()), &written,
                    nullptr);
  }
};

// As other systems number these signals.
constexpr int kHangUp = 1;
constexpr int kCtrlC = 2;
constexpr int kEnd = 15;

// For a window that closes, or a session that ends, the program ends when this returns, or after a few
// seconds: until then the main thread may close the port.
BOOL WINAPI NoteInterrupt(DWORD event) {
  constexpr DWORD kLongerThanTheSystemWaits = 20'000;
  const bool typed = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  int none = 0;
  interrupt.compare_exchange_strong(none, typed ? kCtrlC : event == CTRL_CLOSE_EVENT ? kHangUp : kEnd);
  if (!typed) ::Sleep(kLongerThanTheSystemWaits);
  return TRUE;
}

}  // namespace

std::shared_ptr<MessageBox> CreateConsoleBox() { return std::make_shared<ConsoleBox>(); }

bool StandardInputIsTerminal() { return IsConsole(STD_INPUT_HANDLE); }
bool StandardErrorIsTerminal() { return IsConsole(STD_ERROR_HANDLE); }
bool StandardOutputIsTerminal() { return IsConsole(STD_OUTPUT_HANDLE); }

// A closed stream keeps its handle's place here: nothing else gets it.
void ReserveStandardStreams() {}

void InstallInterruptHandler() { ::SetConsoleCtrlHandler(NoteInterrupt, TRUE); }
int InterruptSignal() { return interrupt.load(); }

std::unique_ptr<PseudoTerminal> CreatePseudoTerminal(const std::string&) {
  throw RunTimeError(kErrorNotSupported, "Windows has no pseudo-terminals to simulate a scanner on.", {},
                     "\"teskread demo\" and \"--port sim\" read from a simulated scanner without one.");
}

}  // namespace tesk::platform
