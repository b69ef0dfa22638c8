#include "platform/heap.h"

#include <malloc.h>

namespace mirelo::platform {
namespace {

// A whole file's text, the largest single block an intake needs, comes from the heap below
// this size. The heap gives memory back only when more than the other bound lies free at its
// top: a message of 10 000 items and its patient's file take up to 200 MiB while they are
// taken in.
constexpr int LargestHeapBlock = 32 << 20;
constexpr int FreeHeapKept = 256 << 20;

} // namespace

void initialiseHeap() {
    mallopt(M_MMAP_THRESHOLD, LargestHeapBlock);
    mallopt(M_TRIM_THRESHOLD, FreeHeapKept);
}

} // namespace mirelo::platform
