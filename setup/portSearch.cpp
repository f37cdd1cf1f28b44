// The search over the ports.
#include "setup/portSearch.h"

#include <algorithm>
#include <array>
#include <memory>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "drivers/basNCSEZData.h"
#include "engine/clsTeskReader.h"

namespace tesk {
namespace {

constexpr std::int16_t kFirstPort = 1;
constexpr std::int16_t kLastPort = 16;

// All of them answer as the EZData reader does. Kept beside the profiles' own LocateEnabled and
// FirmwareEnabled: both must allow it.
constexpr std::array kIdentifying = {
    teskReaderTypeChatsworthOMR1100, teskReaderTypeChatsworthOMR2000, teskReaderTypeChatsworthALSAccelScanOMR,
    teskReaderTypeNCSEZData,         teskReaderTypeChatsworthACF200,  teskReaderTypeChatsworthACF100,
    teskReaderTypeChatsworthACP200,
};

// CancelScan is set while no reader is started; for the search it means that the host gave up. Afterwards it
// is as it was, or set where the host did give up.
class Search {
 public:
  explicit Search(clsTeskReader& reader) : reader_(reader), before_(reader.CancelScan()) {
    reader_.SetCancelScan(false);
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;
  ~Search() { reader_.SetCancelScan(before_ || reader_.CancelScan()); }

  bool Finds(std::int16_t port) {
    if (reader_.CancelScan() || !basNCSEZData::ProbePortNCSEZ(reader_, port)) return false;
    reader_.SetPort(port);
    return true;
  }

 private:
  clsTeskReader& reader_;
  bool before_;
};

std::shared_ptr<clsTeskReaderProfile> ProfileOf(const clsTeskReader& reader) {
  return Deref(reader.Profiles()).Item(NumberText(reader.ReaderType()));
}

}  // namespace

bool AnswersIdentification(teskReaderType type) {
  return std::ranges::find(kIdentifying, type) != kIdentifying.end();
}

bool IdentifyingPortSearch::Locate(clsTeskReader& reader, std::int16_t startPort) {
  const auto profile = ProfileOf(reader);
  if (!profile || !profile->LocateEnabled() || !AnswersIdentification(reader.ReaderType())) return false;
  Search search(reader);
  if (startPort >= kFirstPort && startPort <= kLastPort && search.Finds(startPort)) return true;
  for (std::int16_t port = kFirstPort; port <= kLastPort; ++port) {
    if (search.Finds(port)) return true;
  }
  return false;
}

bool IdentifyingPortSearch::Firmware(clsTeskReader& reader, std::string& firmware) {
  const auto profile = ProfileOf(reader);
  if (!profile || !profile->FirmwareEnabled() || !AnswersIdentification(reader.ReaderType())) return false;
  const Search search(reader);
  return basNCSEZData::FirmwareNCSEZ(reader, firmware);
}

}  // namespace tesk
