#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "exchange/handover_document.h"
#include "intake/message_to_patient.h"
#include "korvalo_process.h"
#include "platform/file_system.h"
#include "records/patient_file.h"
#include "test_environment.h"
#include "web_client.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

const std::string HandoverPage = "/Public/Mirelo/InitXML.aspx";

// A hand-over document as the client builds one, with text that HTML must not take as markup.
const std::string Handover =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<Patient><PrescriberInfo>"
    "<Username>demo</Username><Password>demo123</Password><Path>/opt/mirelo/in/</Path>"
    "<Version>1.0.2</Version></PrescriberInfo><PatientData><FamilyName>Öberg &lt;script&gt;"
    "</FamilyName><FirstGivenName>Märta</FirstGivenName><Pnr>191212121212</Pnr>"
    "<StreetName>Storgatan 1</StreetName><PostalCode>114 55</PostalCode><City>Stockholm</City>"
    "<GeneralInfo>Tål ej \"penicillin\" &amp; jod</GeneralInfo><GeneralInfoBy/>"
    "<GeneralInfoTimestamp/></PatientData><MedicalList><Product><ProductName>Waran</ProductName>"
    "<Str>2,5 mg</Str><Form>Tablett</Form><UnstructuredDosageAdmin>Enligt schema"
    "</UnstructuredDosageAdmin><RegNr>19680125</RegNr></Product></MedicalList></Patient>";

// The key of the hand-over that the prescribing form on the page carries back.
std::string sessionKeyOf(const std::string &page) {
    const std::string field = "name=\"session\" value=\"";
    const std::size_t start = page.find(field);
    if (start == std::string::npos) {
        return {};
    }
    const std::size_t value = start + field.size();
    return page.substr(value, page.find('"', value) - value);
}

std::vector<std::string> inboxFiles(const std::string &inbox) {
    std::vector<std::string> names;
    for (const platform::FileEntry &file : platform::GetFolderFiles(inbox)) {
        names.push_back(file.Path);
    }
    return names;
}

using KorvaloTest = support::ApplicationTest;

TEST_F(KorvaloTest, samples_are_whole_messages_that_intake_takes_in) {
    const support::KorvaloRun run =
        support::RunKorvaloToEnd({"--samples", "4", "--inbox", InboxFolder()});
    ASSERT_TRUE(run.cleanExit) << run.output;
    const auto files = inboxFiles(InboxFolder());
    ASSERT_EQ(files.size(), 4u);
    for (const std::string &file : files) {
        EXPECT_EQ(file.substr(file.size() - 4), ".xml");
        const std::string pnr = ImportPrescriptionFile(file);
        ASSERT_EQ(pnr.size(), 12u) << file;
        const platform::XmlDocument patient = ReadPatientFile(PatientFilePath(pnr));
        EXPECT_FALSE(patient.selectSingleNode("//PatientData/FamilyName").text().empty());
        EXPECT_FALSE(patient.selectNodes("//MedicalList/Product").empty());
    }
    EXPECT_FALSE(support::RunKorvaloToEnd({"--samples", "2"}).cleanExit);
}

TEST_F(KorvaloTest, the_hand_over_page_shows_what_it_received_escaped) {
    support::KorvaloProcess korvalo({"--inbox", InboxFolder()});

    const support::WebAnswer empty = support::webGet(korvalo.baseUrl() + HandoverPage);
    EXPECT_EQ(empty.status, 200);
    const std::string firstForm = empty.body.substr(0, empty.body.find("</form>"));
    EXPECT_NE(firstForm.find("action=\"" + HandoverPage + "\""), std::string::npos);
    // The field is filled by script: the document, password and all, is never on screen.
    EXPECT_NE(firstForm.find("<input type=\"hidden\" name=\"txtXml\">"), std::string::npos)
        << empty.body;
    EXPECT_EQ(empty.body.find("<textarea"), std::string::npos);
    for (const char *field :
         {"form name=\"Login\"", "name=\"txtUsername\"", "name=\"txtPassword\"", "name=\"txtPath\"",
          "name=\"txtVersion\"", "name=\"txtPatientPnr\""}) {
        EXPECT_NE(empty.body.find(field), std::string::npos) << field;
    }

    const support::WebAnswer shown =
        support::webPostForm(korvalo.baseUrl() + HandoverPage, {{"txtXml", Handover}});
    EXPECT_EQ(shown.status, 200);
    EXPECT_NE(shown.body.find("Öberg &lt;script&gt;"), std::string::npos) << shown.body;
    EXPECT_EQ(shown.body.find("<script>"), std::string::npos);
    EXPECT_NE(shown.body.find("Tål ej &quot;penicillin&quot; &amp; jod"), std::string::npos);
    EXPECT_NE(shown.body.find("<td>Waran</td><td>2,5 mg</td>"), std::string::npos);
    EXPECT_NE(shown.body.find("Johnson &amp; Johnson"), std::string::npos);
    EXPECT_NE(shown.body.find("value=\"Förskriv\""), std::string::npos);
    EXPECT_NE(shown.body.find("Förskrivare: Dr. Karin Lindqvist, Vårdcentralen Åby"),
              std::string::npos);
    EXPECT_EQ(shown.body.find("demo123"), std::string::npos);

    const support::WebAnswer broken =
        support::webPostForm(korvalo.baseUrl() + HandoverPage, {{"txtXml", "<Patient>"}});
    EXPECT_EQ(broken.status, 400);
    EXPECT_NE(broken.body.find("Överlämningsdokumentet kunde inte läsas"), std::string::npos);
    EXPECT_TRUE(korvalo.stop());
}

