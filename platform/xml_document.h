#pragma once

#include "platform/xml_serialising.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

struct _xmlNode;
struct _xmlDoc;
struct _xmlXPathContext;

namespace mirelo::platform {

// What a parse left behind. Parsing never throws: callers read this and report in their own words.
struct ParseError {
    int32_t errorCode = 0;
    std::string reason;
};

// The body of an HTTP response, parsed by the declaration it carries.
struct ResponseStream {
    std::string bytes;
};

// A reference to an element (or the document) inside an XmlDocument, with the semantics of a
// pointer: a const handle still changes the tree it points into. It is valid while its
// document lives. A null node is what a query that matched nothing gives; reading or writing
// its text is the run time's "object not set" (91).
class XmlNode {
  public:
    XmlNode() = default;
    explicit XmlNode(_xmlNode *node) : node_(node) {}

    bool isNull() const { return node_ == nullptr; }
    explicit operator bool() const { return node_ != nullptr; }

    std::string nodeName() const;
    std::string text() const;
    // Text that XML 1.0 can't carry (see IsXmlCharacter), or bytes that are no UTF-8, would leave
    // a document no reader takes back: they are refused with run-time error 5 naming the
    // character, here and in appendElement, and the tree stays as it was.
    void setText(const std::string &value) const;
    std::string xml() const;

    XmlNode appendChild(XmlNode child) const;
    // A new element in no namespace placed last among this node's children, with the text
    // given: createNode, setText and appendChild in one step. An empty text still gives an
    // element, so that later queries find it.
    XmlNode appendElement(const char *name, const std::string &text = {}) const;
    XmlNode appendElement(const std::string &name, const std::string &text = {}) const {
        return appendElement(name.c_str(), text);
    }
    // A new empty element placed before `reference`, a child of this node, or last when the
    // reference is null.
    XmlNode insertElementBefore(const std::string &name, XmlNode reference) const;
    // A null reference appends, as the list's first child is null in an empty list.
    XmlNode insertBefore(XmlNode child, XmlNode reference) const;
    std::vector<XmlNode> childNodes() const;
    // What selectNodes and selectSingleNode give for a path of plain names in no namespace,
    // relative (`a/b`) or from anywhere in the document (`//a/b`), found by a walk of the tree
    // instead: a record's fields, a physician's list and a large message are read this way, as
    // an XPath scan of a whole tree costs several times the walk.
    std::vector<XmlNode> elementsAt(std::string_view path) const;
    XmlNode firstElementAt(std::string_view path) const;
    // Whether the query `ancestor::name` finds anything.
    bool hasAncestorElement(const char *name) const;
    // The element or document this node stands in; null for a node outside any tree.
    XmlNode parentNode() const;

    // XPath 1.0 relative to this node; results in document order. An invalid query raises.
    XmlNode selectSingleNode(const std::string &query) const;
    std::vector<XmlNode> selectNodes(const std::string &query) const;

    _xmlNode *handle() const { return node_; }
    bool operator==(const XmlNode &other) const = default;

  private:
    _xmlNode *node_ = nullptr;
};

// An XML document made for one task and dropped at its end.
class XmlDocument {
  public:
    // The two type designations that both make an element.
    static constexpr int NODE_ELEMENT = 1;

    XmlDocument();
    ~XmlDocument();
    XmlDocument(const XmlDocument &) = delete;
    XmlDocument &operator=(const XmlDocument &) = delete;
    XmlDocument(XmlDocument &&other) noexcept;
    XmlDocument &operator=(XmlDocument &&other) noexcept;

    // Kept for the shape of every parse; loading is always synchronous and no document
    // carries a DTD, so neither changes what a parse gives.
    void setAsync(bool) {}
    void setValidateOnParse(bool) {}

    // Parses a file by the encoding its declaration names. A missing file is a parse error.
    bool load(const std::string &path);
    bool load(const ResponseStream &stream);
    // Parses text that is already decoded: the declaration's encoding is not applied again.
    bool loadXML(const std::string &text);
    const ParseError &parseError() const { return parseError_; }

    // The document's bytes encoded as its declaration says (UTF-8 without one): a character
    // that code lacks stands as a character reference, so every reader gets the same text back.
    std::string encodedXml() const;
    // Writes those bytes, replacing the file.
    void save(const std::string &path) const;

    XmlNode createProcessingInstruction(const std::string &target, const std::string &data);
    XmlNode createNode(int type, const std::string &name, const std::string &namespaceURI);
    XmlNode createNode(const std::string &type, const std::string &name,
                       const std::string &namespaceURI);

    XmlNode documentElement() const;
    XmlNode appendChild(XmlNode child) { return asNode().appendChild(child); }
    XmlNode insertBefore(XmlNode child, XmlNode reference) {
        return asNode().insertBefore(child, reference);
    }
    std::vector<XmlNode> childNodes() const { return asNode().childNodes(); }
    XmlNode selectSingleNode(const std::string &query) const {
        return asNode().selectSingleNode(query);
    }
    std::vector<XmlNode> selectNodes(const std::string &query) const {
        return asNode().selectNodes(query);
    }
    std::vector<XmlNode> elementsAt(std::string_view path) const {
        return asNode().elementsAt(path);
    }
    XmlNode firstElementAt(std::string_view path) const { return asNode().firstElementAt(path); }
    // What elementsAt gives for `//name`, for each of several names in one walk of the
    // document: a large patient file is walked once for its products and lists together.
    std::vector<std::vector<XmlNode>>
    elementsAnywhere(std::initializer_list<std::string_view> names) const;
    // The whole document as UTF-8 text, its declaration first.
    std::string xml() const;
    // The same with every character of element text that `keeps` refuses written as a character
    // reference.
    std::string xml(CharacterTest keeps) const;

    XmlNode asNode() const;

  private:
    bool parse(const std::string &bytes, bool decoded);
    void adopt(_xmlDoc *parsed, const std::string &text);
    void freeUnlinked();
    void claimDocument();
    friend _xmlNode *placeNode(_xmlNode *target, _xmlNode *node);
    friend void detachChildren(_xmlNode *parent);
    friend _xmlXPathContext *queryContextOf(_xmlDoc *doc);
    // The one query context of this document, made at its first query.
    _xmlXPathContext *queryContext();
    void dropQueryContext();

    _xmlDoc *doc_ = nullptr;
    _xmlXPathContext *queryContext_ = nullptr;
    // Nodes made here and not yet placed in any tree, or taken out of it; they are freed with
    // the document.
    std::unordered_set<_xmlNode *> unplaced_;
    ParseError parseError_;
};

// Builds the declaration every document of ours opens with.
inline constexpr const char *DeclarationData = R"(version="1.0" encoding="ISO-8859-1")";

// Whether XML 1.0 can carry the character: tab, line feed, carriage return and everything from
// the blank up, but the surrogates, U+FFFE and U+FFFF.
bool IsXmlCharacter(char32_t c);

// libxml2's global set-up; call once at start, before any other thread touches XML.
void initialiseXml();

} // namespace mirelo::platform
