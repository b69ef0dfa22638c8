#pragma once

#include <functional>
#include <memory>
#include <string>

namespace mirelo::platform {

// The browser that takes the user over to the service's pages: a new, separate, invisible
// instance on every hand-off, filled and posted by script, then shown and let go. A page
// without the expected form or field fails with the run time's 438.
class Browser {
  public:
    virtual ~Browser() = default;

    virtual void Navigate(const std::string &url) = 0;
    // 4 when the page has completed loading, whether it loaded or not.
    virtual int ReadyState() = 0;
    // Blocks for the given time while the page goes on loading; no user input is taken.
    virtual void Sleep(int milliseconds) = 0;

    // Forms(0).elements(field).Value = value, and Forms(0).Submit.
    virtual void SetFirstFormField(const std::string &field, const std::string &value) = 0;
    virtual void SubmitFirstForm() = 0;
    // Login.<field>.Value = value, and Login.Submit.
    virtual void SetLoginFormField(const std::string &field, const std::string &value) = 0;
    virtual void SubmitLoginForm() = 0;

    virtual void ShowMaximized() = 0;
    virtual void SetVisible() = 0;
    virtual void BringToFront() = 0;
};

// Makes a new browser; the widget layer installs the real one, tests may install their own.
std::unique_ptr<Browser> CreateBrowser();
void setBrowserFactory(std::function<std::unique_ptr<Browser>()> factory);

// A hand-off blocks the program while it waits for the page, as it always has: the inbox
// timer's ticks that fall in such a wait pass without effect, and the user's keys and clicks
// are dropped. A wait marks itself with this and runs every other event.
class BrowserWait {
  public:
    BrowserWait();
    ~BrowserWait();
    BrowserWait(const BrowserWait &) = delete;
    BrowserWait &operator=(const BrowserWait &) = delete;
};
bool BrowserIsWaiting();

// ReadyState of a page that has completed.
inline constexpr int ReadyStateComplete = 4;

} // namespace mirelo::platform
