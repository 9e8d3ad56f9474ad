#include "tool/png_rows.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

namespace BP::tool {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// The filters of PNG, by their numbers.
enum PngFilter : std::uint8_t { none, sub, up, average, paeth };

std::uint8_t nearestOf(int left, int above, int corner) {
  const int estimate = left + above - corner;
  const int toLeft = std::abs(estimate - left), toAbove = std::abs(estimate - above),
            toCorner = std::abs(estimate - corner);
  const int nearest = toLeft <= toAbove && toLeft <= toCorner ? left : toAbove <= toCorner ? above : corner;
  return static_cast<std::uint8_t>(nearest);
}

/// One row and its surroundings.
struct Neighbours {
  const std::uint8_t* row;
  const std::uint8_t* above;
  std::size_t count;
  std::size_t step;  ///< to the pixel on the left
};

/// Writes what remains of a row when `predict(left, above, corner)` is taken away.
template <class Predict>
void filterRow(const Neighbours& in, std::uint8_t* to, const Predict& predict) {
  const std::size_t edge = std::min(in.step, in.count);
  for (std::size_t i = 0; i < edge; ++i) to[i] = static_cast<std::uint8_t>(in.row[i] - predict(0, in.above[i], 0));
  for (std::size_t i = edge; i < in.count; ++i) {
    to[i] = static_cast<std::uint8_t>(in.row[i] - predict(in.row[i - in.step], in.above[i], in.above[i - in.step]));
  }
}

void filterRow(PngFilter filter, const Neighbours& in, std::uint8_t* to) {
  switch (filter) {
    case none: std::copy_n(in.row, in.count, to); return;
    case sub: return filterRow(in, to, [](int left, int, int) { return left; });
    case up: return filterRow(in, to, [](int, int above, int) { return above; });
    case average: return filterRow(in, to, [](int left, int above, int) { return (left + above) / 2; });
    case paeth: return filterRow(in, to, nearestOf);
  }
}

/// Sum of the magnitudes of bytes as signed numbers.
std::uint64_t weightOf(const std::uint8_t* bytes, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum += std::min<unsigned>(bytes[i], 256u - bytes[i]);
  return sum;
}

/// The rows, each after the number of its filter.
Bytes filtered(const PngRows& rows, int level) {
  const std::size_t count = rows.bytes.size() / rows.rowBytes - 1, size = rows.rowBytes;
  Bytes result(count * (size + 1)), trial(size);
  const std::array fast{sub, up};
  const std::array all{none, sub, up, average, paeth};
  const PngFilter* const first = level <= 2 ? fast.data() : all.data();
  const std::size_t choices = !rows.isFiltered || level == 0 ? 0 : level <= 2 ? fast.size() : all.size();
  for (std::size_t y = 0; y < count; ++y) {
    const Neighbours in{&rows.bytes[(y + 1) * size], &rows.bytes[y * size], size, rows.pixelBytes};
    std::uint8_t* const to = &result[y * (size + 1)];
    if (choices == 0) filterRow(none, in, to + 1);
    std::uint64_t least = ~std::uint64_t{0};
    for (std::size_t i = 0; i < choices; ++i) {
      filterRow(first[i], in, trial.data());
      const std::uint64_t weight = weightOf(trial.data(), size);
      if (weight >= least) continue;
      least = weight;
      to[0] = first[i];
      std::ranges::copy(trial, to + 1);
    }
  }
  return result;
}

/// zlib's state for one piece of a stream.
class Deflater {
 public:
  explicit Deflater(int level) {
    constexpr int rawWindow = -15, memory = 8;
    const int error = deflateInit2(&state, level, Z_DEFLATED, rawWindow, memory, Z_DEFAULT_STRATEGY);
    if (error == Z_MEM_ERROR) throw std::bad_alloc();
    if (error != Z_OK) throw std::logic_error("deflate cannot begin");
  }
  ~Deflater() { deflateEnd(&state); }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  /// Appends all of `from` to `to`, and ends at a byte.
  void pack(Bytes& from, Bytes& to, bool isLast) {
    const std::size_t before = to.size();
    constexpr std::size_t markers = 16;  // of the end of a piece
    to.resize(before + deflateBound(&state, static_cast<uLong>(from.size())) + markers);
    state.next_in = from.data();
    state.avail_in = static_cast<uInt>(from.size());
    state.next_out = to.data() + before;
    state.avail_out = static_cast<uInt>(to.size() - before);
    const int error = deflate(&state, isLast ? Z_FINISH : Z_SYNC_FLUSH);
    if (error != (isLast ? Z_STREAM_END : Z_OK) || state.avail_in > 0)
      throw std::logic_error("deflate ran out of room");
    to.resize(to.size() - state.avail_out);
  }

 private:
  z_stream state{};
};

}  // namespace

PackedRows packRows(const PngRows& rows, int level) {
  Bytes plain = filtered(rows, level);
  PackedRows packed;
  packed.size = plain.size();
  packed.adler = static_cast<std::uint32_t>(adler32(1, plain.data(), static_cast<uInt>(plain.size())));
  if (rows.isFirst) packed.bytes = {0x78, 0x01};  // the head of the stream: a window of 32 KiB
  Deflater(level).pack(plain, packed.bytes, rows.isLast);
  return packed;
}

}  // namespace BP::tool
