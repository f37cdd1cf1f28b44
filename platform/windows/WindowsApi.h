// The system's header, and only what we want of it: its macros would rename classes and functions of ours.
// Every unit that needs Windows includes this, never <windows.h>.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#undef LoadString
#undef MessageBox
