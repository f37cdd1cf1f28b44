// Sheets of the OpScan, Sekonic and Peripheral Dynamics scanners through the registered server, from real
// serial ports, one reader alone and two at once.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/windows/Models.h"
#include "tests/windows/Reading.h"

namespace tesk::test {
namespace {

using Names = std::vector<std::string>;

const Names kPlainSheet = {"BeforeSheet", "PreprocessSheet", "ReadSheet", "AfterSheet"};
const Names kPrintedSheet = {"BeforeSheet", "PreprocessSheet", "ReadSheet",
                             "BeforePrint", "AfterPrint",      "AfterSheet"};

class Families : public Reading {
 protected:
  void Prepare(const Model& model) { scanner = std::make_unique<ModelReader>(model, reader, sink); }
  void TearDown() override {
    scanner.reset();
    Reading::TearDown();
  }

  // Three sheets, one behind the other, with nothing to complain of.
  void ExpectSheets(const Names& events, bool imprint = false) {
    for (int i = 0; i < 3; ++i) scanner->ExpectNextSheet(events, imprint);
    EXPECT_EQ(Names(), errors->shown);
    EXPECT_EQ(Names(), errors->reports);
  }

  void ExpectEnd(const Model& model) {
    EXPECT_EQ(model.endSaysTrue, EndReader());
    EXPECT_FALSE(scanner->PortOpen());
    EXPECT_EQ(Names(), errors->reports);
  }

  std::unique_ptr<ModelReader> scanner;
};

TEST_F(Families, OpScanSheetsComeWithBothSidesTheirTextAndTheirImprint) {
  Prepare(kOpScan);
  ComPtr<_clsTeskReaderPrinter> printer;
  ASSERT_EQ(S_OK, reader->get_Printer(&printer));
  printer->put_Enabled(VARIANT_TRUE);
  printer->put_Active(VARIANT_TRUE);
  const Variant line(std::string("CLASS 7B"));
  printer->put_Buffer1(line.bstrVal);
  ASSERT_TRUE(scanner->Start()) << testing::PrintToString(errors->reports);
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
  ASSERT_TRUE(scanner->Start()) << testing::PrintToString(errors->reports);
  ExpectSheets(kPlainSheet);
  ExpectEnd(kSekonic);
}

TEST_F(Families, VmrSheetsComeWithTheMarksAboveTheThreshold) {
  Prepare(kVmr);
  reader->put_RecognitionThreshold(kVmrThreshold);
  ASSERT_TRUE(scanner->Start()) << testing::PrintToString(errors->reports);
  ExpectSheets(kPlainSheet);
  ExpectEnd(kVmr);
}

TEST_F(Families, AFaultOfTheScannerIsShownInItsExactWordsAndTheNextSheetIsRead) {
  Prepare(kSkewedOpScan);
  ASSERT_TRUE(scanner->Start()) << testing::PrintToString(errors->reports);
  ASSERT_TRUE(scanner->Read());
  EXPECT_EQ(0U, scanner->Place());
  EXPECT_EQ(S_OK, reader->EjectPage());

  EXPECT_FALSE(scanner->Read());
  EXPECT_EQ(Names({"BeforeSheet"}), sink->names);
  EXPECT_EQ(
      Names({"Skewed Page: The scanner reports a skewed page. Please clear the page from the feeder and "
             "then rescan."}),
      errors->shown);
  EXPECT_EQ(Names(), errors->reports);

  reader->put_CancelScan(VARIANT_FALSE);
  ASSERT_TRUE(scanner->Read());
  EXPECT_EQ(2U, scanner->Place());
  ExpectEnd(kSkewedOpScan);
}

TEST_F(Families, AScriptFindsThemByNameAndReadsFromEach) {
  const struct {
    std::string words;  // name, port, columns of a sheet, whether there are two sides
    std::string rows;
  } models[] = {{"\"Scantron Scanmark 5500\" 3 48 False", "50 0"},
                {"\"Scantron OpScan 8\" 6 48 True", "50 50"},
                {"\"Sekonic SR-607\" 8 48 True", "50 50"},
                {"\"Peripheral Dynamics Inc. VMR138\" 9 12 False", "50 -1"}};
  for (const auto& [words, rows] : models) {
    const Ended ended = RunScript(L"read.vbs", words + " 2");
    EXPECT_EQ("1: " + rows + "\r\n2: " + rows + "\r\ndone\r\n", ended.output) << words;
    EXPECT_EQ(0U, ended.status);
  }
}

TEST_F(Families, CollectionsArgumentsAndErrorsAreAsScriptsExpectThem) {
  EXPECT_EQ("56 checks, 0 faults\r\n", RunScript(L"objects.vbs", "").output);
}

TEST_F(Families, TwoReadersOfOneHostTakeTurns) {
  Prepare(kOpScan);
  ModelReader other(kScanMark);
  ASSERT_TRUE(scanner->Start());
  ASSERT_TRUE(other.Start());
  for (int i = 0; i < 3; ++i) {
    scanner->ExpectNextSheet(kPlainSheet);
    other.ExpectNextSheet(kPlainSheet);
  }
  ExpectEnd(kOpScan);
  EXPECT_TRUE(other.PortOpen()) << "the one's end is not the other's";
  other.ExpectNextSheet(kPlainSheet);
  EXPECT_TRUE(other.End());
  EXPECT_EQ(Names(), errors->shown);
}

TEST_F(Families, ReadersInTwoApartmentsReadAtOnce) {
  const auto read = [](const Model& model) {
    ModelReader own(model);
    ASSERT_TRUE(own.Start());
    for (int i = 0; i < 5; ++i) own.ExpectNextSheet(kPlainSheet);
    EXPECT_EQ(std::set<DWORD>({GetCurrentThreadId()}), own.sink->calledOn);
    EXPECT_EQ(model.endSaysTrue, own.End());
  };
  RunInApartments({[&] { read(kScanMark); }, [&] { read(kOpScan); }});
  EXPECT_EQ(Names(), errors->shown);
  EXPECT_EQ(Names(), errors->reports);
}

}  // namespace
}  // namespace tesk::test
