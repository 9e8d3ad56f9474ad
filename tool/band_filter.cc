#include "tool/band_filter.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "orvane/filters/elements.h"

namespace BP::tool {

namespace {

using filters::Array;
using filters::ArrayView;
using filters::Extents;

template <class T>
class PlaneBands : public BandFilter {
 public:
  PlaneBands(const BandShape& bandShape, PlaneMaker<T> maker, PlaneStore<T> storer, std::size_t bytesOfFilter)
      : shape(bandShape), make(std::move(maker)), store(std::move(storer)), ownBytes(bytesOfFilter) {}

  SampleCounts filter(const Band& band, const std::uint8_t* in, std::uint8_t* out) override {
    std::unique_ptr<Bench> bench = takeBench();
    prepare(*bench, band);
    SampleCounts counts;
    const std::size_t size = sizeOf(shape.in.type), outSize = sizeOf(shape.out.type);
    for (int c = 0; c < shape.in.colours(); ++c) {
      load(in + static_cast<std::size_t>(c) * size, bench->in, counts);
      bench->run(bench->in, bench->out);
      store(bench->out.data(), bench->out.size(), out + static_cast<std::size_t>(c) * outSize, counts);
    }
    if (shape.in.hasAlpha) placeAlpha(band, in, out);
    const std::lock_guard lock(mutex);
    benches.push_back(std::move(bench));
    return counts;
  }

  std::size_t bytesPerColumn() const override { return 2 * sizeof(T) + ownBytes; }

 private:
  /// Whole numbers are filtered in their own type or as other elements, complex ones as complex ones.
  template <class From>
  static constexpr bool canLoad =
      filters::StoredInteger<T> ? std::is_same_v<From, T> : !IsComplex<From>::value || IsComplex<T>::value;

  /// What the filtering of a band works on; kept for the next band.
  struct Bench {
    Array<T> in;
    Array<T> out;
    PlanePart part;
    PlaneRun<T> run;
  };

  std::unique_ptr<Bench> takeBench() {
    const std::lock_guard lock(mutex);
    if (benches.empty()) return std::make_unique<Bench>();
    std::unique_ptr<Bench> bench = std::move(benches.back());
    benches.pop_back();
    return bench;
  }

  void prepare(Bench& bench, const Band& band) const {
    const PlanePart part = partOf(band);
    if (bench.run && bench.part == part) return;
    bench.in = Array<T>(part.extents);
    bench.out = Array<T>({part.region.width, part.region.height});
    bench.part = part;
    bench.run = make(part);
  }

  /// A row is the own one of the band with the window that has its centre there, beyond all centres of the first or the
  /// last band.
  PlanePart partOf(const Band& band) const {
    const std::int64_t middle = centre(shape.window.height), height = shape.in.height;
    const std::int64_t endOut = band.firstOut + band.outRows;
    const auto rowAt = [&](std::int64_t row) { return std::clamp<std::int64_t>(row + middle, 0, height); };
    const std::int64_t firstOwn = band.firstOut == 0 ? 0 : rowAt(band.firstOut);
    const std::int64_t endOwn = endOut == shape.out.height ? height : rowAt(endOut);
    return {{shape.in.width, band.inRows},
            {centre(shape.window.width), band.firstOut - band.firstIn + middle, shape.out.width, band.outRows},
            firstOwn - band.firstIn,
            endOwn - firstOwn};
  }

  void load(const std::uint8_t* from, Array<T>& plane, SampleCounts& counts) const {
    const auto channels = static_cast<std::size_t>(shape.in.channels);
    visitType(shape.in.type, [&](auto sample) {
      using From = decltype(sample);
      if constexpr (canLoad<From>) {
        loadSamples(reinterpret_cast<const From*>(from), channels, plane.size(), plane.data(), counts);
      } else {
        throw std::logic_error("these samples do not become such elements");
      }
    });
  }

