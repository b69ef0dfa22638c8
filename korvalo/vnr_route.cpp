#include "vnr_route.h"

#include "answers.h"
#include "platform/document_building.h"

#include <httplib.h>

namespace korvalo {
namespace {

using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

void answerVnrCheck(const httplib::Request &request, httplib::Response &response) {
    XmlDocument check;
    check.loadXML(request.body);
    if (check.parseError().errorCode != 0 || !check.selectSingleNode("/VnrCheck")) {
        AnswerError(response, 400, "Kontrollen kunde inte läsas: ett VnrCheck-dokument väntades.");
        return;
    }
    XmlDocument answer;
    const XmlNode root = mirelo::platform::StartDocument(answer, "VnrCheckResponse");
    for (const XmlNode &product : check.selectNodes("/VnrCheck/Product")) {
        const XmlNode checked = root.appendElement("Product");
        const XmlNode vnr = product.selectSingleNode("Vnr");
        checked.appendElement("Vnr", vnr ? vnr.text() : "");
        checked.appendElement("Status", vnr ? "0" : "1");
    }
    AnswerDocument(response, answer);
}

} // namespace

void AddVnrRoute(httplib::Server &server, bool fails) {
    server.Post("/mirelo/vnr.asp",
                [fails](const httplib::Request &request, httplib::Response &response) {
                    if (fails) {
                        AnswerError(response, 500, "Varunummerkontrollen är inte tillgänglig.");
                        return;
                    }
                    answerVnrCheck(request, response);
                });
}

} // namespace korvalo
