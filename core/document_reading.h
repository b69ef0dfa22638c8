#pragma once

#include "platform/xml_document.h"

#include <vector>

namespace mirelo {

// The first node at `base` + "/" + `path`, where `bases` are the nodes `base` selects. Where
// the base is one node, as in every file the program writes, only that node is searched, not
// the whole document again for every field.
platform::XmlNode FirstAt(const platform::XmlDocument &document,
                          const std::vector<platform::XmlNode> &bases, const char *base,
                          const char *path);

} // namespace mirelo