  /// The position of the first output: that of the pixel under the centre of the window, in one dimension.
  std::int64_t centre(int window) const {
    const std::int64_t lead = (window - 1) / 2;
    switch (shape.window.mode) {
      case filters::OutputMode::valid: return lead;
      case filters::OutputMode::same: return 0;
      case filters::OutputMode::full: return lead - (window - 1);
    }
    return 0;
  }

  void placeAlpha(const Band& band, const std::uint8_t* in, std::uint8_t* out) const {
    const std::size_t size = sizeOf(shape.in.type), outSize = sizeOf(shape.out.type);
    const std::size_t alpha = static_cast<std::size_t>(shape.in.channels - 1);
    const std::size_t pixel = static_cast<std::size_t>(shape.in.channels) * size;
    for (std::int64_t row = 0; row < band.outRows; ++row) {
      const std::int64_t y = rowOf(band, band.firstOut + row + centre(shape.window.height));
      for (std::int64_t column = 0; column < shape.out.width; ++column) {
        const std::int64_t x = padIndex(column + centre(shape.window.width), shape.in.width, shape.window.pad);
        const auto at = static_cast<std::size_t>(row * shape.out.width + column);
        std::uint8_t* const to = out + (at * static_cast<std::size_t>(shape.out.channels) + alpha) * outSize;
        if (x < 0 || y < 0) {
          std::memset(to, 0, outSize);
          continue;
        }
        const auto from = static_cast<std::size_t>(y * shape.in.width + x);
        copyAlpha(in + from * pixel + alpha * size, to);
      }
    }
  }

  /// The number among the rows of `band` of the row that stands for `position`; negative for a constant pad.
  std::int64_t rowOf(const Band& band, std::int64_t position) const {
    const std::int64_t row = position - band.firstIn;
    if (row >= 0 && row < band.inRows) return row;
    const std::int64_t other = padIndex(position, shape.in.height, shape.window.pad);
    return other < 0 ? other : other - band.firstIn;
  }

  /// Alpha keeps its value where the output has another type.
  void copyAlpha(const std::uint8_t* from, std::uint8_t* to) const {
    if (shape.in.type == shape.out.type) {
      std::memcpy(to, from, sizeOf(shape.in.type));
      return;
    }
    SampleCounts unused;
    visitType(shape.in.type, [&](auto sample) {
      using From = decltype(sample);
      visitType(shape.out.type, [&](auto result) {
        using To = decltype(result);
        if constexpr (!IsComplex<From>::value || IsComplex<To>::value) {
          loadSamples(reinterpret_cast<const From*>(from), 1, 1, reinterpret_cast<To*>(to), unused);
        }
      });
    });
  }

  BandShape shape;
  PlaneMaker<T> make;
  PlaneStore<T> store;
  std::size_t ownBytes;
  std::mutex mutex;
  std::vector<std::unique_ptr<Bench>> benches;
};

}  // namespace

template <class T>
std::unique_ptr<BandFilter> makeBandFilter(const BandShape& shape, PlaneMaker<T> make, PlaneStore<T> store,
                                           std::size_t ownBytes) {
  return std::make_unique<PlaneBands<T>>(shape, std::move(make), std::move(store), ownBytes);
}

#define ORVANE_MAKE(T) \
  template std::unique_ptr<BandFilter> makeBandFilter(const BandShape&, PlaneMaker<T>, PlaneStore<T>, std::size_t);
ORVANE_MAKE(bool)
ORVANE_MAKE(std::int8_t)
ORVANE_MAKE(std::uint8_t)
ORVANE_MAKE(std::int16_t)
ORVANE_MAKE(std::uint16_t)
ORVANE_MAKE(std::int32_t)
ORVANE_MAKE(std::uint32_t)
ORVANE_MAKE(float)
ORVANE_MAKE(double)
ORVANE_MAKE(std::complex<float>)
ORVANE_MAKE(std::complex<double>)
#undef ORVANE_MAKE

}  // namespace BP::tool
