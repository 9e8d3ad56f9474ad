#include "tool/band_filter.h"

#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace BP::tool {

namespace {

using filters::Array;
using filters::ArrayView;
using filters::Extents;

template <class T>
class PlaneBands : public BandFilter {
 public:
  PlaneBands(const BandShape& bandShape, PlaneMaker<T> maker, PlaneStore<T> storer)
      : shape(bandShape), make(std::move(maker)), store(std::move(storer)) {}

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

  std::size_t bytesPerColumn() const override { return 2 * sizeof(T); }

 private:
  /// What the filtering of a band works on; kept for the next band.
  struct Bench {
    Array<T> in;
    Array<T> out;
    filters::Rectangle region;
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
    const Extents extents{shape.in.width, band.inRows};
    const filters::Rectangle region{centre(shape.window.width),
                                    band.firstOut - band.firstIn + centre(shape.window.height), shape.out.width,
                                    band.outRows};
    if (bench.run && bench.in.extents() == extents && bench.region == region) return;
    bench.in = Array<T>(extents);
    bench.out = Array<T>({region.width, region.height});
    bench.region = region;
    bench.run = make(extents, region);
  }

  void load(const std::uint8_t* from, Array<T>& plane, SampleCounts& counts) const {
    const auto channels = static_cast<std::size_t>(shape.in.channels);
    visitType(shape.in.type, [&](auto sample) {
      using From = decltype(sample);
      if constexpr (!IsComplex<From>::value || IsComplex<T>::value) {
        loadSamples(reinterpret_cast<const From*>(from), channels, plane.size(), plane.data(), counts);
      } else {
        throw std::logic_error("complex elements do not become real ones");
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
      const std::int64_t y =
          padIndex(band.firstOut + row + centre(shape.window.height), shape.in.height, shape.window.pad);
      for (std::int64_t column = 0; column < shape.out.width; ++column) {
        const std::int64_t x = padIndex(column + centre(shape.window.width), shape.in.width, shape.window.pad);
        const auto at = static_cast<std::size_t>(row * shape.out.width + column);
        std::uint8_t* const to = out + (at * static_cast<std::size_t>(shape.out.channels) + alpha) * outSize;
        if (x < 0 || y < 0) {
          std::memset(to, 0, outSize);
          continue;
        }
        const auto from = static_cast<std::size_t>((y - band.firstIn) * shape.in.width + x);
        copyAlpha(in + from * pixel + alpha * size, to);
      }
    }
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
  std::mutex mutex;
  std::vector<std::unique_ptr<Bench>> benches;
};

}  // namespace

template <class T>
std::unique_ptr<BandFilter> makeBandFilter(const BandShape& shape, PlaneMaker<T> make, PlaneStore<T> store) {
  return std::make_unique<PlaneBands<T>>(shape, std::move(make), std::move(store));
}

#define ORVANE_MAKE(T) \
  template std::unique_ptr<BandFilter> makeBandFilter(const BandShape&, PlaneMaker<T>, PlaneStore<T>);
ORVANE_MAKE(bool)
ORVANE_MAKE(float)
ORVANE_MAKE(double)
ORVANE_MAKE(std::complex<float>)
ORVANE_MAKE(std::complex<double>)
#undef ORVANE_MAKE

}  // namespace BP::tool
