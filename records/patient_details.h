#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// Who the patient is and where the patient lives, as the details dialog shows it: the name is
// given name, a blank and family name, and the town line postal code, a blank and town, so an
// empty given name or postal code leaves a leading blank.
struct PatientDetails {
    std::string txtPnr;
    std::string txtName;
    std::string txtAddress;
    std::string txtZipCity;
};

// The details as a patient document holds them.
PatientDetails PatientDetailsOf(const platform::XmlDocument &patient);

// Reads the patient's file afresh (missing: 53, damaged: 0x80040204); nothing is written.
PatientDetails ReadPatientDetails(const std::string &pnr);

} // namespace mirelo
