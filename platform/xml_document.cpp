#include "platform/xml_document.h"

#include "core/mirelo_error.h"
#include "platform/entity_expansion.h"
#include "platform/file_system.h"
#include "platform/parse_failure_reason.h"
#include "platform/xml_serialising.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <libxml/chvalid.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlstring.h>
#include <libxml/xpath.h>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>

namespace mirelo::platform {
namespace {

// Untrusted input never reaches the network and never pulls in an external DTD or entity.
// Short texts live inside their nodes, which spares a large message a block per element.
constexpr int ParseOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                             XML_PARSE_NOBLANKS | XML_PARSE_COMPACT;

// The code a missing source file gets, as the old parser reported it.
constexpr int32_t SourceNotFound = static_cast<int32_t>(0x800C0006);

xmlParserInputPtr refuseExternalEntity(const char *, const char *, xmlParserCtxtPtr) {
    return nullptr;
}

void ignoreXmlError(void *, xmlErrorPtr) {}

// A null node, what a query that matched nothing gives, is the run time's "object not set".
xmlNodePtr checked(xmlNodePtr node) {
    if (node == nullptr) {
        runtime::raise(runtime::ObjectNotSet);
    }
    return node;
}

const xmlChar *xc(const std::string &text) {
    return reinterpret_cast<const xmlChar *>(text.c_str());
}

// Whether the eight bytes are all printable ASCII: none below the blank, none with a high bit.
bool printableAscii(const unsigned char *bytes) {
    uint64_t eight = 0;
    std::memcpy(&eight, bytes, 8);
    return (((eight - 0x2020202020202020ull) | eight) & 0x8080808080808080ull) == 0;
}

// A document holding a control character is one that no XML reader takes back, so a patient
// file would stay unreadable for good: such text is refused whoever hands it in, and named, so
// that the user learns what to take out. Most text is printable ASCII, passed eight bytes at a
// time.
const std::string &carriable(const std::string &text) {
    const auto *bytes = reinterpret_cast<const unsigned char *>(text.data());
    for (size_t i = 0; i < text.size();) {
        if (text.size() - i >= 8 && printableAscii(bytes + i)) {
            i += 8;
            continue;
        }
        if (bytes[i] >= 0x20 && bytes[i] < 0x80) {
            ++i;
            continue;
        }
        int length = static_cast<int>(std::min<size_t>(text.size() - i, 4));
        const int c = xmlGetUTF8Char(bytes + i, &length);
        if (c < 0) {
            runtime::raise(runtime::InvalidArgument);
        }
        if (!IsXmlCharacter(static_cast<char32_t>(c))) {
            char name[16];
            std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(c));
            throw MireloError(runtime::InvalidArgument,
                              "Tecknet " + std::string(name) + " kan inte sparas.");
        }
        i += static_cast<size_t>(length);
    }
    return text;
}

std::string fromXmlChar(xmlChar *owned) {
    if (owned == nullptr) {
        return {};
    }
    std::string result(reinterpret_cast<const char *>(owned));
    xmlFree(owned);
    return result;
}

// The data of a leading "<?xml ...?>" declaration, or nothing. The old DOM kept the
// declaration as a node of its own, so a document read back and written again keeps it.
bool leadingDeclaration(const std::string &text, std::string &data) {
    size_t start = 0;
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        start = 3;
    }
    if (text.compare(start, 5, "<?xml") != 0 || text.size() <= start + 5 ||
        !isspace(static_cast<unsigned char>(text[start + 5]))) {
        return false;
    }
    const size_t end = text.find("?>", start);
    if (end == std::string::npos) {
        return false;
    }
    size_t first = start + 5;
    while (first < end && isspace(static_cast<unsigned char>(text[first]))) {
        ++first;
    }
    size_t last = end;
    while (last > first && isspace(static_cast<unsigned char>(text[last - 1]))) {
        --last;
    }
    data = text.substr(first, last - first);
    return true;
}

using XPathObject = std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)>;

xmlXPathContextPtr newQueryContext(xmlDocPtr doc) {
    xmlXPathContextPtr context = xmlXPathNewContext(doc);
    context->error = ignoreXmlError;
    return context;
}

