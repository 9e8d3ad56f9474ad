#pragma once

#include "orvane/core/visit_enumerator.h"
#include "orvane/correlation/correlation.h"
#include "orvane/correlation/correlation_stand_alone.h"

namespace BP {

template <class T>
CorrelationStandAlone<T>::CorrelationStandAlone(int rank, int* filterDims, int* inputDims, PadTypeEnum padType,
                                                OutputModeEnum outputMode, int* filterCentre, T* filter, T* input,
                                                T* output)
    : allocator(std::make_unique<Allocator>()), numDims(rank) {
  hDims.ptr = filterDims;
  hCentre.ptr = filterCentre;
  uDims.ptr = inputDims;
  h.ptr = filter;
  u.ptr = input;
  y.ptr = output;
  bool filterExceedsInput = false;
  for (int d = 0; d < numDims; ++d) filterExceedsInput = filterExceedsInput || hDims.ptr[d] > uDims.ptr[d];
  visitPadType(padType, [&](auto pad) { build<pad()>(filterExceedsInput, outputMode); });
  setPadValue(T(0));
}

template <class T>
CorrelationStandAlone<T>::CorrelationStandAlone(int rank, int* filterDims, int* inputDims, PadTypeEnum padType,
                                                OutputModeEnum outputMode, T* padValue, int* filterCentre, T* filter,
                                                T* input, T* output)
    : CorrelationStandAlone(rank, filterDims, inputDims, padType, outputMode, filterCentre, filter, input, output) {
  if (correlation) correlation->assignPadValue(padValue, false);
}

template <class T>
template <int padType>
void CorrelationStandAlone<T>::build(bool filterExceedsInput, OutputModeEnum outputMode) {
  using Processor = Correlation<T, T, T, PadExtendedInput<T, T, Allocator, padType>, Allocator>;
  auto processor = std::make_unique<Processor>(allocator.get(), numDims, hDims, filterExceedsInput, uDims, outputMode,
                                               hCentre, h, u, y);
  padValues = &processor->padValues();
  correlation = std::move(processor);
}

template <class T>
CorrelationStandAlone<T>::~CorrelationStandAlone() = default;

template <class T>
void CorrelationStandAlone<T>::setup() {
  if (!correlation) return;
  correlation->setup(setupLinkTables);
  correlation->setup(setupStart);
}

template <class T>
void CorrelationStandAlone<T>::invoke() {
  if (!correlation) return;
  correlation->setup(setupInvoke);
  correlation->invoke();
}

template <class T>
void CorrelationStandAlone<T>::setArrays(T* input, T* output) {
  u.ptr = input;
  y.ptr = output;
}

template <class T>
void CorrelationStandAlone<T>::setPadValue(T value) {
  if (padValues != nullptr) padValues->ptr[0] = value;
}

}  // namespace BP
