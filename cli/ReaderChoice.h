// Which scanner model --reader means. Knows the models' names, the assembly and the
// simulator.
#pragma once

#include <string>
#include <string_view>

#include "base/enumerations.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

// A number, an enumerator or a display name, the letters in any case. Throws UsageError with the nearest
// names, also for teskReaderTypeNone.
teskReaderType ParseReader(const std::string& text);

// Throws CommandFailure in plain words for a model that has no driver.
void RequireDriver(teskReaderType type);

// Throws CommandFailure for a model that only its maker's library reads, on a system that has none.
void RequireSystem(teskReaderType type);

// Throws CommandFailure for a model that cannot be simulated on a line, and says what can be done instead.
void RequireLineSimulator(teskReaderType type);

// The engine with what the model's profile proposes. Throws CommandFailure for a model that has no profile.
void LoadModelDefaults(teskReaderType type, clsTeskReader& engine);

// What the support of a model rests on, as `readers` prints it.
std::string_view SupportOf(teskReaderType type);

}  // namespace tesk::cli
