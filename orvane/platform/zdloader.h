#pragma once

#include <string>

#include "orvane/platform/export.h"

/// Run-time access to a vendor's filter functions: types of their calls and the loader that finds them by name.

/// Outcome of a vendor function: 0 for success, negative for an error, positive for a warning.
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

/// Says which client a loader serves.
using client_tag = int;

/// Looks functions up by name in shared libraries that the application has named, and reports bad statuses to a client.
///
/// The list of libraries belongs to the process: change it only while no other thread changes it or makes a filter. A
/// filter stays with what was found when it was made. With no library named every lookup fails, which is an ordinary
/// state: the library then uses its own code.
class ORVANE_API ZdLoader {
 public:
  explicit ZdLoader(client_tag client);

  /// Address of the function `name` in the first named library that has it; null if none has.
  void* getMethodPointer(const char* name) const;

  /// Reports `status` to the loader's client, if it is an error (negative).
  void zdCheckStatus(IppStatus status) const;

  /// The last error that was reported to `client` on this thread; 0 if there was none since the last such question.
  /// Vendor functions run on the thread that runs the filter, so who asks there learns of the own run.
  static IppStatus takeBadStatus(client_tag client);

  /// Adds a shared library to those searched, behind the ones before; a name without a slash is looked for where the
  /// system looks for libraries. Returns an empty text, or what went wrong. What it holds is not looked at.
  static std::string addLibrary(const std::string& path);
  /// Forgets all named libraries; those already handed out stay loaded, so that their functions stay callable.
  static void clearLibraries();

 private:
  client_tag client_;
};
