#include "options.h"

#include <stdexcept>

namespace korvalo {
namespace {

int number(const std::string &option, const std::string &text, int maximum) {
    std::size_t used = 0;
    int value = -1;
    try {
        value = std::stoi(text, &used);
    } catch (const std::exception &) {
        used = 0;
    }
    if (used != text.size() || value < 0 || value > maximum) {
        throw std::invalid_argument(option + " väntar ett tal mellan 0 och " +
                                    std::to_string(maximum) + ": " + text);
    }
    return value;
}

} // namespace

const char *const Usage =
    "korvalo [--port N] [--users FIL] [--inbox KATALOG] [--samples N] [--vnr-fails]\n";

Options ParseOptions(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--vnr-fails") {
            options.vnrFails = true;
            continue;
        }
        if (i + 1 >= argc) {
            throw std::invalid_argument("okänd eller ofullständig flagga: " + option);
        }
        const std::string value = argv[++i];
        if (option == "--port") {
            options.port = number(option, value, 65535);
        } else if (option == "--users") {
            options.usersFile = value;
        } else if (option == "--inbox") {
            options.inbox = value;
        } else if (option == "--samples") {
            options.samples = number(option, value, 100000);
        } else {
            throw std::invalid_argument("okänd flagga: " + option);
        }
    }
    if (options.samples && options.inbox.empty()) {
        throw std::invalid_argument("--samples behöver --inbox");
    }
    return options;
}

} // namespace korvalo
