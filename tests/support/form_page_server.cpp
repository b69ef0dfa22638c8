#include "form_page_server.h"

#include <httplib.h>
#include <stdexcept>

namespace mirelo::testing {
namespace {

const char *const HandoverPage = R"(<!DOCTYPE html><html><body>
<form method="post" action="/received"><textarea name="txtXml"></textarea></form>
<form method="post" action="/wrong-form"><textarea name="txtXml"></textarea></form>
</body></html>)";

const char *const PageWithoutField = R"(<!DOCTYPE html><html><body>
<form method="post" action="/received"><input name="txtSearch"></form>
</body></html>)";

const char *const LoginPage = R"(<!DOCTYPE html><html><body>
<form method="post" action="/wrong-form"><input name="txtUsername"></form>
<form name="Login" method="post" action="/received">
<input name="txtUsername"><input type="password" name="txtPassword"><input name="txtPath">
<input name="txtVersion"><input name="txtPatientPnr"></form>
</body></html>)";

// The page after a post keeps calling back for as long as it lives in a browser.
const char *const Receipt = R"(<!DOCTYPE html><html><body><p>Mottaget</p>
<script>setInterval(function() { fetch('/alive'); }, 200);</script></body></html>)";

} // namespace

FormPageServer::FormPageServer() : server_(std::make_unique<httplib::Server>()) {
    // One request per connection, so that stopping never waits for an idle browser connection.
    server_->set_keep_alive_max_count(1);
    for (const auto &[route, page] : {std::pair{"/handover", HandoverPage},
                                      {"/without-field", PageWithoutField},
                                      {"/login", LoginPage}}) {
        server_->Get(route, [page](const httplib::Request &, httplib::Response &response) {
            response.set_content(page, "text/html; charset=utf-8");
        });
    }
    const auto counting = [](std::atomic<int> &count, const char *answer) {
        return [&count, answer](const httplib::Request &, httplib::Response &response) {
            ++count;
            response.set_content(answer, "text/html; charset=utf-8");
        };
    };
    server_->Post("/wrong-form", counting(wrongFormPosts, Receipt));
    server_->Get("/alive", counting(alivePings, ""));
    server_->Post("/received",
                  [this](const httplib::Request &request, httplib::Response &response) {
                      {
                          const std::lock_guard lock(mutex_);
                          lastPost_ = Fields(request.params.begin(), request.params.end());
                      }
                      ++postsReceived;
                      response.set_content(Receipt, "text/html; charset=utf-8");
                  });
    port_ = server_->bind_to_any_port("127.0.0.1");
    if (port_ <= 0) {
        throw std::runtime_error("no port for the form pages");
    }
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    // A stop before the loop has started would be missed, and the join would wait forever.
    while (!server_->is_running()) {
        std::this_thread::yield();
    }
}

FormPageServer::~FormPageServer() {
    server_->stop();
    thread_.join();
}

std::string FormPageServer::baseUrl() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

FormPageServer::Fields FormPageServer::lastPost() const {
    const std::lock_guard lock(mutex_);
    return lastPost_;
}

} // namespace mirelo::testing
