// The 32-bit server and the 64-bit one: registering each, and the processes that the system runs the 32-bit one in
// for hosts that cannot load it.
#pragma once

#include <string>

#include "tests/windows/Host.h"

namespace tesk::test {

enum class Kind { k32, k64 };

inline constexpr DWORD kOwnProcess = CLSCTX_LOCAL_SERVER | CLSCTX_ACTIVATE_32_BIT_SERVER;

std::wstring SystemFolder(Kind kind);  // of the system's programs of that kind, with a backslash at its end
std::wstring ServerPath(Kind kind);

// By the system's own program; the user's entries alone where `user`.
bool RegisterServer(Kind kind, bool undo, bool user = false);

// How many of the processes there are. They outlive their objects; ending them is the test's.
int Surrogates();
void EndSurrogates();

}  // namespace tesk::test
