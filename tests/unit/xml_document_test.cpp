#include "core/document_building.h"
#include "platform/xml_document.h"
#include "test_environment.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using mirelo::platform::ResponseStream;
using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

namespace {

class XmlDocumentTest : public mirelo::testing::ApplicationTest {};

const std::string Declaration = R"(<?xml version="1.0" encoding="ISO-8859-1"?>)";

TEST_F(XmlDocumentTest, load_reports_missing_and_damaged_sources_without_throwing) {
    XmlDocument missing;
    EXPECT_FALSE(missing.load(path("in/nothing.xml")));
    EXPECT_NE(missing.parseError().errorCode, 0);
    EXPECT_FALSE(missing.parseError().reason.empty());

    mirelo::testing::writeBytes(path("in/truncated.xml"), "<a><b>text</b>");
    XmlDocument truncated;
    EXPECT_FALSE(truncated.load(path("in/truncated.xml")));
    EXPECT_NE(truncated.parseError().errorCode, 0);

    XmlDocument htmlPage;
    htmlPage.load(ResponseStream{"<html><body><p>Server Error<br></body></html>"});
    EXPECT_NE(htmlPage.parseError().errorCode, 0);
}

TEST_F(XmlDocumentTest, load_decodes_by_the_declaration_and_loadXML_does_not_apply_it_again) {
    // "Åsa" in ISO-8859-1 bytes, read from a file whose declaration says so.
    mirelo::testing::writeBytes(path("in/latin1.xml"), Declaration + "<a>\xC5sa</a>");
    XmlDocument fromFile;
    ASSERT_TRUE(fromFile.load(path("in/latin1.xml")));
    EXPECT_EQ(fromFile.selectSingleNode("//a").text(), "Åsa");

    // The same declaration over text that is already decoded (UTF-8 here).
    XmlDocument fromText;
    ASSERT_TRUE(fromText.loadXML(Declaration + "<a>Åsa</a>"));
    EXPECT_EQ(fromText.selectSingleNode("//a").text(), "Åsa");
}

TEST_F(XmlDocumentTest, queries_give_null_empty_text_or_the_first_match_in_document_order) {
    XmlDocument document;
    ASSERT_TRUE(document.loadXML(
        "<r><Empty/><Product><ID>1</ID></Product><Product><ID>2</ID></Product></r>"));
    EXPECT_EQ(document.selectSingleNode("//Empty").text(), "");
    EXPECT_TRUE(document.selectSingleNode("//Missing").isNull());
    EXPECT_EQ(document.selectSingleNode("//Product/ID").text(), "1");
    EXPECT_EQ(document.selectNodes("//Product").size(), 2u);
}

// The walks stand in for XPath where lists grow large, so they give what XPath gives, in the
// same order, on every shape a hand-edited file can take: nesting, namespaces, entities.
TEST_F(XmlDocumentTest, walked_paths_select_what_xpath_selects) {
    XmlDocument document;
    ASSERT_TRUE(document.loadXML(
        "<!DOCTYPE r [<!ENTITY e '<Product><ID>entity</ID></Product>'>]>"
        "<r><Product><ID>1</ID><List><Product><ID>2</ID></Product></List><ID>3</ID></Product>"
        "<!-- Product --><x:Product xmlns:x='urn:x'><ID>ns</ID></x:Product>"
        "<List xmlns='urn:d'><Product><ID>default</ID></Product></List>"
        "&e;<List><Product><ID>4</ID></Product></List><Product/></r>"));
    const std::vector<XmlNode> everyElement = document.selectNodes("//*");
    for (const char *path :
         {"//Product", "//Product/ID", "//List/Product/ID", "//r/Product", "//ID", "Product",
          "Product/ID", "List/Product", "r/List/Product", "//Missing", "Missing/ID"}) {
        for (const XmlNode &from : everyElement) {
            SCOPED_TRACE(std::string(path) + " from " + from.xml());
            EXPECT_EQ(from.elementsAt(path), from.selectNodes(path));
            EXPECT_EQ(from.firstElementAt(path), from.selectSingleNode(path));
        }
        EXPECT_EQ(document.elementsAt(path), document.selectNodes(path)) << path;
    }
    EXPECT_EQ(document.elementsAnywhere({"Product", "Missing", "ID"}),
              (std::vector{document.selectNodes("//Product"), document.selectNodes("//Missing"),
                           document.selectNodes("//ID")}));
    for (const XmlNode &node : everyElement) {
        EXPECT_EQ(node.hasAncestorElement("Product"),
                  !node.selectSingleNode("ancestor::Product").isNull())
            << node.xml();
    }
}

TEST_F(XmlDocumentTest, built_documents_serialise_declaration_first_and_escape_text) {
    XmlDocument document;
    const auto root = mirelo::StartDocument(document, "Settings");
    root.appendElement("Username", "a<b & \"c\" Åke");
    root.appendElement("Empty", "");
    const std::string text = document.xml();
    EXPECT_EQ(text.rfind(Declaration, 0), 0u) << text;
    EXPECT_NE(text.find("a&lt;b &amp; \"c\" Åke"), std::string::npos) << text;

    // Read back and changed, the declaration stays in front.
    XmlDocument again;
    ASSERT_TRUE(again.loadXML(text));
    again.selectSingleNode("//Username").setText("x");
    EXPECT_EQ(again.xml().rfind(Declaration, 0), 0u);
    EXPECT_EQ(again.selectSingleNode("//Empty").text(), "");
}

TEST_F(XmlDocumentTest, save_encodes_by_the_documents_own_declaration) {
    XmlDocument built;
    const auto root = mirelo::StartDocument(built, "Settings");
    root.appendElement("DataPath", "/hem/läkare/");
    built.save(path("built.xml"));
    const std::string bytes = mirelo::testing::readBytes(path("built.xml"));
    EXPECT_EQ(bytes.rfind(Declaration, 0), 0u);
    EXPECT_NE(bytes.find("/hem/l\xE4kare/"), std::string::npos);
    EXPECT_EQ(bytes.find("\xC3\xA4"), std::string::npos) << "no UTF-8 in the file";

    // A hand-edited file that says UTF-8, or nothing, is written back as UTF-8 and reads again.
    for (const std::string &opening :
         {std::string(R"(<?xml version="1.0" encoding="UTF-8"?>)"), std::string()}) {
        mirelo::testing::writeBytes(path("edited.xml"), opening + "<Settings><User/></Settings>");
        XmlDocument edited;
        ASSERT_TRUE(edited.load(path("edited.xml")));
        edited.selectSingleNode("//User").setText("Åsa");
        edited.save(path("edited.xml"));
        EXPECT_EQ(mirelo::testing::readBytes(path("edited.xml")),
                  opening + (opening.empty() ? "" : "\n") +
                      "<Settings>\n\t<User>\xC3\x85sa</User>\n</Settings>\n");
        XmlDocument again;
        ASSERT_TRUE(again.load(path("edited.xml"))) << again.parseError().reason;
        EXPECT_EQ(again.selectSingleNode("//User").text(), "Åsa");
    }
}

TEST_F(XmlDocumentTest, a_carriage_return_is_written_as_it_stands) {
    XmlDocument document;
    ASSERT_TRUE(document.loadXML("<r><Dose>1&#13;&#10;2</Dose><Note/></r>"));
    document.selectSingleNode("//Note").setText("rad 1\r\nrad 2 <&>");
    const std::string text = document.xml();
    EXPECT_NE(text.find("<Dose>1\r\n2</Dose>"), std::string::npos) << text;
    EXPECT_NE(text.find("<Note>rad 1\r\nrad 2 &lt;&amp;&gt;</Note>"), std::string::npos) << text;

    // Read back, a raw line break is a single line feed, as every reader expects.
    XmlDocument again;
    ASSERT_TRUE(again.loadXML(text));
    EXPECT_EQ(again.selectSingleNode("//Note").text(), "rad 1\nrad 2 <&>");
}

TEST_F(XmlDocumentTest, parse_failures_give_a_swedish_reason_with_line_and_column) {
    const struct {
        const char *text;
        const char *reason;
    } cases[] = {
        {"<a><b>text</b>", "Dokumentet tar slut innan elementet a är avslutat. (rad 1, kolumn 15)"},
        {"<a>\n<b></c></a>", "Sluttaggen c passar inte till starttaggen b. (rad 2, kolumn 8)"},
        {"<a>\x01</a>", "Otillåtet tecken i dokumentet. (rad 1, kolumn 4)"},
        {"<a:b/>", "Prefixet a är inte deklarerat. (rad 1, kolumn 5)"},
        {"<a>&x;</a>", "Entiteten x är inte deklarerad. (rad 1, kolumn 7)"},
        {"", "Dokumentet är tomt eller börjar inte med ett element. (rad 1, kolumn 1)"},
    };
    for (const auto &failure : cases) {
        XmlDocument document;
        EXPECT_FALSE(document.loadXML(failure.text)) << failure.text;
        EXPECT_NE(document.parseError().errorCode, 0) << failure.text;
        EXPECT_EQ(document.parseError().reason, failure.reason) << failure.text;
    }
    mirelo::testing::writeBytes(path("latin1.xml"), R"(<?xml version="1.0" encoding="UTF-8"?><a>)"
                                                    "\xC5</a>");
    XmlDocument wrongBytes;
    EXPECT_FALSE(wrongBytes.load(path("latin1.xml")));
    EXPECT_EQ(wrongBytes.parseError().reason, "Otillåtet tecken i dokumentet. (rad 1, kolumn 42)");
}

TEST_F(XmlDocumentTest, a_node_held_from_a_query_outlives_the_text_that_replaced_it) {
    XmlDocument document;
    ASSERT_TRUE(document.loadXML("<r><Checked>1<Product><ID>inner</ID></Product></Checked></r>"));
    const auto products = document.selectNodes("//Product");
    document.selectSingleNode("//Checked").setText("0");
    ASSERT_EQ(products.size(), 1u);
    EXPECT_EQ(products[0].selectSingleNode("ID").text(), "inner");
    products[0].selectSingleNode("ID").setText("still usable");
    EXPECT_EQ(document.selectNodes("//Product").size(), 0u);
    EXPECT_NE(document.xml().find("<Checked>0</Checked>"), std::string::npos);
}

TEST_F(XmlDocumentTest, external_entities_and_dtds_are_never_loaded) {
    mirelo::testing::writeBytes(path("secret.txt"), "hemligt");
    const std::string withEntity =
        "<!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + path("secret.txt") + "\">]><a>&x;</a>";
    XmlDocument document;
    document.loadXML(withEntity);
    if (document.parseError().errorCode == 0) {
        EXPECT_EQ(document.selectSingleNode("//a").text().find("hemligt"), std::string::npos);
    }

    XmlDocument withDtd;
    EXPECT_TRUE(withDtd.loadXML("<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/none.dtd\"><a>ok</a>"));
    EXPECT_EQ(withDtd.selectSingleNode("//a").text(), "ok");
}

} // namespace

