// A bench with a Sekonic serial scanner that says what a test writes down, and a form of 4 rows on side 1 and 2 on side 2.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tests/support/Talker.h"
#include "tests/support/TestBench.h"

namespace tesk::test {

inline constexpr auto kSr601 = teskReaderTypeScanningSystemsSR601;
inline constexpr auto kSr607 = teskReaderTypeScanningSystemsSR607;
inline constexpr auto kSr700351 = teskReaderTypeScanningSystemsSR700351;
inline constexpr auto kSr700352 = teskReaderTypeScanningSystemsSR700352;
inline constexpr auto kSr410 = teskReaderTypeScanningSystemsSR410;
inline constexpr auto kSr430 = teskReaderTypeSekonicSR430;

using Pieces = std::vector<Piece>;
using Settings = std::function<void(Bench&)>;

// The answers to the reset, the mode, what is fitted, the status, the counts, the marks of both sides, the windows, the
// barcodes, and to whether a sheet was printed on and fed on.
inline Said GoodSekonic() {
  return {{"\030", "\x06\r"},
          {"\005OM", "1\r"},
          {"\005O", "000000\r"},
          {"?", "00"},
          {"\005T", "004\r"},
          {"/\005T", "006\r"},
          {"\020ED001004", "05 \r \r \r \r"},
          {"/\020ED001002", " \r16 \r"},
          {"\020R*", "15\r36\r"},
          {"/\020R*", "12\r"},
          {"\023BA05", "4711\rAB\r"},
          {"?P", "0"},
          {"?F", "0"}};
}

struct SekonicBench : Bench {
  SekonicBench(teskReaderType type, const Said& said)
      : Bench(type, std::make_shared<Talker>(With(GoodSekonic(), said))) {
    SetExtents(4, 2, true);
  }
};

// What happens in a session with a scanner that says this instead of what a good one says.
inline std::string Play(teskReaderType type, const char* calls, const Said& said = {},
                        const Settings& set = {}) {
  SekonicBench bench(type, said);
  if (set) set(bench);
  return bench.Do(calls);
}

inline void OneSided(Bench& b) { b.SetExtents(4, 2, false); }

}  // namespace tesk::test
