#pragma once

#include <cstdint>

#include "orvane/platform/export.h"
#include "orvane/platform/zdloader.h"

namespace BP {

/// The vendor's functions for unnormalised two-dimensional convolution of `float` and of `double`.
///
///     y(p) = sum over j of kernel(j) * u(p + anchor - j)
///
/// for all p of a rectangle whose windows lie in the input. They are looked up once, by name, in the libraries that the
/// application has named (see `ZdLoader::addLibrary`). They promise neither an order of the sum nor its bits. If one of
/// the functions is missing, none is used, even where the missing one is not needed.
class ORVANE_API ZdFilterLoader : public ZdLoader {
 public:
  /// The client that bad statuses are reported to.
  static constexpr client_tag clientTag = 1;

  ZdFilterLoader();

  /// Whether all three functions were found.
  bool getAllLoaded() const { return allLoaded; }

  /// Convolves a rectangle. `kernelDims` and `kernelCentre` are the kernel's extents and the index of its centre;
  /// `source` points to the input element under the centre for the first output, `destination` to that output; pitches
  /// are elements from one row to the next. A bad status is reported; the destination keeps whatever the functions
  /// wrote.
  ///
  /// Call this only if all functions were found, and with pitches of at most `maxPitch`.
  void filter(const float* kernel, const int* kernelDims, const int* kernelCentre, const float* source, int sourcePitch,
              float* destination, int destinationPitch, IppiSize rectangle) const;
  void filter(const double* kernel, const int* kernelDims, const int* kernelCentre, const double* source,
              int sourcePitch, double* destination, int destinationPitch, IppiSize rectangle) const;

  /// The longest row, in elements of `double`, whose length in bytes fits the functions' arguments.
  static constexpr int maxPitch = INT32_MAX / static_cast<int>(sizeof(double));

  /// Calls the function for `double` with the work buffer that it asks for. The buffer lives for this call only. Steps
  /// are in bytes.
  IppStatus callFilter64f(const double* source, int sourceStep, double* destination, int destinationStep,
                          IppiSize rectangle, const double* kernel, IppiSize kernelSize, IppiPoint anchor) const;

 private:
  using Filter32f = IppStatus(const float*, int, float*, int, IppiSize, const float*, IppiSize, IppiPoint);
  using Filter64f = IppStatus(const double*, int, double*, int, IppiSize, const double*, IppiSize, IppiPoint,
                              std::uint8_t*);
  using BufSize64f = IppStatus(IppiSize, int, int*);

  template <class FunctionT>
  void fetch(FunctionT*& function, const char* name);
  template <class T, class CallT>
  void marshal(CallT&& call, const T* kernel, const int* kernelDims, const int* kernelCentre, const T* source,
               int sourcePitch, T* destination, int destinationPitch, IppiSize rectangle) const;

  Filter32f* filter32f = nullptr;
  Filter64f* filter64f = nullptr;
  BufSize64f* bufSize64f = nullptr;
  bool allLoaded = true;
};

}  // namespace BP
