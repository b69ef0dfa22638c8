#include "browser_processes.h"
#include "closed_port.h"
#include "exchange/browser_handoff.h"
#include "exchange/handover_document.h"
#include "exchange/login_exchange.h"
#include "form_page_server.h"
#include "intake/inbox_scan.h"
#include "intake/message_to_patient.h"
#include "korvalo_process.h"
#include "platform/http_request.h"
#include "platform/process_browser.h"
#include "platform/record_lock.h"
#include "records/medical_list_update.h"
#include "records/note_records.h"
#include "records/patient_file.h"
#include "records/settings_store.h"
#include "screen_test.h"
#include "scripted_browser.h"
#include "web_client.h"

#include <QProcess>
#include <csignal>
#include <functional>
#include <iostream>
#include <map>
#include <regex>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mirelo::testing {
namespace {

namespace fs = std::filesystem;

const std::string Pnr = "191212121212";
const std::string Support = "[stop] Kontakta support och ange följande fel: ";
// In memory at every failed write, and to be found in no file and in nothing printed.
const std::string Password = "Pw-hemligt-lösen";

std::string user(const std::string &name, const std::string &answer) {
    return "<User><Username>" + name + "</Username><Password>rätt-lösen</Password>" + answer +
           "</User>";
}
std::string message(const std::string &status, const std::string &description = "") {
    return "<Message><Status>" + status + "</Status><Description>" + description +
           "</Description></Message>";
}

Texts operator+(Texts first, const Texts &then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

Texts nodes(const platform::XmlDocument &document, const std::string &query,
            std::string (platform::XmlNode::*what)() const = &platform::XmlNode::nodeName) {
    Texts found;
    for (const platform::XmlNode &node : document.selectNodes(query)) {
        found.push_back((node.*what)());
    }
    return found;
}

void expectPage(const WebAnswer &answer, long status, const Texts &holds, const Texts &lacks = {}) {
    EXPECT_EQ(answer.status, status) << answer.body;
    for (const std::string &text : holds) {
        EXPECT_THAT(answer.body, HasSubstr(text));
    }
    for (const std::string &text : lacks) {
        EXPECT_THAT(answer.body, Not(HasSubstr(text)));
    }
}

std::string handover(const std::string &username, const std::string &password,
                     platform::XmlDocument *patient = nullptr) {
    session().gUsername = username;
    session().gPassword = password;
    return CreatePrescriptionXML(patient, Pnr)->xml();
}

// A place that writes a whole file: its folder, the file ("" when the write makes it), the step
// as the screen takes it, and what the user is told, % standing for the failure's description;
// then what the user is told while another workstation holds the patient, for a patient file.
struct WriteSite {
    std::string name, folder, file;
    std::function<void()> step;
    std::string told;
    std::optional<std::string> toldWhenHeld;
};
enum class Fault { TooLarge, ReadOnly, HeldElsewhere };

class ExchangeTest : public ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        session().gUsername = "demo";
        session().gPassword = "hemligt <&> lösen";
        session().gServer = "https://korvalo.example";
        session().gInitXmlUrl = "/Public/Mirelo/InitXML.aspx";
    }

    // The boxes, "frame" where the main frame opened, and "ended" if the process ended.
    Texts seen(const std::function<void(const OpenMainFrame &)> &act) {
        Texts shown;
        processEnded = false;
        try {
            act([&] { shown = shown.empty() ? said() + Texts{"frame"} : shown; });
        } catch (const ProcessEnded &) {
        }
        return shown + said() + (processEnded ? Texts{"ended"} : Texts{});
    }
    Texts attempt(const std::string &username, const std::string &password) {
        return seen([&](const OpenMainFrame &frame) { Login({username, password, true}, frame); });
    }

