// Starting, reading and ending programs.
#include "tests/process/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace tesk::test {
namespace {

using SteadyClock = std::chrono::steady_clock;

[[noreturn]] void RunChild(const std::vector<std::string>& arguments, int output, int error) {
  std::vector<char*> pointers;
  for (const auto& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  signal(SIGHUP, SIG_DFL);  // whoever runs the tests may ignore it
  const int empty = open("/dev/null", O_RDONLY);
  dup2(empty, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(error, STDERR_FILENO);
  execv(pointers[0], pointers.data());
  _exit(127);
}

}  // namespace

Process::Process(std::vector<std::string> arguments, const std::string& output) {
  std::array<int, 2> outputPipe{};
  std::array<int, 2> errorPipe{};
  if (pipe2(outputPipe.data(), O_CLOEXEC) != 0 || pipe2(errorPipe.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  const int file = output.empty() ? -1 : open(output.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  pid_ = fork();
  if (pid_ < 0) throw std::runtime_error("no process");
  if (pid_ == 0) RunChild(arguments, file >= 0 ? file : outputPipe[1], errorPipe[1]);
  if (file >= 0) close(file);
  close(outputPipe[1]);
  close(errorPipe[1]);
  output_.descriptor = outputPipe[0];
  error_.descriptor = errorPipe[0];
}

Process::~Process() {
  if (!status_) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Close(output_);
  Close(error_);
}

void Process::Close(Stream& stream) {
  if (stream.descriptor >= 0) close(stream.descriptor);
  stream.descriptor = -1;
}

void Process::CloseOutput() { Close(output_); }

bool Process::Read(Seconds atMost) {
  std::array<pollfd, 2> polled{{{output_.descriptor, POLLIN, 0}, {error_.descriptor, POLLIN, 0}}};
  if (poll(polled.data(), polled.size(), static_cast<int>(atMost.count() * 1000) + 1) > 0) {
    for (std::size_t i = 0; i < polled.size(); ++i) {
      if (polled[i].revents == 0) continue;
      Stream& stream = i == 0 ? output_ : error_;
      std::array<char, 65536> buffer{};
      const ssize_t length = read(stream.descriptor, buffer.data(), buffer.size());
      if (length > 0) stream.text.append(buffer.data(), static_cast<std::size_t>(length));
      if (length <= 0) Close(stream);
    }
  }
  return output_.descriptor >= 0 || error_.descriptor >= 0;
}

std::string Process::ReadLine(Seconds atMost) {
  const auto end = SteadyClock::now() + atMost;
  for (bool more = true; more;) {
    const std::size_t feed = output_.text.find('\n', output_.taken);
    if (feed != std::string::npos) {
      const std::string line = output_.text.substr(output_.taken, feed - output_.taken);
      output_.taken = feed + 1;
      return line;
    }
    more = SteadyClock::now() < end && Read(Seconds(0.1));
  }
  ADD_FAILURE() << "no line on standard output; standard error: " << error_.text;
  return {};
}

void Process::Signal(int signal) const { kill(pid_, signal); }

int Process::Wait(Seconds atMost) {
  const auto end = SteadyClock::now() + atMost;
  while (Read(Seconds(0.1)) && SteadyClock::now() < end) {
  }
  int status = 0;
  pid_t ended = 0;
  while ((ended = waitpid(pid_, &status, WNOHANG)) == 0 && SteadyClock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (ended == 0) {
    ADD_FAILURE() << "the program did not end; standard error: " << error_.text;
    kill(pid_, SIGKILL);
    waitpid(pid_, &status, 0);
  }
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return *status_;
}

Seconds Process::ProcessorTime() const {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(pid_, &clock) != 0 || clock_gettime(clock, &time) != 0) return Seconds(1e9);
  return Seconds(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9);
}

Texts Joined(Texts first, const Texts& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Texts Teskread(const Texts& arguments) { return Joined({TESKREAD_BINARY}, arguments); }

Ran RunTeskread(const Texts& arguments) {
  Process process(Teskread(arguments));
  const int status = process.Wait();
  return {status, process.Output(), process.Error()};
}

Scanner::Scanner(const Texts& arguments) : process_(Teskread(Joined({"simulate"}, arguments))) {
  const std::string line = process_.ReadLine();
  EXPECT_EQ(line.find("listening on /"), 0U) << line;
  device_ = line.substr(std::string("listening on ").size());
}

int Scanner::End() {
  process_.Signal(SIGTERM);
  return process_.Wait();
}

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "teskread-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
  path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WaitForFile(const std::string& path, const std::string& text) {
  const auto end = SteadyClock::now() + Seconds(10);
  while (FileText(path).find(text) == std::string::npos) {
    if (SteadyClock::now() > end) {
      ADD_FAILURE() << path << " has no " << text;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace tesk::test
