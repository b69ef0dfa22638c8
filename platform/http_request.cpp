#include "platform/http_request.h"

#include "core/mirelo_error.h"

#include <curl/curl.h>
#include <memory>
#include <mutex>

namespace mirelo::platform {
namespace {

size_t collectBody(char *data, size_t size, size_t count, void *target) {
    static_cast<std::string *>(target)->append(data, size * count);
    return size * count;
}

bool isUnreachable(CURLcode code) {
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_CONNECT:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_OPERATION_TIMEDOUT:
        return true;
    default:
        return false;
    }
}

[[noreturn]] void raiseTransportFailure(CURLcode code, const char *detail) {
    const std::string reason = detail[0] != '\0' ? detail : curl_easy_strerror(code);
    if (isUnreachable(code)) {
        throw MireloError(errors::ServerUnreachable,
                          withReason("Det gick inte att ansluta till servern.", reason));
    }
    if (code == CURLE_PEER_FAILED_VERIFICATION) {
        throw MireloError(http_errors::InvalidCertificate,
                          withReason("Serverns certifikat kunde inte godkännas.", reason));
    }
    if (code == CURLE_UNSUPPORTED_PROTOCOL || code == CURLE_URL_MALFORMAT) {
        throw MireloError(http_errors::InvalidUrl,
                          withReason("Adressen till servern är ogiltig.", reason));
    }
    throw MireloError(http_errors::DownloadFailure,
                      withReason("Svaret från servern kunde inte hämtas.", reason));
}

struct EasyDeleter {
    void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
};
struct ListDeleter {
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};

} // namespace

void initialiseHttp() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

HttpRequest::HttpRequest() {
    initialiseHttp();
}

void HttpRequest::open(const std::string &method, const std::string &url, bool async) {
    if (method != "POST" || async) {
        runtime::raise(runtime::InvalidArgument);
    }
    url_ = url;
    response_ = {};
}

void HttpRequest::send(const std::string &body) {
    std::unique_ptr<CURL, EasyDeleter> handle(curl_easy_init());
    if (!handle) {
        runtime::raise(runtime::InvalidArgument);
    }
    // An empty value takes libcurl's own header away: the service gets the body and nothing
    // that we chose to say about it.
    std::unique_ptr<curl_slist, ListDeleter> headers;
    for (const char *header : {"Content-Type:", "Expect:", "Accept:"}) {
        headers.reset(curl_slist_append(headers.release(), header));
    }
    char detail[CURL_ERROR_SIZE] = {};
    std::string received;

    CURL *curl = handle.get();
    curl_easy_setopt(curl, CURLOPT_URL, url_.c_str());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, collectBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &received);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, detail);

    const CURLcode code = curl_easy_perform(curl);
    if (code != CURLE_OK) {
        raiseTransportFailure(code, detail);
    }
    response_.bytes = std::move(received);
}

} // namespace mirelo::platform
