// The commands of the Sekonic serial readers that carry settings.
#include "drivers/sekonicCommands.h"

#include <algorithm>

#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk::basScanningSystems {
namespace {

constexpr std::int32_t kMostRows = 999;
constexpr std::int32_t kMostWindowField = 99;
constexpr char kCarriageReturn = '\r';

struct CardReader {
  teskReaderType type;
  std::string_view setUp;
  std::string_view threshold;
  int thresholdDigits;
  std::string_view afterwards;  // empty: nothing
};

// Compatibility: the SR-410 takes its set-up data without STX and its threshold behind a 0.
constexpr CardReader kCardReaders[] = {
    {teskReaderTypeScanningSystemsSR410, "\020T\r1\r", "\020DL0", 1, ""},
    {teskReaderTypeSekonicSR430, "\020T\r\0022\r", "\020DL", 2, "\02315\r"},
};

// The thresholds at which the levels 2, 3, ... begin.
constexpr std::int16_t kLevelsOfMode0[] = {6, 11};
constexpr std::int16_t kLevelsOfMode1[] = {5, 9, 13};

template <std::size_t N>
std::string Level(const std::int16_t (&begins)[N], std::int16_t threshold) {
  const auto begun = std::ranges::count_if(begins, [&](std::int16_t begin) { return threshold >= begin; });
  return NumberText(static_cast<std::int32_t>(begun) + 1);
}

std::string ThresholdText(std::int16_t readingMode, std::int16_t threshold) {
  if (readingMode == 0) return Level(kLevelsOfMode0, threshold);
  if (readingMode == 1) return Level(kLevelsOfMode1, threshold);
  return (threshold < 10 ? "0" : "") + NumberText(threshold);
}

struct Axis {
  std::int16_t start;
  std::int16_t gap;
};

Axis Upward(std::int16_t start, std::int16_t count, std::int16_t gap) {
  if (gap >= 0) return {start, gap};
  const std::int32_t last = start + (std::int32_t{count} - 1) * gap;
  return {Narrow<std::int16_t>(last), Narrow<std::int16_t>(-std::int32_t{gap})};
}

}  // namespace

std::vector<std::string> CardSetUp(teskReaderType type, std::int16_t threshold) {
  std::vector<std::string> commands;
  for (const CardReader& card : kCardReaders) {
    if (card.type != type) continue;
    commands.emplace_back(card.setUp);
    commands.push_back(std::string(card.threshold) + PaddedText(threshold, card.thresholdDigits) +
                       kCarriageReturn);
    if (!card.afterwards.empty()) commands.emplace_back(card.afterwards);
  }
  return commands;
}

std::string ThresholdCommand(std::int16_t readingMode, std::int16_t threshold) {
  return "\020DL" + ThresholdText(readingMode, threshold) + kCarriageReturn;
}

std::string DiscriminationCommand(std::int16_t discrimination) {
  return "\023DD" + PaddedText(discrimination, 2) + kCarriageReturn;
}

void Normalise(clsTeskReaderWindow& window) {
  const Axis rows = Upward(window.StartRow(), window.NumRows(), window.RowGap());
  const Axis columns = Upward(window.StartCol(), window.NumCols(), window.ColGap());
  window.SetStartRow(rows.start);
  window.SetRowGap(rows.gap);
  window.SetStartCol(columns.start);
  window.SetColGap(columns.gap);
}

std::string WindowCommand(const clsTeskReaderWindow& window) {
  std::string command = window.Page() == 1 ? "" : std::string(kBackSide);
  command += "\020W\r\002";
  for (const std::int16_t field : {window.StartRow(), window.NumRows(), window.RowGap(), window.StartCol(),
                                   window.NumCols(), window.ColGap()}) {
    // A third digit would shift all that follow.
    if (field < 0 || field > kMostWindowField) throw InvalidCall();
    command += PaddedText(field, 2);
  }
  return command + "112" + kCarriageReturn;
}

std::string PageCommand(std::int32_t rows) {
  if (rows > kMostRows) throw InvalidCall();
  return "\020ED001" + PaddedText(rows, 3) + kCarriageReturn;
}

std::vector<std::string> ImprintCommands(const clsTeskReaderPrinter& printer, std::int32_t dataBits) {
  std::vector<std::string> commands{"\023P32" + PaddedText(printer.Distance(), 3) + kCarriageReturn};
  std::int32_t number = 0;
  for (const std::string& buffer : {printer.Buffer1(), printer.Buffer2(), printer.Buffer3()}) {
    const std::string line = NumberText(number++);
    commands.push_back(buffer.empty() ? "\023P2" + line + kCarriageReturn
                                      : "\023P4" + line + WireText(buffer, dataBits) + " " + kCarriageReturn);
  }
  return commands;
}

}  // namespace tesk::basScanningSystems
