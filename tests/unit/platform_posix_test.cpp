// The Linux side of the platform over real pseudo-terminals.
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/HostLoop.h"
#include "platform/posix/LineCounters.h"
#include "platform/posix/ParityMarks.h"
#include "platform/posix/SerialLine.h"
#include "tests/support/Folder.h"

namespace tesk::platform {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;
using test::Content;
using test::Folder;
using ::testing::FieldsAre;
using ::testing::HasSubstr;

// The number of the error, its description and its detail.
using Failure = std::tuple<std::int32_t, std::string, std::string>;

Failure FailureOf(const std::function<void()>& body) {
  try {
    body();
  } catch (const RunTimeError& error) {
    return {error.Number(), error.Description(), error.Detail()};
  }
  return {-1, "", ""};
}

std::int32_t NumberOf(const std::function<void()>& body) { return std::get<0>(FailureOf(body)); }

std::unique_ptr<SerialLine> OpenPath(const std::string& path, const LineSettings& settings = {},
                                     Milliseconds patience = Milliseconds(50)) {
  return PosixSerialSystem([path](std::int16_t) { return path; }, patience).Open(1, settings);
}

termios2 ModesOf(const std::string& device) {
  const Descriptor terminal(::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK));
  termios2 modes{};
  EXPECT_EQ(::ioctl(terminal.Get(), TCGETS2, &modes), 0);
  return modes;
}

std::string ReadWithin(SerialLine& line, std::size_t size) {
  std::string bytes;
  PosixHostLoop loop;
  for (int turn = 0; turn < 200 && bytes.size() < size; ++turn) {
    loop.Pause(line.Arrival(), Milliseconds(10));
    bytes += line.Read();
  }
  return bytes;
}

std::string SentWithin(PseudoTerminal& terminal, std::size_t size) {
  std::string bytes;
  for (int turn = 0; turn < 200 && bytes.size() < size; ++turn) {
    terminal.Wait(Milliseconds(10));
    bytes += terminal.Read();
  }
  return bytes;
}

Milliseconds ProcessorTime() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::duration_cast<Milliseconds>(std::chrono::seconds(time.tv_sec) +
                                                  std::chrono::nanoseconds(time.tv_nsec));
}

struct PosixSerialLine : testing::Test {
  std::unique_ptr<PseudoTerminal> terminal = CreatePseudoTerminal();
  const std::string device = terminal->DevicePath();
  PosixHostLoop loop;
};
struct PosixWaiting : PosixSerialLine {};
struct PosixPseudoTerminal : PosixSerialLine {};

TEST_F(PosixSerialLine, EverySettingReachesTheDevice) {
  struct Case {
    LineSettings settings;
    tcflag_t control;  // of PARODD, CMSPAR, CSTOPB, CRTSCTS; a pseudo-terminal drops PARENB and CSIZE
    tcflag_t input;    // of IXON, IXOFF
  };
  const Case cases[] = {{{9600, 'N', 8, 1}, 0, 0},
                        {{1200, 'E', 7, 1}, 0, 0},
                        {{1200, 'O', 7, 2}, PARODD | CSTOPB, 0},
                        {{1200, 'M', 6, 1}, PARODD | CMSPAR, 0},
                        {{1200, 'S', 5, 1.5F}, CMSPAR | CSTOPB, 0},
                        {{9600, 'N', 8, 1, teskReaderFlowControlXonXoff}, 0, IXON | IXOFF},
                        {{9600, 'N', 8, 1, teskReaderFlowControlHardware}, CRTSCTS, 0},
                        {{9600, 'N', 8, 1, teskReaderFlowControlBoth}, CRTSCTS, IXON | IXOFF}};
  for (std::int32_t rate :
       {110, 300, 600, 1200, 2400, 9600, 14400, 19200, 28800, 38400, 56000, 128000, 256000}) {
    const auto line = OpenPath(device, {rate, 'N', 8, 1});
    const termios2 modes = ModesOf(device);
    EXPECT_EQ(modes.c_ospeed, static_cast<speed_t>(rate));
    EXPECT_EQ(modes.c_ispeed, modes.c_ospeed);
  }
  for (const auto& [settings, control, input] : cases) {
    const auto line = OpenPath(device, settings);
    const termios2 modes = ModesOf(device);
    EXPECT_EQ(modes.c_cflag & (PARODD | CMSPAR | CSTOPB | CRTSCTS), control) << settings.parity;
    EXPECT_EQ(modes.c_iflag & (IXON | IXOFF), input) << settings.handshaking;
    EXPECT_EQ(modes.c_iflag & (PARMRK | INPCK | IGNPAR), static_cast<tcflag_t>(PARMRK | INPCK))
        << "a damaged byte must come marked";
    EXPECT_EQ(modes.c_lflag & (ICANON | ECHO | ISIG), 0U);
  }
}

