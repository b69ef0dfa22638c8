#include "closed_port.h"
#include "core/clock.h"
#include "intake/inbox_scan.h"
#include "intake/medication_list_merge.h"
#include "intake/message_to_patient.h"
#include "intake/product_number_check.h"
#include "intake/product_record.h"
#include "intake_rules.h"
#include "korvalo_process.h"
#include "patient_file_builder.h"
#include "platform/record_lock.h"
#include "prescription_message_builder.h"
#include "test_environment.h"

#include <map>
#include <regex>
#include <sys/stat.h>
#include <utility>

namespace mirelo::testing {
namespace {

namespace fs = std::filesystem;
using platform::XmlDocument;
using platform::XmlNode;

// The root and its children, then every product as its ID, Checked and the fields intake
// decides that say anything ("-" for one the product lacks).
Texts listed(const XmlDocument &patient) {
    Texts lines = {patient.documentElement().nodeName() + ":"};
    for (const XmlNode &child : patient.documentElement().childNodes()) {
        lines[0] += " " + child.nodeName();
    }
    for (const XmlNode &product : patient.selectNodes("//Product")) {
        lines.push_back(product.selectSingleNode("ID").text());
        for (const std::string name : {"Checked", "ExtendedMedicalInfo", "ExtendedMedicalInfoBy",
                                       "ExtendedMedicalInfoTimestamp", "TakenOutBy",
                                       "TakenOutTimestamp", "Allergic", "AllergicHistory"}) {
            const XmlNode field = product.selectSingleNode(name);
            const std::string text = field ? field.text() : "-";
            if (name == "Checked" || (!text.empty() && text != "0")) {
                lines.back() += " " + name + "=" + text;
            }
        }
    }
    return lines;
}

// What an act gives, or "fel" and the number it fails with.
template <typename Act> auto outcomeOf(const Act &act) -> decltype(act()) {
    try {
        return act();
    } catch (const MireloError &error) {
        return {"fel " + std::to_string(error.number())};
    }
}

class IntakeTest : public ApplicationTest {
  protected:
    static XmlDocument parsed(const PrescriptionMessage &m) {
        return parsedXml(prescriptionMessageText(m));
    }
    void drop(const std::string &name, const PrescriptionMessage &message) {
        writePrescriptionMessage(path("in/" + name), message);
    }

    // The medication view notes how many files the inbox held when asked if it is visible.
    void tick(int times) {
        for (int i = 0; i < times; ++i) {
            timer.Timer1_Timer([this] { return viewAsked(); }, refresh);
        }
    }
    bool viewAsked() {
        std::error_code missing;
        inboxWhenAsked = std::distance(fs::directory_iterator(path("in"), missing), {});
        return viewVisible;
    }

