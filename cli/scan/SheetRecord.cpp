// The ndjson and CSV forms of a sheet.
#include "cli/scan/SheetRecord.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/conversions.h"

namespace tesk::cli {
namespace {

using Json = nlohmann::ordered_json;

Json MarksJson(const SideArray& marks) {
  Json rows = Json::array();
  for (std::int32_t row = 1; row <= marks.Rows(); ++row) {
    Json values = Json::array();
    for (std::int32_t column = 1; column <= marks.Columns(); ++column)
      values.push_back(marks.At(row, column));
    rows.push_back(std::move(values));
  }
  return rows;
}

Json SideJson(const SideRecord& side) {
  return {{"timing_marks", side.timingMarks},
          {"marks", MarksJson(side.marks)},
          {"image", side.image},
          {"coordinates", side.coordinates}};
}

void AppendSideLines(std::string& text, std::int32_t sheet, int side, const SideArray& marks) {
  for (std::int32_t row = 1; row <= marks.Rows(); ++row) {
    for (std::int32_t column = 1; column <= marks.Columns(); ++column) {
      const std::int16_t value = marks.At(row, column);
      if (value != 0)
        fmt::format_to(std::back_inserter(text), "{},{},{},{},{}\n", sheet, side, row, column, value);
    }
  }
}

std::string CsvField(std::string text) {
  if (std::string_view("=+-@\t\r\n'").find(text.substr(0, 1)) != std::string_view::npos && !text.empty()) {
    text.insert(0, 1, '\'');
  }
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  return '"' + Replace(text, "\"", "\"\"") + '"';
}

}  // namespace

std::vector<std::string> BarcodesRead(const std::vector<std::string>& texts, std::string_view nothing) {
  if (texts.size() == 1 && texts.front() == nothing) return {};
  std::vector<std::string> barcodes;
  std::ranges::copy_if(texts, std::back_inserter(barcodes),
                       [](const std::string& text) { return !text.empty(); });
  return barcodes;
}

std::string NdjsonText(const SheetRecord& record) {
  const Json json = {
      {"sheet", record.sheet},           {"reader", record.reader},
      {"side1", SideJson(record.side1)}, {"side2", record.side2 ? SideJson(*record.side2) : Json(nullptr)},
      {"barcodes", record.barcodes},     {"disposed", record.disposed},
      {"warnings", record.warnings}};
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string CsvHeader() { return "sheet,side,row,column,value\n"; }

std::string CsvText(const SheetRecord& record) {
  std::string text;
  AppendSideLines(text, record.sheet, 1, record.side1.marks);
  if (record.side2) AppendSideLines(text, record.sheet, 2, record.side2->marks);
  if (text.empty()) text = fmt::format("{},1,0,0,0\n", record.sheet);
  for (std::size_t i = 0; i < record.barcodes.size(); ++i) {
    text += fmt::format("{},0,{},0,{}\n", record.sheet, i + 1, CsvField(record.barcodes[i]));
  }
  return text;
}

}  // namespace tesk::cli
