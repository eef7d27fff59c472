#include "Tessarune/platform/host/ProcessMemory.h"

#include <malloc.h>

namespace tessarune::ProcessMemory {

namespace {

constexpr int largeBlockBytes = 512 * 1024;
constexpr int maximumUnusedBytes = 1024 * 1024; ///< at the end of a heap

} // namespace

/// An engine allocates buffers of several megabytes in each pass, each time of different sizes.
/// When they are freed, the allocator raises its thresholds and serves such sizes from the heap,
/// which fragments: after 15 minutes of captions, the heap held 30 MB more than was in use.
/// Thresholds that are set explicitly stay fixed.
void returnLargeBlocks() {
    mallopt(M_MMAP_THRESHOLD, largeBlockBytes);
    mallopt(M_TRIM_THRESHOLD, maximumUnusedBytes);
}

} // namespace tessarune::ProcessMemory
