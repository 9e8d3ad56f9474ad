#pragma once

#include "orvane/platform/zdloader.h"

namespace BP::test {

/// How the stand-in for a vendor's library was called, and what it is to answer.
struct VendorRecord {
  int filter32fCalls = 0, filter64fCalls = 0, bufSize64fCalls = 0;
  /// Arguments of the last call of a filter.
  const void *source = nullptr, *destination = nullptr, *kernel = nullptr;
  int sourceStep = 0, destinationStep = 0;
  IppiSize rectangle{}, kernelSize{};
  IppiPoint anchor{};
  /// A status to return without doing anything, if it is not 0.
  IppStatus filterAnswer = 0, bufSizeAnswer = 0;

  int filterCalls() const { return filter32fCalls + filter64fCalls; }
};

/// The record of the complete stand-in; tests write it.
extern "C" __attribute__((visibility("default"))) VendorRecord* vendorRecord();

}  // namespace BP::test
