#include "Tessarune/platform/host/ProcessMemory.h"

#include <malloc.h>

namespace tessarune::ProcessMemory {

namespace {

constexpr int largeBlockBytes = 512 * 1024;
constexpr int mostUnusedBytes = 1024 * 1024; ///< at the end of a heap

} // namespace

/// An engine allocates buffers of megabytes at each pass, each time of another size. When they are
/// freed, the allocator starts to serve such sizes from the heap, where they fragment: after a
/// quarter of an hour of captions the heap held 30 MB more than it used. The allocator keeps
/// thresholds that are set explicitly.
void returnLargeBlocks() {
    mallopt(M_MMAP_THRESHOLD, largeBlockBytes);
    mallopt(M_TRIM_THRESHOLD, mostUnusedBytes);
}

} // namespace tessarune::ProcessMemory
