// The operator's console: standard error as message box, and the interrupt.
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <iostream>

#include "platform/Platform.h"

namespace tesk::platform {
namespace {

// Written in the signal handler, hence the lock-free global.
std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void NoteInterrupt(int) { interrupted.store(true); }

class ConsoleBox : public MessageBox {
 public:
  void Show(const std::string& title, const std::string& text) override {
    std::cerr << ConsoleText(title, text) << std::flush;
  }
};

}  // namespace

std::shared_ptr<MessageBox> CreateConsoleBox() { return std::make_shared<ConsoleBox>(); }

bool StandardInputIsTerminal() { return ::isatty(STDIN_FILENO) != 0; }
bool StandardErrorIsTerminal() { return ::isatty(STDERR_FILENO) != 0; }
bool StandardOutputIsTerminal() { return ::isatty(STDOUT_FILENO) != 0; }

void InstallInterruptHandler() {
  struct sigaction action {};
  action.sa_handler = NoteInterrupt;
  ::sigemptyset(&action.sa_mask);
  action.sa_flags = 0;  // no SA_RESTART: a wait ends at once
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &action, nullptr);
}

bool Interrupted() { return interrupted.load(); }

}  // namespace tesk::platform
