// Small helpers of drivers and of the setup dialog: file names that are not taken, random numbers, and the
// measuring and lining up of controls. Unexpected errors are reported under "basPublic".
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "setup/Control.h"

namespace tesk::basPublic {

// The path of a file that does not exist, neither as a file nor as a folder. It is not created: a caller that
// needs it alone creates it at once. The name is the prefix (empty: the first five characters of the
// application's name), three lower-case hexadecimal digits of this running instance, a random number in
// upper-case hexadecimal and the extension, which brings its dot (empty: a random one). folder empty: the
// system's temporary folder. Empty after an error.
std::string GetUniqueFileName(const std::string& prefix, const std::string& extension,
                              const std::string& folder);

// The first of the drawn paths that names neither a file nor a folder. Throws error 75 when thousands are taken:
// then something else is wrong with the folder.
std::string FirstFreePath(const std::function<std::string()>& draw);

// A number from lower to upper, both included and all equally likely. lower above upper is error 5, reported;
// lower is returned.
std::int32_t RandomNumber(std::int32_t lower, std::int32_t upper);

// How a view measures, in its own unit.
struct TextMeasure {
  std::function<std::int32_t(std::string_view)> width;  // of a text without access marker
  std::int32_t box = 0;      // what a check box or option button takes beside its text
  std::int32_t padding = 0;  // what a push button needs on each side of its text
};

// The caption as it is seen: without the "&" before the access key, and "&&" as one character.
std::string ShownCaption(std::string_view caption);
// The character behind the access marker in lower case; 0 where there is none.
char AccessKey(std::string_view caption);

// The width of a caption; 0 for a control that shows none.
std::int32_t ControlTextWidth(const Control& control, const TextMeasure& measure);
// Widens a label, check box, option button or push button to fit its caption; never narrows one.
void ControlAutoSize(Control& control, const TextMeasure& measure);
// Places `control` to the right of `reference`, `gap` away.
void ControlPositionRight(Control& control, const Control& reference, std::int32_t gap);
// Moves all controls to the left edge of the one furthest to the right, so that none moves onto what stands
// left of it.
void ControlAlignLeft(std::span<Control* const> controls);

class Form {
 public:
  virtual ~Form() = default;
  // Takes the form off the screen and ends its modal loop.
  virtual void Unload() = 0;
};

void UnloadForm(Form& form);

}  // namespace tesk::basPublic
