#pragma once

#include "service_state.h"

namespace httplib {
class Server;
}

namespace korvalo {

// The hand-over page /Public/Mirelo/InitXML.aspx: GET gives the empty forms (txtXml first, then
// the form named Login); POST checks the user name and password it carries against the users
// and shows the patient received with the prescribing form, or refuses the pair.
void AddHandoverRoutes(httplib::Server &server, ServiceState &state);

} // namespace korvalo