namespace entities {

const std::string Refusal = "Entiteterna ger mer text än tillåtet: högst tio gånger dokumentets "
                            "storlek och aldrig mer än 16 MiB.";

// A document declaring `entity` as &e; (and &a; as ten x), using &e; `uses` times in element
// text or in an attribute, after `padding` bytes of plain text.
std::string documentUsing(const std::string &entity, int uses, bool inAttribute,
                          size_t padding = 0) {
    std::string references;
    for (int i = 0; i < uses; ++i) {
        references += "&e;";
    }
    const std::string body = inAttribute ? "<b v=\"" + references + "\"/>" : references;
    return "<!DOCTYPE a [<!ENTITY a \"xxxxxxxxxx\"><!ENTITY e \"" + entity + "\">]><a>" +
           std::string(padding, 'p') + body + "</a>";
}

// Whether a document of `size` bytes whose references stand for `expanded` characters passes.
bool withinLimit(size_t expanded, size_t size) {
    return expanded <= 10 * size && expanded <= size_t{16} * 1024 * 1024;
}

} // namespace entities

TEST_F(XmlDocumentTest, entities_may_stand_for_at_most_ten_times_the_documents_size) {
    using entities::documentUsing;
    // Ordinary escapes and character references are text already, and a small entity passes.
    XmlDocument ordinary;
    ASSERT_TRUE(ordinary.loadXML("<a>A &amp; B &#197;&#xE4; &lt;x&gt;</a>"));
    EXPECT_EQ(ordinary.documentElement().text(), "A & B Åä <x>");
    XmlDocument company;
    ASSERT_TRUE(company.loadXML(documentUsing("Orion", 3, false)));
    EXPECT_EQ(company.documentElement().text(), "OrionOrionOrion");

    struct Case {
        const char *what;
        std::string entity;
        size_t expandsTo;
        bool inAttribute;
        size_t padding;
    };
    const std::string kilobyte(1000, 'k');
    const std::vector<Case> cases = {
        {"in element text", kilobyte, 1000, false, 0},
        {"in an attribute", kilobyte, 1000, true, 0},
        {"nested in another entity", "&a;&a;&a;&a;&a;", 50, false, 0},
        // 17.5 MiB from a 2 MiB document: inside ten times, above the cap.
        {"beyond the cap", std::string(100 * 1024, 'c'), 100 * 1024, false, 2 * 1024 * 1024},
    };
    for (const Case &each : cases) {
        // The fewest uses that break the limit, and one fewer; each use adds three bytes.
        const size_t unused = documentUsing(each.entity, 0, each.inAttribute, each.padding).size();
        int uses = 1;
        while (entities::withinLimit(uses * each.expandsTo, unused + 3 * uses)) {
            ++uses;
        }
        for (const int count : {uses - 1, uses}) {
            const std::string text =
                documentUsing(each.entity, count, each.inAttribute, each.padding);
            XmlDocument document;
            const bool parsed = document.loadXML(text);
            EXPECT_EQ(parsed, count < uses) << each.what << ", " << count << " uses";
            if (parsed) {
                EXPECT_EQ(
                    document.selectSingleNode(each.inAttribute ? "//b/@v" : "/a").text().size(),
                    count * each.expandsTo + (each.inAttribute ? 0 : each.padding))
                    << each.what;
            } else {
                EXPECT_EQ(document.parseError().errorCode, 89) << each.what;
                EXPECT_EQ(document.parseError().reason, entities::Refusal) << each.what;
                EXPECT_EQ(document.documentElement(), mirelo::platform::XmlNode());
            }
        }
    }
}
