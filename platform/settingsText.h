// The settings file of systems without a registry, as text: groups in brackets, quoted values below them.
//
//   # TeskReader99 settings
//   [CurrentUser\School\Lab]
//   "ScannerType" = "4"
//   "ScannerParity" = " "
//
// Inside quotes a backslash stands before a quote and a backslash, and in \n, \r and \xHH for control
// characters. Comments are not kept when the program writes. Group names are paths below a registry root;
// names and paths know no case, as in a registry.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tesk::platform {

class SettingsText {
 public:
  // Throws error 321 naming the first line that is wrong; `file` is the name that the error shows.
  static SettingsText Parse(std::string_view text, const std::string& file);
  std::string Text() const;

  std::vector<std::string> Groups() const;
  std::optional<std::string> Find(std::string_view group, std::string_view name) const;
  void Set(std::string_view group, std::string_view name, std::string_view value);
  // Removes a value, and its group where that was the last; false where there is none.
  bool Remove(std::string_view group, std::string_view name);

 private:
  struct Group {
    std::string path;
    std::vector<std::pair<std::string, std::string>> values;
  };

  std::vector<Group> groups_;
};

}  // namespace tesk::platform
