#pragma once

#include "service_state.h"

namespace httplib {
class Server;
}

namespace korvalo {

// The hand-over page /Public/Mirelo/InitXML.aspx: GET gives the empty forms (txtXml first, then
// the form named Login); POST shows the patient received with the prescribing form.
void AddHandoverRoutes(httplib::Server &server);

} // namespace korvalo
