#include "platform/parse_failure_reason.h"

#include <libxml/xmlerror.h>

namespace mirelo::platform {
namespace {

std::string text(const char *value) {
    return value != nullptr ? value : "";
}

// The failures a damaged or hand-edited file runs into, told in the user's language. The
// parser names the element or entity involved in str1 and str2 where there is one.
std::string knownReason(const xmlError &error) {
    switch (error.code) {
    case XML_ERR_DOCUMENT_EMPTY:
    case XML_ERR_DOCUMENT_START:
        return "Dokumentet är tomt eller börjar inte med ett element.";
    case XML_ERR_DOCUMENT_END:
    case XML_ERR_EXTRA_CONTENT:
        return "Det finns innehåll efter dokumentets slut.";
    case XML_ERR_TAG_NOT_FINISHED:
        return "Dokumentet tar slut innan elementet " + text(error.str1) + " är avslutat.";
    case XML_ERR_TAG_NAME_MISMATCH:
        return "Sluttaggen " + text(error.str2) + " passar inte till starttaggen " +
               text(error.str1) + ".";
    case XML_ERR_GT_REQUIRED:
        return "Tecknet '>' saknas.";
    case XML_ERR_LTSLASH_REQUIRED:
        return "Sluttaggen saknas.";
    case XML_ERR_NAME_REQUIRED:
        return "Ett namn saknas där ett element eller en entitet ska stå.";
    case XML_ERR_INVALID_CHAR:
        return "Otillåtet tecken i dokumentet.";
    case XML_ERR_INVALID_HEX_CHARREF:
    case XML_ERR_INVALID_DEC_CHARREF:
    case XML_ERR_INVALID_CHARREF:
        return "Teckenreferensen anger ett otillåtet tecken.";
    case XML_ERR_INVALID_ENCODING:
        return "Texten stämmer inte med dokumentets teckenkodning.";
    case XML_ERR_UNKNOWN_ENCODING:
    case XML_ERR_UNSUPPORTED_ENCODING:
        return "Dokumentets teckenkodning stöds inte.";
    case XML_ERR_ENTITYREF_SEMICOL_MISSING:
        return "Semikolon saknas efter entitetsreferensen.";
    case XML_ERR_UNDECLARED_ENTITY:
    case XML_WAR_UNDECLARED_ENTITY:
        return "Entiteten " + text(error.str1) + " är inte deklarerad.";
    case XML_ERR_ENTITY_LOOP:
        return "Entiteterna refererar till varandra utan slut.";
    case XML_NS_ERR_UNDEFINED_NAMESPACE:
        return "Prefixet " + text(error.str1) + " är inte deklarerat.";
    case XML_ERR_ATTRIBUTE_NOT_STARTED:
    case XML_ERR_ATTRIBUTE_NOT_FINISHED:
    case XML_ERR_ATTRIBUTE_WITHOUT_VALUE:
    case XML_ERR_LT_IN_ATTRIBUTE:
        return "Ett attribut är felaktigt skrivet.";
    case XML_ERR_ATTRIBUTE_REDEFINED:
    case XML_NS_ERR_ATTRIBUTE_REDEFINED:
        return "Ett attribut förekommer två gånger.";
    case XML_ERR_COMMENT_NOT_FINISHED:
        return "En kommentar är inte avslutad.";
    case XML_ERR_CDATA_NOT_FINISHED:
        return "Ett CDATA-avsnitt är inte avslutat.";
    case XML_ERR_PI_NOT_STARTED:
    case XML_ERR_PI_NOT_FINISHED:
        return "En bearbetningsinstruktion är felaktigt skriven.";
    case XML_ERR_RESERVED_XML_NAME:
        return "XML-deklarationen får bara stå först i dokumentet.";
    case XML_ERR_XMLDECL_NOT_STARTED:
    case XML_ERR_XMLDECL_NOT_FINISHED:
    case XML_ERR_VERSION_MISSING:
        return "XML-deklarationen är felaktigt skriven.";
    case XML_ERR_SPACE_REQUIRED:
        return "Ett blanksteg saknas.";
    case XML_ERR_NO_MEMORY:
        return "Minnet räcker inte för dokumentet.";
    default:
        return "Dokumentet är inte korrekt XML (felkod " + std::to_string(error.code) + ").";
    }
}

} // namespace

std::string ParseFailureReason(const xmlError &error) {
    std::string reason = knownReason(error);
    if (error.line > 0) {
        reason +=
            " (rad " + std::to_string(error.line) + ", kolumn " + std::to_string(error.int2) + ")";
    }
    return reason;
}

} // namespace mirelo::platform
