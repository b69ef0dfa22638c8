#pragma once

#include "users.h"

#include <mutex>
#include <string>

namespace korvalo {

// What the routes share for the life of the service. The inbox is fixed at start: no request
// can name the folder a prescription is written to.
struct ServiceState {
    Users users;
    std::string inbox;

    // The last hand-over document received, as the browser posted it, so that a test can
    // compare it with the document the client built.
    std::mutex handoverMutex;
    std::string lastHandover;
    bool handoverReceived = false;
};

} // namespace korvalo