TEST_F(PosixSerialLine, RefusesSettingsThatNoLineCanDoAndNamesThem) {
  const std::pair<LineSettings, const char*> cases[] = {
      {{9600, 'N', 4, 1}, "4 data bits"},
      {{9600, 'N', 8, 1.5F}, "1.5 stop bits with 8 data bits"},
      {{9600, 'N', 5, 2}, "2 stop bits with 5 data bits"},
      {{9600, 'X', 8, 1}, "parity \"X\""},
      {{0, 'N', 8, 1}, "0 bits per second"},
      {{9600, 'N', 8, 1, static_cast<teskReaderFlowControl>(4)}, "handshaking 4"}};
  const termios2 before = ModesOf(device);
  for (const auto& [settings, named] : cases) {
    EXPECT_THAT(FailureOf([&, &s = settings] { OpenPath(device, s); }),
                FieldsAre(kErrorLineSettings, HasSubstr(named), testing::_));
  }
  EXPECT_EQ(ModesOf(device).c_ospeed, before.c_ospeed);
  EXPECT_NO_THROW(OpenPath(device)) << "a refusal must not leave the device held";
}

TEST_F(PosixSerialLine, ClosingRestoresTheOldModesAndLetsOthersIn) {
  const Descriptor other(::open(device.c_str(), O_RDWR | O_NOCTTY));
  termios2 old{};
  ::ioctl(other.Get(), TCGETS2, &old);
  old.c_cflag = (old.c_cflag & ~static_cast<tcflag_t>(CBAUD)) | BOTHER;
  old.c_ispeed = old.c_ospeed = 4800;
  old.c_lflag |= ICANON;
  old.c_iflag |= INLCR;
  ::ioctl(other.Get(), TCSETS2, &old);
  auto line = OpenPath(device, {19200, 'E', 7, 1});
  EXPECT_EQ(NumberOf([&] { OpenPath(device); }), kErrorPortInUse);
  EXPECT_EQ(ModesOf(device).c_ospeed, 19200U) << "a refused opener must not touch the line";
  line.reset();
  EXPECT_EQ(ModesOf(device).c_ospeed, 4800U);
  EXPECT_EQ(ModesOf(device).c_lflag, old.c_lflag);
  EXPECT_EQ(ModesOf(device).c_iflag, old.c_iflag);
  EXPECT_NO_THROW(OpenPath(device));
}

TEST_F(PosixSerialLine, ADeviceThatCannotBeOpenedIsExplained) {
  const Folder folder;
  std::ofstream(folder.File("plain")) << "text";
  ::mkfifo(folder.File("fifo").c_str(), 0600);
  const std::tuple<std::string, const char*, const char*> cases[] = {
      {folder.File("missing"), "No such file or directory", "missing: No such file"},
      {folder.File("plain"), "not a serial port", "mode -rw"},
      {folder.File("fifo"), "not a serial port", "mode ?rw-------"},
      {folder.File(""), "not a serial port", "mode drwx------"},
      {"/dev/null", "not a serial port (Inappropriate ioctl", "user root, group root, mode crw-rw-rw-"}};
  for (const auto& [path, reason, owner] : cases) {
    EXPECT_THAT(FailureOf([&p = path] { OpenPath(p); }),
                FieldsAre(kErrorPort, AllOf(HasSubstr(path), HasSubstr(reason)),
                          AllOf(HasSubstr("runs as user "), HasSubstr(owner), HasSubstr("dialout"),
                                HasSubstr("|- Does another program"), HasSubstr("TESKREADER_PORT_<N>"))));
  }
  EXPECT_EQ(Content(folder.File("plain")), "text");
}