    // The step with the file made read-only, with files limited to half its size, or with the
    // patient locked by another workstation, and what the user and the folders show afterwards.
    std::string underFault(Fault fault, const WriteSite &site) {
        const auto before = filesUnder(path(site.folder)), inbox = filesUnder(path("in"));
        if (fault == Fault::HeldElsewhere) {
            new platform::RecordLock(path("data"), Pnr, {}); // held until this process ends
        } else if (fault == Fault::ReadOnly) {
            fs::permissions(path(site.folder + "/" + site.file), fs::perms::owner_write,
                            fs::perm_options::remove);
        } else {
            const rlim_t half = (site.file.empty() ? 64 : before.at(site.file).size()) / 2;
            const rlimit limit{half, half};
            std::signal(SIGXFSZ, SIG_IGN);
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        try {
            site.step();
        } catch (const ProcessEnded &) {
        } catch (const MireloError &error) {
            platform::MsgBox("raised " + std::to_string(error.number()) + " " +
                             error.description());
        }
        std::string report = processEnded ? "the process ended\n" : "";
        for (const std::string &box : said()) {
            report += box + "\n";
        }
        // A stray file beside it, or a file changed or gone, is a write that was not undone.
        report += filesUnder(path(site.folder)) != before ? site.folder + " changed\n" : "";
        report += filesUnder(path("in")) != inbox ? "the inbox changed\n" : "";
        for (const std::string &secret : {Password, utf8ToLatin1(Password)}) {
            report += filesHolding(appDir(), secret).empty() ? "" : "the password in a file\n";
        }
        return report;
    }
};

TEST_F(ExchangeTest, the_messages_of_a_login_answer_open_the_frame_show_notes_or_refuse) {
    for (const auto &[messages, expected] : std::vector<std::pair<std::string, Texts>>{
             {message("0"), {"frame"}},
             // A single message lets the user in and its note is never shown; none keeps out.
             {message("1", "Osynlig"), {"frame"}},
             {message("7"), {"frame"}},
             {"", {}},
             // Notes come over the frame that the status 0 opened, each with a line break.
             {message("1", "Går ut.") + message("0"), {"frame", "[] Går ut.\r\n"}},
             {message("0") + message("0"), {"frame", "[] "}},
             // A refusal shows itself alone, but a status 0 ahead of it has let the user in.
             {message("3", "Inte") + message("2", "Spärrat.") + message("0"), {"[stop] Spärrat."}},
             {message(" 0") + message("6", "Nekad."), {"[stop] Nekad."}},
             {message("0") + message("4", "Utgånget."), {"frame", "[stop] Utgånget."}},
         }) {
        const platform::XmlDocument answer =
            parsedXml("<LoginResponse>" + messages + "</LoginResponse>");
        EXPECT_EQ(seen([&](const OpenMainFrame &frame) { HandleLoginResponse(answer, frame); }),
                  expected)
            << messages;
    }
}

TEST_F(ExchangeTest, a_login_starts_the_session_or_tells_why_not_and_keeps_the_password_to_itself) {
    writeBytes(path("users.xml"),
               "<Users>" +
                   user("karin", "<Signature>Dr. Karin O’Neill €</Signature>" + message("0")) +
                   user("utan-signatur", message("0")) +
                   user("utan-status", "<Signature>S</Signature><Message/>") +
                   user("serverfel", "<Answer>error</Answer>") + "</Users>");
    KorvaloProcess korvalo({"--users", path("users.xml")});
    writeSettingsFile({.dataPath = path("data/"), .server = korvalo.baseUrl()});
    const std::string missing = Support + "91 " + runtime::description(runtime::ObjectNotSet);
    const std::string empty = "[] Fyll i Användarnamn samt Lösenord.", p = "rätt-lösen";
    const auto damaged = StartsWith(
        Support + "-2147220990 Svaret från Korvalo kunde inte behandlas.\r\nAnledning: ");
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    int requests = 0;
    // The last is the session afterwards: user name, password and signature.
    for (const auto &[username, password, expected, started] :
         std::vector<std::tuple<std::string, std::string,
                                std::vector<::testing::Matcher<std::string>>, std::string>>{
             // The answer is ISO-8859-1: what lies beyond it comes as references, and intact.
             {"karin", p, {"frame"}, "karin rätt-lösen Dr. Karin O’Neill €"},
             {"karin", "fel", {"[stop] Felaktigt användarnamn eller lösenord."}, "karin fel "},
             {"utan-signatur", p, {missing, "ended"}, "  "},
             {"utan-status", p, {missing, "ended"}, "utan-status rätt-lösen S"},
             {"serverfel", p, {damaged, "ended"}, "  "},
             {"", p, {empty}, "  "},
             {"karin", "", {empty}, "  "},
         }) {
        session() = SessionValues{};
        EXPECT_THAT(attempt(username, password), ::testing::ElementsAreArray(expected)) << username;
        EXPECT_EQ(session().gUsername + " " + session().gPassword + " " + session().gSignature,
                  started);
        requests += !username.empty() && !password.empty();
    }
    const std::string printed =
        ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();
    // The attempts with an empty box sent nothing, and the last stored the settings all the same.
    EXPECT_THAT(readBytes(SettingsFilePath()), HasSubstr("<Username>karin</Username>"));
    ASSERT_TRUE(korvalo.stop());
    const std::string &log = korvalo.output();
    const std::regex post("POST /Public/Mirelo/Login.aspx");
    EXPECT_EQ(
        std::distance(std::sregex_iterator(log.begin(), log.end(), post), std::sregex_iterator()),
        requests);
    // The settings file is ISO-8859-1, so the Swedish letter is looked for in that form too.
    for (const std::string &secret : {p, utf8ToLatin1(p)}) {
        EXPECT_THAT(printed + log, Not(HasSubstr(secret)));
        EXPECT_THAT(filesHolding(appDir(), secret, path("users.xml")), IsEmpty());
    }
}

TEST_F(ExchangeTest,
       an_absent_server_may_be_tried_again_damaged_settings_end_it_only_http_is_used) {
    const ClosedPort closed;
    writeSettingsFile({.dataPath = path("data/"), .server = closed.baseUrl()});
    const Texts absent{
        "[stop] Kunde inte ansluta till Mirelos loginserver. Kontrollera din internetförbindelse."};
    EXPECT_EQ(attempt("karin", "rätt-lösen"), absent);
    EXPECT_EQ(attempt("karin", "rätt-lösen"), absent);
    // The settings are read before any request: a request first would meet the absent server.
    writeBytes(SettingsFilePath(), "inte xml");
    EXPECT_THAT(
        attempt("karin", "rätt-lösen"),
        ElementsAre(StartsWith(Support + "-2147220991 Inställningsfilen är skadad."), "ended"));
    for (const char *url : {"file:///etc/passwd", "ftp://127.0.0.1/"}) {
        platform::HttpRequest request;
        request.open("POST", url, false);
        EXPECT_THROW(request.send("<User/>"), MireloError) << url;
    }
}

TEST_F(ExchangeTest, the_login_holds_its_fields_a_number_goes_alone_and_a_patient_whole) {
    const platform::XmlDocument login = BuildLoginXML("Åsa", "hemligt <&>");
    EXPECT_THAT(login.xml(), StartsWith("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"));
    EXPECT_EQ(nodes(login, "//*") + nodes(login, "/User/*", &platform::XmlNode::text),
              (Texts{"User", "Username", "Password", "Version", "Åsa", "hemligt <&>", "1.0.2"}));
    const auto number = CreatePrescriptionXML(nullptr, "1");
    EXPECT_EQ(nodes(*number, "//*") +
                  nodes(*number, "//PrescriberInfo/*", &platform::XmlNode::text),
              (Texts{"Patient", "PrescriberInfo", "Username", "Password", "Path", "Version", "Pnr",
                     "demo", "hemligt <&> lösen", path("in/"), "1.0.2", "1"}));
    const std::string text =
        patientText(Pnr, "Åström", "Märta",
                    {{.id = "S2_1", .regNr = "777", .note = "Tas med mat"},
                     {.id = "S1_1", .regNr = "777", .checked = "0"},
                     {.id = "S3_1", .regNr = "888"}},
                    {}, "<History><AllergicHistory><RegNr>777</RegNr></AllergicHistory></History>");
    platform::XmlDocument patient = parsedXml(text),
                          newPatient = parsedXml(patientText("1", "A", "B", {}));
    // The nodes may move into the handover document, so their text is taken beforehand.
    const Texts current =
        nodes(patient, "//PatientData | //Product[ID = \"S2_1\"] | //Product[ID = \"S3_1\"]",
              &platform::XmlNode::xml);
    const auto handover = CreatePrescriptionXML(&patient, "");
    EXPECT_EQ(nodes(*handover, "/Patient/* | /Patient/PrescriberInfo/*"),
              (Texts{"PrescriberInfo", "Username", "Password", "Path", "Version", "PatientData",
                     "MedicalList"}));
    EXPECT_EQ(
        nodes(*handover, "/Patient/PatientData | /Patient/MedicalList/*", &platform::XmlNode::xml),
        current);
    EXPECT_EQ(nodes(*CreatePrescriptionXML(&newPatient, ""), "/Patient/MedicalList | //Product"),
              Texts{"MedicalList"});
    platform::XmlDocument broken = parsedXml("<Patient><MedicalList/></Patient>");
    EXPECT_FALSE(CreatePrescriptionXML(&broken, ""));
    EXPECT_EQ(said(), Texts{"[stop] Kunde inte skapa förskrivningsfil: " +
                            runtime::description(runtime::ObjectNotSet)});
    EXPECT_THAT(filesHolding(appDir(), "hemligt"), IsEmpty());
}

TEST_F(ExchangeTest, each_hand_off_fills_posts_and_shows_in_order_and_stops_at_a_failure) {
    // The page has loaded at the third look.
    const Texts loaded = {"Navigate https://korvalo.example/Public/Mirelo/InitXML.aspx",
                          "Sleep 100", "Sleep 100"},
                shown = {"ShowMaximized", "Visible", "AppActivate"},
                posted = {"Forms(0).txtXml = " + CreatePrescriptionXML(nullptr, "1")->xml(),
                          "Forms(0).Submit"};
    const std::map<std::string, std::pair<std::function<void()>, Texts>> handOffs = {
        {"patient",
         {[] { SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1")); },
          loaded + posted + shown}},
        // A bare number shows the window before the form is filled.
        {"number",
         {[] { SubmitPatientPnr("1"); }, loaded + Texts{"ShowMaximized"} + posted + shown}},
        {"login form",
         {[] { SubmitLoginFields("1"); },
          Texts{loaded[0], "Sleep 500", "Sleep 500", "Login.txtUsername = demo",
                "Login.txtPassword = hemligt <&> lösen", "Login.txtPath = " + path("in/"),
                "Login.txtVersion = 1.0.2", "Login.txtPatientPnr = 1", "Login.Submit"} +
              shown}},
        {"no handover", {[] { SubmitPrescriptionXML(std::nullopt); }, loaded}},
    };
    const Texts connection{
        "[stop] Kunde inte ansluta till Korvalos server. Kontrollera din internetförbindelse."};
    const Texts missing{"[stop] Fel uppstod: [76] Sökvägen hittades inte"};
    const Texts unknown{"[stop] Fel uppstod: [-2147220991] Okänt fel"};
    BrowserScript script;
    scriptBrowsers(script);
    for (const auto &[handOff, step, number, told] :
         std::vector<std::tuple<std::string, std::string, int32_t, Texts>>{
             {"patient", "", 0, {}},
             {"number", "", 0, {}},
             {"login form", "", 0, {}},
             {"no handover", "", 0, {}},
             // A page without the form is what the browser shows when the service isn't there.
             {"patient", "Forms(0).txtXml", runtime::NotSupportedByObject, connection},
             {"patient", "Forms(0).Submit", errors::LoginResponseDamaged, connection},
             {"number", "Forms(0).txtXml", runtime::NotSupportedByObject, connection},
             {"number", "Forms(0).Submit", errors::LoginResponseDamaged, connection},
             {"login form", "Login.txtVersion", runtime::NotSupportedByObject, connection},
             // A document that was never made has had its box; the page is not touched.
             {"no handover", "Forms(0).txtXml", runtime::NotSupportedByObject, {}},
             // Other failures are told for a bare number only, bringing it forward not even so.
             {"patient", "Forms(0).Submit", runtime::PathNotFound, {}},
             {"login form", "Login.Submit", runtime::PathNotFound, {}},
             {"number", "Forms(0).Submit", runtime::PathNotFound, missing},
             {"number", "Visible", errors::SettingsDamaged, unknown},
             {"number", "AppActivate", runtime::InvalidArgument, {}},
         }) {
        SCOPED_TRACE(handOff + " failing at " + step + " with " + std::to_string(number));
        script = BrowserScript{.incompleteReads = 2, .failingSteps = {{step, number}}};
        const auto &[run, steps] = handOffs.at(handOff);
        run();
        EXPECT_EQ(said(), told);
        EXPECT_EQ(script.browsersMade, 1);
        // Nothing is undone and nothing more is done: the page stays as the failure left it.
        auto failed = steps.begin();
        while (failed != steps.end() && *failed != step && !failed->starts_with(step + " = ")) {
            ++failed;
        }
        EXPECT_EQ(script.steps, Texts(steps.begin(), failed));
    }
}

TEST_F(ExchangeTest, the_hand_over_page_shows_its_users_what_came_and_prescribes_for_them) {
    KorvaloProcess korvalo({"--inbox", InboxFolder()});
    const std::string page = korvalo.baseUrl() + "/Public/Mirelo/InitXML.aspx";
    // The field is filled by script: the document, password and all, is never on screen.
    expectPage(webGet(page), 200, {"<input type=\"hidden\" name=\"txtXml\">"}, {"<textarea"});
    platform::XmlDocument patient = parsedXml(
        patientText(Pnr, "Öberg &lt;script&gt; \"&amp;\"", "Märta", {{.productName = "Trombyl"}}));
    // A hand-over as long as a patient's: a general note of 1 MB.
    patient.selectSingleNode("//GeneralInfo").setText(std::string(1 << 20, 'x') + "slut");
    expectPage(webPostForm(page, {{"txtXml", handover("demo", "demo123", &patient)}}), 200,
               {"<td>Märta Öberg &lt;script&gt; &quot;&amp;&quot;</td>", "Johnson &amp; Johnson",
                "xslut</td>", "<table id=\"medicinering\">", "<td>Trombyl</td>"},
               {"<script>", "demo123"});
    for (const auto &[username, password] : {std::pair{"demo", "fel"}, {"okänd", "demo123"}}) {
        expectPage(webPostForm(page, {{"txtXml", handover(username, password)}}), 403,
                   {"Felaktigt användarnamn eller lösenord."}, {"Prescribe"});
    }
    std::smatch key;
    const WebAnswer number = webPostForm(page, {{"txtXml", handover("demo", "demo123")}});
    ASSERT_TRUE(
        std::regex_search(number.body, key, std::regex("name=\"session\" value=\"(\\w+)\"")));
    // The message goes to the inbox the service was started with, whatever the form says; and
    // only for a personal number.
    const auto prescribe = [&](const std::string &pnr) {
        return webPostBody(korvalo.baseUrl() + "/Public/Mirelo/Prescribe.aspx",
                           "session=" + key[1].str() + "&pnr=" + pnr +
                               "&familyName=%C3%96berg&givenName=Anna&vnr=146712&packages_146712="
                               "2&dosage_146712=1+x+3+%3Cvid+behov%3E&inbox=" +
                               path("Error"));
    };
    expectPage(prescribe("%C3%96berg"), 400, {"&quot;Öberg&quot; är inget personnummer."});
    expectPage(prescribe(Pnr), 200, {"1 x 3 &lt;vid behov&gt;"});
    ASSERT_EQ(filesIn(path("in")).size(), 1u);
    EXPECT_FALSE(fs::exists(path("Error")));
    ASSERT_EQ(ImportPrescriptionFile(path("in/" + *filesIn(path("in")).begin())), Pnr);
    EXPECT_EQ(nodes(readStoredPatient(PatientFilePath(Pnr)),
                    "//FamilyName | //FirstGivenName | //Vnr | //NumberOfPackages | "
                    "//UnstructuredDosageAdmin | //PrescribedBy",
                    &platform::XmlNode::text),
              (Texts{"Öberg", "Anna", "146712", "2", "1 x 3 <vid behov>",
                     "Dr. Karin Lindqvist, Vårdcentralen Åby"}));
    // A request the service can't read gets an error page, and the client hands it over.
    const std::string login = korvalo.baseUrl() + "/Public/Mirelo/Login.aspx";
    expectPage(webPostBody(login, "<User><Username>demo</Username></User>"), 400, {"<html"});
    platform::HttpRequest request;
    request.open("POST", login, false);
    request.send("<User><Username>");
    EXPECT_THAT(request.responseStream().bytes, HasSubstr("<html"));
    EXPECT_TRUE(korvalo.stop());
}

TEST_F(ExchangeTest, the_demos_samples_are_messages_that_intake_takes_in) {
    const KorvaloRun run = RunKorvaloToEnd({"--samples", "4", "--inbox", InboxFolder()});
    ASSERT_TRUE(run.cleanExit) << run.output;
    ASSERT_EQ(filesIn(path("in")).size(), 4u);
    for (const std::string &name : filesIn(path("in"))) {
        const std::string pnr = ImportPrescriptionFile(path("in/" + name));
        EXPECT_EQ(pnr.size(), 12u) << name;
        EXPECT_EQ(nodes(readStoredPatient(PatientFilePath(pnr)), "//Pnr | //Product[1]"),
                  (Texts{"Pnr", "Product"}));
    }
    // Samples need an inbox to go to.
    EXPECT_FALSE(RunKorvaloToEnd({"--samples", "2"}).cleanExit);
}

// Every write of a whole file either lands whole or leaves the old file byte for byte, with the
// box of its failure, the message still in the inbox, no stray file, and nothing printed.
TEST_F(ExchangeTest, every_whole_file_write_that_fails_leaves_the_old_file_and_tells_of_it) {
    const ClosedPort closed;
    session().gPassword = Password;
    const LoginScreenInput karin{"karin", Password, true};
    const GeneralInfoMarks marks{[](auto &) {}, [](auto &) {}};
    const std::string busy = "[] raised -2147220984 Patienten ändras just nu på en annan "
                             "arbetsstation. Inget har sparats; försök igen om en stund.\n";
    const std::vector<WriteSite> sites = {
        {"a message taken into the patient's file", "data", Pnr + ".xml",
         [] {
             InboxTimer timer;
             for (int tick = 0; tick < 10; ++tick) {
                 timer.Timer1_Timer([] { return false; }, [] {});
             }
         },
         "the process ended\n[stop] %\n", ""},
        {"a product taken out", "data", Pnr + ".xml", [] { updateMedicalList("S_7", Pnr); },
         "[] raised 70 %\n", busy},
        {"the patient's general note", "data", Pnr + ".xml",
         [&] { SaveGeneralInfo(Pnr, "Pollenallergi", "Dr Ek", marks); }, "[] raised 70 %\n", busy},
        {"the settings file at a login", "System", "Settings.xml", [&] { Login(karin, nullptr); },
         "the process ended\n" + Support + "70 %\n"},
        {"the data folder chosen in the settings dialog", "System", "Settings.xml",
         [this] { SaveDataPath(path("other")); }, "[] raised 70 %\n"},
        {"the settings file at the first start", "System", "",
         [] {
             LoginScreenState screen;
             CheckSettingsFile(screen);
         },
         "[] raised 70 %\n"},
    };
    const std::string denied = runtime::description(runtime::PermissionDenied);
    for (const WriteSite &site : sites) {
        for (const auto &[fault, faultName] :
             {std::pair{Fault::TooLarge, "too large"}, std::pair{Fault::ReadOnly, "read-only"},
              std::pair{Fault::HeldElsewhere, "held by another workstation"}}) {
            if ((fault == Fault::ReadOnly && site.file.empty()) ||
                (fault == Fault::HeldElsewhere && !site.toldWhenHeld)) {
                continue;
            }
            SCOPED_TRACE(site.name + ", " + faultName);
            for (const char *folder : {"System", "in", "data", "other"}) {
                fs::remove_all(path(folder));
                fs::create_directory(path(folder));
            }
            std::vector<ProductFields> products(300);
            products[7].id = "S_7";
            storePatient(Pnr, products);
            writePrescriptionMessage(path("in/m.xml"), {.items = {MessageItem{}}});
            if (!site.file.empty()) {
                writeSettingsFile({.dataPath = path("data/"), .server = closed.baseUrl()});
            }
            std::string expected = site.told;
            expected.replace(expected.find('%'), 1,
                             fault == Fault::ReadOnly ? denied : denied + " (File too large)");
            expected = fault == Fault::HeldElsewhere ? *site.toldWhenHeld : expected;
            // In a process of its own, for the limit on files; anything printed fails it.
            EXPECT_EXIT(
                {
                    ::dup2(STDERR_FILENO, STDOUT_FILENO);
                    const std::string report = underFault(fault, site);
                    std::cerr << (report == expected ? ""
                                                     : "expected\n" + expected + "got\n" + report);
                    std::_Exit(report == expected ? 0 : 1);
                },
                ::testing::ExitedWithCode(0), "^$");
        }
    }
    // A write that lands keeps the permission bits of the file it replaces, and a workstation
    // that dies holding the patient lets go with its process.
    const std::string file = path("data/" + Pnr + ".xml"), before = readBytes(file);
    fs::permissions(file, fs::perms(0640));
    EXPECT_EXIT((new PatientFileLock(Pnr), std::_Exit(0)), ::testing::ExitedWithCode(0), "");
    updateMedicalList("S_7", Pnr);
    EXPECT_NE(readBytes(file), before);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    EXPECT_EQ(filesIn(path("data")),
              (std::set<std::string>{platform::RecordLockFileName, Pnr + ".xml"}));
}

// Four workstations, each a process with its own application folder and inbox, take in messages
// and save notes for the same patients on one data folder as fast as they can: every product
// stands in its patient's file once, a new patient's first ones too, and every note holds the
// last text written to it.
TEST_F(ExchangeTest, four_workstations_on_one_data_folder_lose_no_update) {
    const Texts patients = {"191212121212", "194001011234", "195505055555", "197707077777"};
    const std::vector<ProductFields> notes = {{.id = "N0", .regNr = "N0"},
                                              {.id = "N1", .regNr = "N1"},
                                              {.id = "N2", .regNr = "N2"},
                                              {.id = "N3", .regNr = "N3"}};
    // The third patient's file is found, and locked, by the number in another spelling.
    for (const std::string &file :
         {patients[0] + ".xml", patients[1] + ".xml", patients[2] + ".XML"}) {
        storePatientFile(file, patientText(file.substr(0, 12), "Ek", "Eva", notes));
    }
    // Each patient's products by ID, with the text of their note.
    std::map<std::string, std::map<std::string, std::string>> expected;
    std::array<pid_t, 4> workstations{};
    for (int w = 0; w < 4; ++w) {
        // For each patient in turn a message, and unless the patient is new to the practice, the
        // message's name as the new text of this workstation's note on the product "N" + w.
        std::vector<std::pair<std::string, std::string>> visits;
        for (int i = 0; i < 200; ++i) {
            const std::string &pnr = patients[i % patients.size()];
            visits.emplace_back(pnr, "W" + std::to_string(w) + "M" + std::to_string(i));
            expected[pnr][visits.back().second + "_1"] = "";
            if (pnr != patients.back()) {
                expected[pnr][notes[w].id] = "Anteckning " + visits.back().second;
            }
        }
        fs::create_directories(path("ws" + std::to_string(w) + "/in"));
        if ((workstations[w] = fork()) == 0) {
            setApplicationDirectoryForTesting(path("ws" + std::to_string(w)));
            platform::setLockPauseForTesting({});
            UnfinishedMessages unfinished;
            try {
                for (const auto &[pnr, name] : visits) {
                    writePrescriptionMessage(
                        InboxFolder() + name + ".xml",
                        {.pnr = pnr, .setId = name, .items = {{.regNr = name}}});
                    ReadFolder(unfinished);
                    if (pnr != patients.back()) {
                        SaveProductNote(pnr, notes[w].id, "Anteckning " + name, "Doktor",
                                        [](const std::string &) {});
                    }
                }
                // A message whose patient another workstation held stays for a later scan.
                while (!filesIn(InboxFolder()).empty()) {
                    ReadFolder(unfinished);
                }
            } catch (...) {
                std::_Exit(2);
            }
            std::_Exit(boxes.empty() ? 0 : 1); // a box is a failure too
        }
    }
    for (const pid_t workstation : workstations) {
        int status = -1;
        EXPECT_TRUE(waitpid(workstation, &status, 0) == workstation && WIFEXITED(status) &&
                    WEXITSTATUS(status) == 0)
            << status;
    }
    for (const std::string &pnr : patients) {
        std::map<std::string, std::string> found;
        const platform::XmlDocument patient = readStoredPatient(PatientFilePath(pnr));
        for (const platform::XmlNode &product : patient.selectNodes("//Product")) {
            const std::string id = product.selectSingleNode("ID").text();
            found[found.contains(id) ? id + " again" : id] =
                product.selectSingleNode("ExtendedMedicalInfo").text();
        }
        EXPECT_EQ(found, expected[pnr]) << pnr;
    }
}

class BrowserHandoffTest : public ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        ensureGuiApplication();
        session() = {.gDataPath = path("data/"), .gUsername = "demo", .gInitXmlUrl = "/handover"};
        session().gPassword = "hemligt <&> lösen \"1\"";
        session().gServer = pages.baseUrl();
    }
    bool waitForPosts(int posts) {
        return QTest::qWaitFor([&] { return pages.postsReceived >= posts; }, 20000);
    }

