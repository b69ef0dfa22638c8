#include "platform/element_path.h"

#include <algorithm>
#include <libxml/tree.h>
#include <memory>

namespace mirelo::platform {
namespace {

bool isNameCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

bool isName(const std::string &text) {
    return !text.empty() && !(text[0] >= '0' && text[0] <= '9') &&
           std::all_of(text.begin(), text.end(), isNameCharacter);
}

std::string trimmed(const std::string &text) {
    const size_t first = text.find_first_not_of(' ');
    const size_t last = text.find_last_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

// "Child = 'text'" or with double quotes; a quote of the same kind inside the text is no
// literal at all, and XPath is left to refuse it.
std::optional<ElementPath::Condition> parseCondition(const std::string &text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return std::nullopt;
    }
    const std::string child = trimmed(text.substr(0, equals));
    const std::string literal = trimmed(text.substr(equals + 1));
    if (!isName(child) || literal.size() < 2 || (literal[0] != '"' && literal[0] != '\'') ||
        literal.back() != literal[0]) {
        return std::nullopt;
    }
    const std::string inner = literal.substr(1, literal.size() - 2);
    if (inner.find(literal[0]) != std::string::npos) {
        return std::nullopt;
    }
    return ElementPath::Condition{child, inner};
}

bool isElementNamed(const xmlNode *node, const std::string &name) {
    return node->type == XML_ELEMENT_NODE && node->ns == nullptr &&
           xmlStrEqual(node->name, reinterpret_cast<const xmlChar *>(name.c_str()));
}

// XPath's string value of an element: all the text inside it.
bool hasText(xmlNode *element, const std::string &text) {
    const xmlNode *only = element->children;
    if (only == nullptr) {
        return text.empty();
    }
    if (only->next == nullptr && only->type == XML_TEXT_NODE) {
        return xmlStrEqual(only->content, reinterpret_cast<const xmlChar *>(text.c_str())) ||
               (only->content == nullptr && text.empty());
    }
    const std::unique_ptr<xmlChar, void (*)(void *)> content(xmlNodeGetContent(element), xmlFree);
    const char *value = content ? reinterpret_cast<const char *>(content.get()) : "";
    return text == value;
}

bool meetsCondition(xmlNode *element, const std::optional<ElementPath::Condition> &condition) {
    if (!condition) {
        return true;
    }
    for (xmlNode *child = element->children; child != nullptr; child = child->next) {
        if (isElementNamed(child, condition->child) && hasText(child, condition->text)) {
            return true;
        }
    }
    return false;
}

// Whether the node ends the chain of steps: it has the last name and meets the condition, its
// parent has the name before, and so on up to the first step.
bool endsPath(xmlNode *node, const ElementPath &path) {
    if (!isElementNamed(node, path.steps.back()) || !meetsCondition(node, path.condition)) {
        return false;
    }
    xmlNode *ancestor = node;
    for (size_t step = path.steps.size() - 1; step-- > 0;) {
        ancestor = ancestor->parent;
        if (ancestor == nullptr || !isElementNamed(ancestor, path.steps[step])) {
            return false;
        }
    }
    return true;
}

// The next node after `node` in document order within the tree under `top`. As XPath's
// descendant axis, it doesn't go into the document type or through an entity reference into
// the entity's declaration.
xmlNode *nextInDocumentOrder(xmlNode *node, xmlNode *top) {
    const bool leaf = node->type == XML_DTD_NODE || node->type == XML_ENTITY_REF_NODE ||
                      node->type == XML_ATTRIBUTE_NODE || node->type == XML_ENTITY_DECL;
    if (node->children != nullptr && !leaf) {
        return node->children;
    }
    while (node != top) {
        if (node->next != nullptr) {
            return node->next;
        }
        node = node->parent;
    }
    return nullptr;
}

} // namespace

std::optional<ElementPath> ParseElementPath(const std::string &query) {
    ElementPath path;
    std::string rest = query;
    if (rest.compare(0, 2, "//") == 0) {
        path.fromRoot = true;
        rest.erase(0, 2);
    }
    if (!rest.empty() && rest.back() == ']') {
        const size_t open = rest.find('[');
        if (open == std::string::npos) {
            return std::nullopt;
        }
        path.condition = parseCondition(rest.substr(open + 1, rest.size() - open - 2));
        if (!path.condition) {
            return std::nullopt;
        }
        rest.erase(open);
    }
    for (size_t start = 0;;) {
        const size_t slash = rest.find('/', start);
        path.steps.push_back(rest.substr(start, slash - start));
        if (!isName(path.steps.back())) {
            return std::nullopt;
        }
        if (slash == std::string::npos) {
            break;
        }
        start = slash + 1;
    }
    // A relative path of more than one step is left to XPath.
    if (!path.fromRoot && path.steps.size() != 1) {
        return std::nullopt;
    }
    return path;
}

std::vector<xmlNode *> SelectElements(xmlNode *context, const ElementPath &path, bool firstOnly) {
    std::vector<xmlNode *> found;
    if (!path.fromRoot) {
        for (xmlNode *child = context->children; child != nullptr; child = child->next) {
            if (endsPath(child, path)) {
                found.push_back(child);
                if (firstOnly) {
                    break;
                }
            }
        }
        return found;
    }
    // "//" starts at the document, wherever the context node is.
    xmlNode *top = reinterpret_cast<xmlNode *>(context->doc);
    if (top == nullptr) {
        return found;
    }
    for (xmlNode *node = top->children; node != nullptr; node = nextInDocumentOrder(node, top)) {
        if (endsPath(node, path)) {
            found.push_back(node);
            if (firstOnly) {
                break;
            }
        }
    }
    return found;
}

} // namespace mirelo::platform
