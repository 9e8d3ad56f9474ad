#include "orvane/core/block_proc_tolk_cache.h"

namespace BP {

BlockProcTolkCache::BlockProcTolkCache(brekk::BrekkAdaptorTolk* adaptor)
    : allocator(std::make_unique<AllocatorTolk>(adaptor)) {}

BlockProcTolkCache::~BlockProcTolkCache() = default;

void BlockProcTolkCache::tune(void* /*first*/, void* /*second*/, void* /*third*/) {}

void BlockProcTolkCache::updateInputPointers(void* /*first*/, void* /*second*/) {}

void BlockProcTolkCache::updateOutputPointers(void* /*a*/, void* /*b*/, void* /*c*/, void* /*d*/, void* /*e*/) {}

void BlockProcTolkCache::setFixptLogMap(void* map) { allocator->setFixptLogMap(static_cast<FixptLogMap*>(map)); }

}  // namespace BP
