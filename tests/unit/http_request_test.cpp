#include "closed_port.h"
#include "core/mirelo_error.h"
#include "korvalo_process.h"
#include "platform/http_request.h"

#include <gtest/gtest.h>

using namespace mirelo;
using platform::HttpRequest;

namespace {

int32_t sendFailure(const std::string &url) {
    HttpRequest request;
    request.open("POST", url, false);
    try {
        request.send("<User/>");
    } catch (const MireloError &error) {
        return error.number();
    }
    return 0;
}

TEST(HttpRequest, an_answer_with_any_status_is_handed_over_as_its_bytes) {
    mirelo::testing::KorvaloProcess korvalo;
    HttpRequest request;
    request.open("POST", korvalo.baseUrl() + "/Public/Mirelo/Login.aspx", false);
    request.send("inte xml");
    EXPECT_NE(request.responseStream().bytes.find("<html"), std::string::npos);

    request.open("POST", korvalo.baseUrl() + "/Public/Mirelo/Login.aspx", false);
    request.send("<User><Username>demo</Username><Password>demo123</Password></User>");
    platform::XmlDocument answer;
    answer.load(request.responseStream());
    EXPECT_EQ(answer.selectSingleNode("//Signature").text(),
              "Dr. Karin Lindqvist, Vårdcentralen Åby");
}

TEST(HttpRequest, only_http_and_https_are_spoken_and_an_absent_server_is_unreachable) {
    EXPECT_EQ(sendFailure("file:///etc/passwd"), platform::http_errors::InvalidUrl);
    EXPECT_EQ(sendFailure("ftp://127.0.0.1/"), platform::http_errors::InvalidUrl);

    const mirelo::testing::ClosedPort closed;
    const std::string gone = closed.baseUrl() + "/Public/Mirelo/Login.aspx";
    EXPECT_EQ(sendFailure(gone), errors::ServerUnreachable);

    HttpRequest request;
    EXPECT_THROW(request.open("GET", gone, false), MireloError);
    EXPECT_THROW(request.open("POST", gone, true), MireloError);
}

} // namespace
