// Everything that stands under the registry's classes, of the machine and of the user.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace tesk::test {

// One line per key and per value.
std::set<std::wstring> Classes();

// Keeps what is there before the server was ever registered.
void NoteCleanRegistry();
const std::set<std::wstring>& CleanRegistry();
// What there is of the server's beyond it. The system may go on setting itself up meanwhile.
std::vector<std::string> LeftInRegistry();

}  // namespace tesk::test
