// A 64-bit host and the 32-bit server in a process of its own, with scanners behind serial ports. The marks that are
// compared are of square sheets: this system's proxies swap the bounds of arrays of two dimensions.
#include <algorithm>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "tests/windows/Reading.h"
#include "tests/windows/both/DyingHost.h"
#include "tests/windows/both/Servers.h"

namespace tesk::test {
namespace {

using Names = std::vector<std::string>;

class OwnProcess : public Reading {
 protected:
  void SetUp() override {
    serverContext = kOwnProcess;
    Reading::SetUp();
    ASSERT_EQ(0, LivingObjects()) << "it is in this process";
  }
  void TearDown() override {
    Reading::TearDown();
    serverContext = CLSCTX_INPROC_SERVER;
    EndSurrogates();
  }
};

SideArray SideIn(const HostDispatch::Arguments& arguments) {
  EXPECT_EQ(VT_BYREF | VT_ARRAY | VT_I2, arguments.at(0)->vt);
  return automation::SideArrayOf(*arguments[0]->pparray);
}

TEST_F(OwnProcess, EventsCarryArraysAndAnswersBothWays) {
  ASSERT_TRUE(Start(kSquaresPort));
  std::vector<std::optional<std::size_t>> places;
  std::vector<std::int16_t> marks;
  BarcodeArray barcodes;
  sink->handlers["PreprocessSheet"] = [&](const HostDispatch::Arguments& arguments) {
    places.push_back(PlaceOfSheet(SideIn(arguments)));
    LONG place[] = {2, 3};
    SHORT mark = 4711;
    EXPECT_EQ(S_OK, SafeArrayPutElement(*arguments[0]->pparray, place, &mark));
    SafeArrayDestroy(*arguments.at(2)->pparray);
    *arguments[2]->pparray = automation::NewArray(BarcodeArray{"first", "zweite \xC3\xA4"});
    if (places.size() != 2) return;
    *arguments.at(3)->pboolVal = VARIANT_TRUE;
    EXPECT_EQ(S_OK, reader->RejectPage());
  };
  sink->handlers["ReadSheet"] = [&](const HostDispatch::Arguments& arguments) {
    marks.push_back(SideIn(arguments).At(2, 3));
    marks.push_back(SideOf(reader.Get(), &_clsTeskReader::get_Side1Array).At(2, 3));
    barcodes = automation::BarcodeArrayOf(*arguments.at(2)->pparray);
    EXPECT_EQ(S_OK, reader->EjectPage());
  };
  sink->handlers["AfterSheet"] = [&](const HostDispatch::Arguments& arguments) {
    if (places.size() == 3) *arguments.at(0)->pboolVal = VARIANT_TRUE;
  };
  LONG count = 5;
  VARIANT_BOOL read = VARIANT_FALSE;
  EXPECT_EQ(S_OK, reader->ReadBatch(VARIANT_FALSE, -1, &count, &read));
  EXPECT_EQ(VARIANT_TRUE, read);
  EXPECT_EQ(8, count);
  ASSERT_EQ(3U, places.size());
  for (std::size_t i = 1; i < places.size(); ++i) EXPECT_EQ(places[0].value() + i, places[i]);
  EXPECT_EQ(std::vector<std::int16_t>(4, 4711), marks);
  EXPECT_EQ((BarcodeArray{"first", "zweite \xC3\xA4"}), barcodes);
  EXPECT_EQ(12U - 1U, sink->names.size()) << "the rejected sheet has no ReadSheet";
}

TEST_F(OwnProcess, ReportsReachTheHostsObjectAndArraysOfSizesComeBack) {
  EXPECT_FALSE(Start(16));
  ASSERT_EQ(1U, errors->reports.size());
  EXPECT_EQ(0U, errors->reports[0].find("8002 Quillon Reader - basRead.ReaderInit "));
  const Variant late = automation::GetProperty(*reader.Get(), L"Side1Rows");
  EXPECT_EQ("1..1: 50", Described(late));
}

// While a call waits for another process this thread takes calls, but no window messages of the host's.
TEST_F(OwnProcess, CancelScanFromAnotherThreadEndsTheWaitForASheet) {
  ASSERT_TRUE(Start(kEmptyPort));
  reader->put_Feeder(VARIANT_FALSE);
  ComPtr<IStream> carried;
  ASSERT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(__uuidof(_clsTeskReader), reader.Get(), &carried));
  std::thread canceller([&] {
    CoInitialize(nullptr);
    ComPtr<_clsTeskReader> proxy;
    EXPECT_EQ(S_OK, CoGetInterfaceAndReleaseStream(carried.Detach(), IID_PPV_ARGS(&proxy)));
    Sleep(500);
    EXPECT_EQ(S_OK, proxy->put_CancelScan(VARIANT_TRUE));
    proxy.Reset();
    CoUninitialize();
  });
  const ULONGLONG started = GetTickCount64();
  EXPECT_FALSE(ReadPage());
  EXPECT_GT(5000U, GetTickCount64() - started);
  canceller.join();
  EXPECT_EQ(Names(), errors->shown) << "a cancel is never a message";
}

// Windows lets no two of them have it at once; this system does, so that is not tried.
TEST_F(OwnProcess, HostsOfBothKindsHaveAPortOneAfterTheOther) {
  std::vector<std::size_t> places;
  const auto read = [&] {
    ASSERT_TRUE(Start(kSquaresPort));
    ASSERT_TRUE(ReadAndEject());
    places.push_back(PlaceOfSheet(SideOf(reader.Get(), &_clsTeskReader::get_Side1Array)).value());
    ASSERT_TRUE(EndReader());
  };
  read();
  const auto remote = std::exchange(reader, nullptr);
  serverContext = CLSCTX_INPROC_SERVER;
  reader = NewReader();
  read();
  for (const Kind kind : {Kind::k32, Kind::k64}) {
    EXPECT_EQ("1: 50 0\r\n2: 50 0\r\ndone\r\n",
              RunScript(L"read.vbs", "\"Scantron Scanmark 5500\" 5 48 False 2", SystemFolder(kind)).output);
  }
  reader = remote;
  read();
  EXPECT_EQ((std::vector{places[0], places[0] + 1, places[0] + 6}), places);
}

TEST_F(OwnProcess, TheEndOfItsHostEndsABatch) {
  const auto read = [this] {
    EXPECT_TRUE(Start(kSquaresPort));
    EXPECT_TRUE(ReadAndEject());
    EXPECT_TRUE(EndReader());
    return PlaceOfSheet(SideOf(reader.Get(), &_clsTeskReader::get_Side1Array)).value_or(0);
  };
  const std::size_t before = read();
  const Ended host = RunProgram(L"\"" + ProgramFolder() + L"both_servers_tests.exe\" dying-host");
  ASSERT_EQ(42U, host.status) << host.output;
  // Here nobody takes back what a host has left, as Windows does some minutes later.
  Sleep(2000);
  EXPECT_EQ(2, Surrogates());
  LetGo();
  EndSurrogates();
  Reading::SetUp();
  EXPECT_EQ(before + 3, read()) << "the two sheets that the host took, and no more";
}

TEST_F(OwnProcess, OutlivesTheRegistration) {
  ASSERT_TRUE(Start(kSquaresPort));
  ASSERT_TRUE(ReadAndEject());
  const auto place = PlaceOfSheet(SideOf(reader.Get(), &_clsTeskReader::get_Side1Array));
  ASSERT_TRUE(RegisterServer(Kind::k32, true));
  EXPECT_FALSE(NewReader());
  EXPECT_TRUE(ReadAndEject());
  EXPECT_EQ(place.value() + 1, PlaceOfSheet(SideOf(reader.Get(), &_clsTeskReader::get_Side1Array)));
  EXPECT_TRUE(EndReader());
  ASSERT_TRUE(RegisterServer(Kind::k32, false));
  EXPECT_TRUE(NewReader());
}

// The scanner maker's library lies where 32-bit programs find it.
TEST_F(OwnProcess, SheetsOfTheSekonicUsbReadersComeFromThere) {
  const std::wstring folder = SystemFolder(Kind::k32);
  std::wstring library = platform::Utf8ToWide("Z:" TESKREAD_WINDOWS_BUILD "/tests/omrapi/whole/OMRAPI.DLL");
  std::replace(library.begin(), library.end(), L'/', L'\\');
  ASSERT_TRUE(CopyFileW(library.c_str(), (folder + L"OMRAPI.DLL").c_str(), FALSE))
      << "build the preset windows first";
  std::ofstream(platform::WideToUtf8(folder + L"OMRAPI.script")) << "sheets 2 50 7\n";
  const auto start = [this](_clsTeskReader* one) {
    VARIANT_BOOL done = VARIANT_FALSE;
    Install(one, errors.Get());
    EXPECT_EQ(S_OK, one->LoadDefaults(::teskReaderTypeSekonicSR3500, &done));
    EXPECT_EQ(S_OK, one->StartReader(&done));
    return done == VARIANT_TRUE;
  };
  EXPECT_TRUE(start(reader.Get()));
  SHORT rows = 0;
  EXPECT_TRUE(ReadAndEject());
  EXPECT_EQ(S_OK, reader->get_Side1TimingMarks(&rows));
  EXPECT_EQ(50, rows);
  EXPECT_EQ(Names(), errors->shown);
  EndReader();

  serverContext = CLSCTX_INPROC_SERVER;
  const auto here = NewReader();
  EXPECT_FALSE(start(here.Get()));
  ASSERT_EQ(1U, errors->shown.size());
  EXPECT_EQ(0U, errors->shown[0].find("Sekonic File Missing: Please obtain the OMRAPI.DLL file"));
  EXPECT_NE(std::string::npos,
            errors->shown[0].find("|OMRAPI.DLL works in 32-bit programs only, and Quillon is"));
  Install(here.Get(), nullptr);
  for (const wchar_t* name : {L"OMRAPI.DLL", L"OMRAPI.script", L"OMRAPI.record"})
    DeleteFileW((folder + name).c_str());
}

}  // namespace
}  // namespace tesk::test
