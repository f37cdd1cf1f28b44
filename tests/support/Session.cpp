// The files of tests/sessions, and settings turned back into options.
#include "tests/support/Session.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tesk::test {
namespace {

std::filesystem::path PathOf(const std::string& file) {
  return std::filesystem::path(TESKREAD_TEST_DATA) / ".." / "sessions" / file;
}

std::vector<std::string> ListOf(const std::string& value) {
  return value == "none" ? std::vector<std::string>() : cli::SplitText(value, ';');
}

void Take(const std::string& name, const std::string& value, cli::ScanOptions& options) {
  const std::string text = value == "none" ? "" : value;
  if (name == "Side1") {
    options.side1 = text;
  } else if (name == "Side2") {
    options.side2 = text;
  } else if (name == "Windows") {
    options.windows = ListOf(value);
  } else if (name == "Barcodes") {
    options.barcodes = ListOf(value);
  } else if (name == "Imprint") {
    for (const auto& line : ListOf(value)) options.imprints.push_back(cli::UnescapedSetting(line));
    while (!options.imprints.empty() && options.imprints.back().empty()) options.imprints.pop_back();
  } else if (name == "ImprintPosition") {
    options.imprintPosition = value;
  } else if (name == "Dispose") {
    options.dispose = value;
  } else if (name == "MaxSheets") {
    options.maxSheets = value;
  } else {
    options.assignments.push_back(name + "=" + value);
  }
}

}  // namespace

std::vector<std::string> SessionNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(PathOf(""))) {
    if (entry.path().extension() == ".trace") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string SessionFile(const std::string& name, const std::string& ending) {
  std::ifstream file(PathOf(name + ending), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

cli::RecordedTrace SessionTrace(const std::string& name) {
  return cli::ReadTraceFile(PathOf(name + ".trace").string());
}

cli::ScanPlan PlanOf(const cli::RecordedTrace& trace) {
  cli::ScanOptions options;
  options.reader = std::to_string(std::int32_t{trace.reader});
  options.port = "sim";
  for (const auto& [name, value] : trace.settings) Take(name, value, options);
  return cli::ParseScanOptions(options);
}

}  // namespace tesk::test
