#pragma once

#include <cstddef>
#include <string>

struct _xmlDoc;

namespace mirelo::platform {

// A document's entity references may stand for at most ten times the document's own size in
// text, and never for more than 16 MiB, however large the document. Beyond that a small file
// would grow into a huge one wherever its text is read or copied.
inline constexpr size_t EntityExpansionFactor = 10;
inline constexpr size_t EntityExpansionCap = size_t{16} * 1024 * 1024;

// Whether the text that the entity references of a parsed document stand for, counted at every
// reference, in element content and attribute values alike, is more than a document of `size`
// bytes may have. Character references and the five predefined entities are text already and
// count for nothing.
bool ExceedsEntityExpansionLimit(_xmlDoc *document, size_t size);

// The reason given for such a document.
std::string EntityExpansionRefusal();

} // namespace mirelo::platform
