#pragma once

#include "platform/xml_document.h"

#include <array>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace mirelo::testing {

// One Product of a patient file as a test wants it; every element of the ordinary product
// has a plain value unless a test names another, and `omitted` leaves elements out.
struct ProductFields {
    std::string id = "1_1", regNr = "100001", productName = "Alvedon", companyName = "Orion",
                form = "Tablett", strength = "500 mg", atcCode = "N02BE01", numberOfPackages = "1";
    std::optional<std::string> packageSize = "20 st";
    std::string dosage = "1 tablett 3 gånger dagligen", repeats = "1", prescribedBy = "Doktor Ek",
                prescribedTimestamp = "2026-01-10T09:30:00", checked = "1";
    std::string note{}, noteBy{}, noteTimestamp{};
    std::string insertedBy = "Doktor Ek", insertedTimestamp = "2026-01-10T09:30:00", takenOutBy{},
                takenOutTimestamp{};
    std::string allergic = "0", allergicHistory = "0";
    std::set<std::string> omitted{};
};

// The plain text of a patient file, UTF-8, its products in the order given (newest first).
// Without products there is no MedicalList, as for a patient whose first message is pending.
// The general note is its text, its author and its time; a History given follows the list.
std::string patientText(const std::string &pnr, const std::string &familyName,
                        const std::string &givenName, const std::vector<ProductFields> &products,
                        const std::array<std::string, 3> &generalNote = {},
                        const std::string &history = {});

// One record of the History of a product's warning, as a screen appends it.
std::string historyRecord(const std::string &regNr, const std::string &status,
                          const std::string &reason, const std::string &by,
                          const std::string &time);

// The bytes the program stores for a patient file of this UTF-8 text: its document as written,
// scrambled.
std::string storedBytes(const std::string &utf8Text);

// Stores UTF-8 text as a patient file in the data folder under the given file name,
// scrambled by the rule itself.
void storePatientFile(const std::string &fileName, const std::string &utf8Text);

// Stores the patient file of `pnr` with the products given, named Tolvan Tolvansson unless told.
void storePatient(const std::string &pnr, const std::vector<ProductFields> &products,
                  const std::string &familyName = "Tolvansson",
                  const std::string &givenName = "Tolvan");

std::string utf8ToLatin1(const std::string &utf8);

// A document parsed from UTF-8 text; the test fails if the text isn't well-formed.
platform::XmlDocument parsedXml(const std::string &text);

// A stored patient file read back by the scrambling rule itself, not by the code under test,
// and parsed. The test fails if the bytes don't unscramble to a well-formed document.
platform::XmlDocument readStoredPatient(const std::string &path);

// The texts of the nodes a query selects, each after its name if asked and before a "|".
std::string texts(const platform::XmlDocument &document, const std::string &query,
                  bool named = false);

} // namespace mirelo::testing
