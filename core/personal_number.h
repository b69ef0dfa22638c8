#pragma once

#include <string>

namespace mirelo {

// A Swedish personal number as a person writes it: ten or twelve digits, with or without the
// hyphen, or the plus of someone past a hundred, before the last four. Only such a number names
// a patient: it becomes the patient's file name and is what the service is handed.
bool IsPersonalNumber(const std::string &text);

} // namespace mirelo
