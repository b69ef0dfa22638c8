#pragma once

#include <functional>

namespace mirelo::platform {

// Ends the process at once: no screen closes itself, nothing is saved.
[[noreturn]] void EndProcess();

// Tests put a handler here that records the end and throws, so the end can be asserted.
// The handler must not return.
void setEndProcessHandler(std::function<void()> handler);

} // namespace mirelo::platform
