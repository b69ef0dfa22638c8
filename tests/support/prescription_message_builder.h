#pragma once

#include <set>
#include <string>
#include <vector>

namespace mirelo::testing {

// One prescribed item of a NewPrescriptionMessage. Every element has a plain value unless a
// test names another; `omitted` leaves elements out by name (e.g. "Pnmn", "TimeValue").
struct MessageItem {
    std::string itemId = "1";
    std::string regNr = "100001";
    std::string productName = "Alvedon";
    std::string companyName = "Orion";
    std::string form = "Tablett";
    std::string strengthNumber = "500";
    std::string strengthUnit = "mg";
    std::string atcCode = "N02BE01";
    std::string packageSize = "20 st";
    std::string productId = "012345";
    std::string numberOfPackages = "1";
    std::string dosage = "1 tablett 3 gånger dagligen";
    std::string repeats = "1";
    std::string timeValue = "14";
    std::string timeUnit = "d";
    std::string careCoverageType = "HK";
    std::set<std::string> omitted{};
};

// A message as the prescribing service writes it: the subject of care, the prescriber, the
// moment of issue, one set of items. Values are UTF-8; `omitted` works as for an item.
struct PrescriptionMessage {
    std::string pnr = "191212121212";
    std::string familyName = "Åström";
    std::string givenName = "Märta";
    std::string street = "Ängsvägen 3";
    std::string postalCode = "411 05";
    std::string city = "Göteborg";
    std::string prescriber = "Doktor Björk";
    std::string issued = "2026-03-14T10:20:30";
    std::string setId = "S1";
    std::vector<MessageItem> items{};
    std::set<std::string> omitted{};
};

// The message's XML text, UTF-8, with the ISO-8859-1 declaration the service writes.
std::string prescriptionMessageText(const PrescriptionMessage &message);

// Writes the message to a file as the service leaves it: ISO-8859-1 bytes, written a minute ago.
void writePrescriptionMessage(const std::string &path, const PrescriptionMessage &message);

} // namespace mirelo::testing
