#include "orvane/platform/zdloader.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace {

std::vector<void*>& libraries() {
  static std::vector<void*> handles;
  return handles;
}

struct BadStatus {
  client_tag client = 0;
  IppStatus status = 0;  ///< 0 for a place that is free
};

/// The statuses of this thread. They need no memory and no end, so a thread that runs short of memory has them, too. Of
/// more clients than there are places, the last ones share one.
std::array<BadStatus, 8> thread_local badStatuses;

/// The place of a client with a status; the end if it has none.
auto placeOf(client_tag client) {
  return std::ranges::find_if(badStatuses,
                              [&](const BadStatus& known) { return known.client == client && known.status != 0; });
}

}  // namespace

ZdLoader::ZdLoader(client_tag client) : client_(client) {}

void* ZdLoader::getMethodPointer(const char* name) const {
  for (void* library : libraries()) {
    if (void* method = dlsym(library, name)) return method;
  }
  return nullptr;
}

void ZdLoader::zdCheckStatus(IppStatus status) const {
  if (status >= 0) return;
  auto place = placeOf(client_);
  if (place == badStatuses.end()) place = std::ranges::find(badStatuses, 0, &BadStatus::status);
  if (place == badStatuses.end()) --place;
  *place = {client_, status};
}

IppStatus ZdLoader::takeBadStatus(client_tag client) {
  const auto place = placeOf(client);
  return place == badStatuses.end() ? 0 : std::exchange(place->status, 0);
}

std::string ZdLoader::addLibrary(const std::string& path) {
  if (path.empty()) return "the name of the library is empty";
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return dlerror();
  libraries().push_back(library);
  return {};
}

void ZdLoader::clearLibraries() { libraries().clear(); }
