#pragma once

#include <optional>
#include <string>
#include <vector>

struct _xmlNode;

namespace mirelo::platform {

// The shapes of query the program asks most, answered by one walk of the tree instead of
// XPath, with XPath's answer: "Name" (the children of that name), "//A/B/C" (every C under a
// B under an A anywhere in the document), and either with one last condition "[Child = 'text']"
// (a child of that name whose text is exactly that). Names take no prefix, so they match
// elements in no namespace only.
struct ElementPath {
    bool fromRoot = false;
    std::vector<std::string> steps;
    struct Condition {
        std::string child;
        std::string text;
    };
    std::optional<Condition> condition;
};

// The query as such a path, or nothing when it has any other shape: XPath answers it then.
std::optional<ElementPath> ParseElementPath(const std::string &query);

// The elements the path selects from the context node, in document order; only the first when
// `firstOnly`, found without walking past it.
std::vector<_xmlNode *> SelectElements(_xmlNode *context, const ElementPath &path, bool firstOnly);

} // namespace mirelo::platform
