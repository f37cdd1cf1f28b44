// The options of `teskread scan`, read as the program does.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/scan/ScanPlan.h"

namespace tesk::test {

// Throws what the parser and the plan throw.
inline void ParseScan(std::vector<std::string> arguments, cli::ScanPlan& plan) {
  CLI::App app;
  cli::AddScanOptions(app, plan);
  std::ranges::reverse(arguments);
  app.parse(std::move(arguments));
  cli::CompleteScanPlan(plan);
}

inline cli::ScanPlan ParseScan(std::vector<std::string> arguments) {
  cli::ScanPlan plan;
  ParseScan(std::move(arguments), plan);
  return plan;
}

}  // namespace tesk::test
