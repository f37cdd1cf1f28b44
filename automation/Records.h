// The plain objects of the model as hosts hold them: a window, a barcode, the imprinter, a profile.
#pragma once

#include "automation/Wire.h"

namespace tesk::automation {

class WindowObject final : public Members<tesk::clsTeskReaderWindow> {
 public:
  using Members::Members;
  TESK_PROPERTY(std::int16_t, StartRow)
  TESK_PROPERTY(std::int16_t, NumRows)
  TESK_PROPERTY(std::int16_t, RowGap)
  TESK_PROPERTY(std::int16_t, StartCol)
  TESK_PROPERTY(std::int16_t, NumCols)
  TESK_PROPERTY(std::int16_t, ColGap)
  TESK_PROPERTY(std::int16_t, Page)
  TESK_PROPERTY(std::int16_t, Orientation)
  TESK_PROPERTY(std::int16_t, NumItems)
  TESK_PROPERTY(std::int16_t, NumChoices)
};

class BarcodeObject final : public Members<tesk::clsTeskReaderBarcode> {
 public:
  using Members::Members;
  TESK_PROPERTY(std::int16_t, Page)
  TESK_PROPERTY(std::int16_t, Field)
  TESK_PROPERTY(std::int16_t, Distance)
  TESK_PROPERTY(std::int16_t, Length)
  TESK_PROPERTY(tesk::teskBarcodeType, Symbology)
  TESK_PROPERTY(tesk::teskBarcodeOrientation, Orientation)
};

class PrinterObject final : public Members<tesk::clsTeskReaderPrinter> {
 public:
  using Members::Members;
  STDMETHODIMP SetType(::teskReaderType Value) override {
    return Do([&] { Library().SetType(Wire<tesk::teskReaderType>::In(Value)); });
  }
  TESK_PROPERTY(bool, Enabled)
  TESK_GET(bool, Initialized)
  TESK_PROPERTY(bool, Active)
  TESK_PROPERTY(std::string, Buffer1)
  TESK_PROPERTY(std::string, Buffer2)
  TESK_PROPERTY(std::string, Buffer3)
  TESK_GET(std::int16_t, FilledBufferCount)
  TESK_GET(std::int16_t, BufferCount)
  TESK_GET(std::int32_t, MinPosition)
  TESK_GET(std::int32_t, MaxPosition)
  TESK_GET(std::int32_t, MaxCharacters)
  TESK_PROPERTY(std::int16_t, Distance)
};

class ProfileObject final : public Members<tesk::clsTeskReaderProfile> {
 public:
  using Members::Members;
#define TESK_VALUE(Type, Name, Initial) TESK_PROPERTY(Type, Name)
#define TESK_TEXT(Name) TESK_PROPERTY(std::string, Name)
#define TESK_READ_ONLY(Name) TESK_GET(std::string, Name)
#include "profiles/profileProperties.inc"

  STDMETHODIMP Class_Initialize() override {
    return Do([this] { Library().Class_Initialize(); });
  }
};

}  // namespace tesk::automation
