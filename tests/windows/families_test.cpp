// Sheets of the OpScan, Sekonic and Peripheral Dynamics scanners through the registered server, from real
// serial ports. test.sh starts the scanners: COM6 an OpScan 8, COM7 another whose second sheet is skewed,
// COM8 an SR-607, COM9 a VMR138.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/Sheet.h"
#include "tests/windows/Reading.h"

namespace tesk::test {
namespace {

using Names = std::vector<std::string>;
using simulator::Sheet;

constexpr std::int32_t kStock = 200;
constexpr std::uint64_t kSeed = 7;
constexpr std::int16_t kVmrThreshold = 200;  // some steps above where the scanner starts

// A side on paper as the reader is to hold it: in an array of its own size, columns beyond `last` blank.
SideArray Within(const SideArray& paper, std::int32_t rows, std::int32_t columns, std::int32_t last) {
  SideArray side(rows, columns);
  for (std::int32_t row = 1; row <= paper.Rows(); ++row) {
    for (std::int32_t column = 1; column <= last; ++column) side.At(row, column) = paper.At(row, column);
  }
  return side;
}

Sheet OpScanReads(const Sheet& paper) {
  return {Within(paper.side1, 150, 48, 47), Within(paper.side2, 150, 48, 47), paper.barcodes};
}

Sheet SekonicReads(const Sheet& paper) {
  Sheet sheet = paper;
  sheet.barcodes.resize(8);
  return sheet;
}

// The scanner sees pencil, which is darker than half the scale, and no erasures, which are not.
Sheet VmrReads(const Sheet& paper) {
  SideArray side = Within(paper.side1, 500, 14, 12);
  for (std::int32_t row = 1; row <= paper.side1.Rows(); ++row) {
    for (std::int32_t column = 1; column <= 12; ++column) {
      std::int16_t& mark = side.At(row, column);
      mark = static_cast<std::int16_t>(mark >= 128 ? kVmrThreshold + 1 : 0);
    }
  }
  return {side, {}, {""}};
}

// A scanner behind a port, and what a reader makes of its sheets.
struct Model {
  ::teskReaderType type;
  SHORT port;
  simulator::Geometry geometry;
  std::int16_t darkest;
  Sheet (*reads)(const Sheet& paper);  // a sheet as the reader is to hold it
  bool endSaysTrue;                    // kept: the VMR138 says False however well it ended
};

constexpr Model kOpScan{::teskReaderTypeNCSOpScan8, 6, {50, 48, true}, 15, &OpScanReads, true};
constexpr Model kSkewedOpScan{::teskReaderTypeNCSOpScan8, 7, {50, 48, true}, 15, &OpScanReads, true};
constexpr Model kSekonic{::teskReaderTypeScanningSystemsSR607, 8, {50, 48, true}, 15, &SekonicReads, true};
constexpr Model kVmr{::teskReaderTypePDIVMR138, 9, {50, 12, false}, 254, &VmrReads, false};

const Names kPlainSheet = {"BeforeSheet", "PreprocessSheet", "ReadSheet", "AfterSheet"};
const Names kPrintedSheet = {"BeforeSheet", "PreprocessSheet", "ReadSheet",
                             "BeforePrint", "AfterPrint",      "AfterSheet"};

Variant Sizes(std::int32_t value) {
  Variant sizes;
  sizes.parray = automation::NewArray(Int16Array({static_cast<std::int16_t>(value)}));
  sizes.vt = VT_ARRAY | VT_I2;
  return sizes;
}

SAFEARRAY* ArrayIn(const HostDispatch::Arguments& arguments, std::size_t place, VARTYPE type) {
  EXPECT_EQ(VT_BYREF | VT_ARRAY | type, arguments.at(place)->vt);
  return *arguments.at(place)->pparray;
}

class Families : public Reading {
 protected:
  // With the model's own line settings: a pseudo-terminal behind a port of Wine's takes 38400,O,7,2 and
  // 9600,N,7,2 although it knows neither parity nor character sizes.
  void Prepare(const Model& model) {
    VARIANT_BOOL done = VARIANT_FALSE;
    ASSERT_EQ(S_OK, reader->LoadDefaults(model.type, &done));
    reader->put_RecognitionMode(::teskRecognitionTypePage);
    reader->put_Port(model.port);
    reader->put_SleepTime(5);
    reader->put_TimeOut(5);
    const VARIANT_BOOL both = model.geometry.twoSided ? VARIANT_TRUE : VARIANT_FALSE;
    reader->put_Duplex(both);
    reader->put_DuplexForm(both);
    ASSERT_EQ(S_OK, reader->put_Side1Rows(Sizes(model.geometry.rows).parray));
    ASSERT_EQ(S_OK, reader->put_Side1Cols(Sizes(model.geometry.columns).parray));
    ASSERT_EQ(S_OK, reader->put_Side2Rows(Sizes(model.geometry.rows).parray));
    ASSERT_EQ(S_OK, reader->put_Side2Cols(Sizes(model.geometry.columns).parray));
    sink->handlers["ReadSheet"] = [this](const HostDispatch::Arguments& arguments) {
      handed = {automation::SideArrayOf(ArrayIn(arguments, 0, VT_I2)),
                automation::SideArrayOf(ArrayIn(arguments, 1, VT_I2)),
                automation::BarcodeArrayOf(ArrayIn(arguments, 2, VT_BSTR))};
    };
    stock = simulator::GenerateSheets(kStock, kSeed, model.geometry, model.darkest);
    for (Sheet& sheet : stock) sheet = model.reads(sheet);
  }

