#include "tool/samples.h"

#include <algorithm>

namespace BP::tool {

Array samplesOf(const Image& image) {
  Array array{ElementType::float64, {image.width, image.height}, {}};
  if (image.channels > 1) array.extents.insert(array.extents.begin(), image.channels);
  array.bytes.resize(bytesOf(array.type, array.extents));
  std::copy(image.samples.begin(), image.samples.end(), array.as<double>());
  return array;
}

}  // namespace BP::tool
