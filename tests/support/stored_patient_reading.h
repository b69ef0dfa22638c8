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

// The element children of the first node of the stored patient file that the query selects.
Fields storedFields(const std::string &path, const std::string &query);

} // namespace mirelo::testing