// Every query text the program asks is one of a few dozen fixed ones, so each is compiled once
// per thread and kept; compiling is most of what a small query costs.
class CompiledQueries {
  public:
    CompiledQueries() = default;
    CompiledQueries(const CompiledQueries &) = delete;
    CompiledQueries &operator=(const CompiledQueries &) = delete;
    ~CompiledQueries() {
        for (const auto &[query, compiled] : compiled_) {
            xmlXPathFreeCompExpr(compiled);
        }
    }

    // Null for a query that isn't XPath; a failed compile is not kept, so it fails alike again.
    xmlXPathCompExprPtr find(const std::string &query) {
        const auto found = compiled_.find(query);
        if (found != compiled_.end()) {
            return found->second;
        }
        xmlXPathCompExprPtr compiled = xmlXPathCtxtCompile(compiling_.get(), xc(query));
        if (compiled != nullptr) {
            compiled_.emplace(query, compiled);
        }
        return compiled;
    }

  private:
    std::unordered_map<std::string, xmlXPathCompExprPtr> compiled_;
    // Only there to keep a query that isn't XPath from being reported on standard error.
    std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> compiling_{
        newQueryContext(nullptr), xmlXPathFreeContext};
};

} // namespace

// Readies a node for a place in the tree of `target`. Within one document the node itself
// moves, and so does an element of a document built in memory: its names and texts are its
// own, so the target frees them as its own. From a parsed document a copy moves: names of a
// parsed document belong to that document's dictionary and can't change hands, so the original
// leaves its tree and stays with its own document until that document goes.
xmlNodePtr placeNode(xmlNodePtr target, xmlNodePtr node) {
    XmlDocument *owner =
        node->doc != nullptr ? static_cast<XmlDocument *>(node->doc->_private) : nullptr;
    const bool ownsItsStrings =
        node->type == XML_ELEMENT_NODE && node->doc != nullptr && node->doc->dict == nullptr;
    if (node->doc == target->doc || ownsItsStrings) {
        if (owner != nullptr) {
            owner->unplaced_.erase(node);
        }
        xmlUnlinkNode(node);
        return node;
    }
    xmlNodePtr copy = xmlDocCopyNode(node, target->doc, 1);
    xmlUnlinkNode(node);
    if (owner != nullptr) {
        owner->unplaced_.insert(node);
    }
    return copy;
}

// Takes every child out of the tree. A handle to a child, from an earlier query or childNodes,
// must stay usable as the old DOM's references did, so the children live on, detached, until
// their document goes instead of being freed here.
void detachChildren(xmlNodePtr parent) {
    XmlDocument *owner =
        parent->doc != nullptr ? static_cast<XmlDocument *>(parent->doc->_private) : nullptr;
    while (xmlNodePtr child = parent->children) {
        xmlUnlinkNode(child);
        if (owner != nullptr) {
            owner->unplaced_.insert(child);
        } else {
            xmlFreeNode(child);
        }
    }
}

// A document of ours keeps one query context for its whole life: making one registers every
// XPath function anew, which costs more than most queries themselves. A tree no XmlDocument
// holds gets none.
xmlXPathContextPtr queryContextOf(xmlDocPtr doc) {
    XmlDocument *owner = doc != nullptr ? static_cast<XmlDocument *>(doc->_private) : nullptr;
    return owner != nullptr ? owner->queryContext() : nullptr;
}

namespace {

XPathObject evaluate(xmlNodePtr node, const std::string &query) {
    checked(node);
    thread_local CompiledQueries queries;
    const xmlXPathCompExprPtr compiled = queries.find(query);
    std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> ownContext(
        nullptr, xmlXPathFreeContext);
    xmlXPathContextPtr context = queryContextOf(node->doc);
    if (context == nullptr) {
        ownContext.reset(newQueryContext(node->doc));
        context = ownContext.get();
    }
    context->node = node;
    XPathObject result(compiled != nullptr ? xmlXPathCompiledEval(compiled, context) : nullptr,
                       xmlXPathFreeObject);
    if (!result) {
        throw MireloError(errors::InvalidQuery, "Ogiltig fråga: " + query);
    }
    return result;
}

// The encoding the document's own declaration names; a document without one is UTF-8, as XML
// has it.
std::string declaredEncoding(xmlDocPtr doc) {
    const xmlNodePtr first = doc->children;
    if (first == nullptr || first->type != XML_PI_NODE || !xmlStrEqual(first->name, xc("xml")) ||
        first->content == nullptr) {
        return "UTF-8";
    }
    const std::string data(reinterpret_cast<const char *>(first->content));
    const size_t key = data.find("encoding");
    const size_t open = data.find_first_of("\"'", key);
    if (key == std::string::npos || open == std::string::npos) {
        return "UTF-8";
    }
    const size_t close = data.find(data[open], open + 1);
    return data.substr(open + 1, close == std::string::npos ? close : close - open - 1);
}

} // namespace