TEST_F(PosixSerialLine, PortNumbersBecomeDevices) {
  ::setenv("TESKREADER_PORT_3", "/dev/serial/by-id/adaptor", 1);
  ::setenv("TESKREADER_PORT_4", "", 1);
  const auto paths = DefaultDevicePaths("/dev/pts/77");
  EXPECT_EQ(paths(1), "/dev/pts/77");
  EXPECT_EQ(paths(3), "/dev/serial/by-id/adaptor");
  EXPECT_EQ(paths(4), "/dev/ttyS3");
  EXPECT_EQ(paths(8), "/dev/ttyS7");
  EXPECT_EQ(paths(9), "/dev/ttyUSB0");
  EXPECT_EQ(paths(16), "/dev/ttyUSB7");
  EXPECT_EQ(DefaultDevicePaths("")(1), "/dev/ttyS0");
  ::unsetenv("TESKREADER_PORT_3");
  ::unsetenv("TESKREADER_PORT_4");
  for (const std::int16_t port : std::initializer_list<std::int16_t>{-1, 0, 17}) {
    EXPECT_EQ(NumberOf([&] { CreateSerialSystem("/dev/null")->Open(port, {}); }), kErrorPort);
  }
}

TEST_F(PosixSerialLine, EveryByteValuePassesUnchangedInBothDirections) {
  std::string all;
  for (int value = 0; value < 256; ++value) all += static_cast<char>(value);
  terminal->Write("left over");
  loop.Pause(Descriptor(::open(device.c_str(), O_RDWR | O_NOCTTY)).Get(), Milliseconds(1000));
  const auto line = OpenPath(device);
  EXPECT_EQ(line->Read(), "") << "what came before the opening is dropped";
  EXPECT_EQ(terminal->Write(all), all.size());
  EXPECT_EQ(ReadWithin(*line, all.size()), all);
  line->Write(all);
  EXPECT_EQ(SentWithin(*terminal, all.size()), all);
}

TEST_F(PosixSerialLine, ADeviceThatGoesAwayIsAnErrorAtOnceAndNoSpin) {
  const auto line = OpenPath(device);
  terminal.reset();
  const auto start = steady_clock::now();
  const auto used = ProcessorTime();
  while (steady_clock::now() - start < Milliseconds(100)) loop.DoEvents(line->Arrival());
  EXPECT_LT(ProcessorTime() - used, Milliseconds(20));
  for (int turn = 0; turn < 2; ++turn) {
    EXPECT_THAT(FailureOf([&] { line->Read(); }),
                FieldsAre(kErrorLineRead, "The device " + device + " is gone.", testing::_));
  }
  EXPECT_EQ(NumberOf([&] { line->Write("x"); }), kErrorLineWrite);
}

TEST_F(PosixSerialLine, AWriteThatNobodyTakesEndsAndGoesOnAfterXon) {
  const auto line = OpenPath(device, {9600, 'N', 8, 1, teskReaderFlowControlXonXoff});
  terminal->Write("\x13!");
  EXPECT_EQ(ReadWithin(*line, 1), "!");
  EXPECT_THAT(FailureOf([&] { line->Write("held"); }),
              FieldsAre(kErrorLineWrite, testing::_, HasSubstr("handshaking")));
  terminal->Write("\x11!");
  EXPECT_EQ(ReadWithin(*line, 1), "!");
  line->Write("free");
  EXPECT_EQ(SentWithin(*terminal, 4), "free");
  EXPECT_EQ(NumberOf([&] { line->Write(std::string(1'000'000, 'x')); }), kErrorLineWrite);
}

TEST_F(PosixWaiting, WaitingUsesNoProcessorTimeAndAPauseWithoutArrivalEnds) {
  const auto line = OpenPath(device);
  for (ArrivalHandle handle : {line->Arrival(), kNoArrivalHandle}) {
    const auto start = steady_clock::now();
    const auto used = ProcessorTime();
    loop.Pause(handle, Milliseconds(20));
    loop.Pause(handle, Milliseconds(-1));
    EXPECT_GE(steady_clock::now() - start, Milliseconds(20));
    while (steady_clock::now() - start < Milliseconds(200)) loop.DoEvents(handle);
    EXPECT_LT(ProcessorTime() - used, Milliseconds(20));
  }
}

