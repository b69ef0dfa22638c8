#include "patient_file_builder.h"
#include "platform/xml_document.h"
#include "platform/xml_serialising.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

using mirelo::platform::LibxmlSerialisedXml;
using mirelo::platform::PlainTreeXml;
using mirelo::platform::SerialisedXml;
using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

namespace {

std::string nestedElements(int depth) {
    std::string text;
    for (int level = 0; level < depth; ++level) {
        text += "<n" + std::to_string(level) + ">";
    }
    text += "<leaf>botten</leaf><empty/>";
    for (int level = depth - 1; level >= 0; --level) {
        text += "</n" + std::to_string(level) + ">";
    }
    return text;
}

// The document and every element in it, each as a node written on its own.
std::vector<XmlNode> everyNode(const XmlDocument &document) {
    std::vector<XmlNode> nodes = document.selectNodes("//*");
    nodes.insert(nodes.begin(), document.asNode());
    return nodes;
}

// Whatever the one-pass writer writes is what libxml2 writes; the document as a whole is written
// by it only where it holds nothing but the plain shape.
void expectWrittenAsLibxml2WritesIt(const XmlDocument &document, bool plainDocument) {
    const std::optional<std::string> whole = PlainTreeXml(document.asNode().handle());
    EXPECT_EQ(whole.has_value(), plainDocument);
    EXPECT_EQ(document.xml(), LibxmlSerialisedXml(document.asNode().handle(), "UTF-8"));
    for (const XmlNode &node : everyNode(document)) {
        SCOPED_TRACE(node.nodeName());
        const std::string expected = LibxmlSerialisedXml(node.handle(), "UTF-8");
        EXPECT_EQ(SerialisedXml(node.handle(), "utf-8"), expected);
        if (const std::optional<std::string> plain = PlainTreeXml(node.handle())) {
            EXPECT_EQ(*plain, expected);
        }
    }
}

TEST(XmlSerialisingTest, the_one_pass_writer_writes_the_bytes_libxml2_writes_or_leaves_the_tree) {
    mirelo::testing::ProductFields product;
    product.productName = "Alvedon &lt;500 mg&gt; &amp; C:o";
    const struct {
        const char *name;
        std::string text;
        bool plain;
    } rows[] = {
        {"a patient file",
         mirelo::testing::patientText("191212121212", "Åström", "Märta", {product, product}), true},
        {"markup characters, a carriage return and letters beyond ASCII",
         "<a><b>1 &lt; 2 &amp;&amp; 3 &gt; 2</b><c>rad 1&#13;\nrad 2</c><d>Åsa ü € 𝄞</d></a>",
         true},
        {"empty elements and whitespace kept as text",
         "<a><b/><c></c><d><e/></d><f>   </f><g>\t</g></a>", true},
        {"text beside elements, at the top and further down",
         "<a>text<b><c>x</c><d/></b>more<e/></a>", true},
        {"text beside elements inside a laid-out list", "<r><a>t<b><c/></b></a><e/><f>x</f></r>",
         true},
        {"nesting deeper than libxml2 indents", nestedElements(70), true},
        {"declarations at the top", R"(<?xml version="1.0"?><?other?><?more data here?><a/>)",
         true},
        {"an attribute", R"(<a x="1"><b>t</b></a>)", false},
        {"a default namespace", R"(<a xmlns="urn:x"><b/></a>)", false},
        {"a prefixed element", R"(<a><p:b xmlns:p="urn:x">t</p:b></a>)", false},
        {"a comment", "<a><!-- c --><b/></a>", false},
        {"a CDATA section", "<a><b><![CDATA[x<y]]></b></a>", false},
        {"a document type and an entity reference",
         R"(<!DOCTYPE a [<!ENTITY e "<b/>">]><a>&e;</a>)", false},
        {"a processing instruction inside an element", "<a><?p x?><b/></a>", false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        XmlDocument document;
        ASSERT_TRUE(document.loadXML(row.text)) << document.parseError().reason;
        expectWrittenAsLibxml2WritesIt(document, row.plain);
    }
}

TEST(XmlSerialisingTest, a_built_document_is_written_as_libxml2_writes_it) {
    XmlDocument document;
    document.appendChild(
        document.createProcessingInstruction("xml", mirelo::platform::DeclarationData));
    const XmlNode root = document.appendChild(document.createNode(1, "Patient", ""));
    root.appendElement("Note").setText("rad 1\r\nrad 2 <&>");
    root.appendElement("Empty");
    const XmlNode list = root.appendElement("MedicalList");
    list.appendElement("Product").appendElement("Name", "Åsa");
    list.appendElement("Product").appendElement("Name", "");
    expectWrittenAsLibxml2WritesIt(document, true);
    EXPECT_EQ(document.xml(), std::string("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                                          "<Patient>\n"
                                          "\t<Note>rad 1\r\nrad 2 &lt;&amp;&gt;</Note>\n"
                                          "\t<Empty/>\n"
                                          "\t<MedicalList>\n"
                                          "\t\t<Product>\n"
                                          "\t\t\t<Name>Åsa</Name>\n"
                                          "\t\t</Product>\n"
                                          "\t\t<Product>\n"
                                          "\t\t\t<Name/>\n"
                                          "\t\t</Product>\n"
                                          "\t</MedicalList>\n"
                                          "</Patient>\n"));
}

} // namespace
