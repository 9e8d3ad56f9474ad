// A stand-in for a vendor's library: the three filter functions with their documented meaning. The kernel is flipped,
// its anchor counted from the far end, steps are bytes, and the form for double works in a buffer that the caller got
// the size of. Built once whole and once without each function (VENDOR_LACKS).
#include "tests/support/vendor_filters.h"

#include <cstddef>
#include <cstdint>

namespace BP::test {
namespace {

constexpr IppStatus sizeError = -6, nullPointerError = -8, stepError = -14;
VendorRecord record;

template <class T>
T* rowOf(T* first, int step, int row) {
  using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
  return reinterpret_cast<T*>(reinterpret_cast<Byte*>(first) + std::ptrdiff_t{step} * row);
}

int bufferBytes(IppiSize kernelSize, int width) {
  return (kernelSize.width * kernelSize.height + width) * static_cast<int>(sizeof(double));
}

/// y(p) = sum over j of kernel(j) * u(p + anchor - j), summed into `line`, a row of the rectangle. The order of the sum
/// is the kernel's, which is not that of the library.
template <class T>
IppStatus filter(const T* source, int sourceStep, T* destination, int destinationStep, IppiSize rectangle,
                 const T* kernel, IppiSize kernelSize, IppiPoint anchor, T* line) {
  record.source = source;
  record.destination = destination;
  record.kernel = kernel;
  record.sourceStep = sourceStep;
  record.destinationStep = destinationStep;
  record.rectangle = rectangle;
  record.kernelSize = kernelSize;
  record.anchor = anchor;
  if (record.filterAnswer != 0) return record.filterAnswer;
  if (!source || !destination || !kernel || !line) return nullPointerError;
  if (rectangle.width < 1 || rectangle.height < 1 || kernelSize.width < 1 || kernelSize.height < 1) return sizeError;
  if (sourceStep < 1 || destinationStep < 1) return stepError;
  for (int y = 0; y < rectangle.height; ++y) {
    for (int x = 0; x < rectangle.width; ++x) line[x] = 0;
    for (int j = 0; j < kernelSize.height; ++j) {
      const T* const from = rowOf(source, sourceStep, y + anchor.y - j);
      for (int i = 0; i < kernelSize.width; ++i) {
        for (int x = 0; x < rectangle.width; ++x) line[x] += from[x + anchor.x - i] * kernel[i + kernelSize.width * j];
      }
    }
    for (int x = 0; x < rectangle.width; ++x) rowOf(destination, destinationStep, y)[x] = line[x];
  }
  return 0;
}

}  // namespace

extern "C" {

VendorRecord* vendorRecord() { return &record; }

#define VENDOR_API __attribute__((visibility("default")))

#if VENDOR_LACKS != 1
VENDOR_API IppStatus ippiFilter_32f_C1R(const float* source, int sourceStep, float* destination, int destinationStep,
                                        IppiSize rectangle, const float* kernel, IppiSize kernelSize,
                                        IppiPoint anchor) {
  ++record.filter32fCalls;
  float line[4096];
  if (rectangle.width > 4096) return sizeError;
  return filter(source, sourceStep, destination, destinationStep, rectangle, kernel, kernelSize, anchor, line);
}
#endif

#if VENDOR_LACKS != 2
VENDOR_API IppStatus ippiFilter_64f_C1R(const double* source, int sourceStep, double* destination, int destinationStep,
                                        IppiSize rectangle, const double* kernel, IppiSize kernelSize, IppiPoint anchor,
                                        std::uint8_t* buffer) {
  ++record.filter64fCalls;
  for (int i = 0; buffer && i < bufferBytes(kernelSize, rectangle.width); ++i) buffer[i] = 0xA5;
  return filter(source, sourceStep, destination, destinationStep, rectangle, kernel, kernelSize, anchor,
                reinterpret_cast<double*>(buffer));
}
#endif

#if VENDOR_LACKS != 3
VENDOR_API IppStatus ippiFilterGetBufSize_64f_C1R(IppiSize kernelSize, int width, int* size) {
  ++record.bufSize64fCalls;
  if (record.bufSizeAnswer != 0) return record.bufSizeAnswer;
  *size = bufferBytes(kernelSize, width);
  return 0;
}
#endif

}  // extern "C"

}  // namespace BP::test
