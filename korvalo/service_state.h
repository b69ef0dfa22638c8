#pragma once

#include "sessions.h"
#include "users.h"

#include <string>

namespace korvalo {

// What the routes share for the life of the service. The inbox is fixed at start: no request
// can name the folder a prescription is written to.
struct ServiceState {
    Users users;
    std::string inbox;
    Sessions sessions;
};

} // namespace korvalo
