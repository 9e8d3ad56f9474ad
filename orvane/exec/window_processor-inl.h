#pragma once

#include <memory>
#include <utility>

#include "orvane/exec/terminal_kernel.h"
#include "orvane/exec/window_processor.h"
#include "orvane/plan/band_in_use.h"

/// Functions with which derived processors make their parts.
namespace BP {

template <class RootT, class UT, class YT, class AllocT>
template <class BlockT, class... ElementsT>
BlockT* WindowProcessor<RootT, UT, YT, AllocT>::makeWindow(ElementsT&&... elements) {
  std::unique_ptr<BlockT> block;
  if constexpr (sizeof...(elements) == 0) {
    block = std::make_unique<BlockT>(nDims, hDims, tables.hOrigin, tables.hLoc, tables.hStart, tables.hEnd);
  } else {
    block = std::make_unique<BlockT>(allocator, nDims, hDims, tables.hOrigin, tables.hLoc, tables.hStart, tables.hEnd,
                                     elements...);
  }
  BlockT* const window = block.get();
  windowBlock = std::move(block);
  return window;
}

template <class RootT, class UT, class YT, class AllocT>
template <class InputT>
InputT* WindowProcessor<RootT, UT, YT, AllocT>::makeInput() {
  auto made = std::make_unique<InputT>(allocator, nDims, uDims, tables.uOrigin, tables.uLoc, uData);
  InputT* const in = made.get();
  input = std::move(made);
  return in;
}

template <class RootT, class UT, class YT, class AllocT>
template <class AlgoT, class BlockT>
void WindowProcessor<RootT, UT, YT, AllocT>::makeAlgorithm(BlockT* window, typename AlgoT::InputType* in) {
  auto made = std::make_unique<AlgoT>(allocator, window, in);
  kernel = std::make_unique<TerminalKernel<Out, AlgoT, AllocT>>(allocator, y1.get(), made.get());
  algorithm = std::move(made);
}

template <class RootT, class UT, class YT, class AllocT>
template <class ProcessorT>
void WindowProcessor<RootT, UT, YT, AllocT>::runPass(ProcessorT* processor, Out& target, const Scope& targetScope) {
  WindowProcessor::beginRun();  // not that of a derived class, whose run has several passes
  runSectors(processor, target, targetScope, {});
}

template <class RootT, class UT, class YT, class AllocT>
template <class ProcessorT>
void WindowProcessor<RootT, UT, YT, AllocT>::runSectors(ProcessorT* processor, Out& target, const Scope& targetScope,
                                                        const PositionBox& band) {
  plan->setOutput(&target);
  plan->setScope(&targetScope);
  const BandInUse inUse(*plan, band);
  plan->setup(setupInvoke);
  if (nDims >= 2) plan->forEachSector(processor);
}

}  // namespace BP
