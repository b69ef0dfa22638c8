#include "handover_route.h"

#include "answers.h"
#include "prescribe_route.h"

#include <httplib.h>

namespace korvalo {
namespace {

using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

constexpr const char *HandoverPath = "/Public/Mirelo/InitXML.aspx";

const std::string EmptyForms = std::string(R"(<form method="post" action=")") + HandoverPath +
                               R"(">
<p><label>Överlämningsdokument<br><textarea name="txtXml" rows="12" cols="80"></textarea></label></p>
<p><input type="submit" value="Skicka"></p>
</form>
<form name="Login" method="post" action=")" +
                               HandoverPath + R"(">
<p><label>Användarnamn <input name="txtUsername"></label>
<label>Lösenord <input name="txtPassword" type="password"></label></p>
<p><label>Inkorg <input name="txtPath"></label>
<label>Version <input name="txtVersion"></label>
<label>Personnummer <input name="txtPatientPnr"></label></p>
<p><input type="submit" value="Logga in"></p>
</form>)";

std::string textOf(const XmlNode &context, const char *query) {
    const XmlNode node = context.selectSingleNode(query);
    return node ? node.text() : "";
}

std::string row(const std::string &label, const std::string &value) {
    return "<tr><th>" + EscapeHtml(label) + "</th><td>" + EscapeHtml(value) + "</td></tr>\n";
}

std::string medicationTable(const XmlDocument &handover) {
    const auto products = handover.selectNodes("/Patient/MedicalList/Product");
    if (products.empty()) {
        return "<p>Ingen aktuell medicinering.</p>\n";
    }
    std::string html = "<table id=\"medicinering\">\n<tr><th>Läkemedel</th><th>Styrka</th>"
                       "<th>Form</th><th>Dosering</th><th>RegNr</th><th>Förskriven</th></tr>\n";
    for (const XmlNode &product : products) {
        html += "<tr>";
        for (const char *field : {"ProductName", "Str", "Form", "UnstructuredDosageAdmin", "RegNr",
                                  "PrescribedTimestamp"}) {
            html += "<td>" + EscapeHtml(textOf(product, field)) + "</td>";
        }
        html += "</tr>\n";
    }
    return html + "</table>\n";
}

void answerHandover(const XmlDocument &handover, httplib::Response &response) {
    const XmlNode data = handover.selectSingleNode("/Patient/PatientData");
    PatientOnPage patient{data ? textOf(data, "Pnr")
                               : textOf(handover.asNode(), "//PrescriberInfo/Pnr"),
                          textOf(handover.asNode(), "//PatientData/FamilyName"),
                          textOf(handover.asNode(), "//PatientData/FirstGivenName"),
                          textOf(handover.asNode(), "//PatientData/StreetName"),
                          textOf(handover.asNode(), "//PatientData/PostalCode"),
                          textOf(handover.asNode(), "//PatientData/City"),
                          textOf(handover.asNode(), "//PrescriberInfo/Username")};

    std::string body =
        "<h2>Patient</h2>\n<table id=\"patient\">\n" + row("Personnummer", patient.pnr) +
        row("Namn", patient.givenName + " " + patient.familyName) +
        row("Adress", patient.streetName + ", " + patient.postalCode + " " + patient.city) +
        row("Allmän information", textOf(handover.asNode(), "//PatientData/GeneralInfo")) +
        "</table>\n<h2>Aktuell medicinering</h2>\n" + medicationTable(handover);
    body += PrescribeFormHtml(patient);
    AnswerPage(response, 200, "Korvalo förskrivning", body);
}

void receiveHandover(const httplib::Request &request, httplib::Response &response) {
    if (!request.has_param("txtXml")) {
        // The dormant Login form: a number and a user, no document.
        PatientOnPage patient;
        patient.pnr = request.get_param_value("txtPatientPnr");
        patient.username = request.get_param_value("txtUsername");
        AnswerPage(response, 200, "Korvalo förskrivning",
                   "<h2>Patient</h2>\n<table id=\"patient\">\n" + row("Personnummer", patient.pnr) +
                       "</table>\n" + PrescribeFormHtml(patient));
        return;
    }
    const std::string text = request.get_param_value("txtXml");
    // The browser posts the text as it holds it, decoded, whatever the declaration says.
    XmlDocument handover;
    handover.loadXML(text);
    if (handover.parseError().errorCode != 0 || !handover.selectSingleNode("/Patient")) {
        AnswerError(response, 400,
                    "Överlämningsdokumentet kunde inte läsas: " +
                        (handover.parseError().errorCode != 0 ? handover.parseError().reason
                                                              : "roten Patient saknas."));
        return;
    }
    answerHandover(handover, response);
}

} // namespace

void AddHandoverRoutes(httplib::Server &server) {
    server.Get(HandoverPath, [](const httplib::Request &, httplib::Response &response) {
        AnswerPage(response, 200, "Korvalo", EmptyForms);
    });
    server.Post(HandoverPath, receiveHandover);
}

} // namespace korvalo
