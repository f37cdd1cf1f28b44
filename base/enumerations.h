// The public enumerations of the object model. Hosts compile against these names and values, so neither
// ever changes; every one is a 32-bit signed integer on the automation interface, and a host may hand in
// a value that is no member.
#pragma once

#include <cstdint>

namespace tesk {

// The scanner model. New models were appended, so a maker's models are scattered.
enum teskReaderType : std::int32_t {
  teskReaderTypeNone = 0,
  teskReaderTypeAppersonAdvantageLink = 1,
  teskReaderTypeNCSOpScan2 = 2,
  teskReaderTypeNCSOpScan3 = 3,
  teskReaderTypeNCSOpScan4 = 4,
  teskReaderTypeNCSOpScan5 = 5,
  teskReaderTypeNCSOpScan7 = 6,
  teskReaderTypeScanningSystemsSR601 = 7,
  teskReaderTypeScanningSystemsSR607 = 8,
  teskReaderTypeScanningSystemsSR700351 = 9,
  teskReaderTypeScanningSystemsSR700352 = 10,
  teskReaderTypeScantronScanMark2000 = 11,
  teskReaderTypeScantronScanMark2250 = 12,
  teskReaderTypeScantronScanMark2500 = 13,
  teskReaderTypeScantronScanMark4000 = 14,
  teskReaderTypeScantronScanMark5500 = 15,
  teskReaderTypeScantron8000 = 16,
  teskReaderTypeScantron8400 = 17,
  teskReaderTypeAppersonGradeMaster = 18,
  teskReaderTypeScanningSystemsSR410 = 19,
  teskReaderTypeChatsworthOMR1100 = 20,
  teskReaderTypeChatsworthOMR2000 = 21,
  teskReaderTypeChatsworthALSAccelScanOMR = 22,
  teskReaderTypeNCSEZData = 23,
  teskReaderTypePDIVMR138 = 24,
  teskReaderTypeNCSOpScan6 = 25,
  teskReaderTypeNCSOpScan8 = 26,
  teskReaderTypeScantronScanMarkES2010 = 27,
  teskReaderTypeScantronScanMarkES2260 = 28,
  teskReaderTypeScantronScanMarkES2800 = 29,
  teskReaderTypeSekonicSR2300 = 30,
  teskReaderTypeNCSOpScaniNSIGHT4 = 31,
  teskReaderTypeNCSOpScaniNSIGHT2 = 32,
  teskReaderTypeSekonicSR3500 = 33,
  teskReaderTypeSekonicSR6500 = 34,
  teskReaderTypeChatsworthACF200 = 35,
  teskReaderTypeSekonicSR1800 = 36,
  teskReaderTypeChatsworthACF100 = 37,
  teskReaderTypeSekonicSR430 = 38,
  teskReaderTypeAppersonBenchMark3000 = 39,
  teskReaderTypeAppersonAdvantage1200 = 40,
  teskReaderTypeChatsworthACP200 = 41,
  teskReaderTypeSekonicSR3500Hybrid = 42,
  teskReaderTypeSekonicSR6500Hybrid = 43,
  teskReaderTypeDatawinAXM960 = 44,
  teskReaderTypeSekonicSR8000Hybrid = 45,
  teskReaderTypeDatawinHemeraC = 46,
};
inline constexpr teskReaderType kLastReaderType = teskReaderTypeDatawinHemeraC;  // from 0 without a gap

// Bit flags: which makers' profiles a profile collection holds.
enum teskProfileType : std::int32_t {
  teskProfileTypeNone = 0,
  teskProfileTypeAP = 1,
  teskProfileTypeSekonic = 2,
  teskProfileTypeScantron = 4,
  teskProfileTypeCT = 8,
  teskProfileTypePDI = 16,
  teskProfileTypeDatawin = 32,
  teskProfileTypeAll = 63,
};

// The index of the engine's HelpID property.
enum teskReaderHelpID : std::int32_t {
  teskReaderHelpIDProperties = 0,
};

// Barcode symbology.
enum teskBarcodeType : std::int32_t {
  teskBarcodeTypeNone = 0,
  teskBarcodeTypeAuto = 1,
  teskBarcodeTypeCode39 = 2,
  teskBarcodeTypeCodaBar = 3,
  teskBarcodeTypeInterleaved2of5 = 4,
  teskBarcodeTypeCode11 = 5,
  teskBarcodeTypeCode93 = 6,
  teskBarcodeTypeCode128 = 7,
  teskBarcodeTypeEAN13 = 8,
  teskBarcodeTypeEAN8 = 9,
  teskBarcodeTypeUPCA = 10,
  teskBarcodeTypeUPCE = 11,
  teskBarcodeTypePDF417 = 12,
  teskBarcodeTypeIndustrial2of5 = 13,
  teskBarcodeTypeDatalogic2of5 = 14,
  teskBarcodeTypeMatrix2of5 = 15,
  teskBarcodeTypeAirline2of5 = 16,
  teskBarcodeTypeUcc128 = 17,
  teskBarcodeTypePatch = 18,
  teskBarcodeTypeCode32 = 19,
  teskBarcodeTypePostnet = 20,
  teskBarcodeTypeDataMatrix = 21,
  teskBarcodeTypeQRCode = 22,
  teskBarcodeTypeCode39Extended = 23,
};

// Direction of the bars.
enum teskBarcodeOrientation : std::int32_t {
  teskBarcodeOrientationUnknown = 0,
  teskBarcodeOrientationVertical = 1,
  teskBarcodeOrientationHorizontal = 2,
};

// Registry roots; the values are the operating system's predefined key handles 0x80000000 to 0x80000005.
enum teskReaderRegistryKey : std::int32_t {
  teskReaderRegistryKeyClassesRoot = -2147483647 - 1,
  teskReaderRegistryKeyCurrentUser = -2147483647,
  teskReaderRegistryKeyLocalMachine = -2147483646,
  teskReaderRegistryKeyUsers = -2147483645,
  teskReaderRegistryKeyPerformanceData = -2147483644,
  teskReaderRegistryKeyCurrentConfig = -2147483643,
};

// Whether the whole sheet or only the read windows are read. There is no zero member.
enum teskRecognitionType : std::int32_t {
  teskRecognitionTypePage = 1,
  teskRecognitionTypeWindow = 2,
};

// How a scanner is attached.
enum teskReaderInterfaceType : std::int32_t {
  teskReaderInterfaceTypeSerial = 1,
  teskReaderInterfaceTypeUSB = 2,
};

// The member value is the bit rate itself, in bits per second. 4800, 57600 and 115200 are no members.
enum teskReaderBaudRate : std::int32_t {
  teskReaderBaudRate110 = 110,
  teskReaderBaudRate300 = 300,
  teskReaderBaudRate600 = 600,
  teskReaderBaudRate1200 = 1200,
  teskReaderBaudRate2400 = 2400,
  teskReaderBaudRate9600 = 9600,
  teskReaderBaudRate14400 = 14400,
  teskReaderBaudRate19200 = 19200,
  teskReaderBaudRate28800 = 28800,
  teskReaderBaudRate38400 = 38400,
  teskReaderBaudRate56000 = 56000,
  teskReaderBaudRate128000 = 128000,
  teskReaderBaudRate256000 = 256000,
};

// Data bits per character.
enum teskReaderDataBits : std::int32_t {
  teskReaderDataBits4 = 4,
  teskReaderDataBits5 = 5,
  teskReaderDataBits6 = 6,
  teskReaderDataBits7 = 7,
  teskReaderDataBits8 = 8,
};

// The numbering is the serial control's own handshaking numbering.
enum teskReaderFlowControl : std::int32_t {
  teskReaderFlowControlNone = 0,
  teskReaderFlowControlXonXoff = 1,
  teskReaderFlowControlHardware = 2,
  teskReaderFlowControlBoth = 3,
};

// Colour depth of side images.
enum teskReaderColorDepth : std::int32_t {
  teskReaderColorDepthMonochrome = 0,
  teskReaderColorDepthGrayscale = 1,
  teskReaderColorDepthColor = 2,
};

}  // namespace tesk
