// Reading and writing the settings file's text.
#include "platform/settingsText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk::platform {
namespace {

constexpr std::int32_t kErrorFileFormat = 321;
constexpr std::string_view kFirstLine = "# TeskReader99 settings\n";

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      escaped += '\\';
      escaped += c;
    } else if (c == '\n') {
      escaped += "\\n";
    } else if (c == '\r') {
      escaped += "\\r";
    } else if (code < 0x20 || code == 0x7F) {
      escaped += code < 0x10 ? "\\x0" : "\\x";
      escaped += HexText(code);
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::optional<char> HexCode(std::string_view digits) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::size_t code = 0;
  for (const char c : digits) {
    const std::size_t digit = kDigits.find(c);
    if (digit == std::string_view::npos) return std::nullopt;
    code = code * 16 + digit;
  }
  return static_cast<char>(code);
}

// Takes a quoted text from the front of `line`; nothing where there is none or it is not closed.
std::optional<std::string> TakeQuoted(std::string_view& line) {
  if (!line.starts_with('"')) return std::nullopt;
  std::string text;
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (line[i] == '"') {
      line.remove_prefix(i + 1);
      return text;
    }
    if (line[i] != '\\') {
      text += line[i];
      continue;
    }
    if (++i == line.size()) return std::nullopt;
    if (line[i] == 'x' && i + 2 < line.size()) {
      const auto code = HexCode(line.substr(i + 1, 2));
      if (!code) return std::nullopt;
      text += *code;
      i += 2;
    } else if (line[i] == 'n' || line[i] == 'r') {
      text += line[i] == 'n' ? '\n' : '\r';
    } else if (line[i] == '"' || line[i] == '\\') {
      text += line[i];
    } else {
      return std::nullopt;
    }
  }
  return std::nullopt;
}

bool SameName(std::string_view a, std::string_view b) { return LowerCase(a) == LowerCase(b); }

bool IsBlankOrComment(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t");
  return first == std::string_view::npos || line[first] == '#';
}

std::string_view WithoutLineEnd(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

// "name" = "value"
std::optional<std::pair<std::string, std::string>> ParseValue(std::string_view line) {
  const auto name = TakeQuoted(line);
  if (!name || name->empty() || !line.starts_with(" = ")) return std::nullopt;
  line.remove_prefix(3);
  const auto value = TakeQuoted(line);
  if (!value || !line.empty()) return std::nullopt;
  return std::pair(*name, *value);
}

}  // namespace

SettingsText SettingsText::Parse(std::string_view text, const std::string& file) {
  SettingsText settings;
  std::int32_t number = 0;
  while (!text.empty()) {
    ++number;
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = WithoutLineEnd(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (IsBlankOrComment(line)) continue;
    if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
      settings.groups_.push_back({std::string(line.substr(1, line.size() - 2)), {}});
      continue;
    }
    auto value = ParseValue(line);
    if (!value || settings.groups_.empty()) {
      throw RunTimeError(
          kErrorFileFormat, "The settings file is damaged in line " + NumberText(number), {},
          "File: " + file + "|Mend the line, or move the file away to begin afresh. It was not changed.");
    }
    settings.groups_.back().values.push_back(std::move(*value));
  }
  return settings;
}

std::string SettingsText::Text() const {
  std::string text(kFirstLine);
  for (const Group& group : groups_) {
    text += "\n[" + group.path + "]\n";
    for (const auto& [name, value] : group.values) {
      text += '"' + Escaped(name) + "\" = \"" + Escaped(value) + "\"\n";
    }
  }
  return text;
}

std::vector<std::string> SettingsText::Groups() const {
  std::vector<std::string> paths;
  for (const Group& group : groups_) paths.push_back(group.path);
  return paths;
}

std::optional<std::string> SettingsText::Find(std::string_view group, std::string_view name) const {
  for (const Group& candidate : groups_) {
    if (!SameName(candidate.path, group)) continue;
    for (const auto& [key, value] : candidate.values) {
      if (SameName(key, name)) return value;
    }
  }
  return std::nullopt;
}

void SettingsText::Set(std::string_view group, std::string_view name, std::string_view value) {
  auto at = std::ranges::find_if(groups_, [&](const Group& g) { return SameName(g.path, group); });
  if (at == groups_.end()) at = groups_.insert(groups_.end(), Group{std::string(group), {}});
  for (auto& [key, stored] : at->values) {
    if (SameName(key, name)) {
      stored = value;
      return;
    }
  }
  at->values.emplace_back(name, value);
}

bool SettingsText::Remove(std::string_view group, std::string_view name) {
  std::size_t removed = 0;
  for (Group& candidate : groups_) {
    if (!SameName(candidate.path, group)) continue;
    removed +=
        std::erase_if(candidate.values, [&](const auto& value) { return SameName(value.first, name); });
  }
  std::erase_if(groups_, [&](const Group& g) { return SameName(g.path, group) && g.values.empty(); });
  return removed > 0;
}

}  // namespace tesk::platform
