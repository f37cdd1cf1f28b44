// The choice of a reader by number or name.
#include "cli/ReaderChoice.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "assembly/assembly.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/NearestNames.h"
#include "platform/OmrLibraryLoader.h"
#include "profiles/models.h"
#include "simulator/Simulators.h"

namespace tesk::cli {
namespace {

bool IsNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

const ReaderTypeName* FindByNumber(std::string_view digits) {
  for (const auto& reader : ReaderTypeNames()) {
    if (NumberText(std::int32_t{reader.type}) == digits) return &reader;
  }
  return nullptr;
}

const ReaderTypeName* FindByName(std::string_view name) {
  const std::string folded = LowerCase(name);
  for (const auto& reader : ReaderTypeNames()) {
    if (LowerCase(reader.enumerator) == folded || LowerCase(reader.displayName) == folded) return &reader;
  }
  return nullptr;
}

[[noreturn]] void RefuseName(const std::string& text) {
  const bool enumerator = LowerCase(text).starts_with("tesk");
  std::vector<std::string_view> names;
  for (const auto& reader : ReaderTypeNames()) {
    if (reader.type != teskReaderTypeNone)
      names.push_back(enumerator ? reader.enumerator : reader.displayName);
  }
  const auto nearest = NearestNames(text, names, names.size());
  constexpr std::size_t kMostShown = 5;
  const auto shown = std::span(nearest).first(std::min(nearest.size(), kMostShown));
  const std::string hint = shown.empty() ? "" : "|did you mean " + AlternativesText(shown) + "?";
  throw UsageError(
      fmt::format("--reader: \"{}\" is no reader{}|\"teskread readers\" is the list of models; each has "
                  "a number and a name",
                  text, hint));
}

}  // namespace

teskReaderType ParseReader(const std::string& text) {
  const ReaderTypeName* reader = IsNumber(text) ? FindByNumber(text) : FindByName(text);
  if (!reader && IsNumber(text)) {
    throw UsageError(fmt::format("--reader: there is no reader {}; numbers go from 1 to {}", text,
                                 ReaderTypeNames().size() - 1));
  }
  if (!reader) RefuseName(text);
  if (reader->type == teskReaderTypeNone) {
    throw UsageError("--reader: \"None\" is no scanner; \"teskread readers\" lists the models");
  }
  return reader->type;
}

void RequireDriver(teskReaderType type) {
  if (!DriverModule(type).empty()) return;
  const std::string name = ReaderName(type);
  throw CommandFailure(
      fmt::format("{} has no driver in this version|\"teskread readers\" shows which models do",
                  name.empty() ? fmt::format("Reader type {}", std::int32_t{type}) : "The " + name));
}

void RequireSystem(teskReaderType type) {
  if (!FamilyOf(type).byLibrary || platform::SystemHasOmrLibrary()) return;
  throw CommandFailure(fmt::format(
      "the {} needs Windows: it is a USB reader, and only its maker's library (OMRAPI.DLL) can talk to "
      "it|use teskread.exe on a Windows computer with the Sekonic software|\"teskread scan --reader {} "
      "--port "
      "sim\" reads simulated sheets here",
      ReaderName(type), std::int32_t{type}));
}

void RequireLineSimulator(teskReaderType type) {
  if (!simulator::FaultKinds(type).empty()) return;
  if (FamilyOf(type).byLibrary) {
    throw CommandFailure(fmt::format(
        "the {} has no serial line that could be simulated: it is a USB reader behind its maker's "
        "library|\"teskread scan --reader {} --port sim\" reads simulated sheets",
        ReaderName(type), std::int32_t{type}));
  }
  throw CommandFailure(fmt::format(
      "the {} has no simulated scanner in this version|\"teskread readers\" is the list of models",
      ReaderName(type)));
}

void LoadModelDefaults(teskReaderType type, clsTeskReader& engine) {
  const bool described = Deref(engine.Profiles()).Exists(NumberText(std::int32_t{type}));
  if (described && engine.LoadDefaults(type)) return;
  throw CommandFailure(
      fmt::format("there are no settings for the {} in this version|\"teskread readers\" is the list of "
                  "models that have some",
                  ReaderName(type)));
}

std::string_view SupportOf(teskReaderType type) {
  switch (ModelOf(type).support) {
    case Support::NoDriver:
      return "no driver";
    case Support::Simulated:
      return "simulated only";
    case Support::PublicNotes:
      return "public notes";
  }
  return {};
}

}  // namespace tesk::cli
