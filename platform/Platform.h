// What the operating system gives to the programs: serial lines, time, the operator's console, files,
// pseudo-terminals. Each system implements these in a folder of its own; no system header is needed here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/HostServices.h"
#include "transport/HostLoop.h"
#include "transport/SerialLine.h"

namespace tesk::platform {

// Error numbers of the automation run-time for files.
inline constexpr std::int32_t kErrorFileExists = 58;
inline constexpr std::int32_t kErrorDiskFull = 61;
inline constexpr std::int32_t kErrorFileInUse = 70;
inline constexpr std::int32_t kErrorFileAccess = 75;

// The serial lines of this machine. Port 1 is `explicitPort` where one is given (a device path, or a name
// such as "COM23" on Windows); TESKREADER_PORT_<N> in the environment names any other port.
std::shared_ptr<SerialSystem> CreateSerialSystem(std::string explicitPort = {});

// The device behind Port 1 to 16.
std::string DeviceOfPort(std::int16_t port);
// The device that a person's word for one means: on Linux "ttyACM0" is /dev/ttyACM0, unless a file of that name
// is in the present folder; a path is made absolute.
std::string DeviceOfName(const std::string& name);
// Whether two names mean one device.
bool SameDevice(const std::string& one, const std::string& other);

// runMessages: lets the host's own work run, true when there was some; may be empty. It may throw.
std::shared_ptr<HostLoop> CreateHostLoop(std::function<bool()> runMessages = {});

std::shared_ptr<const Clock> CreateClock();

// The standard error stream as a message box.
std::shared_ptr<MessageBox> CreateConsoleBox();
// What it prints: "TITLE: TEXT" and a line end; the text's further lines, parted by "|", indented by two.
std::string ConsoleText(const std::string& title, const std::string& text);

bool StandardInputIsTerminal();
bool StandardErrorIsTerminal();
bool StandardOutputIsTerminal();

// To be called first of all: a standard stream that was closed is taken, so that no port and no file gets its
// number; what is written to it fails.
void ReserveStandardStreams();

// The program's name and arguments as UTF-8, whatever the system's code page.
std::vector<std::string> CommandLineTexts(int argc, char** argv);

// From now on an interrupt (Ctrl-C, a terminal that hangs up, or the request to end) is noted and ends the wait
// that it meets, instead of ending the program; a reader of our output that goes away and a file that may not
// grow are failed writes. A hang-up that was ignored at the start stays so.
void InstallInterruptHandler();
// The first interrupt by its signal's number: 1 hang-up, 2 Ctrl-C, 15 the request to end; 0: none yet.
int InterruptSignal();
inline bool Interrupted() { return InterruptSignal() != 0; }

// A file of whole records: however the program ends, the file ends with one. Also a pipe, a terminal or another
// device, which take nothing back. All throw error 61 (disk full) or 75.
class OutputFile {
 public:
  virtual ~OutputFile() = default;
  // Throws where nothing can be written; as far as that can be told without writing.
  virtual void Check() = 0;
  // What was written of a record that failed is taken back. A pipe or a terminal is waited for, but behind an
  // interrupt no longer than three seconds.
  virtual void Append(std::string_view record) = 0;
  // A record whose last words are known later: a file holds it from Keep on and Settle replaces it where it has
  // become another; a pipe or a terminal gets it with Settle, and Keep only checks that somebody takes it.
  virtual void Keep(std::string_view record) = 0;
  virtual void Settle(std::string_view record) = 0;
  // Brings everything to the disk. The destructor does so too, but keeps errors to itself.
  virtual void Close() = 0;
  // Removes a file that was made for this object and holds nothing.
  virtual void Discard() = 0;
};

enum class OpenMode {
  New,      // error 58 where a file is there; a pipe or a device is taken as it is
  Append,   // behind what is there
  Replace,  // empties what is there
};

// Held exclusively: error 70 while another program writes to it. Throws error 75 with the system's reason.
std::unique_ptr<OutputFile> OpenOutputFile(const std::string& path, OpenMode mode);
std::unique_ptr<OutputFile> StandardOutput();

// The scanner's end of a line whose other end is a terminal device that a host opens. Hosts may come and go.
class PseudoTerminal {
 public:
  virtual ~PseudoTerminal() = default;
  virtual std::string DevicePath() const = 0;
  // The other terminal that the link led to before; empty where it led to none.
  virtual std::string Replaced() const { return {}; }
  // What the host sent, at most 64 KiB; never blocks. Throws error 8020.
  virtual std::string Read() = 0;
  // The number of bytes taken, fewer than given where no host reads; never blocks. Throws error 8021.
  virtual std::size_t Write(std::string_view bytes) = 0;
  // Returns when bytes from the host wait, on an interrupt, after `atMost`, or, with `forRoom`, when some
  // bytes can be written.
  virtual void Wait(Milliseconds atMost, bool forRoom = false) = 0;
};

// link: where not empty, a symbolic link to the device that lives as long as the object. It replaces nothing but
// a symbolic link to a pseudo-terminal; error 58 where anything else stands there, 75 where it cannot be made.
// Error 445 on a system without pseudo-terminals.
std::unique_ptr<PseudoTerminal> CreatePseudoTerminal(const std::string& link = {});

}  // namespace tesk::platform
