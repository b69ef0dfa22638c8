#include "handover_route.h"

#include "answers.h"
#include "prescribe_route.h"

#include <httplib.h>

namespace korvalo {
namespace {

using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

constexpr const char *HandoverPath = "/Public/Mirelo/InitXML.aspx";

// The client fills txtXml by script and posts it at once: the field is hidden, so the document,
// password and all, never stands on the screen.
const std::string EmptyForms = std::string(R"(<form method="post" action=")") + HandoverPath +
                               R"(">
<input type="hidden" name="txtXml">
<p>Sidan fylls i av Mirelo.</p>
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

// The service's answer to a user name and password that its users file doesn't pair.
void refuse(httplib::Response &response) {
    AnswerPage(response, 403, "Korvalo: inloggningen nekades",
               std::string("<p id=\"nekad\">") + WrongPairText + "</p>");
}

// The patient and the prescribing form, for a user who was let in.
void answerPatient(ServiceState &state, const User &user, const PatientDetails &patient,
                   const std::string &patientHtml, httplib::Response &response) {
    if (RefuseUnlessPersonalNumber(response, patient.pnr)) {
        return;
    }
    const std::string prescriber = PrescriberName(user);
    AnswerPage(response, 200, "Korvalo förskrivning",
               "<p id=\"forskrivare\">Förskrivare: " + EscapeHtml(prescriber) +
                   "</p>\n<h2>Patient</h2>\n" + patientHtml +
                   PrescribeFormHtml(patient, state.sessions.open(prescriber)));
}

// A bare number: the physician gives the name and address on the form.
void answerNumber(ServiceState &state, const User &user, const std::string &pnr,
                  httplib::Response &response) {
    PatientDetails patient;
    patient.pnr = pnr;
    answerPatient(state, user, patient,
                  "<table id=\"patient\">\n" + row("Personnummer", pnr) + "</table>\n", response);
}

void answerHandover(ServiceState &state, const XmlDocument &handover, httplib::Response &response) {
    const XmlNode prescriberInfo = handover.selectSingleNode("/Patient/PrescriberInfo");
    const User *user = prescriberInfo ? CheckUser(state.users, textOf(prescriberInfo, "Username"),
                                                  textOf(prescriberInfo, "Password"))
                                      : nullptr;
    if (user == nullptr) {
        refuse(response);
        return;
    }
    const XmlNode data = handover.selectSingleNode("/Patient/PatientData");
    if (!data) {
        answerNumber(state, *user, textOf(prescriberInfo, "Pnr"), response);
        return;
    }
    const PatientDetails patient{
        textOf(data, "Pnr"),        textOf(data, "FamilyName"), textOf(data, "FirstGivenName"),
        textOf(data, "StreetName"), textOf(data, "PostalCode"), textOf(data, "City")};
    answerPatient(
        state, *user, patient,
        "<table id=\"patient\">\n" + row("Personnummer", patient.pnr) +
            row("Namn", patient.givenName + " " + patient.familyName) +
            row("Adress", patient.streetName + ", " + patient.postalCode + " " + patient.city) +
            row("Allmän information", textOf(data, "GeneralInfo")) +
            "</table>\n<h2>Aktuell medicinering</h2>\n" + medicationTable(handover),
        response);
}

void receiveHandover(ServiceState &state, const httplib::Request &request,
                     httplib::Response &response) {
    if (!request.has_param("txtXml")) {
        // The dormant Login form: a user, a password and a number, no document.
        const User *user = CheckUser(state.users, request.get_param_value("txtUsername"),
                                     request.get_param_value("txtPassword"));
        if (user == nullptr) {
            refuse(response);
            return;
        }
        answerNumber(state, *user, request.get_param_value("txtPatientPnr"), response);
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
    answerHandover(state, handover, response);
}

} // namespace

void AddHandoverRoutes(httplib::Server &server, ServiceState &state) {
    server.Get(HandoverPath, [](const httplib::Request &, httplib::Response &response) {
        AnswerPage(response, 200, "Korvalo", EmptyForms);
    });
    // A hand-over is as long as its patient: hundreds of products, long notes. The library
    // refuses a form of more than 8 KiB that it reads itself, so this route reads its own.
    server.Post(HandoverPath, [&state](const httplib::Request &request, httplib::Response &response,
                                       const httplib::ContentReader &content) {
        httplib::Request form = request;
        content([&form](const char *data, std::size_t length) {
            form.body.append(data, length);
            return true;
        });
        httplib::detail::parse_query_text(form.body, form.params);
        receiveHandover(state, form, response);
    });
}

} // namespace korvalo
