// One barcode definition: where on a sheet a barcode lies and which code it is.
#pragma once

#include <cstdint>

#include "base/enumerations.h"

namespace tesk {

// Plain values, none checked.
class clsTeskReaderBarcode {
 public:
  std::int16_t Page() const { return page_; }  // side of the sheet
  void SetPage(std::int16_t v) { page_ = v; }
  std::int16_t Field() const { return field_; }  // field number
  void SetField(std::int16_t v) { field_ = v; }
  std::int16_t Distance() const { return distance_; }  // in the driver's units
  void SetDistance(std::int16_t v) { distance_ = v; }
  std::int16_t Length() const { return length_; }
  void SetLength(std::int16_t v) { length_ = v; }
  teskBarcodeType Symbology() const { return symbology_; }
  void SetSymbology(teskBarcodeType v) { symbology_ = v; }
  teskBarcodeOrientation Orientation() const { return orientation_; }  // direction of the bars
  void SetOrientation(teskBarcodeOrientation v) { orientation_ = v; }

 private:
  std::int16_t page_ = 0;
  std::int16_t field_ = 0;
  std::int16_t distance_ = 0;
  std::int16_t length_ = 0;
  teskBarcodeType symbology_{};
  teskBarcodeOrientation orientation_{};
};

}  // namespace tesk
