#pragma once

#include "platform/xml_document.h"

#include <string>
#include <vector>

namespace mirelo {

// The medication list the patient takes home, for the pharmacy, the home-care nurse or the next
// doctor: what the list holds and in which words, before any page is laid out. The general note
// and the products' notes are the physician's own and stand nowhere in it.

// One product, or one warning, with the lines under its title. A page breaks between entries,
// never inside one.
struct PrintedEntry {
    std::string title;
    std::vector<std::string> lines;
    bool operator==(const PrintedEntry &) const = default;
};

struct PrintedSection {
    std::string heading;
    std::vector<PrintedEntry> entries;
    // What the section says when it has no entry.
    std::string whenEmpty;
};

struct PrintedMedicationList {
    std::string title;
    // Who the patient is, where the patient lives, when the list was made and by whom.
    std::vector<std::string> patientLines;
    // The patient's name and personal number, at the head of every page.
    std::string pageHeader;
    // Current products as the view orders them, the warnings, and the past products when the
    // view shows them and there are any.
    std::vector<PrintedSection> sections;
};

// The list of a parsed patient document. `showPast` is the view's switch of past products;
// `signature` is the physician's from the login and `madeAt` the moment it is made. A product
// that lacks an element the list reads fails as the view's fill does (91).
PrintedMedicationList MedicationListOf(const platform::XmlDocument &patient, bool showPast,
                                       const std::string &signature, const std::string &madeAt);

// Reads the patient's file once, as the view's fill reads it (missing: 0x80040207, damaged:
// 0x80040204), writes nothing, and makes the list now.
PrintedMedicationList ReadPrintedMedicationList(const std::string &pnr, bool showPast,
                                                const std::string &signature);

} // namespace mirelo
