// The manual page, in the language of man(7).
#include <algorithm>
#include <cctype>
#include <sstream>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/pages/CommandPages.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kPlaces = R"(.SH FILES
.TP
.I ~/.config/teskreader99/settings.conf
what
.B teskread settings save
and
.B teskread setup
keep; below
.B $XDG_CONFIG_HOME
where that is set
.SH ENVIRONMENT
.TP
.BI TESKREADER_PORT_ N
the device behind port number
.IR N ,
1 to 16, instead of the one that it has by itself
.TP
.B NO_COLOR
leaves the colors out of the picture of a sheet
)";

// A list without blanks may be broken behind its commas.
std::string Plain(const std::string& text) {
  return Replace(Replace(Replace(text, "\\", "\\e"), "-", "\\-"), ",", ",\\:");
}

// A line of its own, which is taken for no request.
std::string Line(const std::string& text) {
  const bool request = text.starts_with('.') || text.starts_with('\'');
  return (request ? "\\&" : "") + Plain(text) + '\n';
}

// One argument of a request.
std::string Quoted(const std::string& text) { return '"' + Replace(Plain(text), "\"", "\\(dq") + '"'; }

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// Lines that begin with a blank are examples and tables and stand as they are; others fill paragraphs.
std::string Paragraphs(const std::string& text) {
  std::istringstream lines(text);
  std::string page, line;
  bool asIs = false, gap = true;
  while (std::getline(lines, line)) {
    const bool indented = line.starts_with(' ');
    if (asIs != indented && asIs) page += ".EE\n";
    if (asIs != indented && indented) page += ".EX\n";
    if (!indented && !line.empty() && (gap || asIs)) page += ".PP\n";
    if (!line.empty()) page += Line(line);
    asIs = indented;
    gap = line.empty();
  }
  return page + (asIs ? ".EE\n" : "");
}

// The footer of the whole: each paragraph is a section, whose heading ends with the first colon.
std::string Sections(const std::string& footer) {
  std::string page;
  for (std::size_t at = 0; at < footer.size();) {
    const std::size_t end = std::min(footer.find("\n\n", at), footer.size());
    const std::size_t colon = footer.find(':', at);
    page += fmt::format(".SH {}\n{}", Upper(footer.substr(at, colon - at)),
                        Paragraphs(footer.substr(colon + 2, end - colon - 2)));
    at = end + 2;
  }
  return page;
}

std::string OptionText(const OptionPage& option) {
  std::string page = ".TP\n";
  if (option.takes.empty()) {
    page += fmt::format(".B {}\n", Quoted(Joined(option.names, ", ")));
  } else {
    page += fmt::format(".BI {} {}\n", Quoted(Joined(option.names, ", ") + " "), Quoted(option.takes));
  }
  page += Line(option.text + (option.required ? " (required)" : ""));
  if (!option.example.empty()) page += fmt::format(".br\nexample:\n.B {}\n", Quoted(option.example));
  return page;
}

std::string Usage(const CommandPage& command) {
  std::string page = fmt::format(".B {}\n", Quoted("teskread " + command.path));
  if (!command.commands.empty()) page += ".I COMMAND\n";
  page += "[\\fIOPTION\\fR]...\n";
  for (const OptionPage& positional : command.positionals) {
    page += fmt::format("[\\fI{}\\fR]{}\n", positional.takes, positional.repeats ? "..." : "");
  }
  return page;
}

// Every command has the option of help, which the page explains once.
std::string CommandText(const CommandPage& command) {
  std::string page = fmt::format(".SS {}\n{}.PP\n{}", Quoted("teskread " + command.path), Usage(command),
                                 Line(command.text + "."));
  for (const OptionPage& option : command.options) {
    if (std::ranges::find(option.names, "--help") == option.names.end()) page += OptionText(option);
  }
  return page + Paragraphs(command.footer);
}

std::string SettingText(const SettingPage& setting) {
  return fmt::format(".TP\n.B {}\n{}.br\n{}", Quoted(setting.name), Line(setting.means), Line(setting.takes));
}

// "drives optical mark readers", of a text that goes on behind a colon.
std::string Summary(const std::string& text) {
  std::string summary = text.substr(0, text.find(':'));
  summary[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(summary[0])));
  return summary;
}

}  // namespace

std::string ManPage(const Manual& manual, std::string_view date) {
  const CommandPage& program = manual.program;
  std::string page = fmt::format(".TH TESKREAD 1 {} {} \"User Commands\"\n", date,
                                 Quoted(fmt::format("teskread {}", TESKREAD_VERSION)));
  page +=
      ".nh\n.ad l\n.SH NAME\nteskread \\- " + Line(Summary(program.text)) + ".SH SYNOPSIS\n" + Usage(program);
  page += ".SH DESCRIPTION\n" + Line(program.text) + ".SH OPTIONS\n";
  for (const OptionPage& option : program.options) page += OptionText(option);
  page += ".SH COMMANDS\n";
  for (const CommandPage* command : AllCommands(program)) page += CommandText(*command);
  page += ".SH SETTINGS\nWhat\n.B \\-\\-set\nNAME=VALUE takes; upper and lower case are alike.\n";
  for (const SettingPage& setting : manual.settings) page += SettingText(setting);
  return page + Sections(program.footer) + std::string(kPlaces);
}

}  // namespace tesk::cli