bool IsXmlCharacter(char32_t c) {
    return xmlIsCharQ(c);
}

void initialiseXml() {
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        xmlSetExternalEntityLoader(refuseExternalEntity);
    });
}

// --- XmlNode -----------------------------------------------------------------------------

std::string XmlNode::nodeName() const {
    const char *name = reinterpret_cast<const char *>(checked(node_)->name);
    return name != nullptr ? name : std::string();
}

std::string XmlNode::text() const {
    // A field holds one text node or none, read in place; a list's text is gathered.
    const xmlNode *const first = checked(node_)->children;
    if (node_->type == XML_ELEMENT_NODE && (first == nullptr || first->next == nullptr)) {
        if (first == nullptr) {
            return {};
        }
        if (first->type == XML_TEXT_NODE && first->content != nullptr) {
            return reinterpret_cast<const char *>(first->content);
        }
    }
    return fromXmlChar(xmlNodeGetContent(node_));
}

void XmlNode::setText(const std::string &value) const {
    if (checked(node_)->type != XML_ELEMENT_NODE) {
        xmlNodeSetContent(node_, xc(carriable(value)));
        return;
    }
    detachChildren(node_);
    if (!value.empty()) {
        // A text node holds its content raw, line ends and all; escaping happens when the
        // document is written.
        xmlAddChild(node_, xmlNewDocText(node_->doc, xc(carriable(value))));
    }
}

std::string XmlNode::xml() const {
    return SerialisedXml(checked(node_), "UTF-8");
}

XmlNode XmlNode::appendChild(XmlNode child) const {
    if (node_ == nullptr || child.node_ == nullptr) {
        runtime::raise(runtime::ObjectNotSet);
    }
    return XmlNode(xmlAddChild(node_, placeNode(node_, child.node_)));
}

XmlNode XmlNode::appendElement(const char *name, const std::string &text) const {
    xmlNodePtr element = xmlNewDocRawNode(checked(node_)->doc, nullptr, BAD_CAST name,
                                          text.empty() ? nullptr : xc(carriable(text)));
    return XmlNode(xmlAddChild(node_, element));
}

XmlNode XmlNode::insertElementBefore(const std::string &name, XmlNode reference) const {
    if (reference.isNull()) {
        return appendElement(name);
    }
    if (checked(node_) != reference.node_->parent) {
        runtime::raise(runtime::InvalidArgument);
    }
    return XmlNode(
        xmlAddPrevSibling(reference.node_, xmlNewDocNode(node_->doc, nullptr, xc(name), nullptr)));
}

XmlNode XmlNode::insertBefore(XmlNode child, XmlNode reference) const {
    if (reference.isNull()) {
        return appendChild(child);
    }
    if (node_ == nullptr || child.node_ == nullptr) {
        runtime::raise(runtime::ObjectNotSet);
    }
    if (reference.node_->parent != node_) {
        runtime::raise(runtime::InvalidArgument);
    }
    return XmlNode(xmlAddPrevSibling(reference.node_, placeNode(node_, child.node_)));
}

std::vector<XmlNode> XmlNode::childNodes() const {
    std::vector<XmlNode> children;
    for (xmlNodePtr child = checked(node_)->children; child != nullptr; child = child->next) {
        children.emplace_back(child);
    }
    return children;
}

