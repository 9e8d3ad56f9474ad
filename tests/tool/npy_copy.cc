// Reads an NPY file and writes it again; prints the element type, the extents and the bytes that were read.
//   npy_copy IN.npy OUT.npy

#include <cstdio>
#include <exception>

#include "tool/picture_file.h"
#include "tool/text.h"

int main(int count, char** arguments) {
  using namespace BP::tool;
  if (count != 3) return 1;
  try {
    const Array array = readArray(arguments[1]);
    OutputFiles files;
    addArray(files, arguments[2], array, {});
    files.commit();
    std::printf("%s [", std::string(nameOf(array.type)).c_str());
    for (const std::int64_t extent : array.extents) std::printf(" %lld", static_cast<long long>(extent));
    std::printf(" ] ");
    for (const std::uint8_t byte : array.bytes) std::printf("%02x", byte);
    std::printf("\n");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", legible(error.what()).c_str());
    return 2;
  }
  return 0;
}
