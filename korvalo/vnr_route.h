#pragma once

namespace httplib {
class Server;
}

namespace korvalo {

// POST /mirelo/vnr.asp: a VnrCheck document in, one answer per product number out; or, when
// the service is to fail, an error page with status 500.
void AddVnrRoute(httplib::Server &server, bool fails);

} // namespace korvalo