TEST_F(PosixWaiting, AByteEndsWaitsForArrivalButNoPrescribedPause) {
  const auto line = OpenPath(device);
  terminal->Write("x");
  const auto start = steady_clock::now();
  for (int turn = 0; turn < 20; ++turn) {
    loop.DoEvents(line->Arrival());
    loop.Pause(line->Arrival(), Milliseconds(30'000));
  }
  EXPECT_LT(steady_clock::now() - start, Milliseconds(150));
  const auto before = steady_clock::now();
  loop.Sleep(Milliseconds(20));
  EXPECT_GE(steady_clock::now() - before, Milliseconds(20));
}

TEST_F(PosixWaiting, WaitsOnlyWhenNoMessageRan) {
  int ran = 0;
  PosixHostLoop messages([&] { return ++ran <= 1000; });
  const auto start = steady_clock::now();
  for (int turn = 0; turn < 1000; ++turn) messages.DoEvents(kNoArrivalHandle);
  EXPECT_LT(steady_clock::now() - start, Milliseconds(1000)) << "a message that ran must not cost a wait";
  EXPECT_EQ(ran, 1000);
}

TEST_F(PosixPseudoTerminal, AHostThatDoesNotReadBlocksNobody) {
  const auto line = OpenPath(device);
  const std::string many(1'000'000, 'y');
  std::size_t taken = 0;
  for (int turn = 0; turn < 10; ++turn) {
    taken += terminal->Write(many);
    terminal->Wait(Milliseconds(5), true);
  }
  EXPECT_LT(taken, many.size());
  EXPECT_EQ(ReadWithin(*line, taken).size(), taken) << "the count must be what the host can read";
}

TEST_F(PosixPseudoTerminal, ALinkThatACrashLeftIsReplacedAndOneThatWasTakenOverIsNotOurs) {
  const Folder folder;
  const std::string link = folder.File("port");
  fs::create_symlink("/dev/pts/999999", link);
  auto first = CreatePseudoTerminal(link);
  EXPECT_EQ(first->Replaced(), "");
  const auto second = CreatePseudoTerminal(link);
  EXPECT_EQ(second->Replaced(), first->DevicePath());
  first.reset();
  EXPECT_EQ(fs::read_symlink(link), second->DevicePath());
  const std::string other = folder.File("null");
  fs::create_symlink("/dev/null", other);
  EXPECT_EQ(NumberOf([&] { CreatePseudoTerminal(other); }), kErrorFileExists);
  EXPECT_EQ(NumberOf([&] { CreatePseudoTerminal(folder.File("no/such/folder")); }), kErrorFileAccess);
}

TEST(ConsoleBox, ShowsFurtherLinesIndented) {
  EXPECT_EQ(ConsoleText("Reader Error", "one|two||three"), "Reader Error: one\n  two\n  \n  three\n");
  ::testing::internal::CaptureStderr();
  CreateConsoleBox()->Show("Title", "text");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Title: text\n");
}

TEST(OutputFile, NothingThatIsThereIsDestroyed) {
  const Folder folder;
  const std::string path = folder.File("out");
  std::ofstream(path).flush();
  ASSERT_EQ(::symlink("nowhere", folder.File("link").c_str()), 0);
  EXPECT_EQ(NumberOf([&] { OpenOutputFile(folder.File("link"), OpenMode::New); }), kErrorFileExists);
  const auto file = OpenOutputFile(path, OpenMode::Append);
  for (const OpenMode mode : {OpenMode::Append, OpenMode::Replace}) {
    EXPECT_EQ(NumberOf([&] { OpenOutputFile(path, mode); }), kErrorFileInUse) << "a second writer";
  }
  file->Discard();
  EXPECT_TRUE(fs::exists(path)) << "it was there before";
  OpenOutputFile(folder.File("new"), OpenMode::Append)->Discard();
  EXPECT_FALSE(fs::exists(folder.File("new")));
}

TEST(OutputFile, ReplacesTheOldContentWithWholeRecordsAndTheLastUnlessSomebodyWroteBehindIt) {
  const Folder folder;
  const std::string path = folder.File("out");
  std::ofstream(path) << "an older and much longer content";
  const auto file = OpenOutputFile(path, OpenMode::Replace);
  file->Append("one\n");
  EXPECT_EQ(Content(path), "one\n") << "a record must not wait in a buffer";
  file->Keep("two ejected\n");
  EXPECT_EQ(Content(path), "one\ntwo ejected\n");
  file->Settle("two failed\n");
  EXPECT_EQ(Content(path), "one\ntwo failed\n");
  file->Keep("three ejected\n");
  std::ofstream(path, std::ios::app) << "theirs\n";
  file->Settle("three failed\n");
  file->Close();
  file->Close();
  EXPECT_EQ(Content(path), "one\ntwo failed\nthree ejected\ntheirs\n");
  EXPECT_THAT(
      FailureOf([] { OpenOutputFile("/no/such/folder/out", OpenMode::New); }),
      FieldsAre(kErrorFileAccess,
                AllOf(HasSubstr("/no/such/folder/out"), HasSubstr("No such file or directory")), testing::_));
  const auto full = OpenOutputFile("/dev/full", OpenMode::New);
  EXPECT_EQ(NumberOf([&] { full->Append("record"); }), kErrorDiskFull);
}

TEST(OutputFile, APipeGetsARecordOnceItIsSettledAndOneThatNobodyReadsIsToldBefore) {
  const Folder folder;
  const std::string path = folder.File("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(NumberOf([&] { OpenOutputFile(path, OpenMode::New); }), kErrorFileAccess) << "nobody reads it";
  const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
  const auto pipe = OpenOutputFile(path, OpenMode::New);
  std::array<char, 16> bytes{};
  pipe->Keep("record\n");
  EXPECT_EQ(::read(reader, bytes.data(), bytes.size()), -1);
  pipe->Settle("other\n");
  EXPECT_EQ(::read(reader, bytes.data(), bytes.size()), 6);
  ::close(reader);
  EXPECT_EQ(NumberOf([&] { pipe->Keep("record\n"); }), kErrorFileAccess);
}

TEST(ParityMarks, EverySplitYieldsTheBytesAndTheDamage) {
  const std::string marked(
      "a\xFF\xFF"
      "b\xFF\0x"
      "c\xFF\xFF",
      10);
  for (std::size_t split = 0; split <= marked.size(); ++split) {
    platform::ParityMarks marks;
    std::string bytes = marks.Take(marked.substr(0, split));
    bytes += marks.Take(marked.substr(split));
    EXPECT_EQ(bytes,
              "a\xFF"
              "bc\xFF")
        << split;
    EXPECT_TRUE(marks.TakeDamage()) << split;
    EXPECT_FALSE(marks.TakeDamage()) << split;
  }
}

TEST(CounterWatch, TellsWhatWasCountedSinceTheLastLookAndNothingOfBefore) {
  const LineCounters opened{3, 1, 4, 1, 5};  // parity, framing, break, port and system overruns
  CounterWatch watch;
  watch.Start(opened);
  EXPECT_EQ(watch.Look(opened), std::nullopt);
  LineCounters now = opened;
  for (std::size_t i = 0; i < now.size(); ++i) {
    now[i] += 2;
    EXPECT_EQ(watch.Look(now), kCounted[i]);
    EXPECT_EQ(watch.Look(now), std::nullopt);
  }
  watch.Start(std::nullopt);
  EXPECT_EQ(watch.Look(std::nullopt), std::nullopt) << "a device that counts nothing";
  EXPECT_EQ(watch.Look(now), std::nullopt);
}

TEST_F(PosixSerialLine, LostBytesFailTheReadWhetherOrNotOthersCameBehindThem) {
  for (const bool others : {true, false}) {
    LineCounters counted{};
    const auto line = PosixSerialSystem([&](std::int16_t) { return device; }, Milliseconds(1000),
                                        [&](int) { return std::optional(counted); })
                          .Open(1, {});
    EXPECT_EQ(line->Read(), "");
    counted.back() += 1;
    if (others) terminal->Write("7");
    EXPECT_THAT(FailureOf([&] { ReadWithin(*line, 1); }),
                FieldsAre(kErrorLineRead, "A byte from " + device + " came damaged.",
                          HasSubstr("the system had room")))
        << others;
    EXPECT_EQ(line->Read(), "");
  }
}

}  // namespace
}  // namespace tesk::platform
