// The simulated Sekonic serial scanners: the scanner's side of their wire. It knows base and the simulator's
// own parts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/SekonicMarks.h"
#include "simulator/Simulators.h"

namespace tesk::simulator {

extern const Family kSekonicSerialFamily;

class SekonicSerial final : public SheetScanner {
 public:
  SekonicSerial(const SekonicModel& model, Options options);

 protected:
  void OnByte(std::uint8_t byte, Time now) override;

 private:
  // What stands between a command's name and its CR, and which head it is for.
  struct Call {
    std::string_view fields;
    std::size_t head;  // 0 front, 1 back
    Time now;
  };
  // Yields what is wrong with the call; empty: it was taken, and answered where it has an answer.
  using Handler = std::string (SekonicSerial::*)(const Call& call);
  struct Command;
  static const Command kCommands[];

  void OnLine(std::string_view line, Time now);
  std::string OnData(std::string_view line);
  std::string OnCommand(std::string_view line, Time now);
  void Answer(std::string_view bytes, Time now) { Reply(bytes, now, Settings().timings.answer); }
  bool Silenced(FaultKind kind) { return TakeFault(kind, ++asked_[kind]).has_value(); }

  std::string OnReset(const Call& call);
  std::string OnSetUp(const Call& call);
  std::string OnSwitchOn(const Call& call);
  std::string OnThreshold(const Call& call);
  std::string OnDiscrimination(const Call& call);
  std::string OnMode(const Call& call);
  std::string OnFitted(const Call& call);
  std::string OnForgetWindows(const Call& call);
  std::string OnWindow(const Call& call);
  std::string OnStatus(const Call& call);
  std::string OnTimingMarks(const Call& call);
  std::string OnPageData(const Call& call);
  std::string OnWindowData(const Call& call);
  std::string OnForgetBarcodes(const Call& call);
  std::string OnBarcodesOn(const Call& call);
  std::string OnBarcodeField(const Call& call);
  std::string OnBarcodeData(const Call& call);
  std::string OnImprinterSetUp(const Call& call);
  std::string OnImprintPosition(const Call& call);
  std::string OnImprintLine(const Call& call);
  std::string OnEmptyImprintLine(const Call& call);
  std::string OnFeed(const Call& call);
  std::string OnPrint(const Call& call);
  std::string OnReject(const Call& call);
  std::string OnAccept(const Call& call);

  std::string TakeWindow(std::string_view line);
  char FrontStatus(Time now);
  const SideArray& Side(std::size_t head) const { return head == 0 ? sheet_.side1 : sheet_.side2; }
  void SendMarks(std::string data, std::string_view surplus, Time now);
  void LetGo(Exit exit, Time now);

  const SekonicModel model_;
  std::string line_;
  enum class Pending { None, SetUp, Window };
  Pending pending_ = Pending::None;  // what data the next line is
  std::size_t pendingHead_ = 0;
  char lastAnswer_ = '\0';  // the first character of the last answer at the start
  bool windowsForgotten_ = false;
  std::array<std::vector<SekonicWindow>, 2> windows_;
  bool barcodesOn_ = false;
  std::size_t barcodeFields_ = 0;
  Sheet sheet_;           // the one fed last,
  bool sheetIn_ = false;  // while it can be asked about
  std::array<std::string, 3> imprint_;
  bool printed_ = false;
  bool wrongMode_ = false;
  std::map<FaultKind, std::int32_t> asked_;  // how often, by the fault that silences the answer
};

}  // namespace tesk::simulator