TEST_F(KorvaloTest, a_wrong_user_or_password_is_refused_and_no_form_prescribes_without_one) {
    support::KorvaloProcess korvalo({"--inbox", InboxFolder()});
    session().gUsername = "demo";
    session().gPassword = "fel";
    const std::string wrongPassword = CreatePrescriptionXML(nullptr, "191212121212")->xml();
    session().gUsername = "okänd";
    session().gPassword = "demo123";
    const std::string unknownUser = CreatePrescriptionXML(nullptr, "191212121212")->xml();
    using Fields = std::vector<std::pair<std::string, std::string>>;
    for (const Fields &post :
         {Fields{{"txtXml", wrongPassword}}, Fields{{"txtXml", unknownUser}},
          Fields{{"txtXml", "<Patient><PatientData><Pnr>1</Pnr></PatientData></Patient>"}},
          Fields{{"txtUsername", "demo"}, {"txtPassword", "fel"}, {"txtPatientPnr", "1"}}}) {
        const support::WebAnswer refused =
            support::webPostForm(korvalo.baseUrl() + HandoverPage, post);
        EXPECT_EQ(refused.status, 403) << post[0].second;
        EXPECT_NE(refused.body.find("Felaktigt användarnamn eller lösenord."), std::string::npos);
        EXPECT_EQ(refused.body.find("Prescribe"), std::string::npos) << refused.body;
    }
    for (const std::string &key : {std::string(), std::string("0123456789abcdef")}) {
        const support::WebAnswer unsigned_ = support::webPostForm(
            korvalo.baseUrl() + "/Public/Mirelo/Prescribe.aspx", {{"session", key},
                                                                  {"pnr", "1"},
                                                                  {"familyName", "A"},
                                                                  {"givenName", "B"},
                                                                  {"username", "demo"},
                                                                  {"vnr", "146712"}});
        EXPECT_EQ(unsigned_.status, 403);
    }
    EXPECT_TRUE(inboxFiles(InboxFolder()).empty());
    EXPECT_TRUE(korvalo.stop());
}

