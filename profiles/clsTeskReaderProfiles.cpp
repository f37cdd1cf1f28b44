// Filling the collection of profiles from the catalogue.
#include "profiles/clsTeskReaderProfiles.h"

#include <cstddef>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "profiles/catalogue.h"

namespace tesk {

clsTeskReaderProfiles::clsTeskReaderProfiles() { FillProfiles(); }

void clsTeskReaderProfiles::SetProfileType(teskProfileType value) {
  const bool changed = value != profileType_;
  profileType_ = value;
  if (changed || Count() == 0) FillProfiles();
}

// The rows stand group by group, so positions follow the tables whatever the filter lets through.
void clsTeskReaderProfiles::FillProfiles() {
  RemoveAll();
  Guarded("clsTeskReaderProfiles.FillProfiles", [this] {
    const auto identities = IdentityRows();
    const auto capabilities = CapabilityRows();
    for (std::size_t i = 0; i < identities.size(); ++i) {
      const IdentityRow& row = identities[i];
      if (row.group != teskProfileTypeNone && (row.group & profileType_) == 0) continue;
      list_.AddKeyed(std::make_shared<clsTeskReaderProfile>(ProfileOf(row, capabilities[i])),
                     NumberText(row.type));
    }
  });
}

}  // namespace tesk