    FormPageServer pages;
    BrowserProcesses browsers;
};

TEST_F(BrowserHandoffTest,
       a_patient_and_the_login_form_are_posted_as_built_and_the_window_left_shown) {
    platform::XmlDocument patient = parsedXml(patientText(
        "191212121212", "Åström", "Märta",
        {{.id = "S2_1", .regNr = "777", .note = "Tas med mat &amp; vatten &lt;morgon&gt;"},
         {.id = "S1_1", .regNr = "777", .checked = "0"}}));
    const auto handover = CreatePrescriptionXML(&patient, "");
    SubmitPrescriptionXML(handover);
    ASSERT_TRUE(waitForPosts(1));
    // The field's text comes with the browser's line breaks; the document must be the same.
    EXPECT_EQ(parsedXml(pages.lastPost().at("txtXml")).xml(), handover->xml());

    session().gInitXmlUrl = "/login";
    SubmitLoginFields("191212121212");
    ASSERT_TRUE(waitForPosts(2));
    // Into the form named Login, not the page's first.
    EXPECT_EQ(pages.lastPost().at("txtPassword"), session().gPassword);
    EXPECT_EQ(pages.wrongFormPosts, 0);
    EXPECT_THAT(said(), IsEmpty());
    // The window is the physician's now: shown, maximized, and keeping nothing on disk.
    ASSERT_EQ(browsers.started(), 2u);
    for (std::size_t browser = 0; browser < 2; ++browser) {
        for (const char *state : {"visible", "maximized", "offTheRecord"}) {
            EXPECT_TRUE(browsers.status(browser).value(state).toBool()) << browser << state;
        }
    }
}

