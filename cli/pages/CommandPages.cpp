#include "cli/pages/CommandPages.h"

#include <algorithm>
#include <span>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "assembly/assembly.h"
#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandLine.h"
#include "cli/assignments.h"
#include "cli/settingLimits.h"
#include "cli/values.h"

namespace tesk::cli {
namespace {

struct Kind {
  std::string_view takes;  // what an option says that it takes begins with this
  Proposal proposal;
};

constexpr Kind kKinds[] = {
    {"FILE", Proposal::Files},   {"PATH", Proposal::Files},   {"TRACE", Proposal::Files},
    {"SOURCE", Proposal::Files}, {"TOPIC", Proposal::Topics}, {"NAME=VALUE", Proposal::Settings},
};
// Those of one letter.
constexpr Kind kLetters[] = {{"R", Proposal::Models}, {"P", Proposal::Ports}, {"K", Proposal::Keys}};

Proposal ProposalFor(const OptionPage& option) {
  if (!option.words.empty()) return Proposal::Words;
  for (const Kind& kind : kKinds) {
    if (option.takes.starts_with(kind.takes)) return kind.proposal;
  }
  for (const Kind& kind : kLetters) {
    if (option.takes != kind.takes) continue;
    const bool simulated = kind.proposal == Proposal::Ports && option.text.find(" sim") != std::string::npos;
    return simulated ? Proposal::PortsAndSim : kind.proposal;
  }
  return Proposal::Nothing;
}

// What KeepWords left with the option.
std::vector<std::string> WordsOf(CLI::Option& option) {
  try {
    const std::string words = option.get_validator(0)->get_name();
    return words.empty() ? std::vector<std::string>{} : SplitText(words, ' ');
  } catch (const CLI::OptionNotFound&) {
    return {};
  }
}

std::vector<std::string> NamesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  if (names.empty()) names.push_back(option.get_name());
  return names;
}

OptionPage PageOf(CLI::Option& option) {
  constexpr std::string_view kExample = "\nexample: ";
  const std::string description = option.get_description();
  const std::size_t end = std::min(description.find(kExample), description.size());
  OptionPage page;
  page.names = NamesOf(option);
  if (option.get_type_size() != 0)
    page.takes = option.get_positional() ? page.names[0] : option.get_type_name();
  page.text = Replace(description.substr(0, end), "\n", " ");
  if (end < description.size()) page.example = description.substr(end + kExample.size());
  page.required = option.get_required();
  page.repeats = option.get_expected_max() == CLI::detail::expected_max_vector_size;
  page.words = WordsOf(option);
  page.proposal = ProposalFor(page);
  return page;
}

CommandPage PageOf(CLI::App& app, const std::string& path) {
  CommandPage page;
  page.name = app.get_name();
  page.path = path;
  page.text = app.get_description();
  page.footer = app.get_footer();
  for (CLI::Option* option : app.get_options()) {
    (option->get_positional() ? page.positionals : page.options).push_back(PageOf(*option));
  }
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    page.commands.push_back(PageOf(*command, path + (path.empty() ? "" : " ") + command->get_name()));
  }
  return page;
}

std::vector<std::string> WordsOf(const EngineSetting& setting) {
  if (setting.kind == SettingKind::Boolean) return {"True", "False"};
  std::vector<std::string> words;
  if (setting.members) {
    for (const Enumerator& member : setting.members()) words.emplace_back(member.name);
  }
  return words;
}

SettingPage PageOf(const SettingWords& words) {
  const EngineSetting& setting = SettingNamed(words.name);
  return {std::string(words.name), std::string(words.means), ValuesText(setting), WordsOf(setting)};
}

void Collect(const CommandPage& above, std::vector<const CommandPage*>& pages) {
  for (const CommandPage& command : above.commands) {
    pages.push_back(&command);
    Collect(command, pages);
  }
}

}  // namespace

Manual ReadManual() {
  Program program;
  CLI::App app;
  AddCommands(app, program);
  Manual manual;
  manual.program = PageOf(app, "");
  for (const SettingWords& words : WordsOfSettings()) manual.settings.push_back(PageOf(words));
  for (const ReaderTypeName& model : ReaderTypeNames()) {
    if (!DriverModule(model.type).empty()) manual.models.emplace_back(model.displayName);
  }
  return manual;
}

std::vector<const CommandPage*> AllCommands(const CommandPage& program) {
  std::vector<const CommandPage*> pages;
  Collect(program, pages);
  return pages;
}

std::string Joined(const std::vector<std::string>& words, std::string_view separator) {
  return fmt::format("{}", fmt::join(words, separator));
}

}  // namespace tesk::cli
