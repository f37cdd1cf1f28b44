// A program in a terminal of its own: the test is its keyboard and its screen. POSIX.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tesk::test {

class TerminalProcess {
 public:
  // arguments[0] is the program's path. terminal: what TERM names.
  explicit TerminalProcess(std::vector<std::string> arguments, const std::string& terminal = "xterm",
                           int columns = 80, int lines = 24);
  TerminalProcess(const TerminalProcess&) = delete;
  TerminalProcess& operator=(const TerminalProcess&) = delete;
  ~TerminalProcess();

  // What a terminal of the kind "xterm" sends for keys.
  static constexpr const char* kTab = "\t";
  static constexpr const char* kBackTab = "\x1b[Z";
  static constexpr const char* kEnter = "\r";
  static constexpr const char* kEscape = "\x1b";
  static constexpr const char* kDown = "\x1bOB";
  static constexpr const char* kRight = "\x1bOC";
  static constexpr const char* kLeft = "\x1bOD";
  static constexpr const char* kEnd = "\x1bOF";
  static constexpr const char* kBackspace = "\x7f";
  static constexpr const char* kF10 = "\x1b[21~";
  static constexpr const char* kInterrupt = "\x03";

  // Sends keys one by one; each is worked off before the next, so that an Escape key stays one.
  void Press(const std::vector<std::string>& keys);
  // Sends bytes and waits for nothing.
  void Send(const std::string& bytes) const;
  // Waits until the program has written `text` since the last call; fails the test after ten seconds.
  void WaitFor(const std::string& text);
  void Resize(int columns, int lines);
  void Signal(int signal) const;
  // The terminal is closed: nobody reads from it or types any more.
  void Close();
  // Whether it works by lines and echoes, as a shell wants it.
  bool IsGivenBack() const;
  // The exit status, or 128 plus the signal; fails the test and kills it after ten seconds.
  int Wait();
  const std::string& Output() const { return output_; }

 private:
  // Takes what comes within `milliseconds`; False when nothing came.
  bool Read(int milliseconds);

  pid_t pid_ = -1;
  int terminal_ = -1;
  bool ended_ = false;
  std::string output_;
  std::size_t seen_ = 0;
};

}  // namespace tesk::test
