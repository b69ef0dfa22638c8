#include "records/printed_medication_list.h"

#include "core/clock.h"
#include "records/medication_overview.h"
#include "records/patient_details.h"
#include "records/patient_file.h"
#include "records/product_fields.h"

#include <QString>
#include <cctype>
#include <initializer_list>
#include <unordered_map>
#include <unordered_set>

namespace mirelo {
namespace {

std::string trimmed(const std::string &text) {
    return QString::fromStdString(text).trimmed().toStdString();
}

// The parts that hold anything, between separators: a patient without a street or a product
// without a package size leaves no dangling comma or caption.
std::string joined(std::initializer_list<std::string> parts, const std::string &separator) {
    std::string text;
    for (const std::string &part : parts) {
        if (!part.empty()) {
            text += (text.empty() ? "" : separator) + part;
        }
    }
    return text;
}

// The date a timestamp begins with, in the local form and in the service's alike; a text the
// sender wrote otherwise is shown as it stands.
std::string DateOf(const std::string &timestamp) {
    const auto digit = [&timestamp](size_t at) {
        return std::isdigit(static_cast<unsigned char>(timestamp[at])) != 0;
    };
    const bool dated = timestamp.size() >= 10 && timestamp[4] == '-' && timestamp[7] == '-' &&
                       digit(0) && digit(1) && digit(2) && digit(3) && digit(5) && digit(6) &&
                       digit(8) && digit(9);
    return dated ? timestamp.substr(0, 10) : timestamp;
}

PrintedEntry currentEntry(const platform::XmlNode &product) {
    const std::string packages = ProductPackages(product);
    return {ProductDisplayName(product),
            {"Dosering: " + ProductField(product, "UnstructuredDosageAdmin"),
             joined({packages.empty() ? "" : "Förpackning: " + packages,
                     "Uttag: " + ProductRepeats(product),
                     "Ordinerat: " + DateOf(ProductField(product, "PrescribedTimestamp"))},
                    " · ")}};
}

// A product that intake replaced by a newer prescription was taken out by nobody.
PrintedEntry pastEntry(const platform::XmlNode &product) {
    const std::string by = ProductField(product, "TakenOutBy");
    const std::string at = DateOf(ProductField(product, "TakenOutTimestamp"));
    return {ProductDisplayName(product),
            {by.empty() && at.empty() ? "Ersatt av en senare förskrivning"
                                      : joined({"Utsatt " + at, by}, " av ")}};
}

// Every product number with a warning once, from its newest product, with the reason of its
// latest history record. The records are newest first, so the first one of a number is its
// latest; both lists are walked once.
std::vector<PrintedEntry> warningEntries(const platform::XmlDocument &patient) {
    std::unordered_map<std::string, std::string> latestReason;
    for (const platform::XmlNode &record : patient.selectNodes("//AllergicHistory[RegNr]")) {
        latestReason.try_emplace(record.firstElementAt("RegNr").text(),
                                 record.firstElementAt("AllergicInfoHistory").text());
    }
    std::vector<PrintedEntry> entries;
    std::unordered_set<std::string> listed;
    for (const platform::XmlNode &product : patient.elementsAt("//Product")) {
        const std::string regNr = ProductField(product, "RegNr");
        if (!ProductFlagIsSet(product, "Allergic") || !listed.insert(regNr).second) {
            continue;
        }
        PrintedEntry &entry = entries.emplace_back(
            PrintedEntry{ProductField(product, "ProductName"), {"Produktnummer: " + regNr}});
        if (const auto reason = latestReason.find(regNr);
            reason != latestReason.end() && !reason->second.empty()) {
            entry.lines.push_back("Orsak: " + reason->second);
        }
    }
    return entries;
}

} // namespace

PrintedMedicationList MedicationListOf(const platform::XmlDocument &patient, bool showPast,
                                       const std::string &signature, const std::string &madeAt) {
    const PatientDetails details = PatientDetailsOf(patient);
    const std::string name = trimmed(details.txtName);
    PrintedMedicationList list;
    list.title = "Läkemedelslista";
    list.patientLines = {
        "Namn: " + name, "Personnummer: " + details.txtPnr,
        "Adress: " + joined({trimmed(details.txtAddress), trimmed(details.txtZipCity)}, ", "),
        "Utskriven: " + madeAt, "Läkare: " + signature};
    list.pageHeader = "Läkemedelslista för " + joined({name, details.txtPnr}, ", ");

    const StandingProducts products = ProductsByStanding(patient);
    PrintedSection &current = list.sections.emplace_back(
        PrintedSection{"Aktuella läkemedel", {}, "Inga aktuella läkemedel"});
    for (const platform::XmlNode &product : products.current) {
        current.entries.push_back(currentEntry(product));
    }
    list.sections.push_back(
        {"Överkänslighet", warningEntries(patient), "Ingen känd överkänslighet registrerad"});
    if (showPast && !products.past.empty()) {
        PrintedSection &past =
            list.sections.emplace_back(PrintedSection{"Utsatta läkemedel", {}, {}});
        for (const platform::XmlNode &product : products.past) {
            past.entries.push_back(pastEntry(product));
        }
    }
    return list;
}

PrintedMedicationList ReadPrintedMedicationList(const std::string &pnr, bool showPast,
                                                const std::string &signature) {
    return MedicationListOf(ReadPatientFolderFile(pnr).patient, showPast, signature,
                            LocalTimestamp());
}

} // namespace mirelo
