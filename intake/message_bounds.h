#pragma once

#include "platform/xml_document.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace mirelo {

// What one prescription message may bring into a patient file. A real prescription stays far
// below both bounds, a list of hundreds of items with long dosage texts included; a message
// beyond either is refused as damaged and stays in the inbox, with the patient file untouched.

// The longest text a message may hand one field of the patient file, in bytes.
inline constexpr std::size_t LongestFieldText = 32 * 1024;

// How many bytes the stored patient file may grow by for a message of this many bytes. Every
// product repeats the prescriber and the moment of issue that its message names once, so a
// product takes somewhat more room in the file than its item in the message; never four times.
std::uintmax_t MessageGrowthLimit(std::uintmax_t messageBytes);

// Refuses the message unless the stored patient file may grow by this many bytes for it.
void CheckGrowth(std::uintmax_t growth, std::uintmax_t messageBytes);

// The text of an element of the message, refusing the message if it is longer than a field
// may be.
std::string FieldText(const platform::XmlNode &element);

// Raises 0x80040206 "Receptfil är skadad." with the reason, as for a message that can't be read.
[[noreturn]] void RefuseMessage(const std::string &reason);

} // namespace mirelo