namespace {

bool isElementNamed(xmlNodePtr node, std::string_view name) {
    if (node->type != XML_ELEMENT_NODE || node->ns != nullptr) {
        return false;
    }
    // Compared here rather than by a call per node: a walk of a large file meets hundreds of
    // thousands of them, and most differ at the first letter.
    const char *own = reinterpret_cast<const char *>(node->name);
    size_t at = 0;
    for (; at < name.size(); ++at) {
        if (own[at] != name[at]) {
            return false;
        }
    }
    return own[at] == '\0';
}

// A path of plain names split at its last step.
struct PathEnd {
    std::string_view parents;
    std::string_view last;
};

PathEnd splitLast(std::string_view steps) {
    const size_t slash = steps.rfind('/');
    if (slash == std::string_view::npos) {
        return {{}, steps};
    }
    return {steps.substr(0, slash), steps.substr(slash + 1)};
}

// Whether the elements above `node` carry the names of `parents`, last name nearest.
bool underParents(xmlNodePtr node, std::string_view parents) {
    while (!parents.empty()) {
        const PathEnd end = splitLast(parents);
        node = node->parent;
        if (node == nullptr || !isElementNamed(node, end.last)) {
            return false;
        }
        parents = end.parents;
    }
    return true;
}

// Hands `take` the elements along `steps` below `from`, in document order, for as long as it
// asks for more: one child's subtree comes wholly before the next child's, so a walk of the
// children in order keeps the order. False once `take` has had enough.
template <typename Take> bool visitAlong(xmlNodePtr from, std::string_view steps, Take &take) {
    const size_t slash = steps.find('/');
    const std::string_view name = steps.substr(0, slash);
    for (xmlNodePtr child = from->children; child != nullptr; child = child->next) {
        if (!isElementNamed(child, name)) {
            continue;
        }
        const bool more = slash == std::string_view::npos
                              ? take(child)
                              : visitAlong(child, steps.substr(slash + 1), take);
        if (!more) {
            return false;
        }
    }
    return true;
}

// The node after `node` in document order. Only elements are entered, as XPath's descendant
// axis enters no entity reference and no DTD.
xmlNodePtr nextInDocument(xmlNodePtr node) {
    if ((node->type == XML_DOCUMENT_NODE || node->type == XML_ELEMENT_NODE) &&
        node->children != nullptr) {
        return node->children;
    }
    for (; node != nullptr; node = node->parent) {
        if (node->next != nullptr) {
            return node->next;
        }
    }
    return nullptr;
}

// Hands `take` every element of the document whose name ends `steps` and whose parents carry
// the rest, in document order, for as long as it asks for more.
template <typename Take> void visitAnywhere(xmlDocPtr doc, std::string_view steps, Take &take) {
    const PathEnd end = splitLast(steps);
    for (xmlNodePtr node = nextInDocument(reinterpret_cast<xmlNodePtr>(doc)); node != nullptr;
         node = nextInDocument(node)) {
        if (isElementNamed(node, end.last) && underParents(node, end.parents) && !take(node)) {
            return;
        }
    }
}

template <typename Take> void visitPath(xmlNodePtr from, std::string_view path, Take &&take) {
    if (path.starts_with("//")) {
        visitAnywhere(from->doc, path.substr(2), take);
    } else {
        visitAlong(from, path, take);
    }
}

} // namespace

std::vector<XmlNode> XmlNode::elementsAt(std::string_view path) const {
    std::vector<XmlNode> found;
    visitPath(checked(node_), path, [&found](xmlNodePtr node) {
        found.emplace_back(node);
        return true;
    });
    return found;
}

std::vector<std::vector<XmlNode>>
XmlDocument::elementsAnywhere(std::initializer_list<std::string_view> names) const {
    std::vector<std::vector<XmlNode>> found(names.size());
    for (xmlNodePtr node = nextInDocument(reinterpret_cast<xmlNodePtr>(doc_)); node != nullptr;
         node = nextInDocument(node)) {
        size_t index = 0;
        for (const std::string_view name : names) {
            if (isElementNamed(node, name)) {
                found[index].emplace_back(node);
            }
            ++index;
        }
    }
    return found;
}

XmlNode XmlNode::firstElementAt(std::string_view path) const {
    XmlNode found;
    visitPath(checked(node_), path, [&found](xmlNodePtr node) {
        found = XmlNode(node);
        return false;
    });
    return found;
}

