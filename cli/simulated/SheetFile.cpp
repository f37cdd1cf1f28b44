// The reader of sheet files. Nothing in the file is trusted.
#include "cli/simulated/SheetFile.h"

#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/CommandError.h"
#include "cli/inputFile.h"
#include "cli/values.h"

namespace tesk::cli {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kLongestLine = 16U << 20U;     // bytes; two sides of the largest size fit
constexpr std::size_t kMostPositions = 200'000'000;  // of all sheets of a file together
constexpr std::size_t kMostBarcodes = 1000;
constexpr int kDeepestNesting = 8;  // a sheet needs four

// What is wrong with a line; the reader adds where it stands.
[[noreturn]] void Refuse(const std::string& what) { throw CommandFailure(what); }

const Json& Member(const Json& object, const char* name, const std::string& where) {
  const auto member = object.find(name);
  if (member == object.end()) Refuse(fmt::format("{} has no \"{}\"", where, name));
  return *member;
}

std::int16_t MarkValue(const Json& value, const std::string& where, std::int16_t darkest) {
  if (!value.is_number_integer()) Refuse(where + " is no whole number");
  const auto number = value.get<std::int64_t>();
  const bool tooLarge = value.is_number_unsigned() && value.get<std::uint64_t>() > INT16_MAX;
  if (tooLarge || number < 0 || number > darkest) {
    Refuse(fmt::format("{} is {}; this scanner's marks go from 0 to {}", where, value.dump(), darkest));
  }
  return static_cast<std::int16_t>(number);
}

std::int32_t ColumnsOf(const Json& rows, const std::string& where) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!rows[i].is_array()) Refuse(fmt::format("row {} of {} is no array", i + 1, where));
    if (rows[i].size() != rows[0].size()) {
      Refuse(fmt::format("row {} of {} has {} values, the first row {}", i + 1, where, rows[i].size(),
                         rows[0].size()));
    }
  }
  return rows.empty() ? 0 : static_cast<std::int32_t>(rows[0].size());
}

SideArray Side(const Json& sheet, const char* name, std::int16_t darkest) {
  const Json& side = Member(sheet, name, "the sheet");
  if (!side.is_object()) Refuse(fmt::format("\"{}\" is no object", name));
  const std::string where = fmt::format("\"marks\" of \"{}\"", name);
  const Json& rows = Member(side, "marks", fmt::format("\"{}\"", name));
  if (!rows.is_array()) Refuse(where + " is no array of rows");
  const std::int32_t columns = ColumnsOf(rows, where);
  SideArray marks(static_cast<std::int32_t>(rows.size()), columns);
  if (rows.size() > INT16_MAX || columns > INT16_MAX) Refuse(where + " is larger than any sheet");
  for (std::int32_t row = 1; row <= marks.Rows(); ++row) {
    for (std::int32_t column = 1; column <= columns; ++column) {
      const Json& value = rows[static_cast<std::size_t>(row) - 1][static_cast<std::size_t>(column) - 1];
      marks.At(row, column) =
          MarkValue(value, fmt::format("row {}, column {} of {}", row, column, where), darkest);
    }
  }
  return marks;
}

std::vector<std::string> Barcodes(const Json& sheet) {
  const auto list = sheet.find("barcodes");
  if (list == sheet.end()) return {};
  if (!list->is_array() || list->size() > kMostBarcodes) Refuse("\"barcodes\" is no array of texts");
  std::vector<std::string> barcodes;
  for (const Json& text : *list) {
    if (!text.is_string()) Refuse("\"barcodes\" is no array of texts");
    barcodes.push_back(text.get<std::string>());
  }
  return barcodes;
}

// Parses without building what is nested deeper than a sheet can be.
Json ParseLine(const std::string& line) {
  bool tooDeep = false;
  const auto notTooDeep = [&](int depth, Json::parse_event_t, Json&) {
    tooDeep = tooDeep || depth > kDeepestNesting;
    return !tooDeep;
  };
  Json json;
  try {
    json = Json::parse(line, notTooDeep);
  } catch (const Json::exception& error) {
    // The library's text begins with its own error number in brackets.
    const std::string_view text = error.what();
    const std::size_t bracket = text.find("] ");
    Refuse("no JSON: " + std::string(bracket == std::string_view::npos ? text : text.substr(bracket + 2)));
  }
  if (tooDeep || !json.is_object()) Refuse("no sheet: one JSON object per line is expected");
  return json;
}

simulator::Sheet ParseSheet(const std::string& line, std::int16_t darkest) {
  const Json json = ParseLine(line);
  simulator::Sheet sheet;
  sheet.side1 = Side(json, "side1", darkest);
  const auto side2 = json.find("side2");
  if (side2 != json.end() && !side2->is_null()) sheet.side2 = Side(json, "side2", darkest);
  sheet.barcodes = Barcodes(json);
  return sheet;
}

std::size_t Positions(const SideArray& side) {
  return static_cast<std::size_t>(side.Rows()) * static_cast<std::size_t>(side.Columns());
}

// The next line without its line feed and carriage return; False at the end. A line without end stops at
// the limit, not at the end of the memory.
bool NextLine(std::istream& stream, std::string& line) {
  line.clear();
  std::streambuf& buffer = *stream.rdbuf();
  constexpr int kEnd = std::streambuf::traits_type::eof();
  int c = buffer.sbumpc();
  if (c == kEnd) return false;
  for (; c != kEnd && c != '\n'; c = buffer.sbumpc()) {
    if (line.size() == kLongestLine) Refuse("the line is longer than any sheet");
    line += static_cast<char>(c);
  }
  if (line.ends_with('\r')) line.pop_back();
  return true;
}

}  // namespace

std::vector<simulator::Sheet> ReadSheets(std::istream& stream, const std::string& file,
                                         std::int16_t darkest) {
  std::vector<simulator::Sheet> sheets;
  std::size_t positions = 0;
  std::string line;
  for (int number = 1;; ++number) {
    try {
      if (!NextLine(stream, line)) break;
      if (line.find_first_not_of(" \t") == std::string::npos) continue;
      sheets.push_back(ParseSheet(line, darkest));
      positions += Positions(sheets.back().side1) + Positions(sheets.back().side2);
      if (positions > kMostPositions) Refuse("the sheets so far are too many to hold");
    } catch (const CommandFailure& error) {
      throw CommandFailure(fmt::format("{}, line {}: {}", file, number, error.what()));
    }
  }
  if (sheets.empty()) throw CommandFailure(file + ": there is no sheet in this file");
  return sheets;
}

std::vector<simulator::Sheet> ReadSheetFile(const std::string& file, std::int16_t darkest) {
  auto stream = OpenInputFile(file);
  return ReadSheets(stream, file, darkest);
}

}  // namespace tesk::cli
