#pragma once

#include <string>
#include <utility>
#include <vector>

namespace mirelo::testing {

// A browser's side of the stand-in's pages, for tests that read what the service serves.
struct WebAnswer {
    long status = 0;
    std::string body;
};

WebAnswer webGet(const std::string &url);
// Posts the fields as a form does, URL-encoded.
WebAnswer webPostForm(const std::string &url,
                      const std::vector<std::pair<std::string, std::string>> &fields);
WebAnswer webPostBody(const std::string &url, const std::string &body);

} // namespace mirelo::testing
