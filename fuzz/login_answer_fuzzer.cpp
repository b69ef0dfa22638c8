// The service's answer to a login as the login attempt takes it: parsed by its own
// declaration, its signature read, its status messages walked. The input is the answer's
// bytes. Every step either fails with a number of ours or goes on, and the main frame is
// opened at most once per status message plus once at the end.
#include "core/mirelo_error.h"
#include "exchange/login_exchange.h"
#include "fuzz_environment.h"
#include "platform/xml_document.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace mirelo;
using namespace mirelo::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzEnvironment &environment = FuzzEnvironment::instance();
    environment.reset();

    platform::XmlDocument answer;
    answer.load(platform::ResponseStream{std::string(reinterpret_cast<const char *>(data), size)});
    if (answer.parseError().errorCode != 0) {
        if (answer.parseError().reason.empty()) {
            violated("a failed parse gives its reason");
        }
        return 0;
    }
    try {
        answer.selectSingleNode("//Signature").text();
    } catch (const MireloError &) {
    }

    size_t opened = 0;
    try {
        HandleLoginResponse(answer, [&opened] { ++opened; });
    } catch (const MireloError &) {
    }
    if (opened > answer.selectNodes("//Message").size() + 1) {
        violated("the main frame opens at most once per status and once at the end");
    }
    if (!environment.allFiles().empty()) {
        violated("walking a login answer writes no file");
    }
    return 0;
}
