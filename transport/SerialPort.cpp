// The serial control over a platform line. Received bytes are kept here until a driver takes them.
#include "transport/SerialPort.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk {
namespace {

constexpr std::size_t kReceiveLimit = 64 * 1024;  // bytes; a device that sends more than anybody takes waits

constexpr std::array kBitRates = {teskReaderBaudRate110,   teskReaderBaudRate300,   teskReaderBaudRate600,
                                  teskReaderBaudRate1200,  teskReaderBaudRate2400,  teskReaderBaudRate9600,
                                  teskReaderBaudRate14400, teskReaderBaudRate19200, teskReaderBaudRate28800,
                                  teskReaderBaudRate38400, teskReaderBaudRate56000, teskReaderBaudRate128000,
                                  teskReaderBaudRate256000};

RunTimeError BadSettings(const std::string& settings, const std::string& what) {
  return {kErrorInvalidProperty, "Invalid property value", {}, "Line settings \"" + settings + "\": " + what};
}

std::vector<std::string> Parts(const std::string& settings) {
  std::vector<std::string> parts(1);
  for (char c : settings) {
    if (c == ',') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

std::optional<std::int32_t> WholeNumber(const std::string& text) {
  std::int32_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

float StopBits(const std::string& text, const std::string& settings) {
  if (text == "1") return 1;
  if (text == "1.5") return 1.5F;
  if (text == "2") return 2;
  throw BadSettings(settings, "stop bits are 1, 1.5 or 2.");
}

}  // namespace

LineSettings ParseSettings(const std::string& settings) {
  const auto parts = Parts(settings);
  if (parts.size() != 4) throw BadSettings(settings, "expected bit rate, parity, data bits and stop bits.");
  LineSettings line;
  const auto bitRate = WholeNumber(parts[0]);
  if (!bitRate || std::find(kBitRates.begin(), kBitRates.end(), *bitRate) == kBitRates.end()) {
    throw BadSettings(settings, "no such bit rate; 110 to 256000 as the reader's baud rates list them.");
  }
  line.bitRate = *bitRate;
  if (parts[1].size() != 1 || std::string_view("NEOMSneoms ").find(parts[1][0]) == std::string_view::npos) {
    throw BadSettings(settings, "parity is N, E, O, M or S.");
  }
  // A blank is how setup dialogs store space parity.
  line.parity = parts[1][0] == ' ' ? 'S' : static_cast<char>(parts[1][0] & ~0x20);
  const auto dataBits = WholeNumber(parts[2]);
  if (!dataBits || *dataBits < 4 || *dataBits > 8) throw BadSettings(settings, "data bits are 4 to 8.");
  line.dataBits = *dataBits;
  line.stopBits = StopBits(parts[3], settings);
  return line;
}

std::string SettingsText(std::int32_t bitRate, const std::string& parity, std::int32_t dataBits,
                         float stopBits) {
  return NumberText(bitRate) + "," + parity + "," + NumberText(dataBits) + "," + NumberText(stopBits);
}

SerialPort::SerialPort(std::shared_ptr<SerialSystem> system) : system_(std::move(system)) {}

void SerialPort::SetCommPort(std::int16_t port) {
  if (line_) throw RunTimeError(kErrorPortOpen, "Operation not valid while the port is open");
  if (port < 1 || port > 16) throw RunTimeError(kErrorPort, "Invalid port number");
  port_ = port;
}

void SerialPort::SetSettings(const std::string& settings) {
  LineSettings parsed = ParseSettings(settings);
  parsed.handshaking = settings_.handshaking;
  settings_ = parsed;
  settingsText_ = settings;
}

void SerialPort::SetHandshaking(std::int32_t handshaking) {
  if (handshaking < teskReaderFlowControlNone || handshaking > teskReaderFlowControlBoth) {
    throw RunTimeError(kErrorInvalidProperty, "Invalid property value", {}, "Handshaking is 0 to 3.");
  }
  settings_.handshaking = static_cast<teskReaderFlowControl>(handshaking);
}

void SerialPort::SetPortOpen(bool open) {
  if (open == PortOpen()) {
    throw open ? RunTimeError(kErrorPortInUse, "Port already open")
               : RunTimeError(kErrorPortNotOpen, "The port is not open");
  }
  waiting_.clear();
  taken_ = 0;
  if (open) {
    line_ = system_->Open(port_, settings_);
  } else {
    line_.reset();
  }
}

void SerialPort::SetInputLen(std::int16_t length) {
  if (length < 0) throw RunTimeError(kErrorInvalidProperty, "Invalid property value");
  inputLen_ = length;
}

SerialLine& SerialPort::OpenLine() {
  if (!line_) throw RunTimeError(kErrorPortClosed, "Operation valid only when the port is open");
  return *line_;
}

void SerialPort::Receive() {
  SerialLine& line = OpenLine();
  if (Waiting() >= kReceiveLimit) return;
  // Bytes that were taken go when they are the most, not one by one.
  if (taken_ >= Waiting()) waiting_.erase(0, std::exchange(taken_, 0));
  waiting_ += line.Read();
}

std::int32_t SerialPort::InBufferCount() {
  Receive();
  return Narrow<std::int32_t>(Waiting());
}

std::string SerialPort::Input() {
  const auto wanted = static_cast<std::size_t>(inputLen_);
  OpenLine();
  if (wanted == 0 || Waiting() < wanted) Receive();
  std::string taken = waiting_.substr(taken_, wanted == 0 ? std::string::npos : wanted);
  taken_ += taken.size();
  return taken;
}

void SerialPort::Output(std::string_view bytes) { OpenLine().Write(bytes); }

ArrivalHandle SerialPort::Arrival() const { return line_ ? line_->Arrival() : kNoArrivalHandle; }

}  // namespace tesk
