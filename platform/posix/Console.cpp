// The operator's console: standard error as message box, the terminal, and the interrupt.
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <iostream>

#include "platform/Platform.h"
#include "platform/terminal.h"

namespace tesk::platform {
namespace {

// Written in the signal handler, hence the lock-free global.
std::atomic<int> interrupt{0};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void NoteInterrupt(int signal) {
  int none = 0;
  interrupt.compare_exchange_strong(none, signal);
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

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

// Standard input gets an end that cannot be read, the others one that cannot be written.
void ReserveStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
    // The lowest free number is this stream's: those before it are taken.
    ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

std::vector<std::string> CommandLineTexts(int argc, char** argv) { return {argv, argv + argc}; }

void InstallInterruptHandler() {
  struct sigaction action {};
  action.sa_handler = NoteInterrupt;
  ::sigemptyset(&action.sa_mask);
  action.sa_flags = 0;  // no SA_RESTART: a wait ends at once
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
  if (!IsIgnored(SIGHUP)) ::sigaction(SIGHUP, &action, nullptr);
  // What is written reports it: a reader that is gone, a file that may not grow.
  action.sa_handler = SIG_IGN;
  for (const int failure : {SIGPIPE, SIGXFSZ}) ::sigaction(failure, &action, nullptr);
}

int InterruptSignal() { return interrupt.load(); }

std::string ReadTyped(Milliseconds atMost) {
  pollfd typed{STDIN_FILENO, POLLIN, 0};
  if (::poll(&typed, 1, static_cast<int>(atMost.count())) <= 0) return {};
  std::array<char, 4096> bytes{};
  const ssize_t length = ::read(STDIN_FILENO, bytes.data(), bytes.size());
  if (length > 0) return {bytes.data(), static_cast<std::size_t>(length)};
  if (length == 0 || (errno != EINTR && errno != EAGAIN)) NoteInterrupt(SIGHUP);
  return {};
}

TerminalSize CurrentTerminalSize() {
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return {};
  return {.columns = size.ws_col, .lines = size.ws_row};
}

}  // namespace tesk::platform
