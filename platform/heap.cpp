#include "platform/heap.h"

#include <malloc.h>

namespace mirelo::platform {
namespace {

// A whole file's text, the largest single block an intake needs, comes from the heap below
// this size; the heap gives memory back only when more than the other bound lies free at its
// top.
constexpr int LargestHeapBlock = 32 << 20;
constexpr int FreeHeapKept = 128 << 20;

} // namespace

void initialiseHeap() {
    mallopt(M_MMAP_THRESHOLD, LargestHeapBlock);
    mallopt(M_TRIM_THRESHOLD, FreeHeapKept);
}

} // namespace mirelo::platform
