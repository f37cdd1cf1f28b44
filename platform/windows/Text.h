// Text between UTF-8, which is ours, and the system's encodings. What has no equivalent becomes a
// replacement character, never an error.
#pragma once

#include <string>
#include <string_view>

namespace tesk::platform {

std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);
std::string AnsiToUtf8(std::string_view text);  // of the system's code page
std::string Utf8ToAnsi(std::string_view text);

// "Access is denied"; error: a GetLastError value.
std::string SystemReason(unsigned long error);

// The value of an environment variable, empty where there is none.
std::string Environment(std::string_view name);

}  // namespace tesk::platform
