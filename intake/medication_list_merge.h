#pragma once

#include "platform/xml_document.h"

#include <cstdint>
#include <optional>

namespace mirelo {

// Takes the items of a prescription message into the patient's medication list: each item
// becomes a Product placed first in the list, older products of the same RegNr are retired,
// and their note and warning are inherited. An item whose ID a product in the list has already
// is not taken in again, so a message read twice changes nothing the second time. Every item
// taken in stands in the MedicalList under Patient, or the patient file is damaged (0x80040204).
// Given the message's size, a message that would copy too much of itself is refused. Gives
// whether any item was taken in.
bool TakeInMessageItems(const platform::XmlDocument &message, platform::XmlDocument &patient,
                        std::optional<std::uintmax_t> messageBytes = std::nullopt);

// Puts one new Product, taken over from the document it was built in, first in the patient's
// MedicalList, starting the list after the patient's other data if there is none. Every older
// product of the same RegNr is unchecked and hands on its history mark, and its note together
// with its warning when it has either; where they differ the oldest such product wins.
void MergeProductIntoMedicalList(platform::XmlDocument &patient, platform::XmlNode product);

} // namespace mirelo
