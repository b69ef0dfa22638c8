#include "platform/entity_expansion.h"

#include <algorithm>
#include <libxml/entities.h>
#include <libxml/tree.h>
#include <unordered_map>

namespace mirelo::platform {
namespace {

// Adds up the text of entity references, each entity's text counted once and then looked up.
// Every sum stops just above the limit, so that entities nested in entities can't overflow it.
class ExpansionCount {
  public:
    ExpansionCount(xmlDocPtr document, size_t limit) : document_(document), ceiling_(limit + 1) {}

    // The text that references inside the node stand for.
    size_t referencedText(xmlNodePtr node) {
        size_t total = 0;
        for (; node != nullptr && total < ceiling_; node = node->next) {
            if (node->type == XML_ENTITY_REF_NODE) {
                total = add(total, entityText(node));
            } else if (node->type == XML_ELEMENT_NODE) {
                total = add(total, referencedText(reinterpret_cast<xmlNodePtr>(node->properties)));
                total = add(total, referencedText(node->children));
            } else if (node->type == XML_ATTRIBUTE_NODE) {
                total = add(total, referencedText(node->children));
            }
        }
        return total;
    }

  private:
    size_t add(size_t a, size_t b) const { return std::min(a + std::min(b, ceiling_), ceiling_); }

    // All the text of the nodes, references expanded.
    size_t wholeText(xmlNodePtr node) {
        size_t total = 0;
        for (; node != nullptr && total < ceiling_; node = node->next) {
            if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
                total = add(total, xmlStrlen(node->content));
            } else if (node->type == XML_ENTITY_REF_NODE) {
                total = add(total, entityText(node));
            } else if (node->type == XML_ELEMENT_NODE) {
                total = add(total, wholeText(reinterpret_cast<xmlNodePtr>(node->properties)));
                total = add(total, wholeText(node->children));
            } else if (node->type == XML_ATTRIBUTE_NODE) {
                total = add(total, wholeText(node->children));
            }
        }
        return total;
    }

    size_t entityText(xmlNodePtr reference) {
        xmlEntityPtr entity = xmlGetDocEntity(document_, reference->name);
        if (entity == nullptr) {
            return 0;
        }
        if (const auto known = counted_.find(entity); known != counted_.end()) {
            return known->second;
        }
        // An entity met again while its own text is being counted refers to itself.
        counted_[entity] = ceiling_;
        const size_t size = entity->children != nullptr
                                ? wholeText(entity->children)
                                : static_cast<size_t>(std::max(xmlStrlen(entity->content), 0));
        counted_[entity] = size;
        return size;
    }

    xmlDocPtr document_;
    size_t ceiling_;
    std::unordered_map<xmlEntityPtr, size_t> counted_;
};

} // namespace

bool ExceedsEntityExpansionLimit(xmlDocPtr document, size_t size) {
    // Without entities of its own a document's text is never longer than the document.
    if (document->intSubset == nullptr || document->intSubset->entities == nullptr) {
        return false;
    }
    const size_t limit = size > EntityExpansionCap / EntityExpansionFactor
                             ? EntityExpansionCap
                             : size * EntityExpansionFactor;
    ExpansionCount count(document, limit);
    return count.referencedText(xmlDocGetRootElement(document)) > limit;
}

std::string EntityExpansionRefusal() {
    return "Entiteterna ger mer text än tillåtet: högst tio gånger dokumentets storlek och "
           "aldrig mer än 16 MiB.";
}

} // namespace mirelo::platform
