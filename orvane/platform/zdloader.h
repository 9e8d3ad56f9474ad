#pragma once

#include <string>

#include "orvane/platform/export.h"

/// Run-time access to a vendor's filter functions: the types of their calls, and a loader that finds them by name.

/// The status of a vendor function: 0 for success, negative for an error, positive for a warning.
using IppStatus = int;

/// Extent of a rectangle in elements.
struct IppiSize {
  int width;
  int height;
};

/// Position inside a rectangle, in elements.
struct IppiPoint {
  int x;
  int y;
};

/// The number of the client that a loader serves.
using client_tag = int;

/// Looks up functions by name in shared libraries that the application has named, and reports errors to a client.
///
/// The list of libraries belongs to the process. It must not change while another thread changes it or makes a filter.
/// A filter keeps the functions that were found when it was made. Without a named library every lookup fails, and
/// filters use their own code; this is not an error.
class ORVANE_API ZdLoader {
 public:
  explicit ZdLoader(client_tag client);

  /// The address of the function `name` in the first named library that has it, or null if no library has it.
  void* getMethodPointer(const char* name) const;

  /// Reports `status` to the loader's client, if it is an error (negative).
  void zdCheckStatus(IppStatus status) const;

  /// The last error that was reported to `client` on this thread since the last call, or 0. Vendor functions run on the
  /// thread that runs the filter, so a call on the same thread returns the status of its own run.
  static IppStatus takeBadStatus(client_tag client);

  /// Appends a shared library to the list. A name without a slash is searched in the directories of the system. Returns
  /// an empty text, or the error. The functions of the library are not checked.
  static std::string addLibrary(const std::string& path);
  /// Empties the list. The libraries stay loaded, so functions that were found stay callable.
  static void clearLibraries();

 private:
  client_tag client_;
};
