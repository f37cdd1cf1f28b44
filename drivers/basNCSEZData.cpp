// The readers of this family say who they are when they are asked:
//
//   host     DC2 ESC "V" DC2 "E"               identify yourself
//   scanner  "OMR-1100 - Version 1.04" CR      a line that contains "Version"
//   scanner  ... CR                            a second line with a date, which nobody needs
#include "drivers/basNCSEZData.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "engine/clsTeskReader.h"
#include "transport/SerialPort.h"
#include "transport/basUtils.h"

namespace tesk::basNCSEZData {
namespace {

constexpr std::string_view kIdentify =
    "\x12\x1BV\x12"
    "E";
constexpr std::string_view kMark = "Version";
constexpr char kCarriageReturn = '\r';
constexpr std::size_t kLongestAnswer = 256;  // bytes; the two lines have some forty

// How long a port may keep silent, and how many characters the line is given time for, in all a good half
// second at 9600 bits per second: sixteen silent ports are to be searched while a person watches.
constexpr std::int32_t kPatience = 500;  // milliseconds
constexpr std::int32_t kCharactersOnLine = 64;
constexpr std::int32_t kBitsPerCharacter = 11;

std::int32_t TimeForAnswer(std::int32_t bitRate) {
  return kPatience + kCharactersOnLine * kBitsPerCharacter * 1000 / std::max(bitRate, 110);
}

// What is found wrong with one port; the search then goes on to the next.
constexpr std::array kPortFaults = {kErrorPort,       kErrorPortInUse, kErrorLineSettings,
                                    kErrorPortClosed, kErrorLineRead,  kErrorLineWrite};

// The engine's communications form, lent for one request: opened on the port with the engine's line settings
// and a deadline of the request's own, and put back as it was found.
class BorrowedComm {
 public:
  explicit BorrowedComm(const clsTeskReader& reader)
      : comm_(reader.fComm()), port_(Deref(comm_).mscComm()), timer_(Deref(comm_).tmrScan()) {
    if (port_->PortOpen()) {
      throw RunTimeError(kErrorPortOpen, "The scanner cannot be asked while its port is open", {},
                         "Stop reading sheets, then try again.");
    }
    interval_ = timer_->Interval();
    commPort_ = port_->CommPort();
    settings_ = port_->Settings();
    handshaking_ = port_->Handshaking();
    inputLen_ = port_->InputLen();
  }
  BorrowedComm(const BorrowedComm&) = delete;
  BorrowedComm& operator=(const BorrowedComm&) = delete;

  // One by one: a control of the host's own may refuse what it held itself.
  ~BorrowedComm() {
    Attempt([&] { timer_->SetEnabled(false); });
    Attempt([&] { timer_->SetInterval(interval_); });
    Attempt([&] { Close(); });
    Attempt([&] { port_->SetCommPort(commPort_); });
    Attempt([&] { port_->SetSettings(settings_); });
    Attempt([&] { port_->SetHandshaking(handshaking_); });
    Attempt([&] { port_->SetInputLen(inputLen_); });
  }

  void Configure(const clsTeskReader& reader, std::int16_t port) {
    port_->SetHandshaking(reader.FlowControl());
    port_->SetCommPort(port);
    port_->SetSettings(
        SettingsText(reader.BaudRate(), reader.Parity(), reader.DataBits(), reader.StopBits()));
    port_->SetInputLen(0);
    timer_->SetInterval(TimeForAnswer(reader.BaudRate()));
  }

  // The first line of the answer without its end; empty where no line came in time or the host gave up.
  std::optional<std::string> Ask(const clsTeskReader& reader) {
    port_->SetPortOpen(true);
    basUtils::DiscardInput(*port_);
    port_->Output(kIdentify);
    timer_->SetEnabled(true);
    std::string answer;
    std::optional<std::string> line;
    while (!(line = FirstLine(answer)) && answer.size() <= kLongestAnswer) {
      if (!timer_->Enabled() || reader.CancelScan()) break;
      reader.Loop().DoEvents(port_->Arrival());
      answer += port_->Input();
    }
    Close();
    return reader.CancelScan() ? std::nullopt : line;
  }

 private:
  // Line ends in front of the answer belong to something else.
  static std::optional<std::string> FirstLine(const std::string& answer) {
    const std::size_t begin = answer.find_first_not_of("\r\n");
    const std::size_t end = begin == std::string::npos ? begin : answer.find(kCarriageReturn, begin);
    if (end == std::string::npos) return std::nullopt;
    return answer.substr(begin, end - begin);
  }

  void Close() {
    if (port_->PortOpen()) port_->SetPortOpen(false);
  }

  std::shared_ptr<frmComm> comm_;
  std::shared_ptr<SerialControl> port_;
  std::shared_ptr<OneShotTimer> timer_;
  std::int32_t interval_ = 0;
  std::int16_t commPort_ = 0;
  std::string settings_;
  std::int32_t handshaking_ = 0;
  std::int16_t inputLen_ = 0;
};

// What the line says of the reader, as far as it can be shown; empty where it is no reader's.
std::optional<std::string> IdentityIn(const std::optional<std::string>& line) {
  if (!line || line->find(kMark) == std::string::npos) return std::nullopt;
  std::string text;
  std::ranges::copy_if(*line, std::back_inserter(text), [](char c) { return c >= ' ' && c <= '~'; });
  return text;
}

}  // namespace

bool ProbePortNCSEZ(clsTeskReader& reader, std::int16_t port) {
  BorrowedComm comm(reader);
  comm.Configure(reader, port);
  std::optional<std::string> line;
  const auto fault = Attempt([&] { line = comm.Ask(reader); });
  if (fault && std::ranges::find(kPortFaults, fault->Number()) == kPortFaults.end()) throw *fault;
  return !fault && IdentityIn(line).has_value();
}

bool FirmwareNCSEZ(clsTeskReader& reader, std::string& firmware) {
  BorrowedComm comm(reader);
  comm.Configure(reader, reader.Port());
  const auto identity = IdentityIn(comm.Ask(reader));
  if (identity) firmware = *identity;
  return identity.has_value();
}

}  // namespace tesk::basNCSEZData
