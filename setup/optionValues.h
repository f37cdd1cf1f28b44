// How profiles and the engine's settings get into the controls of the setup dialog, and the controls' values
// into the engine. Knows the engine and below.
#pragma once

#include <cstdint>
#include <string>

#include "engine/clsTeskReader.h"
#include "setup/optionControls.h"

namespace tesk {

// Values, bounds, enabled states and visibility as the profile proposes them. The chosen port stays.
void ApplyProfile(OptionControls& controls, const clsTeskReaderProfile& profile);
// Nothing can be changed but the reader: for when none is chosen.
void ApplyNoProfile(OptionControls& controls);

// The thresholds are the reader's own while the grade box of one that scores itself is ticked.
void ApplyReaderGrade(OptionControls& controls, const clsTeskReaderProfile& profile);

// The engine's settings, over the proposals of its reader. A line setting that no list has is one that no port takes,
// and leaves the proposal standing; a resolution that its list does not have joins the list.
void ShowEngine(OptionControls& controls, const clsTeskReader& reader);

// The controls as they would be with all of the profile's proposals.
OptionControls Proposals(const OptionControls& controls, const clsTeskReaderProfile& profile);
// Whether everything that LoadDefaults would set shows what the profile proposes.
bool ShowsProposals(const OptionControls& controls, const clsTeskReaderProfile& profile);

// The line settings and the port; a list without a choice leaves the engine's setting alone.
void SaveSerialLine(const OptionControls& controls, clsTeskReader& reader);
// Everything, with `profile` the chosen reader's. Throws before anything is assigned.
void SaveEngine(const OptionControls& controls, const clsTeskReaderProfile& profile, clsTeskReader& reader);

// What a port search changes of the engine: remembered, and put back at the end of its life.
class RememberedLine {
 public:
  explicit RememberedLine(clsTeskReader& reader);
  RememberedLine(const RememberedLine&) = delete;
  RememberedLine& operator=(const RememberedLine&) = delete;
  ~RememberedLine();

 private:
  clsTeskReader& reader_;
  std::int16_t port_;
  teskReaderType type_;
  teskReaderFlowControl flowControl_;
  teskReaderBaudRate baudRate_;
  std::string parity_;
  teskReaderDataBits dataBits_;
  float stopBits_;
  std::shared_ptr<clsTeskReaderPrinter> printer_;
  std::int16_t distance_ = 0;  // re-typing the imprinter resets it
};

}  // namespace tesk
