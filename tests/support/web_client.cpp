#include "web_client.h"

#include <httplib.h>
#include <stdexcept>

namespace mirelo::testing {
namespace {

// Sends one request to the server of the address, for its path.
template <typename Send> WebAnswer perform(const std::string &url, const Send &send) {
    const std::size_t path = url.find('/', url.find("//") + 2);
    httplib::Client client(url.substr(0, path));
    const httplib::Result result = send(client, url.substr(path));
    if (!result) {
        throw std::runtime_error("no answer from " + url + ": " + to_string(result.error()));
    }
    return {result->status, result->body};
}

} // namespace

WebAnswer webGet(const std::string &url) {
    return perform(
        url, [](httplib::Client &client, const std::string &path) { return client.Get(path); });
}

WebAnswer webPostForm(const std::string &url,
                      const std::vector<std::pair<std::string, std::string>> &fields) {
    return perform(url, [&fields](httplib::Client &client, const std::string &path) {
        return client.Post(path, httplib::Params(fields.begin(), fields.end()));
    });
}

WebAnswer webPostBody(const std::string &url, const std::string &body) {
    return perform(url, [&body](httplib::Client &client, const std::string &path) {
        return client.Post(path, body, "application/x-www-form-urlencoded");
    });
}

} // namespace mirelo::testing