TEST_F(KorvaloTest, Forskriv_for_a_bare_number_writes_the_typed_patient_into_the_inbox) {
    support::KorvaloProcess korvalo({"--inbox", InboxFolder()});
    session().gUsername = "demo";
    session().gPassword = "demo123";
    const support::WebAnswer page =
        support::webPostForm(korvalo.baseUrl() + HandoverPage,
                             {{"txtXml", CreatePrescriptionXML(nullptr, "191212121212")->xml()}});
    ASSERT_EQ(page.status, 200) << page.body;
    // Boxes to type the patient in, the name required, none of them hidden.
    for (const char *box :
         {"name=\"familyName\" value=\"\" required>", "name=\"givenName\" value=\"\" required>",
          "name=\"streetName\" value=\"\">", "name=\"postalCode\" value=\"\">",
          "name=\"city\" value=\"\">"}) {
        EXPECT_NE(page.body.find(box), std::string::npos) << box;
    }
    EXPECT_EQ(page.body.find("hidden\" name=\"familyName\""), std::string::npos);
    const std::string key = sessionKeyOf(page.body);
    const std::string prescribe = korvalo.baseUrl() + "/Public/Mirelo/Prescribe.aspx";
    const support::WebAnswer nameless = support::webPostForm(
        prescribe, {{"session", key}, {"pnr", "191212121212"}, {"vnr", "146712"}});
    EXPECT_EQ(nameless.status, 400);
    EXPECT_NE(nameless.body.find("Fyll i patientens efternamn och förnamn."), std::string::npos);
    EXPECT_TRUE(inboxFiles(InboxFolder()).empty());

    const support::WebAnswer receipt =
        support::webPostForm(prescribe, {{"session", key},
                                         {"pnr", "191212121212"},
                                         {"familyName", "Öberg"},
                                         {"givenName", "Märta"},
                                         {"streetName", "Storgatan 1"},
                                         {"postalCode", "114 55"},
                                         {"city", "Stockholm"},
                                         {"vnr", "146712"},
                                         {"dosage_146712", "1 x 3 <vid behov>"},
                                         {"packages_146712", "2"},
                                         {"inbox", appDir() + "/Error"}});
    EXPECT_EQ(receipt.status, 200) << receipt.body;
    EXPECT_NE(receipt.body.find("1 x 3 &lt;vid behov&gt;"), std::string::npos) << receipt.body;

    const auto files = inboxFiles(InboxFolder());
    ASSERT_EQ(files.size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(appDir() + "/Error"));
    ASSERT_EQ(ImportPrescriptionFile(files[0]), "191212121212");
    const platform::XmlDocument patient = ReadPatientFile(PatientFilePath("191212121212"));
    std::string stored;
    for (const char *field : {"FamilyName", "FirstGivenName", "StreetName", "PostalCode", "City"}) {
        stored += patient.selectSingleNode(std::string("//PatientData/") + field).text() + "|";
    }
    EXPECT_EQ(stored, "Öberg|Märta|Storgatan 1|114 55|Stockholm|");
    const platform::XmlNode product = patient.selectSingleNode("//MedicalList/Product");
    EXPECT_EQ(product.selectSingleNode("ProductName").text(), "Alvedon");
    EXPECT_EQ(product.selectSingleNode("Vnr").text(), "146712");
    EXPECT_EQ(product.selectSingleNode("UnstructuredDosageAdmin").text(), "1 x 3 <vid behov>");
    EXPECT_EQ(product.selectSingleNode("NumberOfPackages").text(), "2");
    EXPECT_EQ(product.selectSingleNode("PrescribedBy").text(),
              "Dr. Karin Lindqvist, Vårdcentralen Åby");

    const support::WebAnswer unknown = support::webPostForm(
        prescribe,
        {{"session", key}, {"pnr", "1"}, {"familyName", "A"}, {"givenName", "B"}, {"vnr", "999"}});
    EXPECT_EQ(unknown.status, 400);
    EXPECT_EQ(inboxFiles(InboxFolder()).size(), 1u);
    EXPECT_TRUE(korvalo.stop());
}

TEST_F(KorvaloTest, documents_it_answers_hold_characters_beyond_their_code_intact) {
    const std::string usersFile = path("users.xml");
    support::writeBytes(usersFile, "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Users><User>"
                                   "<Username>k</Username><Password>p</Password>"
                                   "<Signature>Dr. Åsa O’Neill €</Signature><Message><Status>0"
                                   "</Status></Message></User></Users>");
    support::KorvaloProcess korvalo({"--users", usersFile});
    struct Case {
        std::string page;
        std::string request;
        std::string query;
        std::string expected;
    };
    for (const Case &exchange :
         {Case{"/Public/Mirelo/Login.aspx",
               "<User><Username>k</Username><Password>p</Password></User>", "//Signature",
               "Dr. Åsa O’Neill €"},
          Case{"/mirelo/vnr.asp", "<VnrCheck><Product><Vnr>12’€Å</Vnr></Product></VnrCheck>",
               "//Product/Vnr", "12’€Å"}}) {
        const support::WebAnswer answer =
            support::webPostBody(korvalo.baseUrl() + exchange.page, exchange.request);
        platform::XmlDocument document;
        ASSERT_TRUE(document.load(platform::ResponseStream{answer.body})) << answer.body;
        EXPECT_EQ(document.selectSingleNode(exchange.query).text(), exchange.expected);
    }
    EXPECT_TRUE(korvalo.stop());
}

TEST_F(KorvaloTest, requests_it_cannot_read_get_an_HTML_error_page) {
    support::KorvaloProcess korvalo;
    const support::WebAnswer login =
        support::webPostBody(korvalo.baseUrl() + "/Public/Mirelo/Login.aspx", "<User><Username>");
    EXPECT_EQ(login.status, 400);
    EXPECT_EQ(login.contentType.rfind("text/html", 0), 0u);
    EXPECT_NE(login.body.find("<html"), std::string::npos);

    const support::WebAnswer noPassword = support::webPostBody(
        korvalo.baseUrl() + "/Public/Mirelo/Login.aspx", "<User><Username>demo</Username></User>");
    EXPECT_EQ(noPassword.status, 400);

    // Without an inbox nothing can be prescribed.
    const support::WebAnswer prescribe = support::webPostForm(
        korvalo.baseUrl() + "/Public/Mirelo/Prescribe.aspx", {{"pnr", "1"}, {"vnr", "146712"}});
    EXPECT_EQ(prescribe.status, 503);
    EXPECT_TRUE(korvalo.stop());
}

} // namespace
