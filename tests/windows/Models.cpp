// The models, and their sheets.
#include "tests/windows/Models.h"

#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

#include "tests/windows/Reading.h"

namespace tesk::test {
namespace {

using simulator::Sheet;

constexpr std::uint64_t kSeed = 7;

// A side on paper as the reader is to hold it: in an array of its own size, columns beyond `last` blank.
SideArray Within(const SideArray& paper, std::int32_t rows, std::int32_t columns, std::int32_t last) {
  SideArray side(rows, columns);
  for (std::int32_t row = 1; row <= paper.Rows(); ++row) {
    for (std::int32_t column = 1; column <= last; ++column) side.At(row, column) = paper.At(row, column);
  }
  return side;
}

Sheet ScanMarkReads(const Sheet& paper) { return {paper.side1, {}, {""}}; }

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

SAFEARRAY* ArrayIn(const HostDispatch::Arguments& arguments, std::size_t place, VARTYPE type) {
  EXPECT_EQ(VT_BYREF | VT_ARRAY | type, arguments.at(place)->vt);
  return *arguments.at(place)->pparray;
}

ComPtr<EventSink> ConnectedSink(_clsTeskReader* reader) {
  ComPtr<EventSink> sink = new EventSink;
  sink->Connect(reader);
  return sink;
}

}  // namespace

const Model kScanMark{
    ::teskReaderTypeScantronScanMark5500, 3, {50, 48, true}, 400, 15, false, 0, &ScanMarkReads, true};
const Model kOpScan{::teskReaderTypeNCSOpScan8, 6, {50, 48, true}, 200, 15, true, 50, &OpScanReads, true};
const Model kSkewedOpScan{
    ::teskReaderTypeNCSOpScan8, 7, {50, 48, true}, 200, 15, true, 50, &OpScanReads, true};
const Model kSekonic{
    ::teskReaderTypeScanningSystemsSR607, 8, {50, 48, true}, 200, 15, true, 50, &SekonicReads, true};
const Model kVmr{::teskReaderTypePDIVMR138, 9, {50, 12, false}, 200, 254, false, -1, &VmrReads, false};

ModelReader::ModelReader(const Model& model, ComPtr<_clsTeskReader> itsReader, ComPtr<EventSink> itsSink)
    : reader(std::move(itsReader)),
      sink(itsSink ? std::move(itsSink) : ConnectedSink(reader.Get())),
      side2TimingMarks_(model.side2TimingMarks),
      stock_(simulator::GenerateSheets(model.stock, kSeed, model.geometry, model.darkest)) {
  for (Sheet& sheet : stock_) sheet = model.reads(sheet);
  VARIANT_BOOL done = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->LoadDefaults(model.type, &done));
  reader->put_RecognitionMode(::teskRecognitionTypePage);
  reader->put_Port(model.port);
  reader->put_SleepTime(5);
  reader->put_TimeOut(5);
  const VARIANT_BOOL both = model.bothSides ? VARIANT_TRUE : VARIANT_FALSE;
  reader->put_Duplex(both);
  reader->put_DuplexForm(both);
  const auto rows = static_cast<std::int16_t>(model.geometry.rows);
  const auto columns = static_cast<std::int16_t>(model.geometry.columns);
  EXPECT_TRUE(SetSizes(reader.Get(), &_clsTeskReader::put_Side1Rows, rows));
  EXPECT_TRUE(SetSizes(reader.Get(), &_clsTeskReader::put_Side1Cols, columns));
  EXPECT_TRUE(SetSizes(reader.Get(), &_clsTeskReader::put_Side2Rows, rows));
  EXPECT_TRUE(SetSizes(reader.Get(), &_clsTeskReader::put_Side2Cols, columns));
  sink->handlers["ReadSheet"] = [this](const HostDispatch::Arguments& arguments) {
    handed = {automation::SideArrayOf(ArrayIn(arguments, 0, VT_I2)),
              automation::SideArrayOf(ArrayIn(arguments, 1, VT_I2)),
              automation::BarcodeArrayOf(ArrayIn(arguments, 2, VT_BSTR))};
  };
}

ModelReader::~ModelReader() { sink->Disconnect(); }

bool ModelReader::Start() {
  VARIANT_BOOL started = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->StartReader(&started));
  return started != VARIANT_FALSE;
}

bool ModelReader::Read(bool imprint) {
  handed = {};
  sink->names.clear();
  VARIANT_BOOL read = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->ReadPage(imprint ? VARIANT_TRUE : VARIANT_FALSE, &read));
  return read != VARIANT_FALSE;
}

bool ModelReader::End() {
  VARIANT_BOOL ended = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->EndReader(&ended));
  return ended != VARIANT_FALSE;
}

void ModelReader::ExpectNextSheet(const std::vector<std::string>& events, bool imprint) {
  ASSERT_TRUE(Read(imprint));
  EXPECT_EQ(events, sink->names);
  const auto place = Place();
  ASSERT_TRUE(place) << "no sheet of the stock: " << testing::PrintToString(handed.barcodes);
  EXPECT_EQ(last_.value_or(*place - 1) + 1, *place) << "a sheet is missing or came twice";
  last_ = place;
  EXPECT_EQ(handed.side1, SideOf(reader.Get(), &_clsTeskReader::get_Side1Array));
  EXPECT_EQ(handed.side2, SideOf(reader.Get(), &_clsTeskReader::get_Side2Array));
  ExpectTimingMarks(50, side2TimingMarks_);
  EXPECT_EQ(S_OK, reader->EjectPage());
}

std::optional<std::size_t> ModelReader::Place() const {
  const auto found = std::find(stock_.begin(), stock_.end(), handed);
  if (found == stock_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - stock_.begin());
}

bool ModelReader::PortOpen() const {
  ComPtr<IDispatch> form;
  EXPECT_EQ(S_OK, reader->get_fComm(&form));
  const auto serial = automation::GetObjectProperty(*form.Get(), L"mscComm");
  return automation::BooleanOf(automation::GetProperty(*serial.Get(), L"PortOpen"));
}

void ModelReader::ExpectTimingMarks(SHORT side1, SHORT side2) const {
  SHORT marks = 0;
  reader->get_Side1TimingMarks(&marks);
  EXPECT_EQ(side1, marks);
  reader->get_Side2TimingMarks(&marks);
  EXPECT_EQ(side2, marks);
}

}  // namespace tesk::test
