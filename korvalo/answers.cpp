#include "answers.h"

#include "core/personal_number.h"

#include <httplib.h>

namespace korvalo {

std::string EscapeHtml(const std::string &text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

void AnswerPage(httplib::Response &response, int status, const std::string &title,
                const std::string &bodyHtml) {
    response.status = status;
    response.set_content("<!DOCTYPE html>\n<html lang=\"sv\"><head><meta charset=\"utf-8\">"
                         "<title>" +
                             EscapeHtml(title) + "</title></head>\n<body>\n<h1>" +
                             EscapeHtml(title) + "</h1>\n" + bodyHtml + "\n</body></html>\n",
                         "text/html; charset=utf-8");
}

void AnswerError(httplib::Response &response, int status, const std::string &message) {
    AnswerPage(response, status, "Korvalo: fel", "<p>" + EscapeHtml(message) + "</p>");
}

bool RefuseUnlessPersonalNumber(httplib::Response &response, const std::string &pnr) {
    if (mirelo::IsPersonalNumber(pnr)) {
        return false;
    }
    AnswerError(response, 400, "\"" + pnr + "\" är inget personnummer.");
    return true;
}

void AnswerDocument(httplib::Response &response, const mirelo::platform::XmlDocument &document) {
    response.status = 200;
    response.set_content(document.encodedXml(), "text/xml; charset=ISO-8859-1");
}

} // namespace korvalo