  bool StartReader() {
    VARIANT_BOOL started = VARIANT_FALSE;
    EXPECT_EQ(S_OK, reader->StartReader(&started));
    return started != VARIANT_FALSE;
  }

  bool Read(bool imprint = false) {
    handed = {};
    sink->names.clear();
    VARIANT_BOOL read = VARIANT_FALSE;
    EXPECT_EQ(S_OK, reader->ReadPage(imprint ? VARIANT_TRUE : VARIANT_FALSE, &read));
    return read != VARIANT_FALSE;
  }

  // The place in the stock of the sheet that ReadSheet handed out; empty for one that was never there.
  std::optional<std::size_t> Place() const {
    const auto found = std::find(stock.begin(), stock.end(), handed);
    if (found == stock.end()) return std::nullopt;
    return static_cast<std::size_t>(found - stock.begin());
  }

  bool PortOpen() {
    ComPtr<IDispatch> form;
    EXPECT_EQ(S_OK, reader->get_fComm(&form));
    const auto serial = automation::GetObjectProperty(*form.Get(), L"mscComm");
    return automation::BooleanOf(automation::GetProperty(*serial.Get(), L"PortOpen"));
  }

  // Three sheets, one behind the other, with nothing to complain of.
  void ExpectSheets(const Names& events, bool imprint = false) {
    std::optional<std::size_t> before;
    for (int i = 0; i < 3; ++i) {
      ASSERT_TRUE(Read(imprint)) << testing::PrintToString(errors->shown);
      EXPECT_EQ(events, sink->names);
      const auto place = Place();
      ASSERT_TRUE(place) << "no sheet of the stock: " << testing::PrintToString(handed.barcodes);
      EXPECT_EQ(before.value_or(*place - 1) + 1, *place) << "a sheet is missing or came twice";
      before = place;
      EXPECT_EQ(handed.side1, SideOf(reader.Get(), &_clsTeskReader::get_Side1Array));
      EXPECT_EQ(handed.side2, SideOf(reader.Get(), &_clsTeskReader::get_Side2Array));
      ExpectTimingMarks(50, handed.side2.Empty() ? -1 : 50);
      EXPECT_EQ(S_OK, reader->EjectPage());
    }
    EXPECT_EQ(Names(), errors->shown);
    EXPECT_EQ(Names(), errors->reports);
  }

