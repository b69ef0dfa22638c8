#include "prescribe_route.h"

#include "answers.h"
#include "prescription_message.h"

#include <httplib.h>

namespace korvalo {
namespace {

std::string hidden(const char *name, const std::string &value) {
    return std::string("<input type=\"hidden\" name=\"") + name + "\" value=\"" +
           EscapeHtml(value) + "\">\n";
}

struct PatientField {
    const char *name;
    const char *label;
    std::string PatientDetails::*value;
    bool required;
};

// The patient's fields that a message carries besides the number, in the order they are asked.
constexpr PatientField PatientFields[] = {
    {"familyName", "Efternamn", &PatientDetails::familyName, true},
    {"givenName", "Förnamn", &PatientDetails::givenName, true},
    {"streetName", "Gatuadress", &PatientDetails::streetName, false},
    {"postalCode", "Postnummer", &PatientDetails::postalCode, false},
    {"city", "Ort", &PatientDetails::city, false}};

// A patient handed over with a name goes on as it came; for a bare number the physician types
// the name and address, so that the message gives the new patient file a name.
std::string patientFieldsHtml(const PatientDetails &patient) {
    std::string html = hidden("pnr", patient.pnr);
    if (!patient.familyName.empty() || !patient.givenName.empty()) {
        for (const PatientField &field : PatientFields) {
            html += hidden(field.name, patient.*field.value);
        }
        return html;
    }
    html += "<p>Patienten kom utan namn: fyll i namn och adress.</p>\n<table "
            "id=\"patientuppgifter\">\n";
    for (const PatientField &field : PatientFields) {
        html += std::string("<tr><th><label for=\"") + field.name + "\">" + field.label +
                "</label></th><td><input id=\"" + field.name + "\" name=\"" + field.name +
                "\" value=\"" + EscapeHtml(patient.*field.value) + "\"" +
                (field.required ? " required" : "") + "></td></tr>\n";
    }
    return html + "</table>\n";
}

void prescribe(ServiceState &state, const httplib::Request &request, httplib::Response &response) {
    if (state.inbox.empty()) {
        AnswerError(response, 503,
                    "Korvalo startades utan inkorg (--inbox): inget kan förskrivas.");
        return;
    }
    const std::optional<std::string> prescriber =
        state.sessions.prescriberOf(request.get_param_value("session"));
    if (!prescriber) {
        AnswerError(response, 403,
                    "Förskrivningen hör inte till någon inloggning. Skicka patienten från Mirelo "
                    "på nytt.");
        return;
    }
    Prescription prescription;
    prescription.patient.pnr = request.get_param_value("pnr");
    if (RefuseUnlessPersonalNumber(response, prescription.patient.pnr)) {
        return;
    }
    prescription.prescriber = *prescriber;
    prescription.issued = IssueTimestampNow();
    for (const PatientField &field : PatientFields) {
        std::string &value = prescription.patient.*field.value;
        value = request.get_param_value(field.name);
        if (field.required && value.empty()) {
            AnswerError(response, 400, "Fyll i patientens efternamn och förnamn.");
            return;
        }
    }
    std::string receipt;
    for (std::size_t i = 0; i < request.get_param_value_count("vnr"); ++i) {
        const std::string vnr = request.get_param_value("vnr", i);
        const CatalogueProduct *product = FindProduct(vnr);
        if (product == nullptr) {
            AnswerError(response, 400, "Okänt varunummer: " + vnr);
            return;
        }
        PrescribedItem item;
        item.product = *product;
        item.dosage = request.get_param_value("dosage_" + vnr);
        item.numberOfPackages = request.get_param_value("packages_" + vnr);
        if (item.numberOfPackages.empty()) {
            item.numberOfPackages = "1";
        }
        prescription.items.push_back(item);
        receipt += "<li>" +
                   EscapeHtml(product->name + " " + product->strengthNumber + " " +
                              product->strengthUnit + ", " + item.dosage) +
                   "</li>\n";
    }
    if (prescription.items.empty()) {
        AnswerError(response, 400, "Välj minst ett läkemedel att förskriva.");
        return;
    }
    const std::string path = WritePrescriptionMessage(state.inbox, prescription);
    AnswerPage(response, 200, "Receptet är skickat",
               "<p id=\"kvitto\">Förskrivet till " + EscapeHtml(prescription.patient.pnr) + " av " +
                   EscapeHtml(prescription.prescriber) + ":</p>\n<ul>\n" + receipt +
                   "</ul>\n<p>Meddelande: " + EscapeHtml(path.substr(path.find_last_of('/') + 1)) +
                   "</p>");
}

} // namespace

std::string PrescribeFormHtml(const PatientDetails &patient, const std::string &sessionKey) {
    std::string html = std::string("<h2>Förskriv</h2>\n<form name=\"Prescribe\" method=\"post\" "
                                   "action=\"") +
                       PrescribePath + "\">\n" + hidden("session", sessionKey) +
                       patientFieldsHtml(patient) +
                       "<table id=\"katalog\">\n<tr><th></th><th>Varunr</th><th>RegNr</th>"
                       "<th>Namn</th><th>Företag</th><th>Form</th><th>Styrka</th><th>ATC</th>"
                       "<th>Förpackning</th><th>Dosering</th><th>Antal</th></tr>\n";
    for (const CatalogueProduct &product : Catalogue()) {
        html += "<tr><td><input type=\"checkbox\" name=\"vnr\" value=\"" + EscapeHtml(product.vnr) +
                "\"></td>";
        for (const std::string &value :
             {product.vnr, product.regNr, product.name, product.company, product.form,
              product.strengthNumber + " " + product.strengthUnit, product.atcCode,
              product.packageSize}) {
            html += "<td>" + EscapeHtml(value) + "</td>";
        }
        html += "<td><input name=\"dosage_" + EscapeHtml(product.vnr) +
                "\" value=\"1 tablett dagligen\"></td><td><input name=\"packages_" +
                EscapeHtml(product.vnr) + "\" value=\"1\" size=\"3\"></td></tr>\n";
    }
    return html + "</table>\n<p><input type=\"submit\" value=\"Förskriv\"></p>\n</form>";
}

void AddPrescribeRoute(httplib::Server &server, ServiceState &state) {
    server.Post(PrescribePath,
                [&state](const httplib::Request &request, httplib::Response &response) {
                    prescribe(state, request, response);
                });
}

} // namespace korvalo
