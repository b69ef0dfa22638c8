#pragma once

#include "platform/xml_document.h"

namespace mirelo {

// Takes the items of a prescription message into the patient's medication list: each item
// becomes a Product placed first in the list, older products of the same RegNr are retired,
// and their note and warning are inherited.
void TakeInMessageItems(const platform::XmlDocument &message, platform::XmlDocument &patient);

// Puts one new Product, taken over from the document it was built in, first in the patient's
// MedicalList, starting the list after the patient's other data if there is none. Every older
// product of the same RegNr is unchecked and hands on its history mark, and its note together
// with its warning when it has either; where they differ the oldest such product wins.
void MergeProductIntoMedicalList(platform::XmlDocument &patient, platform::XmlNode product);

} // namespace mirelo
