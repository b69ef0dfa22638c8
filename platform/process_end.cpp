#include "platform/process_end.h"

#include <cstdlib>
#include <utility>

namespace mirelo::platform {
namespace {

std::function<void()> &handler() {
    static std::function<void()> current;
    return current;
}

} // namespace

void EndProcess() {
    if (handler()) {
        handler()();
    }
    std::_Exit(0);
}

void setEndProcessHandler(std::function<void()> next) {
    handler() = std::move(next);
}

} // namespace mirelo::platform