bool XmlNode::hasAncestorElement(const char *name) const {
    for (xmlNodePtr node = checked(node_)->parent; node != nullptr; node = node->parent) {
        if (isElementNamed(node, name)) {
            return true;
        }
    }
    return false;
}

XmlNode XmlNode::parentNode() const {
    return XmlNode(checked(node_)->parent);
}

XmlNode XmlNode::selectSingleNode(const std::string &query) const {
    const XPathObject result = evaluate(node_, query);
    const xmlNodeSetPtr nodes = result->nodesetval;
    if (result->type != XPATH_NODESET || nodes == nullptr || nodes->nodeNr == 0) {
        return {};
    }
    return XmlNode(nodes->nodeTab[0]);
}

std::vector<XmlNode> XmlNode::selectNodes(const std::string &query) const {
    const XPathObject result = evaluate(node_, query);
    const xmlNodeSetPtr nodes = result->nodesetval;
    std::vector<XmlNode> found;
    if (result->type == XPATH_NODESET && nodes != nullptr) {
        found.reserve(nodes->nodeNr);
        for (int i = 0; i < nodes->nodeNr; ++i) {
            found.emplace_back(nodes->nodeTab[i]);
        }
    }
    return found;
}

// --- XmlDocument -------------------------------------------------------------------------

XmlDocument::XmlDocument() {
    initialiseXml();
    doc_ = xmlNewDoc(xc("1.0"));
    claimDocument();
}

XmlDocument::~XmlDocument() {
    dropQueryContext();
    freeUnlinked();
    xmlFreeDoc(doc_);
}

XmlDocument::XmlDocument(XmlDocument &&other) noexcept
    : doc_(other.doc_), queryContext_(other.queryContext_), unplaced_(std::move(other.unplaced_)),
      parseError_(std::move(other.parseError_)) {
    other.doc_ = nullptr;
    other.queryContext_ = nullptr;
    other.unplaced_.clear();
    claimDocument();
}

XmlDocument &XmlDocument::operator=(XmlDocument &&other) noexcept {
    if (this != &other) {
        dropQueryContext();
        freeUnlinked();
        xmlFreeDoc(doc_);
        doc_ = other.doc_;
        queryContext_ = other.queryContext_;
        other.queryContext_ = nullptr;
        unplaced_ = std::move(other.unplaced_);
        parseError_ = std::move(other.parseError_);
        other.doc_ = nullptr;
        other.unplaced_.clear();
        claimDocument();
    }
    return *this;
}

void XmlDocument::freeUnlinked() {
    for (xmlNodePtr node : unplaced_) {
        xmlFreeNode(node);
    }
    unplaced_.clear();
}

_xmlXPathContext *XmlDocument::queryContext() {
    if (queryContext_ == nullptr) {
        queryContext_ = newQueryContext(doc_);
    }
    return queryContext_;
}

void XmlDocument::dropQueryContext() {
    xmlXPathFreeContext(queryContext_);
    queryContext_ = nullptr;
}

void XmlDocument::claimDocument() {
    if (doc_ != nullptr) {
        doc_->_private = this;
    }
}

bool XmlDocument::load(const std::string &path) {
    if (!FileExists(path)) {
        parseError_ = {SourceNotFound, "Systemet kan inte hitta den angivna filen: " + path};
        return false;
    }
    std::string bytes;
    try {
        bytes = ReadAllBytes(path);
    } catch (const MireloError &error) {
        parseError_ = {SourceNotFound, error.description() + ": " + path};
        return false;
    }
    return parse(bytes, false);
}

bool XmlDocument::load(const ResponseStream &stream) {
    return parse(stream.bytes, false);
}

bool XmlDocument::loadXML(const std::string &text) {
    return parse(text, true);
}