    InboxTimer timer;
    bool viewVisible = true;
    long inboxWhenAsked = -1;
    int refreshes = 0;
    std::function<void()> refresh = [this] { ++refreshes; };
};

TEST_F(IntakeTest, the_tenth_tick_takes_in_a_folder_of_messages) {
    // A known patient gets 10 000 items, each RegNr twice: item i and item i + 5000.
    constexpr int Items = 10000, Half = Items / 2;
    // A tab in a stored value is dropped at reading.
    const std::string known = patientText(
        "194001011234", "Lind", "Åke",
        {{.id = "OLD_0", .regNr = "R0", .note = "Tål ej", .allergic = "1", .allergicHistory = "1"},
         {.id = "OLD_X", .regNr = "X"}},
        {"Pace\tmaker\nsedan 2019", "Doktor Ek", "2025-10-01 12:00:00"});
    storePatientFile("194001011234.XML", known);
    std::string retired =
        texts(readStoredPatient(path("data/194001011234.XML")), "//Product[1]/*", true);
    retired.replace(retired.find("|Checked=1|"), 11, "|Checked=0|");
    PrescriptionMessage message{.pnr = "194001011234", .postalCode = "", .setId = "A"};
    for (int i = 0; i < Items; ++i) {
        message.items.push_back(
            {.itemId = std::to_string(i), .regNr = "R" + std::to_string(i % Half)});
    }
    // The service writes a line break inside a value as character references.
    message.items[1].dosage = "1@2";
    std::string text = prescriptionMessageText(message);
    const std::string tenThousand = utf8ToLatin1(text.replace(text.find('@'), 1, "&#13;&#10;"));
    writeFinishedMessage(path("in/a.xml"), tenThousand);
    // An item-less message starts no list, and reads nothing else.
    drop("b.XML", {.pnr = "1212121212",
                   .omitted = {"PrescriptionSetId", "MessageSender",
                               "GeneralPrescriptionMessageInformation"}});
    drop("bxml", {.pnr = "19121212-1212"});
    drop("c.xml.tmp", {.pnr = "3"});
    writeBytes(path("in/c.txt"), "inte ett recept");
    fs::create_directory(path("in/c.xml"));
    // Only a personal number names a patient: any other IdValue is set aside, with a word.
    std::set<std::string> rejected;
    Texts told;
    for (const std::string pnr :
         {"", "../../escaped", "/tmp/escaped", "a/b", "..", "1\t2", "1\\2", "Öberg", "-rf", "."}) {
        const std::string name = "e" + std::to_string(rejected.size()) + ".xml";
        drop(name, {.pnr = pnr, .items = {MessageItem{}}});
        rejected.insert("2026-03-15_140509_" + name);
        told.push_back(
            "[exclamation] Receptet " + name + " kunde inte läsas in: " +
            (pnr.empty() ? "det saknar personnummer" : "\"" + pnr + "\" är inget personnummer") +
            ". Det ligger kvar som 2026-03-15_140509_" + name + " i mappen Error.");
    }

    // Nine ticks leave everything alone: a scan would ask for the view and make Error/ first.
    tick(9);
    EXPECT_TRUE(inboxWhenAsked == -1 && filesIn(appDir()) == (std::set<std::string>{"data", "in"}));
    tick(1);
    EXPECT_EQ(std::pair(inboxWhenAsked, refreshes), std::pair(16L, 1));
    EXPECT_EQ(said(), told);
    EXPECT_EQ(filesIn(path("in")), (std::set<std::string>{"c.txt", "c.xml", "c.xml.tmp"}));
    EXPECT_EQ(filesIn(path("Error")), rejected);
    EXPECT_EQ(filesIn(path("data")),
              (std::set<std::string>{platform::RecordLockFileName, "1212121212.xml",
                                     "194001011234.XML", "19121212-1212.xml"}));
    EXPECT_FALSE(fs::exists(appDir() + "/../escaped.xml") || fs::exists("/tmp/escaped.xml"));

    // The known patient, in the file of another case: the latest name and address, even an
    // empty one, and the general note kept; in single bytes, CR stored as 18 and LF as 13.
    const XmlDocument knownPatient = readStoredPatient(path("data/194001011234.XML"));
    EXPECT_EQ(texts(knownPatient, "//PatientData/*", true),
              "FamilyName=Åström|FirstGivenName=Märta|Pnr=194001011234|StreetName=Ängsvägen 3|"
              "PostalCode=|City=Göteborg|GeneralInfo=Pacemaker\nsedan 2019|GeneralInfoBy=Doktor "
              "Ek|GeneralInfoTimestamp=2025-10-01 12:00:00|");
    EXPECT_THAT(unscrambleBytes(readBytes(path("data/194001011234.XML"))),
                AllOf(StartsWith("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"),
                      HasSubstr("<FamilyName>\xC5str\xF6m</FamilyName>"), HasSubstr(">1\r\n2<")));
    // Newest first; each item's earlier twin, and the file's product of its RegNr, retired.
    const std::string noted = " ExtendedMedicalInfo=Tål ej Allergic=1 AllergicHistory=1";
    Texts expected = {"Patient: PatientData MedicalList"};
    for (int i = Items - 1; i >= 0; --i) {
        expected.push_back("A_" + std::to_string(i) + " Checked=" + (i < Half ? "0" : "1") +
                           (i % Half == 0 ? noted : ""));
    }
    expected.insert(expected.end(), {"OLD_0 Checked=0" + noted, "OLD_X Checked=1"});
    EXPECT_EQ(listed(knownPatient), expected);
    EXPECT_EQ(texts(knownPatient, "//Product[ID = 'OLD_0']/*", true), retired);

    EXPECT_EQ(listed(readStoredPatient(path("data/1212121212.xml"))),
              Texts{"Patient: PatientData"});

    // A hidden view isn't refreshed, nor a visible one after a scan that handled nothing. The
    // 10 000 items once more, as after a crash before the deletion, add nothing.
    const std::string once = readBytes(path("data/194001011234.XML"));
    viewVisible = false;
    drop("m.xml", {});
    writeFinishedMessage(path("in/a.xml"), tenThousand);
    tick(10);
    EXPECT_EQ(readBytes(path("data/194001011234.XML")), once);
    viewVisible = true;
    drop("m.xml", {.pnr = ""});
    tick(10);
    EXPECT_TRUE(refreshes == 1 && fs::exists(path("data/191212121212.xml")));
}

TEST_F(IntakeTest, a_failure_ends_the_process_unless_the_product_number_exchange_failed) {
    const auto failsWith = [this](const char *name, ::testing::Matcher<std::string> box) {
        SCOPED_TRACE(name);
        const auto before = filesUnder(appDir());
        EXPECT_THROW(tick(10), ProcessEnded);
        EXPECT_THAT(said(), ElementsAre(box));
        EXPECT_EQ(filesUnder(appDir()), before);
        fs::remove_all(path("in"));
        fs::create_directory(path("in"));
    };
    const std::string damaged = "[stop] Receptfil är skadad.\r\nAnledning: ";
    const std::string notSet = "[stop] Objektvariabeln eller blockvariabeln With har inte angetts";

    fs::remove(path("in"));
    failsWith("no inbox", "[stop] Det finns ingen katalog för inkommande recept.");
    std::string text = utf8ToLatin1(prescriptionMessageText({}));
    writeFinishedMessage(path("in/a_cut.xml"), text.substr(0, text.size() - 40));
    drop("b_whole.xml", {});
    failsWith("a cut message before a whole one",
              AllOf(StartsWith(damaged), ::testing::SizeIs(::testing::Gt(damaged.size()))));
    drop("m.xml", {.omitted = {"PostalCode"}});
    failsWith("a message without a postal code", notSet);
    storePatient("7777777777", {ProductFields{}});
    drop("m.xml", {.pnr = "7777777777", .items = {{.itemId = "5"}, {.omitted = {"Pnmn"}}}});
    failsWith("a second item without a name", notSet);
    // 77 KiB that would read as 256 MB: one 64 KiB entity used 4 000 times as a name.
    text = prescriptionMessageText({.pnr = "7777777777", .items = {MessageItem{}}});
    text.replace(text.find("Alvedon"), 7, QString("&big;").repeated(4000).toStdString());
    text.insert(text.find("?>") + 2, "<!DOCTYPE NewPrescriptionMessage [<!ENTITY big \"" +
                                         std::string(64 * 1024, 'x') + "\">]>");
    writeFinishedMessage(path("in/big.xml"), utf8ToLatin1(text));
    failsWith("entities that multiply the text",
              damaged + "Entiteterna ger mer text än tillåtet: högst tio gånger dokumentets "
                        "storlek och aldrig mer än 16 MiB.");
    writeBytes(path("Error/2026-03-15_140509_anon.xml"), "tidigare");
    drop("anon.xml", {.pnr = ""});
    failsWith("a name already set aside this second", "[stop] Filen finns redan");
    // A message that can't be deleted after its write comes back at the next scan, and adds
    // nothing.
    drop("locked.xml", {.items = {{.itemId = "1"}, {.itemId = "2", .regNr = "100002"}}});
    ::chmod(path("in/locked.xml").c_str(), 0444);
    EXPECT_THROW(tick(10), ProcessEnded);
    EXPECT_THAT(said(), ElementsAre("[stop] Åtkomst nekad"));
    EXPECT_EQ(listed(readStoredPatient(path("data/191212121212.xml"))),
              (Texts{"Patient: PatientData MedicalList", "S1_2 Checked=1", "S1_1 Checked=1"}));
    failsWith("a message taken in again", "[stop] Åtkomst nekad");

    for (const auto &[failure, box] :
         {std::pair{MireloError(errors::VnrResponseDamaged, "Kontroll av varunummer felaktig."),
                    "[stop] Kontroll av varunummer felaktig. "},
          std::pair{MireloError(errors::ServerUnreachable, "anslutning"),
                    "[stop] Kunde inte ansluta till Mirelos loginserver. Kontrollera din "
                    "internetförbindelse."}}) {
        drop("m.xml", {});
        refresh = [failure] { throw failure; };
        tick(10);
        EXPECT_THAT(said(), ElementsAre(box));
    }
    // The patient file gone from under the view is like any other failure.
    drop("m.xml", {});
    refresh = [] { throw MireloError(errors::PatientFileMissing, "Patientens fil saknas."); };
    EXPECT_THROW(tick(10), ProcessEnded);
    EXPECT_THAT(said(), ElementsAre("[stop] Patientens fil saknas."));
}

TEST_F(IntakeTest, an_item_becomes_a_record_or_fails_the_message_and_the_check_sends_less) {
    const XmlDocument message = parsed(PrescriptionMessage{
        .issued = "2026-03-14T10:20:30.000+01:00",
        .items = {
            {.itemId = "3", .productName = "A & B", .dosage = "1 på\nkvällen", .repeats = "03"},
            {.itemId = "4", .productId = "067890"}}});
    const XmlDocument nef = BuildNefXML(message);
    const XmlDocument vnr = BuildVnrXML(message);
    const std::string fields = texts(nef, "//Product[1]/*", true);
    EXPECT_EQ(fields,
              "ID=S1_3|Vnr=012345|RegNr=100001|ProductName=A & B|CompanyName=Orion|"
              "Form=Tablett|Str=500 mg|ATCcode=N02BE01|SubstitutionType=|CareCoverageType=HK|"
              "NumberOfPackages=1|PackageSize=20 st|UnstructuredDosageAdmin=1 på\nkvällen|"
              "DispensingRepeatNumber=03|TimeValue=14|TimeUnit=d|PrescribedBy=Doktor Björk|"
              "PrescribedTimestamp=2026-03-14T10:20:30.000+01:00|Checked=1|"
              "ExtendedMedicalInfo=|ExtendedMedicalInfoBy=|ExtendedMedicalInfoTimestamp=|"
              "InsertedBy=Doktor Björk|InsertedTimestamp=2026-03-14T10:20:30.000+01:00|"
              "TakenOutBy=|TakenOutTimestamp=|Allergic=0|AllergicHistory=0|");
    // The check sends nothing of the product itself, and an interval even for one dispensing.
    const std::regex productFacts(
        "\\|(RegNr|ProductName|CompanyName|Form|Str|ATCcode|PackageSize)=[^|]*");
    EXPECT_EQ(texts(vnr, "//Product[1]/*", true), std::regex_replace(fields, productFacts, "|$1="));
    for (const auto &[built, second] : {std::pair{&nef, 26u}, std::pair{&vnr, 28u}}) {
        EXPECT_THAT(built->xml(), StartsWith("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"));
        EXPECT_EQ(listed(*built),
                  (Texts{"VnrCheck: Product Product", "S1_3 Checked=1", "S1_4 Checked=1"}));
        EXPECT_EQ(built->selectNodes("//Product")[1].childNodes().size(), second);
    }
    EXPECT_EQ(listed(BuildVnrXML(parsedXml("<NewPrescriptionMessage/>"))), Texts{"VnrCheck:"});
    EXPECT_THAT(message.selectNodes("//Product"), IsEmpty());

    KorvaloProcess korvalo;
    session().gServer = korvalo.baseUrl();
    EXPECT_EQ(PostVnrCheck(message).selectSingleNode("//Product[2]/Vnr").text(), "067890");
    // An error page fails on the missing object of its reason.
    KorvaloProcess failing({"--vnr-fails"});
    session().gServer = failing.baseUrl();
    EXPECT_EQ(outcomeOf([&] { return PostVnrCheck(message).xml(); }), "fel 91");
    const ClosedPort closed;
    session().gServer = closed.baseUrl();
    EXPECT_EQ(outcomeOf([&] { return PostVnrCheck(message).xml(); }),
              "fel " + std::to_string(errors::ServerUnreachable));

    // The fallback RegNr is the moment to the second, on the 24-hour clock.
    freezeClockForTesting(QDateTime(QDate(2026, 12, 1), QTime(23, 59, 58)));
    // An item; the record's RegNr [dosage] [repeat number] size, or failure; what the check gives.
    std::vector<std::tuple<MessageItem, std::string, std::string>> cases = {
        {{.dosage = "1x3", .omitted = {"TimeInterval"}}, "100001 [1x3] [1] 26", "fel 91"},
        {{.dosage = "1x3", .repeats = "0"}, "100001 [1x3] [0] 26", "<?xml"},
        {{.dosage = "1x3", .repeats = " 2 "}, "100001 [1x3] [ 2 ] 28", "<?xml"},
        {{.dosage = ""}, "100001 [] [1] 26", "<?xml"},
        {{.omitted = {"UnstructuredDosageAdmin"}}, "100001 [] [1] 26", "fel 91"},
        {{.regNr = "", .omitted = {"InstructionsForUse"}}, "20261201235958 [] [1] 26", "fel 91"},
        {{.repeats = "2", .omitted = {"TimeValue"}}, "fel 91", "fel 91"},
        {{.repeats = "2", .omitted = {"TimeUnit"}}, "fel 91", "fel 91"},
        {{.repeats = ""}, "fel 13", "<?xml"},
        {{.repeats = "två"}, "fel 13", "<?xml"},
        {{.repeats = "2x"}, "fel 13", "<?xml"},
    };
    for (const char *name :
         {"RegNr", "Pnmn", "Tknm", "Berf", "Strnum", "Strenh", "Atccode", "Forpstl"}) {
        cases.push_back({{.omitted = {name}}, "fel 91", "<?xml"});
    }
    for (const char *name :
         {"PrescriptionItemId", "ProductId", "NumberOfPackages", "DispensingRepeatNumber",
          "CareCoverageType", "PrescriptionSetId", "MessageSender", "IssueDateAndTimeOfMessage"}) {
        cases.push_back({{.omitted = {name}}, "fel 91", "fel 91"});
    }
    for (const auto &[item, record, check] : cases) {
        SCOPED_TRACE(::testing::PrintToString(item.omitted) + ", repeats " + item.repeats);
        const XmlDocument single = parsed({.items = {item}, .omitted = item.omitted});
        EXPECT_EQ(outcomeOf([&] {
                      const XmlDocument built = BuildNefXML(single);
                      const auto children = built.selectSingleNode("//Product").childNodes();
                      return children[2].text() + " [" + children[12].text() + "] [" +
                             children[13].text() + "] " + std::to_string(children.size());
                  }),
                  record);
        EXPECT_THAT(outcomeOf([&] { return BuildVnrXML(single).xml(); }), StartsWith(check));
    }

    // Of two items that can't be read, the first in the message decides.
    const auto firstFailure = [&](const std::vector<MessageItem> &items) {
        return outcomeOf([&] { return BuildNefXML(parsed({.items = items})).xml(); });
    };
    EXPECT_EQ(firstFailure({{.repeats = "två"}, {.omitted = {"Pnmn"}}}), "fel 13");
    EXPECT_EQ(firstFailure({{.omitted = {"Pnmn"}}, {.repeats = "två"}}), "fel 91");
}

TEST_F(IntakeTest, a_new_product_goes_first_retires_its_RegNr_and_inherits_note_and_warning) {
    const std::string history =
        "<History><AllergicHistory><RegNr>100001</RegNr></AllergicHistory></History>";
    const std::string after = "Patient: PatientData MedicalList History";
    const struct {
        const char *name;
        std::vector<ProductFields> older;
        Texts after; // the root's children and the products, newest first; or the failure
    } cases[] = {
        {"no products yet", {}, {"Patient: PatientData History MedicalList", "S1_1 Checked=1"}},
        {"one taken out hands on its note and warning, without author and time",
         {{.checked = "0", .note = "ej", .noteBy = "Ek", .noteTimestamp = "1/1", .allergic = "1"}},
         {after, "S1_1 Checked=1 ExtendedMedicalInfo=ej Allergic=1",
          "1_1 Checked=0 ExtendedMedicalInfo=ej ExtendedMedicalInfoBy=Ek "
          "ExtendedMedicalInfoTimestamp=1/1 Allergic=1"}},
        {"a warning taken away hands on only the history mark",
         {{.allergicHistory = "1"}},
         {after, "S1_1 Checked=1 AllergicHistory=1", "1_1 Checked=0 AllergicHistory=1"}},
        {"a warning without a note is handed on with the empty note",
         {{.allergic = "1"}},
         {after, "S1_1 Checked=1 Allergic=1", "1_1 Checked=0 Allergic=1"}},
        {"where older ones differ, the oldest with a note or warning wins",
         {{.id = "3_1", .note = "ny", .allergicHistory = "1"},
          {.id = "2_1", .checked = "0", .note = "gammal", .allergic = "1"},
          {.id = "1_1", .checked = "0"}},
         {after, "S1_1 Checked=1 ExtendedMedicalInfo=gammal Allergic=1 AllergicHistory=1",
          "3_1 Checked=0 ExtendedMedicalInfo=ny AllergicHistory=1",
          "2_1 Checked=0 ExtendedMedicalInfo=gammal Allergic=1", "1_1 Checked=0"}},
        {"an empty Checked of the same RegNr", {{.checked = ""}}, {"fel 13"}},
        {"a warning not a number, beside a note", {{.note = "ej", .allergic = "ja"}}, {"fel 13"}},
        {"no history mark", {{.omitted = {"AllergicHistory"}}}, {"fel 91"}},
        {"a broken product of another RegNr isn't looked at",
         {{.regNr = "9", .checked = "", .omitted = {"Allergic", "ExtendedMedicalInfo"}}},
         {after, "S1_1 Checked=1", "1_1 Checked= ExtendedMedicalInfo=- Allergic=-"}},
    };
    const XmlDocument message = parsed({.items = {MessageItem{}}});
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        XmlDocument patient = parsedXml(patientText("1", "Ek", "Eva", c.older, {}, history));
        EXPECT_EQ(outcomeOf([&] {
                      TakeInMessageItems(message, patient);
                      return listed(patient);
                  }),
                  c.after);
        EXPECT_EQ(patient.selectSingleNode("//History").xml(),
                  parsedXml(history).documentElement().xml());
    }

