// A program that a test started: its output, its end, its share of the processor. POSIX.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tesk::test {

using Seconds = std::chrono::duration<double>;

// Standard input is empty. What is left running is killed at the end.
class Process {
 public:
  // arguments[0] is the program's path. output: where not empty, standard output goes to this file.
  explicit Process(std::vector<std::string> arguments, const std::string& output = {});
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  // The next whole line of standard output without its line feed; fails the test after `atMost`.
  std::string ReadLine(Seconds atMost = Seconds(10));
  // Reads until standard error holds `text`; fails the test after `atMost`.
  void WaitForError(const std::string& text, Seconds atMost = Seconds(10));
  void Signal(int signal) const;
  // Nobody reads the standard output from now on.
  void CloseOutput();
  // The exit status, or 128 plus the signal; fails the test and kills it after `atMost`.
  int Wait(Seconds atMost = Seconds(30));

  const std::string& Output() const { return output_.text; }
  const std::string& Error() const { return error_.text; }
  // Of the processor, by the program so far.
  Seconds ProcessorTime() const;
  pid_t Pid() const { return pid_; }

 private:
  struct Stream {
    int descriptor = -1;
    std::string text;
    std::size_t taken = 0;  // by ReadLine
  };

  // Takes what comes within `atMost`; False once both streams have ended.
  bool Read(Seconds atMost);
  void Close(Stream& stream);

  pid_t pid_ = -1;
  Stream output_;
  Stream error_;
  std::optional<int> status_;
};

// The command line of teskread with these arguments.
std::vector<std::string> Teskread(std::vector<std::string> arguments);

// A directory for one test's files, removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

std::string FileText(const std::string& path);
// Returns once the file holds `text`; fails the test after ten seconds.
void WaitForFile(const std::string& path, const std::string& text);
void WriteFile(const std::string& path, const std::string& text);

}  // namespace tesk::test
