// Parsing of --port.
#include "cli/PortChoice.h"

#include <algorithm>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/optionValues.h"
#include "platform/Platform.h"

namespace tesk::cli {

PortChoice ParsePort(const std::string& text) {
  const auto digit = [](char c) { return c >= '0' && c <= '9'; };
  if (text.empty()) throw UsageError("--port: takes 1 to 16, a device path or \"sim\"");
  if (LowerCase(text) == "sim") return {.kind = PortChoice::Kind::Simulated, .number = 1, .device = {}};
  const std::size_t sign = text[0] == '-' || text[0] == '+' ? 1 : 0;
  if (text.size() > sign &&
      std::all_of(text.begin() + static_cast<std::ptrdiff_t>(sign), text.end(), digit)) {
    return {.kind = PortChoice::Kind::Number,
            .number = static_cast<std::int16_t>(ParseWholeNumber("--port", text, 1, 16)),
            .device = {}};
  }
  return {.kind = PortChoice::Kind::Device, .number = 1, .device = platform::DeviceOfName(text)};
}

}  // namespace tesk::cli
