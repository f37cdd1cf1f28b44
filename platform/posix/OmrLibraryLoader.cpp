// There is no library of the Sekonic USB readers for this system.
#include "platform/OmrLibraryLoader.h"

namespace tesk::platform {
namespace {

class NoLibrary : public OmrLibraryLoader {
 public:
  std::shared_ptr<OmrLibrary> Load() override { return nullptr; }
};

}  // namespace

std::shared_ptr<OmrLibraryLoader> CreateOmrLibraryLoader() { return std::make_shared<NoLibrary>(); }

bool SystemHasOmrLibrary() { return false; }

}  // namespace tesk::platform
