#pragma once

#include <set>
#include <string>
#include <vector>

namespace mirelo::testing {

// One prescribed item of a NewPrescriptionMessage. Every element has a plain value unless a
// test names another; `omitted` leaves elements out by name (e.g. "Pnmn", "TimeValue").
struct MessageItem {
    std::string itemId = "1", regNr = "100001", productName = "Alvedon", companyName = "Orion",
                form = "Tablett", strengthNumber = "500", strengthUnit = "mg", atcCode = "N02BE01",
                packageSize = "20 st", productId = "012345", numberOfPackages = "1";
    std::string dosage = "1 tablett 3 gånger dagligen", repeats = "1", timeValue = "14",
                timeUnit = "d", careCoverageType = "HK";
    std::set<std::string> omitted{};
};

// A message as the prescribing service writes it: the subject of care, the prescriber, the
// moment of issue, one set of items. Values are UTF-8; `omitted` works as for an item.
struct PrescriptionMessage {
    std::string pnr = "191212121212", familyName = "Åström", givenName = "Märta",
                street = "Ängsvägen 3", postalCode = "411 05", city = "Göteborg";
    std::string prescriber = "Doktor Björk", issued = "2026-03-14T10:20:30", setId = "S1";
    std::vector<MessageItem> items{};
    std::set<std::string> omitted{};
};

// The message's XML text, UTF-8, with the ISO-8859-1 declaration the service writes.
std::string prescriptionMessageText(const PrescriptionMessage &message);

// Writes the message to a file as the service leaves it: ISO-8859-1 bytes, written a minute ago.
void writePrescriptionMessage(const std::string &path, const PrescriptionMessage &message);

} // namespace mirelo::testing
