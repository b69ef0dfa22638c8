#pragma once

#include <optional>
#include <string>

namespace korvalo {

struct Options {
    // 0 lets the system pick a free port; the port in use is the first line of output.
    int port = 8080;
    // Users and the answers they get; empty gives the demo user.
    std::string usersFile;
    // Where prescription messages are written: the inbox of the client being served.
    std::string inbox;
    // Writes this many generated messages into the inbox and stops, without serving.
    std::optional<int> samples;
    // The product number service answers with an error page instead of a document.
    bool vnrFails = false;
};

// Throws std::invalid_argument with a line for the user on anything it doesn't understand.
Options ParseOptions(int argc, char **argv);

extern const char *const Usage;

} // namespace korvalo
