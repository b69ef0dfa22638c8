#pragma once

#include "platform/xml_document.h"

#include <string>

namespace httplib {
struct Response;
}

namespace korvalo {

// Text made safe to stand in HTML, in element content and in quoted attribute values.
std::string EscapeHtml(const std::string &text);

// A whole page, UTF-8, with a heading and a body that is already HTML.
void AnswerPage(httplib::Response &response, int status, const std::string &title,
                const std::string &bodyHtml);

// An error page: what went wrong, in words only, escaped.
void AnswerError(httplib::Response &response, int status, const std::string &message);

// The service opens and prescribes for a personal number only: for anything else it answers
// with an error page, and this gives true.
bool RefuseUnlessPersonalNumber(httplib::Response &response, const std::string &pnr);

// A document of ours, in the ISO-8859-1 its declaration names, as a client parses it: a
// character that code lacks, such as "’" or "€", goes as a character reference, not as a
// byte that the declaration reads as a control.
void AnswerDocument(httplib::Response &response, const mirelo::platform::XmlDocument &document);

} // namespace korvalo
