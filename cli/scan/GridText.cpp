// Draws sheets: half blocks carry an upper and a lower mark each.
#include "cli/scan/GridText.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include <fmt/format.h>

#include "base/ShownText.h"

namespace tesk::cli {
namespace {

constexpr std::int32_t kLabelStep = 10;  // rows and columns between labels
constexpr std::string_view kMargin = "     ";

enum class Shade { None, Faint, Mark };

Shade ShadeOf(std::int16_t value, const GridStyle& style) {
  if (value <= 0) return Shade::None;
  return value < std::max<std::int16_t>(style.threshold, 1) ? Shade::Faint : Shade::Mark;
}

// What is drawn where both marks of a character cannot be told apart by blocks: the darker one.
std::string_view Block(Shade upper, Shade lower) {
  if (upper == Shade::Mark && lower == Shade::Mark) return "█";
  if (upper == Shade::Mark) return "▀";
  if (lower == Shade::Mark) return "▄";
  return upper == Shade::Faint || lower == Shade::Faint ? "░" : " ";
}

// The terminal's grey of a value: white paper to black, in the palette of 256 colors.
int GreyOf(std::int16_t value, const GridStyle& style) {
  constexpr int kPaper = 255;
  constexpr int kLightest = 252;
  constexpr int kBlack = 232;
  if (value <= 0) return kPaper;
  const int darkest = std::max<int>(style.darkest, 1);
  return kLightest - (kLightest - kBlack) * std::min<int>(value, darkest) / darkest;
}

std::int16_t ValueAt(const SideArray& marks, std::int32_t row, std::int32_t column) {
  return row <= marks.Rows() ? marks.At(row, column) : std::int16_t{0};
}

std::string LineText(const SideArray& marks, std::int32_t row, const GridStyle& style) {
  std::string text;
  for (std::int32_t column = 1; column <= marks.Columns(); ++column) {
    const std::int16_t upper = marks.At(row, column);
    const std::int16_t lower = ValueAt(marks, row + 1, column);
    if (style.color) {
      text += fmt::format("\x1b[38;5;{};48;5;{}m▀", GreyOf(upper, style), GreyOf(lower, style));
    } else {
      text += Block(ShadeOf(upper, style), ShadeOf(lower, style));
    }
  }
  return style.color ? text + "\x1b[0m" : text;
}

struct Edge {
  std::string_view left;
  std::string_view line;
  std::string_view tick;  // at every labelled column
  std::string_view right;
};
constexpr Edge kTop{"┌", "─", "┴", "┐"};
constexpr Edge kBottom{"└", "─", "─", "┘"};

std::string EdgeText(std::int32_t columns, const Edge& edge) {
  std::string text(kMargin);
  text += edge.left;
  for (std::int32_t column = 1; column <= columns; ++column) {
    text += column % kLabelStep == 0 ? edge.tick : edge.line;
  }
  return text + std::string(edge.right) + '\n';
}

// The numbers of every tenth column, each ending above its own.
std::string ColumnLabels(std::int32_t columns) {
  std::string labels(kMargin);
  labels += ' ';
  for (std::int32_t column = kLabelStep; column <= columns; column += kLabelStep) {
    labels += fmt::format("{:>{}}", column, kLabelStep);
  }
  return labels + '\n';
}

struct Counts {
  int marks = 0;
  int faint = 0;
};

Counts CountMarks(const SideArray& marks, const GridStyle& style) {
  Counts counts;
  for (std::int32_t row = 1; row <= marks.Rows(); ++row) {
    for (std::int32_t column = 1; column <= marks.Columns(); ++column) {
      const Shade shade = ShadeOf(marks.At(row, column), style);
      counts.marks += shade == Shade::Mark ? 1 : 0;
      counts.faint += shade == Shade::Faint ? 1 : 0;
    }
  }
  return counts;
}

std::string SideCaption(int number, const SideRecord& side, const GridStyle& style) {
  const Counts counts = CountMarks(side.marks, style);
  std::string caption = fmt::format("\n{} side {}: {} rows, {} columns, {} marks, {} faint", kMargin, number,
                                    side.marks.Rows(), side.marks.Columns(), counts.marks, counts.faint);
  if (side.timingMarks >= 0) caption += fmt::format(", {} timing marks", side.timingMarks);
  if (!side.image.empty()) caption += ", image " + side.image;
  return caption + '\n';
}

// The rows that are worth drawing: as many as the scanner counted on the paper, and every one with a value.
// Drivers with a fixed grid hand out many more.
std::int32_t RowsDrawn(const SideRecord& side) {
  if (side.timingMarks < 0) return side.marks.Rows();
  for (std::int32_t row = side.marks.Rows(); row > side.timingMarks; --row) {
    for (std::int32_t column = 1; column <= side.marks.Columns(); ++column) {
      if (side.marks.At(row, column) != 0) return row;
    }
  }
  return std::min<std::int32_t>(side.timingMarks, side.marks.Rows());
}

std::string SideText(int number, const SideRecord& side, const GridStyle& style) {
  std::string text = SideCaption(number, side, style);
  if (side.marks.Empty()) return text;
  text += ColumnLabels(side.marks.Columns());
  text += EdgeText(side.marks.Columns(), kTop);
  const std::int32_t drawn = RowsDrawn(side);
  for (std::int32_t row = 1; row <= drawn; row += 2) {
    const bool labelled = (row - 1) % kLabelStep == 0;
    text += labelled ? fmt::format("{:>4} │", row) : fmt::format("{}│", kMargin);
    text += LineText(side.marks, row, style) + "│\n";
  }
  text += EdgeText(side.marks.Columns(), kBottom);
  if (drawn < side.marks.Rows()) {
    text += fmt::format("{} rows {} to {} are empty\n", kMargin, drawn + 1, side.marks.Rows());
  }
  return text;
}

std::string_view DisposalText(const std::string& disposed) {
  if (disposed == "none") return "not disposed of";
  return disposed == "failed" ? "disposing of it failed" : std::string_view(disposed);
}

}  // namespace

std::string GridText(const SheetRecord& record, std::string_view readerName, const GridStyle& style) {
  std::string barcodes;
  for (const std::string& barcode : record.barcodes) barcodes += (barcodes.empty() ? "" : " ") + barcode;
  std::string text = fmt::format("\n{}Sheet {}, {}", style.color ? "\x1b[1m" : "", record.sheet, readerName);
  if (!barcodes.empty()) text += ", barcodes " + ShownText(barcodes);
  text += fmt::format(", {}{}\n", DisposalText(record.disposed), style.color ? "\x1b[0m" : "");
  text += SideText(1, record.side1, style);
  if (record.side2) text += SideText(2, *record.side2, style);
  for (const std::string& warning : record.warnings)
    text += fmt::format("{}! {}\n", kMargin, ShownText(warning));
  return text;
}

bool TerminalShowsColor() {
  const char* refused = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool wanted = refused == nullptr || *refused == '\0';
  return wanted && terminal != nullptr && *terminal != '\0' && std::string_view(terminal) != "dumb";
}

}  // namespace tesk::cli
