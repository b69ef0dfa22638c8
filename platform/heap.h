#pragma once

namespace mirelo::platform {

// The C library's heap set-up; call once at start, before anything is allocated in earnest.
// Taking in a large message or writing a large patient file builds and frees a tree of
// hundreds of thousands of nodes. The heap keeps that memory, up to a bound, for the next one,
// rather than handing it back to the system and taking it again page by page, which on some
// machines costs the intake as much again.
void initialiseHeap();

} // namespace mirelo::platform