bool XmlDocument::parse(const std::string &bytes, bool decoded) {
    std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> context(xmlNewParserCtxt(),
                                                                         xmlFreeParserCtxt);
    xmlResetLastError();
    const int options = decoded ? ParseOptions | XML_PARSE_IGNORE_ENC : ParseOptions;
    xmlDocPtr parsed =
        xmlCtxtReadMemory(context.get(), bytes.data(), static_cast<int>(bytes.size()), nullptr,
                          decoded ? "UTF-8" : nullptr, options);
    // A prefix that no namespace declaration binds leaves a tree behind, but the document is
    // as broken as any other that doesn't parse.
    if (parsed != nullptr && !context->nsWellFormed) {
        xmlFreeDoc(parsed);
        parsed = nullptr;
    }
    // Entities that multiply a small document's text are refused as the parser refuses an
    // entity bomb, under the same code.
    if (parsed != nullptr && ExceedsEntityExpansionLimit(parsed, bytes.size())) {
        xmlFreeDoc(parsed);
        parseError_ = {XML_ERR_ENTITY_LOOP, EntityExpansionRefusal()};
        return false;
    }
    if (parsed == nullptr) {
        const xmlError *error = xmlCtxtGetLastError(context.get());
        if (error != nullptr && error->code != 0) {
            parseError_ = {error->code, ParseFailureReason(*error)};
        } else {
            parseError_ = {XML_ERR_DOCUMENT_EMPTY, "Dokumentet är tomt."};
        }
        return false;
    }
    adopt(parsed, bytes);
    return true;
}

void XmlDocument::adopt(_xmlDoc *parsed, const std::string &text) {
    dropQueryContext();
    freeUnlinked();
    xmlFreeDoc(doc_);
    doc_ = parsed;
    claimDocument();
    parseError_ = {};
    std::string declaration;
    if (leadingDeclaration(text, declaration) && doc_->children != nullptr) {
        xmlAddPrevSibling(doc_->children, xmlNewDocPI(doc_, xc("xml"), xc(declaration)));
    }
}

std::string XmlDocument::encodedXml() const {
    std::string bytes =
        SerialisedXml(reinterpret_cast<xmlNodePtr>(doc_), declaredEncoding(doc_).c_str());
    // Some names of an encoding reach a converter that drops or garbles text without a word
    // ("ISO-88591" cuts the document off at the first letter beyond ASCII). Bytes that don't
    // read back as the same document are never handed out, so a file is not spoiled by them.
    XmlDocument decoded;
    decoded.loadXML(xml());
    if (decoded.parseError().errorCode == 0) {
        XmlDocument encoded;
        encoded.load(ResponseStream{bytes});
        if (encoded.parseError().errorCode != 0 || encoded.xml() != decoded.xml()) {
            runtime::raise(runtime::InvalidArgument);
        }
    }
    return bytes;
}

void XmlDocument::save(const std::string &path) const {
    WriteAllBytes(path, encodedXml());
}

XmlNode XmlDocument::createProcessingInstruction(const std::string &target,
                                                 const std::string &data) {
    xmlNodePtr node = xmlNewDocPI(doc_, xc(target), xc(data));
    unplaced_.insert(node);
    return XmlNode(node);
}

XmlNode XmlDocument::createNode(int type, const std::string &name, const std::string &) {
    if (type != NODE_ELEMENT) {
        runtime::raise(runtime::InvalidArgument);
    }
    xmlNodePtr node = xmlNewDocNode(doc_, nullptr, xc(name), nullptr);
    unplaced_.insert(node);
    return XmlNode(node);
}

XmlNode XmlDocument::createNode(const std::string &type, const std::string &name,
                                const std::string &namespaceURI) {
    if (type != "ELEMENT") {
        runtime::raise(runtime::InvalidArgument);
    }
    return createNode(NODE_ELEMENT, name, namespaceURI);
}

XmlNode XmlDocument::documentElement() const {
    return XmlNode(xmlDocGetRootElement(doc_));
}

XmlNode XmlDocument::asNode() const {
    return XmlNode(reinterpret_cast<xmlNodePtr>(doc_));
}

std::string XmlDocument::xml() const {
    return SerialisedXml(reinterpret_cast<xmlNodePtr>(doc_), "UTF-8");
}

std::string XmlDocument::xml(CharacterTest keeps) const {
    return SerialisedXml(reinterpret_cast<xmlNodePtr>(doc_), "UTF-8", keeps);
}

} // namespace mirelo::platform
