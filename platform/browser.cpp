#include "platform/browser.h"

#include <stdexcept>

namespace mirelo::platform {
namespace {

std::function<std::unique_ptr<Browser>()> &factory() {
    static std::function<std::unique_ptr<Browser>()> current;
    return current;
}

int &waitsInProgress() {
    static int count = 0;
    return count;
}

} // namespace

BrowserWait::BrowserWait() {
    ++waitsInProgress();
}
BrowserWait::~BrowserWait() {
    --waitsInProgress();
}
bool BrowserIsWaiting() {
    return waitsInProgress() > 0;
}

std::unique_ptr<Browser> CreateBrowser() {
    if (!factory()) {
        throw std::logic_error("no browser installed");
    }
    return factory()();
}

void setBrowserFactory(std::function<std::unique_ptr<Browser>()> next) {
    factory() = std::move(next);
}

} // namespace mirelo::platform
