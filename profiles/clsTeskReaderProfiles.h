// The catalogue as hosts see it: the profiles of the makers that they ask for, by key and by position.
#pragma once

#include <cstdint>
#include <memory>

#include "base/ReportingList.h"
#include "base/enumerations.h"
#include "profiles/clsTeskReaderProfile.h"

namespace tesk {

// A profile's key is the decimal text of its reader type ("33"); a number is a position in fill order, so a
// caller that holds a reader type turns it into text first. Profiles are shared: changing a fetched profile
// changes the catalogue until the next refill, which makes new objects. No operation throws; errors are
// reported under "clsTeskReaderProfiles".
class clsTeskReaderProfiles {
 public:
  clsTeskReaderProfiles();  // all makers
  clsTeskReaderProfiles(const clsTeskReaderProfiles&) = delete;
  clsTeskReaderProfiles& operator=(const clsTeskReaderProfiles&) = delete;

  std::int32_t Count() const { return list_.Count(); }
  // Empty where there is none.
  std::shared_ptr<clsTeskReaderProfile> Item(const Index& index) const { return list_.Item(index); }
  bool Exists(const Index& index) const { return list_.Exists(index); }

  // Which makers' profiles are held, a sum of teskProfileType bits; "None" is held always.
  teskProfileType ProfileType() const { return profileType_; }
  // Refills where the value is new or the collection is empty; otherwise what was removed stays removed.
  void SetProfileType(teskProfileType value);

  void Remove(const Index& index) { list_.Remove(index); }
  void RemoveAll() { list_.RemoveAll(); }

 private:
  void FillProfiles();

  teskProfileType profileType_ = teskProfileTypeAll;
  ReportingList<clsTeskReaderProfile> list_{"clsTeskReaderProfiles"};
};

}  // namespace tesk
