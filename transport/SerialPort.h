// The library's own serial control: the properties of the control over a line of the platform.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "transport/SerialLine.h"

namespace tesk {

// "9600,N,8,1" taken apart. Throws error 380 for a text that is not four parts or holds a value that no
// line has; which of the remaining ones this line can do shows at opening.
LineSettings ParseSettings(const std::string& settings);
// The same text from its parts; they are taken as they are.
std::string SettingsText(std::int32_t bitRate, const std::string& parity, std::int32_t dataBits,
                         float stopBits);

class SerialPort : public SerialControl {
 public:
  explicit SerialPort(std::shared_ptr<SerialSystem> system);

  std::int16_t CommPort() const override { return port_; }
  void SetCommPort(std::int16_t port) override;  // error 8002 outside 1..16, 8000 while the port is open
  std::string Settings() const override { return settingsText_; }
  void SetSettings(const std::string& settings) override;  // takes effect at the next opening
  std::int32_t Handshaking() const override { return settings_.handshaking; }
  void SetHandshaking(std::int32_t handshaking) override;  // error 380 outside 0..3
  bool PortOpen() const override { return line_ != nullptr; }
  void SetPortOpen(bool open) override;  // error 8005 where it is open already, 8012 where it is closed
  std::int16_t InputLen() const override { return inputLen_; }
  void SetInputLen(std::int16_t length) override;  // error 380 below 0
  std::int32_t InBufferCount() override;
  std::string Input() override;
  void Output(std::string_view bytes) override;
  ArrivalHandle Arrival() const override;

 private:
  void Receive();
  std::size_t Waiting() const { return waiting_.size() - taken_; }
  SerialLine& OpenLine();

  std::shared_ptr<SerialSystem> system_;
  std::unique_ptr<SerialLine> line_;
  LineSettings settings_;
  std::string settingsText_ = "9600,N,8,1";
  std::int16_t port_ = 1;
  std::int16_t inputLen_ = 0;
  std::string waiting_;
  std::size_t taken_ = 0;  // of the first bytes of waiting_
};

}  // namespace tesk
