// The names of enumeration members.
#include "base/enumerators.h"

#include <vector>

#include "base/readerNames.h"

namespace tesk {
namespace {

// A member under its own name, so that neither is written twice.
#define MEMBER(member) \
  Enumerator { #member, member }

constexpr Enumerator kBarcodeTypes[] = {
    MEMBER(teskBarcodeTypeNone),
    MEMBER(teskBarcodeTypeAuto),
    MEMBER(teskBarcodeTypeCode39),
    MEMBER(teskBarcodeTypeCodaBar),
    MEMBER(teskBarcodeTypeInterleaved2of5),
    MEMBER(teskBarcodeTypeCode11),
    MEMBER(teskBarcodeTypeCode93),
    MEMBER(teskBarcodeTypeCode128),
    MEMBER(teskBarcodeTypeEAN13),
    MEMBER(teskBarcodeTypeEAN8),
    MEMBER(teskBarcodeTypeUPCA),
    MEMBER(teskBarcodeTypeUPCE),
    MEMBER(teskBarcodeTypePDF417),
    MEMBER(teskBarcodeTypeIndustrial2of5),
    MEMBER(teskBarcodeTypeDatalogic2of5),
    MEMBER(teskBarcodeTypeMatrix2of5),
    MEMBER(teskBarcodeTypeAirline2of5),
    MEMBER(teskBarcodeTypeUcc128),
    MEMBER(teskBarcodeTypePatch),
    MEMBER(teskBarcodeTypeCode32),
    MEMBER(teskBarcodeTypePostnet),
    MEMBER(teskBarcodeTypeDataMatrix),
    MEMBER(teskBarcodeTypeQRCode),
    MEMBER(teskBarcodeTypeCode39Extended),
};

constexpr Enumerator kBarcodeOrientations[] = {
    MEMBER(teskBarcodeOrientationUnknown),
    MEMBER(teskBarcodeOrientationVertical),
    MEMBER(teskBarcodeOrientationHorizontal),
};

constexpr Enumerator kRecognitionModes[] = {
    MEMBER(teskRecognitionTypePage),
    MEMBER(teskRecognitionTypeWindow),
};

constexpr Enumerator kBaudRates[] = {
    MEMBER(teskReaderBaudRate110),    MEMBER(teskReaderBaudRate300),   MEMBER(teskReaderBaudRate600),
    MEMBER(teskReaderBaudRate1200),   MEMBER(teskReaderBaudRate2400),  MEMBER(teskReaderBaudRate9600),
    MEMBER(teskReaderBaudRate14400),  MEMBER(teskReaderBaudRate19200), MEMBER(teskReaderBaudRate28800),
    MEMBER(teskReaderBaudRate38400),  MEMBER(teskReaderBaudRate56000), MEMBER(teskReaderBaudRate128000),
    MEMBER(teskReaderBaudRate256000),
};

constexpr Enumerator kDataBits[] = {
    MEMBER(teskReaderDataBits4), MEMBER(teskReaderDataBits5), MEMBER(teskReaderDataBits6),
    MEMBER(teskReaderDataBits7), MEMBER(teskReaderDataBits8),
};

constexpr Enumerator kFlowControls[] = {
    MEMBER(teskReaderFlowControlNone),
    MEMBER(teskReaderFlowControlXonXoff),
    MEMBER(teskReaderFlowControlHardware),
    MEMBER(teskReaderFlowControlBoth),
};

constexpr Enumerator kColorDepths[] = {
    MEMBER(teskReaderColorDepthMonochrome),
    MEMBER(teskReaderColorDepthGrayscale),
    MEMBER(teskReaderColorDepthColor),
};

#undef MEMBER

}  // namespace

template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderType>() {
  static const std::vector<Enumerator> enumerators = [] {
    std::vector<Enumerator> list;
    for (const ReaderTypeName& reader : ReaderTypeNames()) list.push_back({reader.enumerator, reader.type});
    return list;
  }();
  return enumerators;
}

template <>
std::span<const Enumerator> EnumeratorsOf<teskBarcodeType>() {
  return kBarcodeTypes;
}

template <>
std::span<const Enumerator> EnumeratorsOf<teskBarcodeOrientation>() {
  return kBarcodeOrientations;
}

template <>
std::span<const Enumerator> EnumeratorsOf<teskRecognitionType>() {
  return kRecognitionModes;
}

template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderBaudRate>() {
  return kBaudRates;
}

template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderDataBits>() {
  return kDataBits;
}

template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderFlowControl>() {
  return kFlowControls;
}

template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderColorDepth>() {
  return kColorDepths;
}

}  // namespace tesk
