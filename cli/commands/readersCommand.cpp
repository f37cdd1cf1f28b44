// `teskread readers`: the catalogue.
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "assembly/assembly.h"
#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/ReaderChoice.h"
#include "cli/options.h"
#include "profiles/clsTeskReaderProfiles.h"

namespace tesk::cli {
namespace {

using Json = nlohmann::ordered_json;

struct ReadersOptions {
  std::string group;
  bool json = false;
};

struct Group {
  std::string_view name;
  teskProfileType type;
};

constexpr Group kGroups[] = {
    {"AP", teskProfileTypeAP},     {"Sekonic", teskProfileTypeSekonic}, {"Scantron", teskProfileTypeScantron},
    {"CT", teskProfileTypeCT},     {"PDI", teskProfileTypePDI},         {"Datawin", teskProfileTypeDatawin},
    {"None", teskProfileTypeNone}, {"All", teskProfileTypeAll},
};

std::string GroupNames(std::string_view separator) {
  std::string names;
  for (const Group& group : kGroups) names += fmt::format("{}{}", names.empty() ? "" : separator, group.name);
  return names;
}

// By its name, with or without the enumeration's prefix, in any case.
teskProfileType ParseGroup(const std::string& text) {
  constexpr std::string_view kPrefix = "teskprofiletype";
  std::string folded = LowerCase(text);
  if (folded.starts_with(kPrefix)) folded.erase(0, kPrefix.size());
  for (const Group& group : kGroups) {
    if (LowerCase(group.name) == folded) return group.type;
  }
  throw UsageError(fmt::format("--group: \"{}\" is none of {}", text, GroupNames(", ")));
}

std::string_view EnumeratorOf(teskReaderType type) {
  for (const auto& reader : ReaderTypeNames()) {
    if (reader.type == type) return reader.enumerator;
  }
  return {};
}

Json ProfileJson(const clsTeskReaderProfile& profile) {
  Json json = Json::object();
  for (const ProfileProperty& property : ProfileProperties()) {
    std::visit([&](const auto& value) { json[std::string(property.name)] = value; }, property.get(profile));
  }
  const std::string_view driver = DriverModule(profile.ReaderType());
  json["Enumerator"] = EnumeratorOf(profile.ReaderType());
  json["Driver"] = driver.empty() ? Json(nullptr) : Json(driver);
  json["Support"] = SupportOf(profile.ReaderType());
  return json;
}

struct Capability {
  std::string_view word;
  bool (clsTeskReaderProfile::*has)() const;
  bool (clsTeskReaderProfile::*offered)() const;  // the user may switch it on
};

using Profile = clsTeskReaderProfile;
constexpr Capability kCapabilities[] = {
    {"both sides", &Profile::Duplex, &Profile::DuplexEnabled},
    {"feeder", &Profile::Feeder, &Profile::FeederEnabled},
    {"rejecter", &Profile::Rejecter, &Profile::RejecterEnabled},
    {"imprinter", &Profile::Printer, &Profile::PrinterEnabled},
    {"barcodes", &Profile::Barcode, &Profile::BarcodeEnabled},
    {"windows", &Profile::Windowing, &Profile::WindowingEnabled},
    {"imaging", &Profile::Imaging, &Profile::ImagingEnabled},
    {"grading", &Profile::ReaderGrade, &Profile::ReaderGradeEnabled},
};

// "48 columns, both sides, feeder (rejecter, imprinter)": in brackets what may be fitted.
std::string CapabilitiesText(const clsTeskReaderProfile& profile) {
  std::string has = fmt::format("{} columns", profile.MaxCols());
  std::string offered;
  for (const Capability& capability : kCapabilities) {
    if ((profile.*capability.has)()) {
      has += fmt::format(", {}", capability.word);
    } else if ((profile.*capability.offered)()) {
      offered += fmt::format("{}{}", offered.empty() ? "" : ", ", capability.word);
    }
  }
  return offered.empty() ? has : fmt::format("{} ({})", has, offered);
}

std::string ConnectionText(const clsTeskReaderProfile& profile) {
  return profile.InterfaceType() == teskReaderInterfaceTypeUSB ? "USB" : "serial";
}

std::string RowText(const clsTeskReaderProfile& profile) {
  const teskReaderType type = profile.ReaderType();
  const std::string_view driver = DriverModule(type);
  std::string row = fmt::format("{:>4}  {:<35} {:<8} {:<20} {}\n", std::int32_t{type}, profile.ReaderName(),
                                ConnectionText(profile), driver.empty() ? "-" : driver, SupportOf(type));
  row += fmt::format("{:6}{}\n", "", EnumeratorOf(type));
  if (type != teskReaderTypeNone) row += fmt::format("{:6}{}\n", "", CapabilitiesText(profile));
  return row;
}

std::string ReadersText(const clsTeskReaderProfiles& profiles, bool json) {
  Json list = Json::array();
  std::string table =
      fmt::format("{:>4}  {:<35} {:<8} {:<20} {}\n", "Type", "Reader", "Port", "Driver", "Support");
  for (std::int32_t position = 1; position <= profiles.Count(); ++position) {
    const auto profile = profiles.Item(static_cast<double>(position));
    if (json) {
      list.push_back(ProfileJson(*profile));
    } else {
      table += RowText(*profile);
    }
  }
  return json ? list.dump(1) + '\n' : table;
}

int RunReaders(const ReadersOptions& options, Program& program) {
  clsTeskReaderProfiles profiles;
  if (!options.group.empty()) profiles.SetProfileType(ParseGroup(options.group));
  program.output->Write(ReadersText(profiles, options.json));
  return kStatusDone;
}

}  // namespace

void AddReadersCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<ReadersOptions>();
  CLI::App* command =
      app.add_subcommand("readers", "Lists the scanner models: what each can do, and its driver");
  KeepWords(
      AddOption(*command,
                {"--group", "NAME",
                 "only one group of models: AP (Apperson), Sekonic, Scantron, CT (Chatsworth Data), PDI "
                 "(Peripheral Dynamics), Datawin, All, or None",
                 "--group Scantron"},
                options->group),
      GroupNames(" "));
  command->add_flag(
      "--json", options->json,
      Explain("prints one JSON array: an object per model with every profile property under its own "
              "name, and Enumerator, Driver and Support",
              "teskread readers --json"));
  command->footer("In brackets: what the model may be fitted with.");
  command->callback(
      [options, &program] { program.run = [options, &program] { return RunReaders(*options, program); }; });
}

}  // namespace tesk::cli
