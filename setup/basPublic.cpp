// File names, random numbers and the arithmetic of control places.
#include "setup/basPublic.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

#include "base/HostServices.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk::basPublic {
namespace {

constexpr std::int32_t kLastExtension = 4095;
constexpr std::int32_t kLastRandomPart = 0xFFFFF;
constexpr std::int32_t kErrorPathAccess = 75;
constexpr std::size_t kPrefixLength = 5;  // characters of the application's name

// One generator per process; the time is mixed in for systems whose random device always says the same.
std::mt19937& Generator() {
  static std::mt19937 generator = [] {
    std::random_device device;
    const auto time = std::chrono::system_clock::now().time_since_epoch().count();
    std::seed_seq seed{device(), device(), static_cast<unsigned>(time), static_cast<unsigned>(time >> 32)};
    return std::mt19937(seed);
  }();
  return generator;
}

// Three digits that stay the same for as long as this instance runs.
const std::string& InstanceDigits() {
  static const std::string digits = [] {
    const std::string hex = LowerCase(HexText(static_cast<std::uint32_t>(RandomNumber(0, 0xFFF))));
    return std::string(3 - hex.size(), '0') + hex;
  }();
  return digits;
}

// The first `count` characters of a UTF-8 text.
std::string FirstCharacters(const std::string& text, std::size_t count) {
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool starts = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80U;
    if (starts && count-- == 0) break;
  }
  return text.substr(0, end);
}

std::filesystem::path PathOf(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string TextOf(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return std::string(utf8.begin(), utf8.end());
}

// What cannot be looked at counts as taken, also a link that leads nowhere.
bool IsTaken(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::symlink_status(path, error);
  return status.type() != std::filesystem::file_type::not_found;
}

std::string FreshExtension() {
  return "." + LowerCase(HexText(static_cast<std::uint32_t>(RandomNumber(0, kLastExtension))));
}

bool HasCaption(ControlKind kind) {
  return kind != ControlKind::DropDownList && kind != ControlKind::SpinField;
}

}  // namespace

std::string GetUniqueFileName(const std::string& prefix, const std::string& extension,
                              const std::string& folder) {
  return Guarded("basPublic.GetUniqueFileName", [&] {
    const auto where = folder.empty() ? std::filesystem::temp_directory_path() : PathOf(folder);
    const auto start = prefix.empty() ? FirstCharacters(ApplicationName(), kPrefixLength) : prefix;
    return FirstFreePath([&] {
      const std::string end = extension.empty() ? FreshExtension() : extension;
      const auto number = static_cast<std::uint32_t>(RandomNumber(0, kLastRandomPart));
      return TextOf(where / PathOf(start + InstanceDigits() + HexText(number) + end));
    });
  });
}

std::string FirstFreePath(const std::function<std::string()>& draw) {
  constexpr int kDraws = 10'000;
  std::string path;
  for (int i = 0; i < kDraws; ++i) {
    path = draw();
    if (!IsTaken(PathOf(path))) return path;
  }
  throw RunTimeError(kErrorPathAccess, "Path/File access error", {},
                     "No file name like \"" + path + "\" is free.");
}

std::int32_t RandomNumber(std::int32_t lower, std::int32_t upper) {
  return Guarded(
      "basPublic.RandomNumber",
      [&] {
        if (lower > upper) throw InvalidCall();
        return std::uniform_int_distribution<std::int32_t>(lower, upper)(Generator());
      },
      lower);
}

std::string ShownCaption(std::string_view caption) {
  std::string shown;
  for (std::size_t i = 0; i < caption.size(); ++i) {
    // The character behind a marker stands for itself, another marker too.
    if (caption[i] == '&' && ++i == caption.size()) break;
    shown += caption[i];
  }
  return shown;
}

char AccessKey(std::string_view caption) {
  for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
    if (caption[i] != '&') continue;
    if (caption[++i] != '&') return LowerCase(caption.substr(i, 1))[0];
  }
  return '\0';
}

std::int32_t ControlTextWidth(const Control& control, const TextMeasure& measure) {
  return Guarded("basPublic.ControlTextWidth",
                 [&] { return HasCaption(control.kind) ? measure.width(ShownCaption(control.caption)) : 0; });
}

void ControlAutoSize(Control& control, const TextMeasure& measure) {
  Guarded("basPublic.ControlAutoSize", [&] {
    if (!HasCaption(control.kind) || control.kind == ControlKind::Frame) return;
    std::int32_t width = measure.width(ShownCaption(control.caption));
    if (control.kind == ControlKind::CheckBox || control.kind == ControlKind::OptionButton) {
      width += measure.box;
    }
    if (control.kind == ControlKind::Button) width += 2 * measure.padding;
    control.place.width = std::max(control.place.width, width);
  });
}

void ControlPositionRight(Control& control, const Control& reference, std::int32_t gap) {
  Guarded("basPublic.ControlPositionRight",
          [&] { control.place.left = reference.place.left + reference.place.width + gap; });
}

void ControlAlignLeft(std::span<Control* const> controls) {
  Guarded("basPublic.ControlAlignLeft", [&] {
    if (controls.empty()) return;
    const auto further = [](const Control* a, const Control* b) { return a->place.left < b->place.left; };
    const std::int32_t left = (*std::ranges::max_element(controls, further))->place.left;
    for (Control* control : controls) control->place.left = left;
  });
}

void UnloadForm(Form& form) {
  Guarded("basPublic.UnloadForm", [&] { form.Unload(); });
}

}  // namespace tesk::basPublic
