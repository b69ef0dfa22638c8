#pragma once

#include "platform/browser.h"
#include "platform/browser_channel.h"

#include <memory>
#include <string>

namespace mirelo::platform {

// The hand-off's browser as a process of its own, driven over its channel. Letting go of it
// lets go of the channel; whoever else holds the channel may go on asking the browser.
std::unique_ptr<Browser> makeProcessBrowser(std::shared_ptr<BrowserChannel> channel);

// Makes every hand-off start the browser executable anew.
void installProcessBrowser(const std::string &executable);

} // namespace mirelo::platform
