// The checks of disposal and imprint.
#include "cli/scan/SheetRoad.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "profiles/models.h"

namespace tesk::cli {
namespace {

bool Imprints(const clsTeskReader& engine) { return engine.Printer()->Active(); }

void CheckHeld(const ScanPlan& plan, const clsTeskReader& engine) {
  if (!FamilyOf(engine.ReaderType()).holdsSheets || (!engine.Rejecter() && !Imprints(engine))) return;
  const char* because = Imprints(engine) ? "an imprint" : "Rejecter";
  if (ModelOf(engine.ReaderType()).sending == Sending::Nothing) {
    throw UsageError(
        fmt::format("{}: with {} the {} would hold each sheet, and this model has no command that sends it "
                    "on; scan without it",
                    !plan.imprints.empty() ? "--imprint" : "--set", because, engine.ReaderName()));
  }
  if (plan.disposal == Disposal::None) {
    throw UsageError(
        fmt::format("--dispose none: with {} the {} holds each sheet until it is sent on; use --dispose "
                    "eject, or scan without {}",
                    because, engine.ReaderName(), because));
  }
}

void CheckReject(const ScanPlan& plan, const clsTeskReader& engine) {
  if (plan.disposal != Disposal::Reject) return;
  if (!HasRejectExit(engine)) {
    throw UsageError(fmt::format("--dispose reject: the {} has no reject exit", engine.ReaderName()));
  }
  if (!engine.Rejecter()) {
    throw UsageError(
        fmt::format("--dispose reject: the setting Rejecter is off; where this {} is fitted with a reject "
                    "exit, add --set Rejecter=True",
                    engine.ReaderName()));
  }
}

// Latin letters as people read them.
std::string Shown(const std::string& wire) {
  std::string text;
  for (const char c : wire) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0U | (byte >> 6U));
      text += static_cast<char>(0x80U | (byte & 0x3FU));
    }
  }
  return text;
}

// How many characters of a text are printed; below 0: no limit is known.
std::int32_t Room(const clsTeskReader& engine) {
  const FamilyTraits& family = FamilyOf(engine.ReaderType());
  if (!family.holdsSheets) return engine.Printer()->MaxCharacters();
  return std::clamp<std::int32_t>(family.heldImprint - engine.Printer()->Distance(), 0, family.heldImprint);
}

}  // namespace

bool HasRejectExit(const clsTeskReader& engine) {
  const auto profile = engine.Profile();
  const bool sends = ModelOf(engine.ReaderType()).sending != Sending::Nothing;
  return sends && profile && (profile->Rejecter() || profile->RejecterEnabled());
}

void CheckSheetRoad(const ScanPlan& plan, const clsTeskReader& engine) {
  CheckHeld(plan, engine);
  CheckReject(plan, engine);
}

std::vector<std::string> ImprintNotices(const ScanPlan& plan, const clsTeskReader& engine) {
  std::vector<std::string> notices;
  const std::int32_t room = Room(engine);
  for (const std::string& text : plan.imprints) {
    const std::string wire = WireText(text, engine.DataBits());
    if (const std::string shown = Shown(wire); shown != text) {
      notices.push_back(fmt::format(
          "--imprint: this line cannot carry every character of \"{}\"; \"{}\" is printed", text, shown));
    }
    if (room >= 0 && wire.size() > static_cast<std::size_t>(room)) {
      notices.push_back(
          fmt::format("--imprint: \"{}\" is longer than the {} characters that fit", text, room));
    }
  }
  if (!plan.imprints.empty() && plan.disposal == Disposal::Reject &&
      FamilyOf(engine.ReaderType()).holdsSheets) {
    notices.push_back(
        fmt::format("--imprint: the {} does not print on sheets that it rejects", engine.ReaderName()));
  }
  return notices;
}

}  // namespace tesk::cli
