#pragma once

#include "platform/xml_document.h"

namespace mirelo {

// Takes the items of a prescription message into the patient's medication list: each item
// becomes a Product placed first in the list, older products of the same RegNr are retired,
// and their note and warning are inherited.
void TakeInMessageItems(const platform::XmlDocument &message, platform::XmlDocument &patient);

} // namespace mirelo
