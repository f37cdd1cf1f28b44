// Help files of a host's, shown by the system's viewers.
#pragma once

#include <cstdint>
#include <string>

#include "platform/windows/WindowsApi.h"

namespace tesk {

// Opens the file at a topic (0: at its beginning; only .chm and .hlp files have topics). Only a file that is
// there, named by its full path on a drive of this computer, and only a kind that holds help (.chm, .hlp,
// .htm, .html, .pdf, .txt). False where nothing was shown.
bool ShowHelp(HWND owner, const std::string& file, std::int32_t topic);

}  // namespace tesk
