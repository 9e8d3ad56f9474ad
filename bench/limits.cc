// What no filter can pass: the arithmetic peaks of a vector target, and the speed of a copy.
#include "bench/limits.h"

#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bench/limits.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace bench {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Makes the compiler believe that a register has changed, so that what depends on it is computed again.
template <class V>
HWY_INLINE void change(V& v) {
#if HWY_TARGET == HWY_AVX3
  asm volatile("" : "+v"(v.raw));
#elif HWY_ARCH_X86
  asm volatile("" : "+x"(v.raw));
#elif HWY_ARCH_ARM_A64
  asm volatile("" : "+w"(v.raw));
#else
  asm volatile("" : "+m"(v.raw));  // the value goes through memory, so the peak comes out too low
#endif
}

/// Adds terms to independent sums, and returns how many that were. Two pipes with latencies of four cycles need eight
/// sums; with both operands and a term, twelve stay within 16 registers.
template <class T, class TermT>
std::int64_t addTerms(T* result, TermT&& term) {
  constexpr std::size_t chains = 12;
  constexpr std::int64_t rounds = 4000;
  const hn::ScalableTag<T> tag;
  using V = hn::Vec<decltype(tag)>;
  V sums[chains];
  for (V& sum : sums) sum = hn::Zero(tag);
  V x = hn::Set(tag, T(0.5)), h = hn::Set(tag, T(0.25));
  for (std::int64_t i = 0; i < rounds; ++i) {
    for (V& sum : sums) {
      change(x);
      sum = hn::Add(sum, term(x, h));
    }
  }
  for (std::size_t k = 1; k < chains; ++k) sums[0] = hn::Add(sums[0], sums[k]);
  *result = hn::GetLane(sums[0]);
  return rounds * static_cast<std::int64_t>(chains * hn::Lanes(tag));
}

template <class T>
std::int64_t addProducts(T* result) {
  return addTerms(result, [](auto x, auto h) HWY_ATTR { return hn::Mul(x, h); });
}
template <class T>
std::int64_t addAbsolutes(T* result) {
  return addTerms(result, [](auto x, auto h) HWY_ATTR { return hn::Abs(hn::Sub(x, h)); });
}
template <class T>
std::int64_t addSquares(T* result) {
  return addTerms(result, [](auto x, auto h) HWY_ATTR {
    const auto d = hn::Sub(x, h);
    return hn::Mul(d, d);
  });
}

std::int64_t addProductsF32(float* result) { return addProducts(result); }
std::int64_t addProductsF64(double* result) { return addProducts(result); }
std::int64_t addAbsolutesF32(float* result) { return addAbsolutes(result); }
std::int64_t addAbsolutesF64(double* result) { return addAbsolutes(result); }
std::int64_t addSquaresF32(float* result) { return addSquares(result); }
std::int64_t addSquaresF64(double* result) { return addSquares(result); }

}  // namespace HWY_NAMESPACE
}  // namespace bench
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <cstring>
#include <memory>
#include <stdexcept>

#include "orvane/lanes/target.h"

namespace bench {
namespace {

HWY_EXPORT(addProductsF32);
HWY_EXPORT(addProductsF64);
HWY_EXPORT(addAbsolutesF32);
HWY_EXPORT(addAbsolutesF64);
HWY_EXPORT(addSquaresF32);
HWY_EXPORT(addSquaresF64);

/// Highway's bit of the target in use; the plain loops are held against the peak of one value a time.
std::int64_t targetBit() {
  constexpr struct {
    std::string_view name;
    std::int64_t bit;
  } known[] = {
      {"avx512dl", HWY_AVX3}, {"avx512", HWY_AVX3},          {"avx2", HWY_AVX2}, {"sse4", HWY_SSE4}, {"neon", HWY_NEON},
      {"scalar", HWY_SCALAR}, {BP::lanes::plain, HWY_SCALAR}};
  for (const auto& target : known) {
    if (target.name == BP::lanes::getTarget()) return target.bit;
  }
  throw std::runtime_error("the peak of target " + std::string(BP::lanes::getTarget()) + " cannot be measured");
}

/// Place of the target in use in a table that `HWY_EXPORT` makes.
std::size_t targetPlace() {
  if constexpr ((HWY_TARGETS & (HWY_TARGETS - 1)) == 0) return 0;
  const std::int64_t places = HWY_CHOSEN_TARGET_SHIFT(targetBit()) | HWY_CHOSEN_TARGET_MASK_SCALAR;
  return hwy::Num0BitsBelowLS1Bit_Nonzero64(static_cast<std::uint64_t>(places));
}

template <class T, class Function>
Sampler peakOf(Function* function) {
  T result = 0;
  const auto pairs = static_cast<double>(function(&result));
  return timed(
      [function] {
        T sum = 0;
        function(&sum);
        keep(sum);
      },
      pairs);
}

}  // namespace

template <>
Sampler arithmeticPeak<float>() {
  return peakOf<float>(HWY_DISPATCH_TABLE(addProductsF32)[targetPlace()]);
}

template <>
Sampler arithmeticPeak<double>() {
  return peakOf<double>(HWY_DISPATCH_TABLE(addProductsF64)[targetPlace()]);
}

template <>
Sampler differencePeak<float>(bool squared) {
  return peakOf<float>(squared ? HWY_DISPATCH_TABLE(addSquaresF32)[targetPlace()]
                               : HWY_DISPATCH_TABLE(addAbsolutesF32)[targetPlace()]);
}

template <>
Sampler differencePeak<double>(bool squared) {
  return peakOf<double>(squared ? HWY_DISPATCH_TABLE(addSquaresF64)[targetPlace()]
                                : HWY_DISPATCH_TABLE(addAbsolutesF64)[targetPlace()]);
}

Sampler memoryCopy(std::int64_t count, int bytes) {
  const auto size = static_cast<std::size_t>(count * bytes);
  const auto from = std::make_shared<std::vector<char>>(size, 'x'), to = std::make_shared<std::vector<char>>(size, 'y');
  return timed(
      [from, to] {
        std::memcpy(to->data(), from->data(), to->size());
        keep(*to->data());
      },
      static_cast<double>(count));
}

void measureLimits(Harness& harness) {
  for (const bool isFloat : {true, false}) {
    const Subject subject{"peak", isFloat ? "float" : "double", "", "", 1};
    const Sampler peak = isFloat ? arithmeticPeak<float>() : arithmeticPeak<double>();
    if (harness.wants(subject)) harness.measure(subject, peak);
  }
}

}  // namespace bench
#endif
