#include "core/document_building.h"
#include "patient_file_builder.h"
#include "platform/xml_serialising.h"
#include "test_environment.h"

namespace mirelo::testing {
namespace {

using namespace platform;

// What a parse gave: "parsed", or the reason of its failure as the boxes show it. A failure is
// never thrown: the parse says false and leaves a non-zero code in the document.
std::string outcome(bool parsed, const XmlDocument &document) {
    EXPECT_EQ(parsed, document.parseError().errorCode == 0) << document.parseError().reason;
    return parsed ? "parsed" : document.parseError().reason;
}

class XmlDocumentTest : public ApplicationTest {};

TEST_F(XmlDocumentTest, a_source_is_decoded_by_its_declaration_and_a_failure_has_a_swedish_reason) {
    const std::pair<std::string, std::string> texts[] = {
        {"<a><b>text</b>", "Dokumentet tar slut innan elementet a är avslutat. (rad 1, kolumn 15)"},
        {"<a>\n<b></c></a>", "Sluttaggen c passar inte till starttaggen b. (rad 2, kolumn 8)"},
        {"<a>\x01</a>", "Otillåtet tecken i dokumentet. (rad 1, kolumn 4)"},
        {"<a:b/>", "Prefixet a är inte deklarerat. (rad 1, kolumn 5)"},
        {"<a>&x;</a>", "Entiteten x är inte deklarerad. (rad 1, kolumn 7)"},
        {"", "Dokumentet är tomt eller börjar inte med ett element. (rad 1, kolumn 1)"},
        // Text already decoded is not decoded again by its declaration.
        {R"(<?xml version="1.0" encoding="ISO-8859-1"?><a>Åsa</a>)", "parsed"}};
    for (const auto &[text, reason] : texts) {
        XmlDocument document;
        EXPECT_EQ(outcome(document.loadXML(text), document), reason) << text;
    }
    // A file is decoded by its declaration; a missing file fails as a damaged one does.
    writeBytes(path("utf8.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC5sa</a>");
    XmlDocument utf8, missing, page;
    EXPECT_EQ(outcome(utf8.load(path("utf8.xml")), utf8),
              "Otillåtet tecken i dokumentet. (rad 1, kolumn 42)");
    EXPECT_EQ(outcome(missing.load(path("saknas.xml")), missing),
              "Systemet kan inte hitta den angivna filen: " + path("saknas.xml"));
    // A server's error page is no answer.
    EXPECT_EQ(outcome(page.load(ResponseStream{"<html><p>Server Error<br></html>"}), page),
              "Dokumentet tar slut innan elementet p är avslutat. (rad 1, kolumn 33)");
}

TEST_F(XmlDocumentTest, a_node_held_from_a_query_outlives_the_text_that_replaced_it) {
    XmlDocument document;
    ASSERT_TRUE(document.loadXML("<r><Checked>1<Product><ID>inner</ID></Product></Checked></r>"));
    const std::vector<XmlNode> products = document.selectNodes("//Product");
    document.selectSingleNode("//Checked").setText("0");
    EXPECT_EQ(products.at(0).selectSingleNode("ID").text(), "inner");
    products[0].selectSingleNode("ID").setText("still usable");
    EXPECT_EQ(document.xml(), "<r>\n\t<Checked>0</Checked>\n</r>\n");
}

TEST_F(XmlDocumentTest, entities_stand_for_at_most_ten_times_the_document_and_never_load_a_file) {
    writeBytes(path("secret.txt"), "hemligt");
    XmlDocument external, withDtd;
    external.loadXML("<!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + path("secret.txt") +
                     "\">]><a>&x;</a>");
    EXPECT_EQ(external.xml().find("hemligt"), std::string::npos);
    // Nor is a DTD.
    ASSERT_TRUE(withDtd.loadXML("<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/none.dtd\"><a>ok</a>"));
    // &e; used in text, in an attribute, nested (&a; is ten x), and beyond the cap: 17.5 MiB from
    // a 2 MiB document, inside ten times its size.
    const std::tuple<const char *, std::string, size_t, bool, size_t> cases[] = {
        {"text", std::string(1000, 'k'), 1000, false, 0},
        {"attribute", std::string(1000, 'k'), 1000, true, 0},
        {"nested", "&a;&a;&a;&a;&a;", 50, false, 0},
        {"cap", std::string(100 * 1024, 'c'), 100 * 1024, false, 2 * 1024 * 1024}};
    for (const auto &[what, entity, expandsTo, inAttribute, padding] : cases) {
        SCOPED_TRACE(what);
        auto documentUsing = [&](size_t uses) {
            std::string references;
            for (size_t i = 0; i < uses; ++i) {
                references += "&e;";
            }
            return "<!DOCTYPE a [<!ENTITY a \"xxxxxxxxxx\"><!ENTITY e \"" + entity + "\">]><a>" +
                   std::string(padding, 'p') +
                   (inAttribute ? "<b v=\"" + references + "\"/>" : references) + "</a>";
        };
        // The fewest uses that break the limit, each adding three bytes; one fewer passes.
        const size_t size = documentUsing(0).size();
        const size_t uses =
            std::min(10 * size / (expandsTo - 30), (size_t{16} << 20) / expandsTo) + 1;
        XmlDocument within, beyond;
        ASSERT_TRUE(within.loadXML(documentUsing(uses - 1)));
        EXPECT_EQ(within.selectSingleNode(inAttribute ? "//b/@v" : "/a").text().size(),
                  (uses - 1) * expandsTo + (inAttribute ? 0 : padding));
        EXPECT_EQ(outcome(beyond.loadXML(documentUsing(uses)), beyond),
                  "Entiteterna ger mer text än tillåtet: högst tio gånger dokumentets storlek och "
                  "aldrig mer än 16 MiB.");
        EXPECT_EQ(beyond.parseError().errorCode, 89);
        EXPECT_TRUE(beyond.documentElement().isNull());
    }
}

// Whatever the one-pass writer writes is what libxml2 writes, for the document and every element
// written on its own; the whole document goes through it only where it holds nothing but the
// plain shape of Mirelo's own files. The walks that stand in for XPath where lists grow large
// give what XPath gives, in its order, on every shape a hand-edited file can take.
void expectWrittenAndWalkedAsLibxml2Does(const XmlDocument &document, bool plainDocument) {
    EXPECT_EQ(PlainTreeXml(document.asNode().handle()).has_value(), plainDocument);
    EXPECT_EQ(document.xml(), LibxmlSerialisedXml(document.asNode().handle(), "UTF-8"));
    std::vector<XmlNode> nodes = document.selectNodes("//*");
    nodes.insert(nodes.begin(), document.asNode());
    for (const XmlNode &node : nodes) {
        SCOPED_TRACE(node.xml());
        const std::string expected = LibxmlSerialisedXml(node.handle(), "UTF-8");
        EXPECT_EQ(SerialisedXml(node.handle(), "utf-8"), expected);
        EXPECT_EQ(PlainTreeXml(node.handle()).value_or(expected), expected);
        for (const char *path : {"//b", "//Product/ID", "//d/e", "//a/b", "b", "d/e", "Product/ID",
                                 "a/b/c", "//Missing", "Missing/b"}) {
            EXPECT_EQ(node.elementsAt(path), node.selectNodes(path)) << path;
            EXPECT_EQ(node.firstElementAt(path), node.selectSingleNode(path)) << path;
        }
        EXPECT_EQ(node.hasAncestorElement("b"), !node.selectNodes("ancestor::b").empty());
    }
    EXPECT_EQ(document.elementsAnywhere({"Product", "Missing", "b"}),
              (std::vector{document.selectNodes("//Product"), document.selectNodes("//Missing"),
                           document.selectNodes("//b")}));
}

TEST_F(XmlDocumentTest, the_one_pass_writer_writes_the_bytes_libxml2_writes_or_leaves_the_tree) {
    std::string deep = "<leaf>botten</leaf><empty/>"; // deeper than libxml2 indents
    for (int level = 69; level >= 0; --level) {
        deep = "<n" + std::to_string(level) + ">" + deep + "</n" + std::to_string(level) + ">";
    }
    const ProductFields product{.productName = "Alvedon &lt;500 mg&gt; &amp; C:o"};
    const std::pair<std::string, bool> trees[] = {
        {patientText("191212121212", "Åström", "Märta", {product, product}), true},
        {"<a><b>1 &lt; 2 &amp;&amp; 3 &gt; 2</b><c>rad 1&#13;\nrad 2</c><d>Åsa ü € 𝄞</d></a>",
         true},
        {"<a><b/><c></c><d><e/></d><f>   </f><g>\t</g></a>", true},
        {"<a>text<b><c>x</c><d/></b>more<e/></a>", true},
        {"<r><a>t<b><c/></b></a><e/><f>x</f></r>", true},
        {deep, true},
        {R"(<?xml version="1.0"?><?other?><?more data here?><a/>)", true},
        {R"(<a x="1"><b>t</b></a>)", false},
        {"<a><b><c/><b><c>t</c></b></b><!-- b --><x:b xmlns:x='urn:x'/></a>", false},
        {R"(<a xmlns="urn:x"><b/></a>)", false},
        {R"(<a><p:b xmlns:p="urn:x">t</p:b></a>)", false},
        {"<a><!-- c --><b/></a>", false},
        {"<a><b><![CDATA[x<y]]></b></a>", false},
        {R"(<!DOCTYPE a [<!ENTITY e "<b/>">]><a>&e;</a>)", false},
        {"<a><?p x?><b/></a>", false}};
    for (const auto &[text, plain] : trees) {
        SCOPED_TRACE(text.substr(0, 80));
        XmlDocument document;
        ASSERT_TRUE(document.loadXML(text)) << document.parseError().reason;
        expectWrittenAndWalkedAsLibxml2Does(document, plain);
    }

    // A document of our own: the declaration first, markup escaped, a carriage return as it stands.
    XmlDocument built;
    const XmlNode root = StartDocument(built, "Patient");
    root.appendElement("Note").setText("rad 1\r\nrad 2 <&>");
    root.appendElement("Empty");
    const XmlNode list = root.appendElement("MedicalList");
    list.appendElement("Product").appendElement("Name", "Åsa");
    list.appendElement("Product").appendElement("Name", "");
    expectWrittenAndWalkedAsLibxml2Does(built, true);
    EXPECT_EQ(built.xml(),
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<Patient>\n\t<Note>"
              "rad 1\r\nrad 2 &lt;&amp;&gt;</Note>\n\t<Empty/>\n\t<MedicalList>\n\t\t"
              "<Product>\n\t\t\t<Name>Åsa</Name>\n\t\t</Product>\n\t\t<Product>\n\t\t\t"
              "<Name/>\n\t\t</Product>\n\t</MedicalList>\n</Patient>\n");
}

} // namespace
} // namespace mirelo::testing
