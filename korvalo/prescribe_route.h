#pragma once

#include "service_state.h"

#include <string>

namespace httplib {
class Server;
}

namespace korvalo {

inline constexpr const char *PrescribePath = "/Public/Mirelo/Prescribe.aspx";

// The prescribing form of a patient: patient fields as hidden inputs, and the catalogue with
// a tick, a dosage and a number of packages per product.
struct PatientOnPage {
    std::string pnr;
    std::string familyName;
    std::string givenName;
    std::string streetName;
    std::string postalCode;
    std::string city;
    std::string username;
};
std::string PrescribeFormHtml(const PatientOnPage &patient);

// POST of that form: writes a NewPrescriptionMessage into the service's inbox and answers
// with a receipt page.
void AddPrescribeRoute(httplib::Server &server, ServiceState &state);

} // namespace korvalo
