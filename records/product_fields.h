#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// A Product of the patient file as the screens show it. Every element read here is expected to
// be there: a missing one is the run time's "object not set" (91).

std::string ProductField(const platform::XmlNode &product, const char *name);

// Flags are numeric text: an empty or wordy flag fails (13) instead of reading as "no".
bool ProductFlagIsSet(const platform::XmlNode &product, const char *name);

// Whether one of the product's Checked elements reads exactly `value`. A hand-edited product
// with two of them stands wherever either points, current and past at once.
bool ProductCheckedIs(const platform::XmlNode &product, const std::string &value);

// Name, form, strength and maker, one blank between each two.
std::string ProductDisplayName(const platform::XmlNode &product);

// Number of packages, " X ", package size. Only the package size may be absent, and then the
// text is empty; an empty size still reads "2 X ".
std::string ProductPackages(const platform::XmlNode &product);

// How many times the prescription may be dispensed: DispensingRepeatNumber, then " ggr".
std::string ProductRepeats(const platform::XmlNode &product);

// The parser gives a note's line breaks as single line feeds; a text box breaks with CR LF.
std::string WithCrLf(const std::string &text);

} // namespace mirelo
