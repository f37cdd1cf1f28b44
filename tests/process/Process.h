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

using Texts = std::vector<std::string>;

Texts Joined(Texts first, const Texts& second);

// The command line of teskread with these arguments.
Texts Teskread(const Texts& arguments);

struct Ran {
  int status;
  std::string output;
  std::string error;
};
// teskread with these arguments, run to its end.
Ran RunTeskread(const Texts& arguments);

// A simulated scanner that listens.
class Scanner {
 public:
  explicit Scanner(const Texts& arguments);
  const std::string& Device() const { return device_; }
  // Ends it; its status, 1 where the host broke the rules of the wire.
  int End();
  Process& Program() { return process_; }

 private:
  Process process_;
  std::string device_;
};

// A directory for one test's files, removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();
  std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
};

std::string FileText(const std::string& path);
// Returns once the file holds `text`; fails the test after ten seconds.
void WaitForFile(const std::string& path, const std::string& text);
void WriteFile(const std::string& path, const std::string& text);

}  // namespace tesk::test
