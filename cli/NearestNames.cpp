// Edit distance and the choice of the nearest names.
#include "cli/NearestNames.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "base/conversions.h"

namespace tesk::cli {
namespace {

// How far a name is from the wanted one; both are folded. A name that contains the wanted text is near
// however long it is.
std::size_t Distance(const std::string& wanted, const std::string& name) {
  if (!wanted.empty() && name.find(wanted) != std::string::npos) return 0;
  return 1 + EditDistance(wanted, name);
}

}  // namespace

std::size_t EditDistance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= from.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
      diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, replaced}));
    }
  }
  return row.back();
}

std::vector<std::string> NearestNames(std::string_view wanted, std::span<const std::string_view> names,
                                      std::size_t count) {
  constexpr std::size_t kLongestCompared = 200;  // letters; a longer text resembles no name
  const std::string folded = LowerCase(wanted.substr(0, kLongestCompared));
  std::vector<std::pair<std::size_t, std::string>> ranked;
  for (const std::string_view name : names) {
    const std::size_t distance = Distance(folded, LowerCase(name));
    if (distance <= std::max(folded.size(), name.size()) / 2 + 1) ranked.emplace_back(distance, name);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> nearest;
  for (const auto& [distance, name] : ranked) {
    if (nearest.size() < count) nearest.push_back(name);
  }
  return nearest;
}

std::string AlternativesText(std::span<const std::string> names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

}  // namespace tesk::cli
