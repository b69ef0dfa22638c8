#pragma once

#include "platform/xml_document.h"

#include <cstdint>
#include <string>

namespace mirelo::platform {

// Failures of the transport other than an unreachable server (errors::ServerUnreachable).
namespace http_errors {
inline constexpr int32_t InvalidUrl = static_cast<int32_t>(0x800C0002);
inline constexpr int32_t DownloadFailure = static_cast<int32_t>(0x800C0008);
inline constexpr int32_t InvalidCertificate = static_cast<int32_t>(0x800C0019);
} // namespace http_errors

// A synchronous HTTP request: open names the target, send blocks until the whole answer is
// in. The body goes out as the UTF-8 text it is, with no header of ours; the status of the
// answer is not looked at, its body is what a document loads. Only http and https are
// spoken, redirects are not followed and certificates are verified.
class HttpRequest {
  public:
    HttpRequest();

    // Only "POST", synchronously, is supported; anything else is an invalid argument (5).
    void open(const std::string &method, const std::string &url, bool async);
    // Fails with errors::ServerUnreachable when the server can't be reached.
    void send(const std::string &body);
    const ResponseStream &responseStream() const { return response_; }

  private:
    std::string url_;
    ResponseStream response_;
};

// libcurl's global set-up; HttpRequest calls it, and the program may call it early at start.
void initialiseHttp();

} // namespace mirelo::platform
