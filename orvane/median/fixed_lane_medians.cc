#include "orvane/median/fixed_lane_medians.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "orvane/lanes/medians.h"
#include "orvane/median/lane_medians.h"

namespace BP {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::FixptType;

/// What the walks of all types of integers have in common.
class FixedMedianWalk::Part {
 public:
  virtual ~Part() = default;
  virtual void resize(const Block& filter, const Block& input, int walkedRank) = 0;
  virtual bool run(const LineSource<Fixpt>& source, const Sector& sector, const OuterSector* edges, const Block& filter,
                   const Block& input, const Block& output, const LineTarget<Fixpt>& target) = 0;
};

namespace {

/// Medians of raw integers. The number and the range of the outputs are kept.
template <class T>
class RawMedians : public MedianWindow<T, lanes::LaneMedian<T>> {
 public:
  using Base = MedianWindow<T, lanes::LaneMedian<T>>;

  void compute(bool isTurned, const typename Base::Run& run) {
    this->mediansOf(isTurned).compute(Base::runOf(run), {});
    for (int r = 0; r < run.rows; ++r) {
      T low = least, high = greatest;
      for (std::ptrdiff_t x = 0; x < run.width; ++x) {
        low = std::min(low, run.out[r][x]);
        high = std::max(high, run.out[r][x]);
      }
      least = low, greatest = high;
    }
    count += static_cast<unsigned>(run.rows * run.width);
  }

  /// The statistics since the last call; values are raw ones times 2^-fraction.
  fxpLogStruct_tag takeStatistics(int fraction) {
    fxpLogStruct_tag log;
    log.casts = count;
    if (count > 0) log.minimum = std::ldexp(least, -fraction), log.maximum = std::ldexp(greatest, -fraction);
    count = 0;
    least = std::numeric_limits<T>::max(), greatest = std::numeric_limits<T>::min();
    return log;
  }

 private:
  unsigned count = 0;
  T least = std::numeric_limits<T>::max(), greatest = std::numeric_limits<T>::min();
};

template <class T>
class PartOf : public FixedMedianWalk::Part {
 public:
  void resize(const Block& filter, const Block& input, int walkedRank) override {
    medians.resize(filter);
    walk.resize(filter, input, walkedRank);
  }
  bool run(const LineSource<Fixpt>& source, const Sector& sector, const OuterSector* edges, const Block& filter,
           const Block& input, const Block& output, const LineTarget<Fixpt>& target) override {
    Fixpt& y = *target.data;
    const auto raw = [](const Fixpt* array) { return static_cast<const T*>(array->data()); };
    if (!walk.run({raw(source.data), source.dims, source.strides, source.rank, source.padType, raw(source.padValue)},
                  sector, edges, filter, input, output, {static_cast<T*>(y.data()), target.strides})) {
      return false;
    }
    const fxpLogStruct_tag log = medians.takeStatistics(y.attributes().type().fraction);
    if (y.statistics()) y.addStatistics(log);
    return true;
  }

 private:
  RawMedians<T> medians;
  LineWalk<RawMedians<T>> walk{&medians};
};

/// Bits to the left of the binary point, without the sign.
int wholeBits(const FixptType& type) { return static_cast<int>(type.word) - type.fraction - (type.isSigned ? 1 : 0); }

/// Whether a cast of any value of type `from` leaves it as it is.
bool holdsAll(const DSPDataAttributesHandle& to, const FixptType& from) {
  const FixptType type = to.type();
  if (to.isFloating() || to.isComplex() || (from.isSigned && !type.isSigned)) return false;
  if (to.isSigned() && to.overflowMode() == fxpOverflowSymmetric) return false;
  return type.fraction >= from.fraction && wholeBits(type) >= wholeBits(from);
}

/// Whether an array is in memory as integers of this type, one beside the other, where the compiler may expect them.
bool isRaw(const Fixpt& array, const FixptType& type) {
  return !array.isComplex() && !array.attributes().isFloating() && array.attributes().type() == type &&
         array.containerBits() == static_cast<int>(type.word) &&
         reinterpret_cast<std::uintptr_t>(array.data()) % (type.word / 8) == 0;
}

}  // namespace

void FixedMedianWalk::DeletePart::operator()(Part* old) const { delete old; }

void FixedMedianWalk::resize(const Block& filter, const Block& input, int walkedRank) {
  part.reset();
  const int* dims = filter.getDims().ptr;
  const std::int64_t count = filter.getNumDims() < 2 ? 0 : std::int64_t{dims[0]} * dims[1];
  const Fixpt* const sample = lanes->getSelection().getSample();
  if (count % 2 == 0 || sample == nullptr || !isRaw(*sample, sample->attributes().type())) return;
  const FixptType type = sample->attributes().type();
  if (type.word == 8) {
    type.isSigned ? part.reset(new PartOf<std::int8_t>) : part.reset(new PartOf<std::uint8_t>);
  } else if (type.word == 16) {
    type.isSigned ? part.reset(new PartOf<std::int16_t>) : part.reset(new PartOf<std::uint16_t>);
  }
  if (part != nullptr) part->resize(filter, input, walkedRank);
}

bool FixedMedianWalk::run(const LineSource<Fixpt>& source, const Sector& sector, const OuterSector* edges,
                          const Block& filter, const Block& input, const Block& output,
                          const LineTarget<Fixpt>& target) {
  if (part == nullptr) return false;
  const Fixpt* const y = target.data;
  const auto& selection = lanes->getSelection();
  const FixptType type = selection.getSample()->attributes().type();
  if (!isRaw(*source.data, type) || !isRaw(*source.padValue, type) || !isRaw(*y, type)) return false;
  for (const Fixpt* array : {selection.getSample(), selection.getAccumulator(), y}) {
    if (!holdsAll(array->attributes(), type)) return false;
  }
  return part->run(source, sector, edges, filter, input, output, target);
}

}  // namespace BP
