#include "Tessarune/platform/host/ProcessMemory.h"

#include <malloc.h>

namespace tessarune::ProcessMemory {

namespace {

constexpr int largeBlockBytes = 512 * 1024;
constexpr int mostUnusedBytes = 1024 * 1024; ///< at the end of a heap

} // namespace

/// An engine asks for buffers of megabytes at each pass, each time of another size. The allocator
/// takes their being freed as a reason to keep such blocks among the small ones, where what is
/// allocated meanwhile makes holes of them: a quarter of an hour of captions held 30 MB more than
/// it used. Limits that are set by hand it leaves alone.
void returnLargeBlocks() {
    mallopt(M_MMAP_THRESHOLD, largeBlockBytes);
    mallopt(M_TRIM_THRESHOLD, mostUnusedBytes);
}

} // namespace tessarune::ProcessMemory
