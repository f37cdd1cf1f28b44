// A bench with a simulated Sekonic serial scanner on its port, and its commands in readable form.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/SekonicSerial.h"
#include "tests/support/BadLine.h"
#include "tests/support/TestBench.h"

namespace tesk::test {

using Commands = std::vector<std::string>;

inline constexpr auto kSr601 = teskReaderTypeScanningSystemsSR601;
inline constexpr auto kSr607 = teskReaderTypeScanningSystemsSR607;
inline constexpr auto kSr700351 = teskReaderTypeScanningSystemsSR700351;
inline constexpr auto kSr700352 = teskReaderTypeScanningSystemsSR700352;
inline constexpr auto kSr410 = teskReaderTypeScanningSystemsSR410;
inline constexpr auto kSr430 = teskReaderTypeSekonicSR430;

inline simulator::Options Stock(std::vector<simulator::Fault> faults = {}, std::int32_t count = 3) {
  return {
      .count = count, .seed = 7, .geometry = simulator::Geometry{20, 48, true}, .faults = std::move(faults)};
}

inline simulator::SekonicModel Model(teskReaderType type, std::int32_t readingMode) {
  simulator::SekonicModel model = *simulator::FindSekonicModel(type);
  model.readingMode = readingMode;
  return model;
}

// Generated sheets of 20 rows, or those that the options hold.
inline std::shared_ptr<simulator::SheetScanner> Scanner(const simulator::SekonicModel& model,
                                                        simulator::Options options) {
  if (options.sheets.empty()) {
    options.sheets = simulator::GenerateSheets(options.count, options.seed, {20, model.columns, model.duplex},
                                               model.darkest);
  }
  return std::make_shared<simulator::SekonicSerial>(model, std::move(options));
}

// Control characters by name, one command per element.
inline Commands Readable(const std::string& sent) {
  const std::map<char, std::string> names{
      {'\030', "CAN "}, {'\020', "DLE "}, {'\005', "ENQ "}, {'\023', "DC3 "}, {'\002', "STX "}};
  Commands commands(1);
  for (const char c : sent) {
    const auto name = names.find(c);
    if (c == '\r') {
      commands.emplace_back();
    } else {
      commands.back() += name == names.end() ? std::string(1, c) : name->second;
    }
  }
  if (commands.back().empty()) commands.pop_back();
  return commands;
}

struct SekonicBench {
  explicit SekonicBench(teskReaderType type, simulator::Options options = Stock())
      : SekonicBench(*simulator::FindSekonicModel(type), std::move(options)) {}
  SekonicBench(const simulator::SekonicModel& model, simulator::Options options,
               std::optional<Damage> damage = {})
      : scanner(Scanner(model, options)),
        line(damage ? std::make_shared<BadLine>(scanner, *damage) : nullptr),
        bench(model.reader, line ? std::shared_ptr<simulator::Scanner>(line) : scanner),
        reader(*bench.reader) {
    sheets = options.sheets.empty()
                 ? simulator::GenerateSheets(options.count, options.seed, {20, model.columns, model.duplex},
                                             model.darkest)
                 : options.sheets;
    reader.SetSide1Rows(From1({20}));
    reader.SetSide2Rows(From1({20}));
    reader.SetDuplexForm(true);
  }

  Commands Sent() { return Readable(std::exchange(bench.serial->sent, {})); }

  void AddWindow(std::array<std::int16_t, 7> v) {
    auto window = std::make_shared<clsTeskReaderWindow>();
    window->SetPage(v[0]);
    window->SetStartRow(v[1]);
    window->SetNumRows(v[2]);
    window->SetRowGap(v[3]);
    window->SetStartCol(v[4]);
    window->SetNumCols(v[5]);
    window->SetColGap(v[6]);
    reader.Windows()->Add(window);
    reader.SetRecognitionMode(teskRecognitionTypeWindow);
  }

  void AddBarcode() { reader.Barcodes()->Add(std::make_shared<clsTeskReaderBarcode>()); }

  void TurnImprinterOn() {
    reader.Printer()->SetEnabled(true);
    reader.Printer()->SetActive(true);
  }

  std::vector<simulator::Sheet> sheets;
  std::shared_ptr<simulator::SheetScanner> scanner;
  std::shared_ptr<BadLine> line;  // between the scanner and the port, where the test wants one
  Bench bench;
  clsTeskReader& reader;
};

}  // namespace tesk::test
