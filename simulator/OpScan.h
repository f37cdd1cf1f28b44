// The simulated Scantron/NCS OpScan and iNSIGHT scanners: the scanner's side of their wire. It knows base and
// the simulator's own parts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/AwaitingScanner.h"
#include "simulator/Simulators.h"

namespace tesk::simulator {

// What a model has. All of them read both sides.
struct OpScanModel {
  teskReaderType reader;
  bool feeder;
  bool rejecter;
};

// Null where `reader` is none of them.
const OpScanModel* FindOpScanModel(teskReaderType reader);

extern const Family kOpScanFamily;

class OpScan final : public AwaitingScanner {
 public:
  OpScan(const OpScanModel& model, Options options);

  // As the power switch leaves the scanner: its scan mode's letter ("ietdwsy") and the letter of its reports.
  // With "A" or "I" a new scan mode takes effect only when the host has sent DC1.
  void PowerOn(char mode, char reportLetter);
  char ScanMode() const { return mode_; }
  // The imprint position that the host set last; empty before.
  const std::string& ImprintPosition() const { return imprintPosition_; }

 protected:
  void OnByte(std::uint8_t byte, Time now) override;

 private:
  // Yields what is wrong with the command; empty: it was taken.
  using Handler = std::string (OpScan::*)(std::string_view command, Time now);
  struct Command;
  static const Command kCommands[];

  std::string OnStart(std::string_view command, Time now);
  std::string OnRead(std::string_view command, Time now);
  std::string OnSetMode(std::string_view command, Time now);
  std::string OnReport(std::string_view command, Time now);
  std::string OnStatus(std::string_view command, Time now);
  std::string OnClose(std::string_view command, Time now);
  std::string OnEject(std::string_view command, Time now);
  std::string OnReject(std::string_view command, Time now);
  std::string OnPosition(std::string_view command, Time now);
  std::string OnImprint(std::string_view command, Time now);

  std::string ModeReport();
  std::string StatusRecord();
  std::string RecordOf(const Sheet& sheet);
  std::string SpoilRecord(std::string record);

  const OpScanModel& model_;
  std::string command_;
  char mode_ = 'e';
  char reportLetter_ = 'A';
  char askedMode_ = 'e';             // by the host's last command, whether or not it came into effect
  std::optional<char> pendingMode_;  // waits for DC1
  bool modeStuck_ = false;
  bool started_ = false;
  std::int32_t reports_ = 0;
  std::int32_t modeCommands_ = 0;
  std::int32_t toldOf_ = 0;  // the sheet that the last status was about
  std::string imprintPosition_;
  std::string imprint_;
};

}  // namespace tesk::simulator
