#pragma once

#include "users.h"

namespace httplib {
class Server;
}

namespace korvalo {

// POST /Public/Mirelo/Login.aspx: a User document in, a Signature and status messages out.
// A wrong password or an unknown user is refused with status 2.
void AddLoginRoute(httplib::Server &server, const Users &users);

} // namespace korvalo
