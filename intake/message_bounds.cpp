#include "intake/message_bounds.h"

#include "core/mirelo_error.h"

namespace mirelo {

std::uintmax_t MessageGrowthLimit(std::uintmax_t messageBytes) {
    return 4 * messageBytes;
}

void CheckGrowth(std::uintmax_t growth, std::uintmax_t messageBytes) {
    if (growth > MessageGrowthLimit(messageBytes)) {
        RefuseMessage("Receptet skulle göra patientfilen mer än " +
                      std::to_string(MessageGrowthLimit(messageBytes)) +
                      " byte större, fyra gånger receptets egen storlek.");
    }
}

std::string FieldText(const platform::XmlNode &element) {
    std::string text = element.text();
    if (text.size() > LongestFieldText) {
        RefuseMessage("Fältet " + element.nodeName() + " har mer än " +
                      std::to_string(LongestFieldText) + " byte text.");
    }
    return text;
}

void RefuseMessage(const std::string &reason) {
    throw MireloError(errors::PrescriptionFileDamaged, withReason("Receptfil är skadad.", reason));
}

} // namespace mirelo
