#pragma once

#include "catalogue.h"

#include <string>
#include <vector>

namespace korvalo {

struct PatientDetails {
    std::string pnr;
    std::string familyName;
    std::string givenName;
    std::string streetName;
    std::string postalCode;
    std::string city;
};

struct PrescribedItem {
    CatalogueProduct product;
    std::string numberOfPackages = "1";
    std::string dosage;
    std::string repeats = "1";
    std::string timeValue = "3";
    std::string timeUnit = "M";
    std::string careCoverageType = "F";
};

struct Prescription {
    PatientDetails patient;
    std::string prescriber;
    std::string issued;
    std::vector<PrescribedItem> items;
};

// The local time as a message's issue time is written: 2026-03-15T14:05:09.
std::string IssueTimestampNow();

// Writes the prescription as a NewPrescriptionMessage file into the inbox, under a name of
// its own that no file there has yet, and gives the file's path.
std::string WritePrescriptionMessage(const std::string &inbox, const Prescription &prescription);

} // namespace korvalo
