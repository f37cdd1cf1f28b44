// Filling the collection of profiles from the catalogue.
#include "profiles/clsTeskReaderProfiles.h"

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

void clsTeskReaderProfiles::FillProfiles() {
  RemoveAll();
  Guarded("clsTeskReaderProfiles.FillProfiles", [this] {
    for (const clsTeskReaderProfile& profile : Catalogue(profileType_)) {
      list_.AddKeyed(std::make_shared<clsTeskReaderProfile>(profile), NumberText(profile.ReaderType()));
    }
  });
}

}  // namespace tesk
