// The reader and its stock.
#include "tests/windows/Reading.h"

#include <algorithm>

namespace tesk::test {
namespace {

constexpr std::int32_t kStock = 400;
constexpr std::uint64_t kSeed = 7;
constexpr std::int16_t kDarkest = 15;
constexpr std::int16_t kRows = 50;
constexpr std::int16_t kColumns = 48;

}  // namespace

void Reading::SetUp() {
  reader = NewReader();
  ASSERT_TRUE(reader);
  sink = new EventSink;
  sink->Connect(reader.Get());
  errors = new ErrorObject;
  Install(reader.Get(), errors.Get());
}

void Reading::TearDown() {
  if (reader) EndReader();
  LetGo();
  EXPECT_EQ(0, LivingObjects());
}

void Reading::LetGo() {
  if (sink) sink->Disconnect();
  sink.Reset();
  // The error object is that of the process that the reader is in.
  const auto last = reader ? reader : NewReader();
  reader.Reset();
  Install(last.Get(), nullptr);
  errors.Reset();
}

bool Reading::Start(SHORT port) {
  VARIANT_BOOL done = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->LoadDefaults(::teskReaderTypeScantronScanMark5500, &done));
  reader->put_RecognitionMode(::teskRecognitionTypePage);
  reader->put_Port(port);
  reader->put_SleepTime(2);
  reader->put_TimeOut(3);
  reader->put_Duplex(VARIANT_FALSE);
  EXPECT_TRUE(
      SetSizes(reader.Get(), &_clsTeskReader::put_Side1Rows, port == kSquaresPort ? kColumns : kRows));
  EXPECT_TRUE(SetSizes(reader.Get(), &_clsTeskReader::put_Side1Cols, kColumns));
  EXPECT_EQ(S_OK, reader->StartReader(&done));
  return done != VARIANT_FALSE;
}

bool Reading::ReadPage() {
  VARIANT_BOOL read = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->ReadPage(VARIANT_FALSE, &read));
  return read != VARIANT_FALSE;
}

bool Reading::ReadAndEject() {
  const bool read = ReadPage();
  EXPECT_EQ(S_OK, reader->EjectPage());
  return read;
}

void Reading::EjectEverySheet() {
  sink->handlers["ReadSheet"] = [this](const HostDispatch::Arguments&) { reader->EjectPage(); };
}

bool Reading::EndReader() {
  VARIANT_BOOL ended = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->EndReader(&ended));
  return ended != VARIANT_FALSE;
}

std::optional<std::size_t> PlaceOfSheet(const SideArray& marks) {
  const auto generate = [](std::int16_t rows) {
    return simulator::GenerateSheets(kStock, kSeed, {rows, kColumns, true}, kDarkest);
  };
  static const auto oblong = generate(kRows);
  static const auto square = generate(kColumns);
  const auto& stock = marks.Rows() == kColumns ? square : oblong;
  const auto found = std::find_if(stock.begin(), stock.end(),
                                  [&](const simulator::Sheet& sheet) { return sheet.side1 == marks; });
  if (found == stock.end()) return std::nullopt;
  return static_cast<std::size_t>(found - stock.begin());
}

SideArray SideOf(_clsTeskReader* reader, HRESULT (STDMETHODCALLTYPE _clsTeskReader::*get)(SAFEARRAY**)) {
  Variant side;
  EXPECT_EQ(S_OK, (reader->*get)(&side.parray));
  side.vt = VT_ARRAY | VT_I2;
  return automation::SideArrayOf(side.parray);
}

}  // namespace tesk::test
