#pragma once

#include "prescription_message.h"
#include "service_state.h"

#include <string>

namespace httplib {
class Server;
}

namespace korvalo {

inline constexpr const char *PrescribePath = "/Public/Mirelo/Prescribe.aspx";

// The prescribing form of a patient: the patient as hidden fields, or, for a bare number, boxes
// where the physician types the name and address; the key of the hand-over that was let in;
// and the catalogue with a tick, a dosage and a number of packages per product.
std::string PrescribeFormHtml(const PatientDetails &patient, const std::string &sessionKey);

// POST of that form: writes a NewPrescriptionMessage into the service's inbox, signed by the
// physician whose hand-over gave the key, and answers with a receipt page.
void AddPrescribeRoute(httplib::Server &server, ServiceState &state);

} // namespace korvalo
