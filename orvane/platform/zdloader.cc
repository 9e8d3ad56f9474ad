#include "orvane/platform/zdloader.h"

#include <dlfcn.h>

#include <map>
#include <utility>
#include <vector>

namespace {

std::vector<void*>& libraries() {
  static std::vector<void*> handles;
  return handles;
}

std::map<client_tag, IppStatus>& badStatuses() {
  static thread_local std::map<client_tag, IppStatus> statuses;
  return statuses;
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
  if (status < 0) badStatuses()[client_] = status;
}

IppStatus ZdLoader::takeBadStatus(client_tag client) { return std::exchange(badStatuses()[client], 0); }

std::string ZdLoader::addLibrary(const std::string& path) {
  if (path.empty()) return "the name of the library is empty";
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return dlerror();
  libraries().push_back(library);
  return {};
}

void ZdLoader::clearLibraries() { libraries().clear(); }