    // An empty RegNr is never matched, not even by an empty one; its unreadable flags show it.
    XmlDocument patient =
        parsedXml(patientText("1", "Ek", "Eva", {{.regNr = "", .checked = "", .allergic = "x"}}));
    const XmlDocument built = BuildNefXML(message);
    built.selectSingleNode("//RegNr").setText("");
    MergeProductIntoMedicalList(patient, built.selectSingleNode("//Product"));
    EXPECT_EQ(listed(patient), (Texts{"Patient: PatientData MedicalList", "S1_1 Checked=1",
                                      "1_1 Checked= Allergic=x"}));

    // Taken in together (each older product read once), items give what they give one by one
    // on any hand-edited shape; in the last, retiring a product takes another.
    const auto product = [](const std::string &regNr, const std::string &checked) {
        return "<Product><RegNr>" + regNr + "</RegNr><Checked>" + checked +
               "</Checked><ExtendedMedicalInfo>anteckning</ExtendedMedicalInfo>"
               "<Allergic>1</Allergic><AllergicHistory>1</AllergicHistory></Product>";
    };
    const XmlDocument threeItems = parsed(
        {.items = {{.itemId = "1"}, {.itemId = "2", .regNr = "1"}, {.itemId = "3", .regNr = "2"}}});
    for (const std::string &body :
         {"<MedicalList>" + product("100001", "1") + product("2", "1") + "</MedicalList>",
          "<MedicalList>" + product("100001", "<Product><RegNr>1</RegNr></Product>") +
              "</MedicalList>"}) {
        SCOPED_TRACE(body);
        XmlDocument together = parsedXml("<Patient><PatientData/>" + body + "</Patient>");
        XmlDocument oneByOne = parsedXml("<Patient><PatientData/>" + body + "</Patient>");
        const XmlDocument products = BuildNefXML(threeItems);
        EXPECT_EQ(outcomeOf([&] {
                      TakeInMessageItems(threeItems, together);
                      return together.xml();
                  }),
                  outcomeOf([&] {
                      for (const XmlNode &each : products.selectNodes("//Product")) {
                          MergeProductIntoMedicalList(oneByOne, each);
                      }
                      return oneByOne.xml();
                  }));
    }
    // Where retiring a product would take the list out of the file, no item is taken in.
    XmlDocument nested =
        parsedXml("<Patient>" + product("100001", "1<MedicalList/>") + "</Patient>");
    EXPECT_EQ(outcomeOf([&] {
                  TakeInMessageItems(threeItems, nested);
                  return nested.xml();
              }),
              "fel " + std::to_string(errors::PatientFileDamaged));
}

// No field longer than a real prescription needs, and no more growth of the patient file than
// the message's own size allows: beyond that a message is damaged, and the file untouched.
TEST_F(IntakeTest, a_message_that_would_swell_the_patient_file_is_refused) {
    PrescriptionMessage real{.prescriber = std::string(200, 'N')};
    for (int i = 0; i < 300; ++i) {
        real.items.push_back({.itemId = std::to_string(i), .dosage = std::string(2000, 'd')});
    }
    // Fifty products that would copy a long name are refused before one is made, even where
    // the file holds them all.
    PrescriptionMessage longName{.prescriber = std::string(30000, 'N')};
    longName.items.resize(50);
    // A bare ">" of a message is written "&gt;" in the file.
    const std::string angles =
        QString::fromStdString(
            prescriptionMessageText({.prescriber = std::string(8000, '>'),
                                     .setId = "S2",
                                     .items = {{.dosage = std::string(32000, '>')}}}))
            .replace("&gt;", ">")
            .toStdString();
    const std::string damaged = "[stop] Receptfil är skadad.\r\nAnledning: ";
    const std::string grows = damaged + "Receptet skulle göra patientfilen mer än ";
    const std::pair<std::string, std::string> cases[] = {
        {prescriptionMessageText(real), ""},
        {latin1ToUtf8(
             readBytes(MIRELO_REGRESSIONS_DIR "/message-prescriber-name-amplification.input")),
         damaged + "Fältet Name har mer än 32768 byte text."},
        {prescriptionMessageText({.items = {{.dosage = std::string(32769, 'd')}}}),
         damaged + "Fältet UnstructuredDosageAdmin har mer än 32768 byte text."},
        {prescriptionMessageText(longName), grows},
        {angles, grows},
    };
    for (const auto &[message, box] : cases) {
        SCOPED_TRACE(box);
        writeFinishedMessage(path("in/m.xml"), utf8ToLatin1(message));
        const auto before = filesUnder(appDir());
        try {
            tick(10);
        } catch (const ProcessEnded &) {
        }
        EXPECT_THAT(said(), box.empty() ? ::testing::Matcher<Texts>(IsEmpty())
                                        : ElementsAre(StartsWith(box)));
        EXPECT_EQ(fs::exists(path("in/m.xml")), !box.empty());
        if (!box.empty()) {
            EXPECT_EQ(filesUnder(appDir()), before);
        }
    }
}

// A message is taken in once it is whole: its last change a few seconds old, or its size and
// time as the scan before saw them. One still being written waits, without a word.
TEST_F(IntakeTest, a_message_still_being_written_waits_for_the_next_scan) {
    const std::string whole = utf8ToLatin1(prescriptionMessageText({}));
    writeFinishedMessage(path("in/a.xml"), whole, 2);
    writeFinishedMessage(path("in/b.xml"), whole.substr(0, 100), 0);
    tick(10);
    EXPECT_EQ(filesIn(path("in")), (std::set<std::string>{"a.xml", "b.xml"}));
    writeFinishedMessage(path("in/b.xml"), whole.substr(0, 200), 0);
    tick(10);
    EXPECT_EQ(filesIn(path("in")), std::set<std::string>{"b.xml"});
    writeFinishedMessage(path("in/b.xml"), whole, 3);
    tick(10);
    EXPECT_THAT(filesIn(path("in")), IsEmpty());
    EXPECT_THAT(said(), IsEmpty());
}

// Every input kept under tests/regressions once crashed intake or spoiled a file. Each is held to
// the rules of the intake harness, taken in by the real inbox scan.
TEST_F(IntakeTest, every_kept_input_ends_in_an_outcome_the_rules_allow) {
    const auto scan = [this] {
        try {
            tick(10);
        } catch (const ProcessEnded &) {
        }
        return fuzzing::ScanOutcome{said().size(), std::exchange(processEnded, false)};
    };
    int inputs = 0;
    for (const auto &entry : fs::directory_iterator(MIRELO_REGRESSIONS_DIR)) {
        if (entry.path().extension() == ".input") {
            SCOPED_TRACE(entry.path().filename().string() + ", input " + std::to_string(++inputs));
            for (const char *folder : {"data", "in", "Error"}) {
                fs::remove_all(path(folder));
                fs::create_directory(path(folder));
            }
            EXPECT_EQ(
                fuzzing::BrokenIntakeRule({appDir(), appDir()}, readBytes(entry.path()), scan),
                std::nullopt);
        }
    }
    EXPECT_GE(inputs, 3);
}

} // namespace
} // namespace mirelo::testing
