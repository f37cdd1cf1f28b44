// The reading of a script, line by line.
#include "simulator/SekonicUsbScript.h"

#include <charconv>
#include <concepts>
#include <cstddef>
#include <utility>
#include <vector>

namespace tesk::simulator {
namespace {

using Words = std::vector<std::string_view>;

constexpr std::int32_t kMostSheets = 100'000;
constexpr std::int32_t kMostRows = 1'000;

Words WordsOf(std::string_view line) {
  Words words;
  constexpr std::string_view kBlanks = " \t\r";
  line = line.substr(0, line.find('#'));
  for (std::size_t at = line.find_first_not_of(kBlanks); at != std::string_view::npos;) {
    const std::size_t end = line.find_first_of(kBlanks, at);
    words.push_back(line.substr(at, end - at));
    at = end == std::string_view::npos ? end : line.find_first_not_of(kBlanks, end);
  }
  return words;
}

template <std::integral Value>
bool Read(std::string_view text, Value& value, int base = 10) {
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value, base);
  return result.ec == std::errc() && result.ptr == end;
}

// A sheet that the script has generated before this line.
Sheet* SheetNamed(std::string_view text, UsbDevice& device) {
  std::size_t number = 0;
  if (!Read(text, number) || number < 1 || number > device.sheets.size()) return nullptr;
  return &device.sheets[number - 1];
}

bool Sheets(const Words& words, UsbDevice& device) {
  std::int32_t count = 0;
  std::uint64_t seed = 0;
  Geometry geometry;
  if (words.size() != 4 && words.size() != 5) return false;
  if (!Read(words[1], count) || !Read(words[2], geometry.rows) || !Read(words[3], seed)) return false;
  geometry.twoSided = words.size() == 5;
  if (geometry.twoSided && words[4] != "two-sided") return false;
  if (count < 0 || count > kMostSheets || geometry.rows < 0 || geometry.rows > kMostRows) return false;
  device.sheets = GenerateSheets(count, seed, geometry, kSekonicUsbDarkest);
  return true;
}

bool Barcode(const Words& words, UsbDevice& device) {
  Sheet* const sheet = words.size() == 3 ? SheetNamed(words[1], device) : nullptr;
  if (sheet != nullptr) sheet->barcodes.emplace_back(words[2]);
  return sheet != nullptr;
}

bool NoBarcodes(const Words& words, UsbDevice& device) {
  Sheet* const sheet = words.size() == 2 ? SheetNamed(words[1], device) : nullptr;
  if (sheet != nullptr) sheet->barcodes.clear();
  return sheet != nullptr;
}

bool ReadingMethod(const Words& words, UsbDevice& device) {
  return words.size() == 3 && Read(words[1], device.readingMethod) && Read(words[2], device.readingParameter);
}

bool Columns(const Words& words, UsbDevice& device) {
  return words.size() == 2 && Read(words[1], device.columns);
}

bool FeedMode(const Words& words, UsbDevice& device) {
  return words.size() == 3 && Read(words[1], device.feedMode) && Read(words[2], device.feedParameter);
}

bool BarcodeUnit(const Words& words, UsbDevice& device) {
  return words.size() == 2 && Read(words[1], device.barcodeUnit);
}

bool FeedError(const Words& words, UsbDevice& device) {
  std::int32_t sheet = 0;
  std::uint32_t code = 0;
  if (words.size() != 3 || !Read(words[1], sheet) || !Read(words[2], code, 16)) return false;
  device.feedErrors[sheet] = code;
  return true;
}

bool EmptyError(const Words& words, UsbDevice& device) {
  return words.size() == 2 && Read(words[1], device.emptyError, 16);
}

// "KIND FUNCTION N" with a value behind it where the kind has one.
bool AddFault(const Words& words, UsbDevice& device, UsbFault::Kind kind) {
  const bool hasValue = kind == UsbFault::Kind::Answer || kind == UsbFault::Kind::Report;
  UsbFault fault{kind, {}, 0, 0};
  if (words.size() != (hasValue ? 4U : 3U) || !words[1].starts_with("OMR_")) return false;
  if (!Read(words[2], fault.number) || (hasValue && !Read(words[3], fault.value))) return false;
  fault.function = words[1];
  device.faults.push_back(std::move(fault));
  return true;
}

bool Answer(const Words& words, UsbDevice& device) { return AddFault(words, device, UsbFault::Kind::Answer); }
bool Report(const Words& words, UsbDevice& device) { return AddFault(words, device, UsbFault::Kind::Report); }
bool Overrun(const Words& words, UsbDevice& device) {
  return AddFault(words, device, UsbFault::Kind::Overrun);
}
bool Unterminated(const Words& words, UsbDevice& device) {
  return AddFault(words, device, UsbFault::Kind::Unterminated);
}

constexpr struct {
  std::string_view name;
  bool (*read)(const Words& words, UsbDevice& device);
} kStatements[] = {
    {"sheets", Sheets},
    {"barcode", Barcode},
    {"no-barcodes", NoBarcodes},
    {"columns", Columns},
    {"feed-mode", FeedMode},
    {"reading-method", ReadingMethod},
    {"feed", FeedError},
    {"empty", EmptyError},
    {"barcode-unit", BarcodeUnit},
    {"answer", Answer},
    {"report", Report},
    {"overrun", Overrun},
    {"unterminated", Unterminated},
};

bool ReadStatement(const Words& words, UsbDevice& device) {
  for (const auto& statement : kStatements) {
    if (statement.name == words[0]) return statement.read(words, device);
  }
  return false;
}

}  // namespace

ParsedUsbDevice ParseUsbDevice(std::string_view script) {
  UsbDevice device;
  for (std::size_t number = 1; !script.empty(); ++number) {
    const std::size_t end = script.find('\n');
    const std::string_view line = script.substr(0, end);
    const Words words = WordsOf(line);
    if (!words.empty() && !ReadStatement(words, device)) {
      return {std::nullopt,
              "line " + std::to_string(number) + ": \"" + std::string(line) + "\" is no statement"};
    }
    script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
  }
  return {std::move(device), {}};
}

}  // namespace tesk::simulator
