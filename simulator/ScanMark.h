// The simulated Scantron ScanMark scanners, the 8000 and the 8400: the scanner's side of their wire. It
// knows base and the simulator's own parts.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "simulator/ScanMarkForm.h"
#include "simulator/Simulators.h"

namespace tesk::simulator {

// What a model has.
struct ScanMarkModel {
  teskReaderType reader;
  bool raw;  // 8000 and 8400: values 0 to 99 as bytes, a read threshold; else 0 to 15 as characters from "0"
  bool duplex;
  bool feeder;
  bool rejecter;
};

// Null where `reader` is none of them.
const ScanMarkModel* FindScanMarkModel(teskReaderType reader);

extern const Family kScanMarkFamily;

class ScanMark final : public SheetScanner {
 public:
  ScanMark(const ScanMarkModel& model, Options options);

 protected:
  void OnByte(std::uint8_t byte, Time now) override;

 private:
  // Yields what is wrong with the text after the command's name; empty: it was taken and answered.
  using Handler = std::string (ScanMark::*)(std::string_view fields, Time now);
  struct Command;
  static const Command kCommands[];

  void OnLine(std::string_view line, Time now);
  std::string Run(const Command& command, std::string_view fields, Time now);
  void Refuse(const std::string& complaint, std::string_view line, Time now);
  void Answer(std::string_view bytes, Time now) { Reply(bytes, now, Settings().timings.answer); }
  std::string Acknowledge(std::string complaint, Time now);

  std::string OnReset(std::string_view fields, Time now);
  std::string OnThreshold(std::string_view fields, Time now);
  std::string OnFormStart(std::string_view fields, Time now);
  std::string OnMarkColumns(std::string_view fields, Time now);
  std::string OnRegion(std::string_view fields, Time now);
  std::string OnFormEnd(std::string_view fields, Time now);
  std::string OnPrinter(std::string_view fields, Time now);
  std::string OnStatus(std::string_view fields, Time now);
  std::string OnRead(std::string_view fields, Time now);
  std::string OnEject(std::string_view fields, Time now);

  std::string StatusRecord(Time now);
  char WireValue(std::int16_t value) const;
  std::string SheetData(const Sheet& sheet);

  const ScanMarkModel& model_;
  std::string line_;
  ScanMarkForm form_;
  bool imprinterOn_ = false;
  bool statusOwed_ = false;  // a sheet was read and no status asked since
  bool lateOnWire_ = false;
  std::int32_t resets_ = 0;
  std::map<FaultKind, std::int32_t> commands_;  // since the last reset, by the fault that refuses them
};

}  // namespace tesk::simulator
