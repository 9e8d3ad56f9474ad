// Filters a picture in tiles, each from the part of the picture that it needs, as if the rest lay elsewhere.
#include <cstdio>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  Array<float> picture(Extents{300, 200});
  for (std::size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<float>(i * i % 251);
  const Array<float> filter({5, 5},
                            {1, 4, 6, 4, 1, 4, 16, 24, 16, 4, 6, 24, 36, 24, 6, 4, 16, 24, 16, 4, 1, 4, 6, 4, 1});
  const PadRule pad = PadRule::mirror;

  Array<float> joined(picture.extents());
  for (std::int64_t y = 0; y < 200; y += 64) {
    for (std::int64_t x = 0; x < 300; x += 64) {
      const TileInput needed =
          tileInput(picture.extents(), filter.extents(), OutputMode::same, pad, boxOf(Rectangle{x, y, 64, 64}));
      const Array<float> part(picture.subview(needed.part.start, needed.part.extents));  // from a file, a network ...
      const Array<float> tile = convolve(part, filter, {.pad = pad, .region = rectangleOf(needed.region)});

      const ArrayView<float> place = joined.subview({x, y}, tile.extents());
      for (std::int64_t j = 0; j < tile.extents()[1]; ++j) {
        for (std::int64_t i = 0; i < tile.extents()[0]; ++i) place(i, j) = tile(i, j);
      }
    }
  }

  const bool isSame = joined == convolve(picture, filter, {.pad = pad});
  std::printf("%s\n", isSame ? "the tiles are the whole" : "the tiles differ");
}
