#include "web_client.h"

#include <curl/curl.h>
#include <memory>
#include <stdexcept>

namespace mirelo::testing {
namespace {

size_t collect(char *data, size_t size, size_t count, void *target) {
    static_cast<std::string *>(target)->append(data, size * count);
    return size * count;
}

WebAnswer perform(const std::string &url, const std::string *body) {
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
    CURL *curl = handle.get();
    WebAnswer answer;
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer.body);
    if (body != nullptr) {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body->data());
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body->size()));
    }
    const CURLcode code = curl_easy_perform(curl);
    if (code != CURLE_OK) {
        throw std::runtime_error(std::string("no answer from ") + url + ": " +
                                 curl_easy_strerror(code));
    }
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &answer.status);
    return answer;
}

std::string escape(const std::string &text) {
    std::unique_ptr<char, decltype(&curl_free)> escaped(
        curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size())), curl_free);
    return escaped.get();
}

} // namespace

WebAnswer webGet(const std::string &url) {
    return perform(url, nullptr);
}

WebAnswer webPostForm(const std::string &url,
                      const std::vector<std::pair<std::string, std::string>> &fields) {
    std::string body;
    for (const auto &[name, value] : fields) {
        body += (body.empty() ? "" : "&") + escape(name) + "=" + escape(value);
    }
    return perform(url, &body);
}

WebAnswer webPostBody(const std::string &url, const std::string &body) {
    return perform(url, &body);
}

} // namespace mirelo::testing
