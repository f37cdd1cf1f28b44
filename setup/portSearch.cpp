#include "setup/portSearch.h"

#include "drivers/basNCSEZData.h"
#include "engine/clsTeskReader.h"
#include "profiles/models.h"

namespace tesk {
namespace {

constexpr std::int16_t kFirstPort = 1;
constexpr std::int16_t kLastPort = 16;

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

// Both the profile, which hosts may change, and the family must allow what the profile calls by this name.
bool Offers(const clsTeskReader& reader, bool (clsTeskReaderProfile::*enabled)() const) {
  const auto profile = reader.Profile();
  return profile && (*profile.*enabled)() && FamilyOf(reader.ReaderType()).identifies;
}

}  // namespace

bool IdentifyingPortSearch::Locate(clsTeskReader& reader, std::int16_t startPort) {
  if (!Offers(reader, &clsTeskReaderProfile::LocateEnabled)) return false;
  Search search(reader);
  if (startPort >= kFirstPort && startPort <= kLastPort && search.Finds(startPort)) return true;
  for (std::int16_t port = kFirstPort; port <= kLastPort; ++port) {
    if (search.Finds(port)) return true;
  }
  return false;
}

bool IdentifyingPortSearch::Firmware(clsTeskReader& reader, std::string& firmware) {
  if (!Offers(reader, &clsTeskReaderProfile::FirmwareEnabled)) return false;
  const Search search(reader);
  return basNCSEZData::FirmwareNCSEZ(reader, firmware);
}

}  // namespace tesk
