#pragma once

#include "platform/xml_document.h"

#include <string>
#include <utility>
#include <vector>

namespace mirelo::testing {

// A stored patient file read back by the scrambling rule itself, not by the code under test,
// and parsed. The test fails if the bytes don't unscramble to a well-formed document.
platform::XmlDocument readStoredPatient(const std::string &path);

// The element children of a node as name and text, in document order, so that a test can
// compare a whole record at once.
using Fields = std::vector<std::pair<std::string, std::string>>;
Fields childFields(const platform::XmlNode &node);

} // namespace mirelo::testing
