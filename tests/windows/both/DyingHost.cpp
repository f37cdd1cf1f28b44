// The end of a host.
#include "tests/windows/both/DyingHost.h"

#include "tests/windows/Reading.h"
#include "tests/windows/both/Servers.h"

namespace tesk::test {

int RunDyingHost() {
  CoInitialize(nullptr);
  serverContext = kOwnProcess;
  const auto reader = NewReader();
  if (!reader) return 1;
  const ComPtr<EventSink> sink = new EventSink;
  int sheets = 0;
  sink->handlers["ReadSheet"] = [&](const HostDispatch::Arguments&) {
    reader->EjectPage();
    if (++sheets == 2) TerminateProcess(GetCurrentProcess(), 42);
  };
  sink->Connect(reader.Get());
  VARIANT_BOOL done = VARIANT_FALSE;
  reader->LoadDefaults(::teskReaderTypeScantronScanMark5500, &done);
  reader->put_Port(kSquaresPort);
  reader->put_RecognitionMode(::teskRecognitionTypePage);
  SetSizes(reader.Get(), &_clsTeskReader::put_Side1Rows, 48);
  SetSizes(reader.Get(), &_clsTeskReader::put_Side1Cols, 48);
  reader->StartReader(&done);
  LONG count = 0;
  if (done == VARIANT_TRUE) reader->ReadBatch(VARIANT_FALSE, -1, &count, &done);
  return 2;
}

}  // namespace tesk::test
