// What the scanner's error codes mean.
#include "drivers/sekonicErrors.h"

namespace tesk::basSekonicSR {
namespace {

struct ErrorText {
  std::uint32_t code;
  std::string_view text;
};

// Compatibility: the wording ("there paper feed jam", "No data read was read") and the double blanks; they are the
// keys of translations.
constexpr ErrorText kErrors[] = {
    {0x01020005,
     "The Sekonic SR reports an internal error with the Front Sensor.  Please pull any pages in the input "
     "tray, reset the scanner and retry."},
    {0x20070000,
     "The Sekonic SR reports that the cover on the main body is open.  Please make certain the cover is "
     "closed properly and retry the operation."},
    {0x25070001,
     "The Sekonic SR reports that the front cover on the stacker unit is open.  Please make certain the "
     "cover is closed properly and retry the operation."},
    {0x30080000,
     "The Sekonic SR reports there is no paper in the scanner.  Place the paper in the hopper and retry "
     "the operation."},
    {0x30080001,
     "The Sekonic SR reports there paper feed jam at the feeder.  Please clear the jam and retry the "
     "operation."},
    {0x30080002,
     "The Sekonic SR reports there paper feed jam at the read sensor.  Please clear the jam and retry the "
     "operation."},
    {0x30080003,
     "The Sekonic SR reports there paper feed jam at the output section.  Please clear the jam and retry "
     "the operation."},
    {0x35090000,
     "The Sekonic SR reports there paper feed jam at the input to the select stacker.  Please clear the "
     "jam and retry the operation."},
    {0x35090001,
     "The Sekonic SR reports there paper feed jam at the sensor unit to the select stacker.  Please clear "
     "the jam and retry the operation."},
    {0x35090002,
     "The Sekonic SR reports there paper feed jam in the main stacker.  Please clear the jam and retry the "
     "operation."},
    {0x35090003,
     "The Sekonic SR reports there paper feed jam at the select stacker.  Please clear the jam and retry "
     "the operation."},
    {0x40110001, "The Sekonic SR reports a double feed error.  Please rescan the last pages."},
    {0x40110002,
     "The Sekonic SR reports a skew error (left).  No data was read from the page. Please rescan the last "
     "page."},
    {0x40110003,
     "The Sekonic SR reports a skew error (mark skew).  No data read was read from the page. Please rescan "
     "the last page."},
    {0x40120003, "The Sekonic SR reports a timing line error at the Front/Back Sensor Unit.  Please retry."},
    {0x40120004, "The Sekonic SR reports a configuration error at the Front/Back Reader Unit."},
    {0x40140000,
     "The Sekonic SR reports paper remaining in the Paper Feed Sensor (Main Body).  Please clear the page "
     "from the main scanner body and retry."},
    {0x40140001,
     "The Sekonic SR reports paper remaining in the Reading Sensor (Main Body).  Please clear the page "
     "from the main scanner body and retry."},
    {0x40140002,
     "The Sekonic SR reports paper remaining in the Paper Output Sensor (Main Body).  Please clear the "
     "page from the main scanner body and retry."},
    {0x41120003, "The Sekonic SR reports a timing line error at the Front Sensor Unit.  Please retry."},
    {0x41120004, "The Sekonic SR reports a configuration error at the Front Reader Unit."},
    {0x42120003, "The Sekonic SR reports a timing line error at the Back Sensor Unit.  Please retry."},
    {0x42120004, "The Sekonic SR reports a configuration error at the Back Reader Unit."},
    {0x45140003,
     "The Sekonic SR reports paper remaining in the Input Sensor of the Stacker Unit.  Please clear the "
     "page from the stacker unit and retry."},
    {0x45140004,
     "The Sekonic SR reports paper remaining in the Printing Sensor of the Stacker Unit.  Please clear the "
     "page from the stacker unit and retry."},
    {0x45140005,
     "The Sekonic SR reports paper remaining in the Main Stacker Unit.  Please clear the page from the "
     "stacker unit and retry."},
    {0x45140006,
     "The Sekonic SR reports paper remaining in the Select Stacker Unit.  Please clear the page from the "
     "stacker unit and retry."},
};

constexpr std::string_view kOther = "The Sekonic SR reports the following error condition when reading:";

constexpr bool InOrder() {
  std::uint32_t before = 0;
  for (const ErrorText& error : kErrors) {
    if (error.code <= before) return false;
    before = error.code;
  }
  return true;
}
static_assert(InOrder());

}  // namespace

std::string_view ErrorTextOf(std::uint32_t code) {
  for (const ErrorText& error : kErrors) {
    if (error.code == code) return error.text;
  }
  return kOther;
}

}  // namespace tesk::basSekonicSR