TEST_F(BrowserHandoffTest, no_form_a_closed_port_or_a_browser_that_never_answers_is_no_connection) {
    session().gInitXmlUrl = "/without-field";
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    SubmitPatientPnr("1912");
    session().gInitXmlUrl = "/handover"; // no form named Login
    SubmitLoginFields("1912");
    const ClosedPort closed;
    session().gServer = closed.baseUrl();
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    // An executable that ends at once without ever answering, as a broken installation would.
    platform::setBrowserFactory([] {
        return platform::makeProcessBrowser(
            std::make_shared<platform::BrowserChannel>("/bin/true"));
    });
    SubmitPatientPnr("1912");
    EXPECT_EQ(said(), Texts(5, "[stop] Kunde inte ansluta till Korvalos server. Kontrollera din "
                               "internetförbindelse."));
    // Where the service can't be reached, the browser says so in Swedish, on a page of its own.
    EXPECT_THAT(browsers.script(3, "document.body.innerText").toString().toStdString(),
                HasSubstr("Tjänsten kan inte nås just nu."));
    EXPECT_EQ(pages.postsReceived + pages.wrongFormPosts, 0);
}

TEST_F(BrowserHandoffTest, the_browser_lives_on_when_mirelo_ends_and_keeps_the_password_to_itself) {
    const std::string password = session().gPassword = "Pw-hemligt-91";
    QProcess mirelo;
    mirelo.setProcessChannelMode(QProcess::MergedChannels);
    mirelo.start(MIRELO_HANDOFF_THEN_END_BINARY,
                 {QString::fromStdString(appDir()), QString::fromStdString(pages.baseUrl()),
                  QStringLiteral("/handover"), QString::fromStdString(password)});
    ASSERT_TRUE(mirelo.waitForFinished(60000));
    const std::string printed = mirelo.readAllStandardOutput().toStdString();
    std::smatch line;
    ASSERT_TRUE(std::regex_search(printed, line, std::regex("(^|\n)browser ([0-9]+)\n")))
        << printed;
    EXPECT_FALSE(std::regex_search(printed, std::regex("(^|\n)box ")));
    // Whatever else happens, the browser this test caused ends with it.
    struct Ending {
        pid_t pid;
        ~Ending() { endBrowserProcess(pid); }
    } browser{std::stoi(line[2])};

    ASSERT_TRUE(waitForPosts(1));
    // Calls from the page shown in the browser go on arriving after Mirelo has ended.
    const int callsWhenMireloEnded = pages.alivePings;
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return pages.alivePings > callsWhenMireloEnded + 2; }, 20000));
    EXPECT_TRUE(platform::processRunning(browser.pid));

    // The number was posted as built, its password reaching the page through the channel alone.
    EXPECT_EQ(parsedXml(pages.lastPost().at("txtXml")).xml(),
              CreatePrescriptionXML(nullptr, "191212121212")->xml());
    const std::string process = "/proc/" + std::to_string(browser.pid);
    EXPECT_THAT(readBytes(process + "/cmdline"), HasSubstr("mirelo-browser"));
    EXPECT_THAT(readBytes(process + "/cmdline") + readBytes(process + "/environ") + printed,
                Not(HasSubstr(password)));
    EXPECT_THAT(filesHolding(appDir(), password), IsEmpty());
}

} // namespace
} // namespace mirelo::testing
