// The checks of files before a scan.
#include "cli/scan/ResultFiles.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/CommandError.h"
#include "cli/inputFile.h"
#include "cli/scan/SheetRecord.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLongestRecord = 32U << 20U;  // bytes; two sides of the largest size fit

constexpr const char* kStandardOutput = "/dev/stdout";  // where the system has one

bool IsRegular(const std::string& path) {
  std::error_code ignored;
  return fs::is_regular_file(PathOf(path), ignored);
}

bool IsThere(const std::string& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(PathOf(path), ignored));
}

// Whether two paths lead to one place, also where nothing is there yet.
bool SamePlace(const std::string& one, const std::string& other) {
  std::error_code error;
  if (fs::equivalent(PathOf(one), PathOf(other), error)) return true;
  const auto first = fs::weakly_canonical(PathOf(one), error);
  return !error && first == fs::weakly_canonical(PathOf(other), error) && !error;
}

std::string BytesAt(const std::string& path, std::uintmax_t at, std::uintmax_t count) {
  std::ifstream file(PathOf(path), std::ios::binary);
  file.seekg(static_cast<std::streamoff>(at));
  std::string bytes(static_cast<std::size_t>(count), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

// An old one of the same kind, which its first bytes tell, may go.
void CheckReplaceable(std::string_view option, const std::string& path, std::string_view beginning) {
  if (path.empty() || !IsRegular(path) || SizeOf(path) == 0) return;
  if (BytesAt(path, 0, beginning.size()) == beginning) return;
  throw UsageError(fmt::format("{}: {} is there and is something else; choose another name", option, path));
}

void CheckNew(const ScanPlan& plan) {
  std::error_code ignored;
  const bool replaces =
      IsThere(plan.output) && (IsRegular(plan.output) || !fs::exists(PathOf(plan.output), ignored));
  if (plan.output.empty() || plan.append || !replaces) return;
  throw UsageError(
      fmt::format("--output: {} is there already and is not overwritten; go on in it with --append, or "
                  "choose another name",
                  plan.output));
}

std::string DeviceOf(const std::optional<PortChoice>& port) {
  if (!port || port->kind == PortChoice::Kind::Simulated) return {};
  return port->kind == PortChoice::Kind::Device ? port->device : platform::DeviceOfPort(port->number);
}

void CheckDifferent(const ScanPlan& plan) {
  using Named = std::pair<std::string_view, std::string>;
  // What the shell has made of it; a terminal or a pipe may well be named twice.
  const std::string standardOutput = plan.output.empty() && IsRegular(kStandardOutput) ? kStandardOutput : "";
  const std::array<Named, 5> places{{{"--port", DeviceOf(plan.port)},
                                     {"standard output", standardOutput},
                                     {"--output", plan.output},
                                     {"--summary", plan.summary},
                                     {"--trace", plan.trace}}};
  for (std::size_t i = 0; i < places.size(); ++i) {
    for (std::size_t j = i + 1; j < places.size(); ++j) {
      const auto& [option, path] = places[j];
      if (path.empty() || places[i].second.empty() || !SamePlace(path, places[i].second)) continue;
      throw UsageError(
          fmt::format("{}: {} is what {} names too; choose another name", option, path, places[i].first));
    }
  }
}

[[noreturn]] void RefuseAppend(const std::string& path, std::string_view what) {
  throw UsageError(fmt::format("--append: {} {}; choose another name with --output", path, what));
}

// The last line without its end.
std::string LastLine(const std::string& path, std::uintmax_t size) {
  const std::uintmax_t length = std::min(size, kLongestRecord);
  std::string tail = BytesAt(path, size - length, length);
  if (!tail.ends_with('\n')) RefuseAppend(path, "does not end with a whole sheet");
  tail.pop_back();
  return tail.substr(tail.rfind('\n') + 1);
}

std::int32_t NumberOf(const std::string& path, std::int64_t number) {
  if (number < 1 || number >= std::numeric_limits<std::int32_t>::max()) {
    RefuseAppend(path, "ends with a sheet without a number");
  }
  return static_cast<std::int32_t>(number);
}

std::int32_t LastOfNdjson(const std::string& path, std::uintmax_t size) {
  // The sheet's own members alone: whatever stands within them may be of any size and depth.
  const auto own = [](int depth, nlohmann::json::parse_event_t, const nlohmann::json&) { return depth <= 1; };
  const auto json = nlohmann::json::parse(LastLine(path, size), own, false);
  const bool sheet = json.is_object() && json.contains("side1") && json.contains("disposed");
  if (!sheet || !json.contains("sheet") || !json["sheet"].is_number_integer()) {
    RefuseAppend(path, "does not end with a sheet as --format ndjson writes it");
  }
  return NumberOf(path, json["sheet"].get<std::int64_t>());
}

std::int32_t LastOfCsv(const std::string& path) {
  std::ifstream file(PathOf(path), std::ios::binary);
  std::string header(CsvHeader().size(), '\0');
  file.read(header.data(), static_cast<std::streamsize>(header.size()));
  if (header != CsvHeader()) RefuseAppend(path, "does not begin as --format csv writes it");
  constexpr std::size_t kBeginning = 12;  // a number and its comma
  std::string line;                       // the beginning of the last one
  bool quoted = false;
  bool ended = true;
  for (int c = file.rdbuf()->sbumpc(); c != std::char_traits<char>::eof(); c = file.rdbuf()->sbumpc()) {
    if (ended) line.clear();
    if (c == '"') quoted = !quoted;
    ended = c == '\n' && !quoted;
    if (line.size() < kBeginning) line += static_cast<char>(c);
  }
  if (!ended) RefuseAppend(path, "does not end with a whole sheet");
  if (line.empty()) return 0;
  std::int64_t number = 0;
  const char* end = std::from_chars(line.data(), line.data() + line.size(), number).ptr;
  return NumberOf(path, end != line.data() + line.size() && *end == ',' ? number : 0);
}

}  // namespace

std::uintmax_t SizeOf(const std::string& path) {
  std::error_code error;
  const auto size = fs::file_size(PathOf(path), error);
  return error ? 0 : size;
}

void CheckFiles(const ScanPlan& plan) {
  if (plan.append && plan.output.empty())
    throw UsageError("--append: goes with --output, which names the file");
  CheckDifferent(plan);
  CheckNew(plan);
  CheckReplaceable("--trace", plan.trace, "teskread-trace ");
  CheckReplaceable("--summary", plan.summary, "{\"sheets\":");
}

SheetsSoFar ReadSheetsSoFar(const std::string& path, SheetFormat format) {
  if (IsThere(path) && !IsRegular(path)) RefuseAppend(path, "is no file");
  const std::uintmax_t size = SizeOf(path);
  if (size == 0) return {};
  if (format == SheetFormat::Grid)
    throw UsageError("--append: goes with --format ndjson or csv, not with grid");
  return {format == SheetFormat::Ndjson ? LastOfNdjson(path, size) : LastOfCsv(path), size};
}

}  // namespace tesk::cli