  void ExpectEnd(const Model& model) {
    EXPECT_EQ(model.endSaysTrue, EndReader());
    EXPECT_FALSE(PortOpen());
    EXPECT_EQ(Names(), errors->reports);
  }

  void ExpectTimingMarks(SHORT side1, SHORT side2) {
    SHORT marks = 0;
    reader->get_Side1TimingMarks(&marks);
    EXPECT_EQ(side1, marks);
    reader->get_Side2TimingMarks(&marks);
    EXPECT_EQ(side2, marks);
  }

  Sheet handed;
  std::vector<Sheet> stock;  // as the reader is to hold it
};

TEST_F(Families, OpScanSheetsComeWithBothSidesTheirTextAndTheirImprint) {
  Prepare(kOpScan);
  ComPtr<_clsTeskReaderPrinter> printer;
  ASSERT_EQ(S_OK, reader->get_Printer(&printer));
  printer->put_Enabled(VARIANT_TRUE);
  printer->put_Active(VARIANT_TRUE);
  const Variant line(std::string("CLASS 7B"));
  printer->put_Buffer1(line.bstrVal);
  ASSERT_TRUE(StartReader()) << testing::PrintToString(errors->reports);
  ExpectSheets(kPrintedSheet, true);
  ExpectEnd(kOpScan);
}

TEST_F(Families, SekonicPagesComeWithBothSidesAndTheirBarcodes) {
  Prepare(kSekonic);
  reader->put_Barcode(VARIANT_TRUE);
  ComPtr<_clsTeskReaderBarcodes> barcodes;
  ASSERT_EQ(S_OK, reader->get_Barcodes(&barcodes));
  const auto barcode = Create<_clsTeskReaderBarcode>(CLSID_clsTeskReaderBarcode);
  const Variant added(barcode.Get());
  automation::CallMethod(*barcodes.Get(), L"Add", {&added});
  ASSERT_TRUE(StartReader()) << testing::PrintToString(errors->reports);
  ExpectSheets(kPlainSheet);
  ExpectEnd(kSekonic);
}

TEST_F(Families, VmrSheetsComeWithTheMarksAboveTheThreshold) {
  Prepare(kVmr);
  reader->put_RecognitionThreshold(kVmrThreshold);
  ASSERT_TRUE(StartReader()) << testing::PrintToString(errors->reports);
  ExpectSheets(kPlainSheet);
  ExpectEnd(kVmr);
}

TEST_F(Families, AFaultOfTheScannerIsShownInItsExactWordsAndTheNextSheetIsRead) {
  Prepare(kSkewedOpScan);
  ASSERT_TRUE(StartReader()) << testing::PrintToString(errors->reports);
  ASSERT_TRUE(Read());
  EXPECT_EQ(0U, Place());
  EXPECT_EQ(S_OK, reader->EjectPage());

  EXPECT_FALSE(Read());
  EXPECT_EQ(Names({"BeforeSheet"}), sink->names);
  EXPECT_EQ(
      Names({"Skewed Page: The scanner reports a skewed page. Please clear the page from the feeder and "
             "then rescan."}),
      errors->shown);
  EXPECT_EQ(Names(), errors->reports);

  reader->put_CancelScan(VARIANT_FALSE);
  ASSERT_TRUE(Read());
  EXPECT_EQ(2U, Place());
  ExpectEnd(kSkewedOpScan);
}

TEST_F(Families, AScriptFindsThemByNameAndReadsFromEach) {
  const Ended ended = RunProgram(L"\"" + ProgramFolder() + L"scripthost.exe\" \"" + SourceFolder() +
                                 L"scripts\\families.vbs\"");
  EXPECT_EQ(0U, ended.status);
  EXPECT_NE(std::string::npos, ended.output.find("PASSED")) << ended.output;
}

}  // namespace
}  // namespace tesk::test
