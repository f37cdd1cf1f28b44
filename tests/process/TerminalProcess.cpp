// The master's side of a pseudo-terminal.
#include "tests/process/TerminalProcess.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace tesk::test {
namespace {

using SteadyClock = std::chrono::steady_clock;
constexpr auto kPatience = std::chrono::seconds(10);
constexpr int kQuiet = 60;  // milliseconds without output: the program waits for a key

winsize SizeOf(int columns, int lines) {
  winsize size{};
  size.ws_col = static_cast<unsigned short>(columns);
  size.ws_row = static_cast<unsigned short>(lines);
  return size;
}

}  // namespace

TerminalProcess::TerminalProcess(std::vector<std::string> arguments, const std::string& terminal, int columns,
                                 int lines) {
  std::vector<char*> pointers;
  for (auto& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  const winsize size = SizeOf(columns, lines);
  pid_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (pid_ < 0) throw std::runtime_error("no pseudo-terminal");
  if (pid_ == 0) {
    signal(SIGHUP, SIG_DFL);
    setenv("TERM", terminal.c_str(), 1);
    unsetenv("COLUMNS");
    unsetenv("LINES");
    execv(pointers[0], pointers.data());
    _exit(127);
  }
}

TerminalProcess::~TerminalProcess() {
  if (!ended_) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Close();
}

void TerminalProcess::Close() {
  if (terminal_ >= 0) close(terminal_);
  terminal_ = -1;
}

void TerminalProcess::Signal(int signal) const { kill(pid_, signal); }

bool TerminalProcess::IsGivenBack() const {
  termios mode{};
  return tcgetattr(terminal_, &mode) == 0 && (mode.c_lflag & (ICANON | ECHO)) == (ICANON | ECHO);
}

void TerminalProcess::Send(const std::string& bytes) const {
  ASSERT_EQ(write(terminal_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

bool TerminalProcess::Read(int milliseconds) {
  pollfd polled{terminal_, POLLIN, 0};
  if (poll(&polled, 1, milliseconds) <= 0) return false;
  std::array<char, 65536> buffer{};
  const ssize_t length = read(terminal_, buffer.data(), buffer.size());
  if (length <= 0) return false;
  output_.append(buffer.data(), static_cast<std::size_t>(length));
  return true;
}

void TerminalProcess::Press(const std::vector<std::string>& keys) {
  while (Read(kQuiet)) {
  }
  for (const std::string& key : keys) {
    Send(key);
    const auto end = SteadyClock::now() + kPatience;
    Read(1000);
    while (SteadyClock::now() < end && Read(kQuiet)) {
    }
  }
}

void TerminalProcess::WaitFor(const std::string& text) {
  const auto end = SteadyClock::now() + kPatience;
  std::size_t found = 0;
  while ((found = output_.find(text, seen_)) == std::string::npos) {
    if (SteadyClock::now() > end) {
      ADD_FAILURE() << "the screen does not show \"" << text << "\": " << output_.substr(seen_);
      return;
    }
    Read(100);
  }
  seen_ = found + text.size();
}

void TerminalProcess::Resize(int columns, int lines) {
  const winsize size = SizeOf(columns, lines);
  ioctl(terminal_, TIOCSWINSZ, &size);
}

int TerminalProcess::Wait() {
  const auto end = SteadyClock::now() + kPatience;
  int status = 0;
  pid_t ended = 0;
  while ((ended = waitpid(pid_, &status, WNOHANG)) == 0 && SteadyClock::now() < end) Read(10);
  while (Read(10)) {
  }
  if (ended == 0) {
    ADD_FAILURE() << "the program did not end: " << output_.substr(seen_);
    kill(pid_, SIGKILL);
    waitpid(pid_, &status, 0);
  }
  ended_ = true;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace tesk::test
