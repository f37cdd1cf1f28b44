// A reader with an error object and a sink, ready to read from a simulated ScanMark 5500 behind a serial
// port. tests/fixtures.sh starts the scanners: COM3 generated sheets, COM4 an empty hopper, COM5 square sheets.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/Sheet.h"
#include "tests/windows/Host.h"

namespace tesk::test {

inline constexpr SHORT kSheetsPort = 3;
inline constexpr SHORT kEmptyPort = 4;
inline constexpr SHORT kSquaresPort = 5;

class Reading : public testing::Test {
 protected:
  void SetUp() override;
  // Whatever a test did, nothing of the server may live on.
  void TearDown() override;

  bool Start(SHORT port);
  bool ReadPage();
  // Reads a sheet and sends it on, since the scanner holds it until then.
  bool ReadAndEject();
  // The sink sends every sheet of a batch on.
  void EjectEverySheet();
  bool EndReader();
  // Puts the reader down for good, with everything that it holds.
  void LetGo();

  ComPtr<_clsTeskReader> reader;
  ComPtr<EventSink> sink;
  ComPtr<ErrorObject> errors;
};

// What the scanner on COM3, or COM5, reads: the place in its stock of the sheet with these marks; empty for marks
// of no sheet.
std::optional<std::size_t> PlaceOfSheet(const SideArray& marks);

SideArray SideOf(_clsTeskReader* reader, HRESULT (STDMETHODCALLTYPE _clsTeskReader::*get)(SAFEARRAY**));

}  // namespace tesk::test
