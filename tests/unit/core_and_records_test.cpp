#include "build_config.h"
#include "core/clock.h"
#include "core/code_page.h"
#include "core/text_scrambling.h"
#include "patient_file_builder.h"
#include "platform/document_building.h"
#include "platform/record_lock.h"
#include "platform/xml_serialising.h"
#include "records/extended_info.h"
#include "records/medical_list_update.h"
#include "records/medication_view_interaction.h"
#include "records/note_records.h"
#include "records/patient_directory.h"
#include "records/patient_file.h"
#include "records/printed_medication_list.h"
#include "records/settings_store.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <functional>
#include <numeric>

namespace mirelo::testing {
namespace {

using enum NoteScreen;
using namespace std::string_literals;

std::string numbered(const MireloError &error) {
    return std::to_string(error.number()) + " " + error.description();
}

// The failure an operation raises, as `shown` gives it; empty when nothing fails.
std::string failure(const std::function<void()> &act,
                    std::string (*shown)(const MireloError &) = numbered) {
    try {
        act();
    } catch (const MireloError &error) {
        return shown(error);
    }
    return "";
}

const std::string Pnr = "191212121212", Sig = "Dr Åberg", Signed = Sig + " - 2026-03-15 14:05:09";
const std::string Unstorable = "5 Ogiltigt argument eller anrop av procedur";
const std::string Damaged = "-2147220988 Patientfil är skadad.\r\nAnledning: ";
const std::string NotSet = "91 Objektvariabeln eller blockvariabeln With har inte angetts";
const std::string Busy = "Patienten ändras just nu på en annan arbetsstation. Inget har sparats; "
                         "försök igen om en stund.",
                  Held = "[exclamation] " + Busy;
// What the parser says of the damaged settings file below.
const std::string Reason =
    "\r\nAnledning: Dokumentet tar slut innan elementet Username är avslutat. (rad 1, kolumn 21)";
const std::string Urls =
    "LoginUrl=/Public/Mirelo/Login.aspx|InitXmlUrl=/Public/Mirelo/InitXML.aspx|";

class StoreTest : public ApplicationTest {
  protected:
    static std::string file() { return PatientFilePath(Pnr); }
    // No XML once unscrambled: a search that stays quiet never opened it.
    static void storeDamaged(const std::string &name) {
        writeBytes(session().gDataPath + name, scrambleBytes("<Patient>"));
    }
    static std::string stored(const std::string &query) {
        return texts(readStoredPatient(file()), query);
    }
    // What a note operation leaves: each product's note, its author, time, Allergic and
    // AllergicHistory, then the records of History as the last child of Patient; or, on a
    // failure, its screen's box over the file as it was. Then the marks the screen got.
    std::string outcome(const std::function<void()> &act,
                        void (*report)(const MireloError &) = ReportNoteFailure) {
        const std::string before = readBytes(file());
        std::string result;
        try {
            act();
            result = stored("//Product/*[starts-with(name(), 'ExtendedMedicalInfo') or starts-with("
                            "name(), 'Allergic')] | /Patient/*[last()][self::History]/*/*");
        } catch (const MireloError &error) {
            report(error);
            result = readBytes(file()) == before ? "" : "the file changed ";
        }
        for (const std::string &box : said()) {
            result += box;
        }
        return result + std::exchange(marks, "");
    }
    // The stored file is byte for byte the builder's file of these products, as written.
    static void expectStored(const std::vector<ProductFields> &products) {
        EXPECT_EQ(readBytes(file()),
                  storedBytes(patientText(Pnr, "Tolvansson", "Tolvan", products)));
    }
    // What the search for a typed text gives: the file it opens, then every line of the list.
    std::string search(const std::string &typed) {
        const auto opened = SearchPatient(SearchKeyFromText(typed), list1).openInMedicationView;
        std::string lines = opened ? "opens " + *opened + "; " : "";
        for (const std::string &line : std::exchange(list1, {})) {
            lines += line + "; ";
        }
        return lines;
    }
    std::string shown(const platform::MsgBoxRequest &box) {
        platform::MsgBox(box);
        return said().at(0);
    }
    std::string marks;
    std::function<void(const std::string &)> mark(const std::string &what) {
        return [this, what](const std::string &value) { marks += " " + what + value; };
    }
    GeneralInfoMarks generalInfoMarks() { return {mark("Text1.Tag="), mark("Label3=")}; }
    // The settings file as the program reads it: each element's name and text.
    static std::string settings() {
        platform::XmlDocument document;
        EXPECT_TRUE(document.load(SettingsFilePath())) << document.parseError().reason;
        return texts(document, "/Settings/*", true);
    }
    // The login screen as the start leaves it: the name in its box, the box "kept" if ticked,
    // and the tab indexes of the password and the name.
    std::string loginScreen() const {
        return "'" + screen.txtUsername + (screen.chkSaveUsername ? "' kept" : "'") + " tabs " +
               std::to_string(screen.txtPasswordTabIndex) + "/" +
               std::to_string(screen.txtUsernameTabIndex);
    }
    static void writeDamagedSettings() {
        std::filesystem::create_directories(SystemFolder());
        writeBytes(SettingsFilePath(), "<Settings><Username>");
    }
    LoginScreenState screen;
    Texts list1;
};

// Only a SaveUsername of 1 shows the saved name and starts in the password box; a damaged file
// speaks for itself and is not replaced.
TEST_F(StoreTest, the_first_start_writes_the_settings_that_later_starts_read) {
    CheckSettingsFile(screen);
    EXPECT_THAT(readBytes(SettingsFilePath()),
                StartsWith("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<Settings>\n\t<"));
    EXPECT_EQ(settings(), "Username=|SaveUsername=0|DataPath=" + path("data/") +
                              "|Server=" + build::defaultServer + "|" + Urls);
    EXPECT_EQ(loginScreen(), "'' tabs 3/2");
    for (const auto &[saveUsername, shown] :
         std::vector<std::pair<std::string, std::string>>{{" 1 ", "'Åsa' kept tabs 0/9"},
                                                          {"2", "'' tabs 3/2"},
                                                          {"", "Typerna matchar inte 13"}}) {
        writeSettingsFile({.username = "Åsa", .saveUsername = saveUsername, .dataPath = "/x/"});
        screen = {};
        const std::string failed =
            failure([this] { CheckSettingsFile(screen); }, StartupFailureText);
        EXPECT_EQ(failed.empty() ? loginScreen() : failed, shown);
    }
    writeDamagedSettings();
    const std::string failed = failure([this] { CheckSettingsFile(screen); }, StartupFailureText);
    EXPECT_EQ(failed + readBytes(SettingsFilePath()),
              "Inställningsfilen är skadad." + Reason + "<Settings><Username>");
}

// A file without a server, or with an empty one, gets the retired server in memory only; a file
// with one is never rewritten there. A cleared box forgets the name; a ticked one stores any.
// A folder named at the start, on the command line before the environment, is taken as it is;
// an installed program keeps the user's files in the user's own folder, made at its first start
// with in/ and data/ and then the settings; a build finds its folders beside itself.
TEST_F(StoreTest, the_start_takes_the_named_folder_else_the_users_own_when_installed) {
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(path("home")));
    const auto chosen = [](const std::string &option, const std::string &environment,
                           const std::string &program) {
        qputenv("MIRELO_APP_DIR", QByteArray::fromStdString(environment));
        ChooseApplicationDirectory(option, program);
        return ApplicationDirectory();
    };
    const std::string installed = build::installedProgramFolder;
    EXPECT_EQ(chosen(path("mottagning/"), path("miljö"), installed), path("mottagning"));
    EXPECT_EQ(chosen("", path("miljö//"), installed), path("miljö"));
    EXPECT_EQ(chosen("egen", "", "/opt"), std::filesystem::current_path() / "egen");
    EXPECT_EQ(chosen("", "", installed + "/mirelo"),
              std::filesystem::read_symlink("/proc/self/exe").parent_path());
    EXPECT_FALSE(std::filesystem::exists(path("home")));
    EXPECT_EQ(chosen("", "", installed), path("home/mirelo"));
    CheckSettingsFile(screen);
    EXPECT_EQ(filesIn(path("home/mirelo")), (std::set<std::string>{"System", "data", "in"}));
    EXPECT_THAT(settings(), HasSubstr("|DataPath=" + path("home/mirelo/data/") + "|"));
    qunsetenv("MIRELO_APP_DIR");
    qunsetenv("XDG_DATA_HOME");
}

TEST_F(StoreTest, a_login_attempt_takes_the_server_from_the_settings_and_stores_the_name) {
    auto attempt = [this](bool saveUsername, const std::string &name) {
        UpdateSettingsFile(saveUsername, name);
        return session().gServer + " " + session().gLoginUrl + " " + session().gInitXmlUrl + " " +
               settings();
    };
    const std::string retired =
        build::retiredServer + " /Public/Mirelo/Login.aspx /Public/Mirelo/InitXML.aspx "s;
    writeSettingsFile({.dataPath = "/d/", .server = {}, .loginUrl = {}, .initXmlUrl = {}});
    EXPECT_EQ(attempt(true, "karin"), retired + "Username=karin|SaveUsername=1|DataPath=/d/|");
    EXPECT_EQ(attempt(false, "karin"), retired + "Username=|SaveUsername=0|DataPath=/d/|");
    writeSettingsFile({.dataPath = "/d/", .server = "", .loginUrl = "/annan"});
    EXPECT_EQ(attempt(true, ""),
              retired + "Username=|SaveUsername=1|DataPath=/d/|Server=|LoginUrl=/annan|InitXmlUrl="
                        "/Public/Mirelo/InitXML.aspx|");
    writeSettingsFile(
        {.dataPath = "/d/", .server = "https://g.se", .loginUrl = "/i", .initXmlUrl = "/u"});
    EXPECT_EQ(attempt(false, ""), "https://g.se /i /u Username=|SaveUsername=0|DataPath"
                                  "=/d/|Server=https://g.se|LoginUrl=/i|InitXmlUrl=/u|");
    writeSettingsFile({.dataPath = "/d/", .server = "https://k.se", .loginUrl = {}});
    EXPECT_EQ(failure([] { UpdateSettingsFile(false, ""); }), NotSet);
    writeSettingsFile({.saveUsername = {}, .dataPath = "/d/"});
    EXPECT_EQ(failure([] { UpdateSettingsFile(false, ""); }), NotSet);
    writeDamagedSettings();
    EXPECT_EQ(failure([] { UpdateSettingsFile(false, ""); }),
              "-2147220991 Inställningsfilen är skadad." + Reason);
}

// A file that names its encoding by a name the converter takes but garbles ("ISO-88591" cut the
// rewritten file off at a letter outside the code) is left as it was; a real encoding that lacks
// a letter keeps it as a character reference.
TEST_F(StoreTest, a_name_is_never_written_in_an_encoding_that_garbles_it) {
    std::filesystem::create_directories(SystemFolder());
    for (const auto &[encoding, garbles] :
         {std::pair{"ISO-88591", true}, std::pair{"ISO-885911", true},
          std::pair{"ISO-8859-5", false}, std::pair{"UTF-8", false}}) {
        SCOPED_TRACE(encoding);
        const std::string file = "<?xml version=\"1.0\" encoding=\""s + encoding +
                                 "\"?>\n<Settings><Username/><SaveUsername>0</SaveUsername>"
                                 "<DataPath>/d/</DataPath><Server>https://k.se</Server>"
                                 "<LoginUrl>/l</LoginUrl><InitXmlUrl>/i</InitXmlUrl></Settings>\n";
        writeBytes(SettingsFilePath(), file);
        EXPECT_EQ(failure([] { UpdateSettingsFile(true, "Łukasz Åberg"); }),
                  garbles ? Unstorable : "");
        EXPECT_EQ(readBytes(SettingsFilePath()) == file, garbles);
        EXPECT_EQ(readBytes(SettingsFilePath()).find("Åberg") != std::string::npos,
                  encoding == "UTF-8"s);
        screen = {};
        ReadSavedUsername(screen);
        EXPECT_EQ(screen.txtUsername, garbles ? "" : "Łukasz Åberg");
    }
}

// A session keeps the login and the data folder of the settings, or says once that the file is
// damaged and keeps its folder. A new folder is stored with its separator, in the file's code page.
TEST_F(StoreTest, a_session_and_a_new_data_folder_take_their_folder_from_the_settings) {
    auto held = [] {
        const SessionValues &values = session();
        return values.gUsername + " " + values.gPassword + " " + values.gSignature + " " +
               values.gDataPath;
    };
    writeSettingsFile({.dataPath = path("data/")});
    StartSession("karin", "hemligt", "Dr. K");
    EXPECT_EQ(held(), "karin hemligt Dr. K " + path("data/"));
    const std::string typed = path("läkare");
    EXPECT_EQ(SaveDataPath(typed), typed + "/");
    EXPECT_TRUE(std::filesystem::is_directory(typed));
    EXPECT_EQ(settings() + " " + held(), "Username=|SaveUsername=0|DataPath=" + typed + "/|" +
                                             Urls + " karin hemligt Dr. K " + typed + "/");
    EXPECT_THAT(readBytes(SettingsFilePath()), HasSubstr("/l\xE4kare/</DataPath>"));
    EXPECT_EQ(SaveDataPath(path("data/")), path("data/"));
    writeDamagedSettings();
    EXPECT_EQ(failure([this] { SaveDataPath(path("ny")); }),
              "-2147220991 Kunde inte läsa inställningsfil." + Reason);
    EXPECT_FALSE(std::filesystem::exists(path("ny")));
    StartSession("lisa", "annat", "Dr. L");
    EXPECT_EQ(held(), "lisa annat Dr. L " + path("data/"));
    EXPECT_EQ(said(), Texts{"[stop] Validering av XML misslyckades!" + Reason});
    writeSettingsFile({});
    EXPECT_EQ(failure([] { StartSession("karin", "hemligt", "Dr. K"); }), NotSet);
}

TEST_F(StoreTest, a_patient_file_is_scrambled_code_by_code_and_read_back_without_its_tabs) {
    // A line feed is stored as 13 and a carriage return as 18: a text tool sees no lines.
    EXPECT_EQ(ScrambleText("<Pnr>Å\tä\n\r</Pnr>"),
              "\x3F\x53\x71\x75\x41\xCA\x0E\xE7\x0D\x12\x3F\x34\x53\x71\x75\x41");
    std::string codes(251, '\0');
    std::iota(codes.begin(), codes.end(), '\0');
    codes += '\xFC'; // ü becomes 255 and passes
    EXPECT_EQ(ScrambleText(CodePageToUtf8(codes)), scrambleBytes(codes));
    EXPECT_EQ(UnscrambleText(scrambleBytes(codes)), CodePageToUtf8(codes));
    EXPECT_EQ(ScrambleText("") + UnscrambleText(""), "");
    for (const std::string letter : {"û", "ý", "þ", "ÿ", "≥", "\xFF"}) {
        EXPECT_EQ(failure([&] { ScrambleText("Jörgen " + letter); }), Unstorable);
    }
    // Among the last few bytes and among letters read eight at a time alike.
    for (const std::string &code : {"\0"s, "\1"s, "\2"s, "\4"s}) {
        EXPECT_EQ(failure([&] { UnscrambleText("AB" + code); }), Unstorable);
        EXPECT_EQ(failure([&] { UnscrambleText("AAAAAAA" + code + "BBBBBBBB"); }), Unstorable);
    }

    // Tabs go wherever they stand: first, last, alone and in runs that cross eight bytes.
    const std::pair<std::string, std::string> tabs[] = {
        {"\t<a>\t\tb\t</a>\t", "<a>b</a>"},
        {"<a>1234567\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t8</a>\r\n\t\t", "<a>12345678</a>\r\n"},
        {"<a>Åström\tÖberg</a>", "<a>ÅströmÖberg</a>"}};
    for (const auto &[plain, read] : tabs) {
        storePatientFile(Pnr + ".xml", plain);
        EXPECT_EQ(ReadPatientText(file()), read);
    }
    writeBytes(file(), scrambleBytes("<Patient><PatientData>"));
    EXPECT_EQ(failure([] { ReadPatientFile(file()); }),
              Damaged + "Dokumentet tar slut innan elementet PatientData är avslutat. (rad 1, "
                        "kolumn 23)");
    writeBytes(file(), "<Patient/>"); // plain XML is noise once unscrambled
    EXPECT_THAT(failure([] { ReadPatientFile(file()); }), StartsWith(Damaged));

    storePatient(Pnr, {{.productName = "Åsa"}});
    platform::XmlDocument patient = ReadPatientFile(file());
    patient.selectSingleNode("//ProductName").setText("Öberg");
    WritePatientFile(patient, file());
    expectStored({{.productName = "Öberg"}});
    // What the code can't store stands as a reference; what XML can't carry never gets in.
    const std::string kept = "Maÿ ý þ û ≥ → µ € 𝄞", typed = kept + "\v";
    patient.selectSingleNode("//ProductName").setText(kept);
    WritePatientFile(patient, file());
    EXPECT_EQ(ReadPatientFile(file()).selectSingleNode("//ProductName").text(), kept);
    EXPECT_THAT(readBytes(file()), HasSubstr(scrambleBytes("Ma&#255; &#253; &#254; &#251; &#8805; "
                                                           "&#8594; \xB5 \x80 &#119070;<")));
    EXPECT_EQ(failure([&] { patient.selectSingleNode("//ProductName").setText(typed); }),
              "5 Tecknet U+000B kan inte sparas.");
}

TEST_F(StoreTest, a_search_lists_by_name_and_number_or_opens_a_whole_number_directly) {
    for (const auto &[name, pnr, familyName] : std::vector<std::array<std::string, 3>>{
             {Pnr + ".xml", Pnr, "Tolvansson"},
             {"191212121214.XML", "191212121214", "Svensson"},
             {"1912xml", "1912", "Utan Punkt"},
             {"191299999999.xml", "200001010000", "Annan"}, // name and contents disagree
             {"AB1212.xml", "AB1212", "Åst\tröm"},
             {"19121313-1313.xml", "19121313-1313", "Streck"}}) {
        storePatientFile(name, patientText(pnr, familyName, "T", {}));
    }
    storeDamaged("202002022222.xml");
    storeDamaged("191212121213.txt");
    std::filesystem::create_directory(session().gDataPath + "191200000000.xml");
    // The list keeps what it held; the case of the key doesn't count; a name keeps its tabs.
    list1 = {"förut"};
    EXPECT_EQ(search("1912"), "förut; 191212121212 Tolvansson; 191212121214 Svensson; "
                              "19121313-1313 Streck; 1912 Utan Punkt; ");
    EXPECT_EQ(search("ab"), "AB1212 Åst\tröm; ");
    EXPECT_EQ(search("19121212-1212"), "opens 191212121212; ");
    EXPECT_EQ(search("202002022222"), "opens 202002022222; "); // the view meets the damage
    EXPECT_EQ(search("191212121219") + search("1912121212129"), "");
    EXPECT_EQ(search("19121212-121"), "191212121212 Tolvansson; 191212121214 Svensson; ");
    // A file name with a hyphen is found only by a key that stops before the hyphen.
    EXPECT_EQ(search("19121313-1313") + search("191213131") + search("19121313"),
              "19121313-1313 Streck; ");
    EXPECT_EQ(PnrOfListLine("19121313-1313 Streck") + "," + PnrOfListLine("19 12 E"),
              "19121313-1313,19");

    // The first damaged file ends the search, keeping the lines before it.
    storePatientFile("20120001.xml", patientText("20120001", "Först", "T", {}));
    storeDamaged("20120002.xml");
    storeDamaged("20120003.xml");
    EXPECT_EQ(failure([&] { search("2012"); }),
              Damaged +
                  "Dokumentet tar slut innan elementet Patient är avslutat. (rad 1, kolumn 10)");
    EXPECT_EQ(std::exchange(list1, {}), Texts{"20120001 Först"});
    // A match without a family name fails on the missing node; a non-match is never asked.
    storePatientFile("30.xml", "<Patient><PatientData><Pnr>4</Pnr></PatientData></Patient>");
    EXPECT_EQ(search("3"), "");
    storePatientFile("31.xml", "<Patient><PatientData><Pnr>3</Pnr></PatientData></Patient>");
    EXPECT_EQ(failure([&] { search("3"); }), NotSet);

    session().gDataPath = path("saknas/");
    EXPECT_EQ(failure([&] { search("1912"); }) + failure([&] { search(Pnr); }),
              "76 Sökvägen hittades inte76 Sökvägen hittades inte");
}

// A note and a warning belong to the product: both prescriptions of 100001 always agree, the
// other product is never touched, and records only ever go on top.
TEST_F(StoreTest, the_life_of_a_warning_from_the_first_tick_to_a_deleted_note) {
    storePatient(Pnr, {{.id = "2_1"}, {.id = "1_1", .checked = "0"}, {.id = "3_1", .regNr = "2"}});
    auto at = [](int minute) {
        freezeClockForTesting(QDateTime(QDate(2026, 3, 15), QTime(15, minute)));
        return "|" + Sig + "|2026-03-15 15:0" + std::to_string(minute) + ":00|";
    };
    auto both = [](const std::string &note) { return note + note + "|||0|0|"; };
    std::string records = "100001|1|Utslag" + at(1);
    EXPECT_EQ(outcome([] { SaveAllergicHistory(Pnr, "2_1", 1, "Utslag", Sig, MedicalNote); }),
              both("|||1|1|") + records);
    const std::string note = "Tas med \"mat\" & vatten" + at(2);
    EXPECT_EQ(outcome([] { SaveMedicalNote(Pnr, "1_1", "Tas med \"mat\" & vatten", 1, Sig); }),
              both(note + "1|1|") + records);
    records = "100001|0|Tålde den" + at(3) + records;
    EXPECT_EQ(outcome([] { SaveAllergicHistory(Pnr, "1_1", 0, "Tålde den", Sig, ExtendedInfo); }),
              both(note + "0|1|") + records);
    records = "100001|1|Utslag igen" + at(4) + records;
    EXPECT_EQ(outcome([] { SaveAllergicHistory(Pnr, "2_1", 1, "Utslag igen", Sig, MedicalNote); }),
              both(note + "1|1|") + records);
    // The note of a ticked box is deleted after a record of the unticking.
    records = "100001|0|Borttagen" + at(5) + records;
    EXPECT_EQ(outcome([] {
                  SaveAllergicHistory(Pnr, "2_1", 0, "Borttagen", Sig, MedicalNote);
                  deleteNote(Pnr, "2_1", Sig, MedicalNote);
              }),
              both(at(5) + "0|1|") + records);
}

// Which products a deletion or a save reaches, by the RegNr that the picked product 1_1 shares
// with 2_1; 3_1 is another product. The general note is the patient's, and signed.
TEST_F(StoreTest, deletions_and_saves_spread_by_the_test_of_their_screen) {
    auto deletion = [](NoteScreen from) { return [=] { deleteNote(Pnr, "1_1", Sig, from); }; };
    const std::string old = "N|Ek|igår|1|1|", cleared = "|" + Sig + "|" + Now + "|0|1|";
    const std::tuple<std::string, std::function<void()>, std::string> cases[] = {
        {"0", deletion(MedicalNote), cleared + cleared + old},
        {"0", deletion(ExtendedInfo), cleared + old + old},
        {"7", deletion(ExtendedInfo), cleared + cleared + old},
        {"A1", deletion(MedicalNote), cleared + cleared + old},
        {"", deletion(MedicalNote), cleared + old + old},
        // The note dialog records a warning without a RegNr, and spreads it nowhere.
        {"", [] { SaveAllergicHistory(Pnr, "1_1", 0, "Utslag", Sig, MedicalNote); },
         old + old + old + "|0|Utslag|" + Sig + "|" + Now + "|"},
        // A product without a RegNr takes no note at all, and nothing is said.
        {"", [] { SaveMedicalNote(Pnr, "1_1", "Ny", 0, Sig); }, old + old + old},
        {"", [this] { SaveProductNote(Pnr, "1_1", "Ny", Sig, mark("txtNoteChanged=")); },
         old + old + old + " txtNoteChanged=" + Signed}};
    for (const auto &[regNr, act, expected] : cases) {
        SCOPED_TRACE("RegNr \"" + regNr + "\"");
        ProductFields noted{.note = "N", .noteBy = "Ek", .noteTimestamp = "igår", .allergic = "1"};
        noted.allergicHistory = "1";
        std::vector<ProductFields> products(3, noted);
        products[0].regNr = products[1].regNr = regNr;
        products[1].id = "2_1";
        products[2].id = "3_1";
        storePatient(Pnr, products);
        EXPECT_EQ(outcome(act), expected);
    }
    SaveGeneralInfo(Pnr, "Pollenallergi", Sig, generalInfoMarks());
    EXPECT_EQ(stored("//GeneralInfo | //GeneralInfoBy | //GeneralInfoTimestamp") + marks,
              "Pollenallergi|" + Sig + "|" + Now +
                  "| Text1.Tag=NoChange Text1.Tag= Label3=" + Signed);
}

// Every failure leaves the file as it was, byte for byte, and shows the box of the screen that
// called; the process goes on. Marks the screen got before the write stay.
TEST_F(StoreTest, a_failed_note_operation_leaves_the_file_and_shows_its_box) {
    const std::string plain = patientText(
        Pnr, "T", "T", {{.id = "1_1"}, {.id = "2_1", .regNr = ""}, {.id = "3_1", .regNr = "A1"}});
    std::string unsigned_ = plain;
    unsigned_.erase(unsigned_.find("<GeneralInfoBy></GeneralInfoBy>"), 31);
    const auto note = ReportNoteFailure;
    const auto reason = ReportReasonDialogFailure;
    const struct {
        const char *name;
        std::string fileText; // no file when empty
        std::function<void()> act;
        void (*report)(const MireloError &);
        std::string outcome;
    } cases[] = {
        {"a note holding a vertical tab", plain,
         [] { SaveMedicalNote(Pnr, "1_1", "Tål ej û\v", 1, Sig); }, note,
         "[] 5 Tecknet U+000B kan inte sparas."},
        {"a product note holding a form feed", plain,
         [this] { SaveProductNote(Pnr, "1_1", "ý\f", Sig, mark("txtNoteChanged=")); }, note,
         "[] 5 Tecknet U+000C kan inte sparas."},
        {"a general note holding U+FFFF", plain,
         [this] { SaveGeneralInfo(Pnr, "þ\uFFFF", Sig, generalInfoMarks()); }, note,
         "[] 5 Tecknet U+FFFF kan inte sparas. Text1.Tag=NoChange"},
        {"a reason holding a byte that is no UTF-8", plain,
         [] { SaveAllergicHistory(Pnr, "1_1", 1, "\xFF", Sig, MedicalNote); }, reason,
         "[stop] Fel uppstod: " + Unstorable.substr(2)},
        {"a file that no longer parses", "<Patient><MedicalList>",
         [] { deleteNote(Pnr, "1_1", Sig, ExtendedInfo); }, note,
         "[] " + Damaged +
             "Dokumentet tar slut innan elementet MedicalList är avslutat. (rad 1, "
             "kolumn 23)"},
        {"a file deleted under the dialog", "", [] { SaveMedicalNote(Pnr, "1_1", "", 0, Sig); },
         note, "[] 53 Filen hittades inte"},
        {"a RegNr that isn't a number, deleted from the extended information", plain,
         [] { deleteNote(Pnr, "3_1", Sig, ExtendedInfo); }, note, "[] 13 Typerna matchar inte"},
        {"an empty RegNr on the extended information's history", plain,
         [] { SaveAllergicHistory(Pnr, "2_1", 1, "Utslag", Sig, ExtendedInfo); }, reason,
         "[stop] Fel uppstod: " + NotSet.substr(3)},
        {"a general note on a file without its signer", unsigned_,
         [this] { SaveGeneralInfo(Pnr, "Ny", Sig, generalInfoMarks()); }, note, "[] " + NotSet},
        {"an ID with a double quote", plain, [] { SaveMedicalNote(Pnr, "1\"1", "", 0, Sig); }, note,
         "[] -2147467259 Ogiltig fråga: //Product[ID = \"1\"1\"]"},
        {"a note while another workstation changes the patient", plain,
         [] { SaveMedicalNote(Pnr, "1_1", "Ny", 0, Sig); }, note, Held},
        {"a reason while another workstation changes the patient", plain,
         [] { SaveAllergicHistory(Pnr, "1_1", 1, "Utslag", Sig, MedicalNote); }, reason, Held}};
    for (const auto &test : cases) {
        SCOPED_TRACE(test.name);
        std::filesystem::remove(file());
        if (!test.fileText.empty()) {
            storePatientFile(Pnr + ".xml", test.fileText);
        }
        std::optional<platform::RecordLock> otherWorkstation;
        if (test.outcome == Held) {
            otherWorkstation.emplace(session().gDataPath, Pnr, std::chrono::milliseconds{0});
        }
        EXPECT_EQ(outcome(test.act, test.report), test.outcome);
    }
}

// Each row of a grid as its ID, its icons and " red" where all its cells are red.
Texts rowsOf(const ProductGridFill &fill, const ProductGridShape &shape = medication_grid) {
    Texts rows;
    for (const ProductRow &row : fill.rows) {
        std::string icons, colours;
        for (int col = 0; col < shape.Product; ++col) {
            icons += std::to_string(row.cells[col].picture);
        }
        for (const GridCell &cell : row.cells) {
            colours += !cell.foreColor ? "" : *cell.foreColor == RgbColor{255, 0, 0} ? "r" : "?";
        }
        rows.push_back(row.cells[shape.ID].text + " " + icons +
                       (colours == std::string(row.cells.size(), 'r') ? " red" : colours));
    }
    return rows;
}

MedicationOverview fill(const std::vector<ProductFields> &products, bool all = true,
                        int rows = 14) {
    return FillFlexGrid(parsedXml(patientText(Pnr, "Tolvansson", "Tolvan", products)), all, rows);
}

TEST_F(StoreTest, the_fill_writes_every_cell_and_heading_of_a_product_row) {
    const MedicationOverview view = fill(
        {{.id = "7", .regNr = "R7", .numberOfPackages = "2", .dosage = "Vid behov", .repeats = "3"},
         {.id = "8", .packageSize = std::nullopt},
         {.id = "9", .numberOfPackages = "2", .packageSize = ""}});
    EXPECT_TRUE(view.cleared);
    EXPECT_EQ(view.txtPnr.value() + " " + view.txtFName.value(), Pnr + " Tolvan Tolvansson");
    Texts texts, headings;
    std::vector<std::optional<int>> alignments;
    for (int col = 0; col < 11; ++col) {
        texts.push_back(view.rows.at(0).cells[col].text);
        alignments.push_back(view.rows[0].cells[col].alignment);
        headings.push_back(FlexGridLayout()[col].heading);
    }
    EXPECT_EQ(texts, (Texts{"", "", "", "Alvedon Tablett 500 mg Orion", "2026-01-10T09:30:00",
                            "3 ggr", "2 X 20 st", "7", "N02BE01", "R7", "Vid behov"}));
    EXPECT_EQ(view.rows[1].cells[6].text + "|" + view.rows[2].cells[6].text, "|2 X ");
    // Icons sit right-bottom as designed; the repeats are centred, all else left.
    EXPECT_EQ(alignments, (std::vector<std::optional<int>>{8, 8, 8, 1, 1, 4, 1, 1, 1, 1, 1}));
    EXPECT_EQ(headings, (Texts{"", "", "", "Läkemedel", "Ordinerat", "Exp.", "Förpack.", " ID",
                               " ATC", " RegNr", "                       Dosering"}));
    // The grid keeps its 14 rows; the current cell is on the last row written.
    EXPECT_EQ(std::tuple(view.gridRows, view.currentRow, view.standingButton),
              std::tuple(14, 3, ExtendedInfoButton::cmdNote));
    const MedicationOverview empty = fill({});
    EXPECT_TRUE(empty.cleared && empty.rows.empty());
    EXPECT_EQ(std::pair(empty.gridRows, empty.currentRow), std::pair(14, 0));
    EXPECT_EQ(empty.standingButton, ExtendedInfoButton::cmdNote);
}

// A warning hides a note. Current twins of an ATC code, empty ones too, go red; a past twin
// colours nothing. The grid compared current rows pair by pair and stayed on the later row of the
// last pair that matched, unless past rows were written after it.
TEST_F(StoreTest, the_fill_shows_icons_and_red_twins_and_hides_past_products_unless_asked) {
    const std::vector<ProductFields> products = {
        {.id = "1", .atcCode = "A", .note = "N", .allergic = "1"},
        {.id = "2", .atcCode = "B", .note = "N", .allergicHistory = "1"},
        {.id = "3", .atcCode = "A"},
        {.id = "4", .atcCode = ""},
        {.id = "5", .atcCode = ""},
        {.id = "6", .atcCode = "B", .checked = "0"}};
    const MedicationOverview all = fill(products), current = fill(products, false);
    const Texts rows = {"1 031 red", "2 761", "3 001 red", "4 001 red", "5 001 red", "6 002"};
    EXPECT_EQ(rowsOf(all), rows);
    EXPECT_EQ(rowsOf(current), Texts(rows.begin(), rows.end() - 1));
    EXPECT_EQ(std::pair(all.currentRow, current.currentRow), std::pair(6, 5));
    EXPECT_EQ(all.standingButton, ExtendedInfoButton::cmdExtInfo);
    for (const auto &[codes, currentRow] : {std::pair{"ABC", 3}, {"ABBAC", 3}, {"ABABAC", 5}}) {
        std::vector<ProductFields> twins;
        for (const char code : std::string(codes)) {
            twins.push_back({.atcCode = std::string(1, code)});
        }
        EXPECT_EQ(fill(twins, false).currentRow, currentRow) << codes;
    }
    // A warning on a hidden past product still puts up the warning button.
    EXPECT_EQ(fill({{}, {.checked = "0", .allergic = "1"}}, false).standingButton,
              ExtendedInfoButton::cmdExtInfo);
    // A hand-edited product with a Checked of each kind stands among the current and the past.
    std::string twice = patientText(Pnr, "T", "T", {{.id = "1", .atcCode = "A"}, {.id = "2"}});
    twice.replace(twice.find("<Checked>1"), 10, "<Checked>0</Checked><Checked>1");
    EXPECT_EQ(rowsOf(FillFlexGrid(parsedXml(twice), true, 14)), (Texts{"1 002", "2 001", "1 002"}));
}

TEST_F(StoreTest, the_fill_stops_at_a_row_that_lacks_an_element_and_names_a_missing_file) {
    // The broken row has its icons and the formatted but empty name cell, nothing further.
    const MedicationOverview view =
        fill({{.id = "1"}, {.id = "2", .allergicHistory = "1", .omitted = {"Form"}}, {}});
    EXPECT_EQ(failure([&] { throw view.failure.value(); }), NotSet);
    EXPECT_EQ(rowsOf(view), (Texts{"1 001", " 701"}));
    EXPECT_EQ(view.rows[1].cells[3], (GridCell{"", 0, 1, std::nullopt}));
    EXPECT_EQ(view.rows[1].cells[4], GridCell{});
    EXPECT_FALSE(view.standingButton);
    // An empty flag is a failure, not a "no".
    EXPECT_EQ(failure([&] { throw fill({{.allergic = ""}}).failure.value(); }),
              "13 Typerna matchar inte");

    // The view finds its file whatever the case of the name.
    storePatientFile(Pnr + ".XML", patientText(Pnr, "T", "T", {{.id = "1"}}));
    EXPECT_EQ(rowsOf(ReadPatientFolder(Pnr, true, 14)), Texts{"1 001"});
    const MedicationOverview missing = ReadPatientFolder("202002022222", true, 14);
    EXPECT_EQ(failure([&] { throw missing.failure.value(); }),
              "-2147220985 Patientens fil saknas.");
    storeDamaged("1.xml");
    const MedicationOverview damaged = ReadPatientFolder("1", true, 14);
    EXPECT_THAT(failure([&] { throw damaged.failure.value(); }), StartsWith(Damaged));
    EXPECT_FALSE(missing.cleared || damaged.cleared || damaged.txtPnr);
}

// Taking out signs TakenOut, putting back signs Inserted; the other pair stays as it stood, and
// putting back a product of the same RegNr as a current one makes both current.
TEST_F(StoreTest, a_tick_takes_a_product_out_or_puts_it_back_and_changes_nothing_else) {
    session().gSignature = Sig;
    EXPECT_EQ(failure([] { updateMedicalList("5_1", Pnr); }), "53 Filen hittades inte");
    ProductFields current{.id = "5_1"};
    ProductFields past{.id = "4_1", .checked = "0", .takenOutBy = "Al", .takenOutTimestamp = "då"};
    storePatient(Pnr, {current, past});
    const platform::XmlDocument written = updateMedicalList("5_1", Pnr);
    current = {.id = "5_1", .checked = "0", .takenOutBy = Sig, .takenOutTimestamp = Now};
    expectStored({current, past});
    EXPECT_EQ(scrambleBytes(utf8ToLatin1(written.xml())), readBytes(file()));
    updateMedicalList("4_1", Pnr);
    past.checked = "1";
    past.insertedBy = Sig;
    past.insertedTimestamp = Now;
    expectStored({current, past});

    EXPECT_EQ(failure([] { updateMedicalList("9_9", Pnr); }), NotSet);
    expectStored({current, past});
    storeDamaged(Pnr + ".xml");
    EXPECT_THAT(failure([] { updateMedicalList("5_1", Pnr); }), StartsWith(Damaged));
    EXPECT_EQ(readBytes(file()), scrambleBytes("<Patient>"));
}

// The detail panel's caption and labels, then what it shows, hides or leaves as it stands.
std::string panel(const GridSelection &selection) {
    const std::optional<DetailPanel> p = DetailPanelOnSelChange(Pnr, selection);
    if (!p) {
        return "nothing";
    }
    const std::string warning[] = {" no warning", " warning"};
    return p->frame1Caption + "|" + p->label12 + "|" + p->label16 + "|" + p->label13 + "|" +
           p->label17 + "|" + (p->cmdAllergicHistoryVisible ? " history" : "") +
           (p->warningLineVisible ? warning[*p->warningLineVisible] : "") +
           (p->standingButton ? " button" : "") + (p->markRow ? " marked" : "");
}

TEST_F(StoreTest, a_selection_fills_the_detail_panel_from_the_file_read_afresh) {
    storeDamaged(Pnr + ".xml");
    EXPECT_THAT(failure([] { panel({0, 4, 0, "", ""}); }), StartsWith(Damaged));
    ProductFields warned{
        .id = "5_1", .takenOutBy = "Bo", .takenOutTimestamp = "då", .allergic = "1"};
    warned.insertedBy = "Al";
    warned.insertedTimestamp = "nu";
    warned.allergicHistory = "1";
    storePatient(Pnr, {warned, {.id = "6_1"}});
    EXPECT_EQ(panel({0, 3, 1, "A", "5_1"}),
              "A, ordinerat av: Doktor Ek|Al|nu|Bo|då| history warning button marked");
    // Without a warning the line goes and the buttons stay as they are.
    const std::string plain = "A, ordinerat av: Doktor Ek|Doktor Ek|2026-01-10T09:30:00||| no "
                              "warning marked";
    EXPECT_EQ(panel({2, 5, 2, "A", "6_1"}) + panel({0, 1, 2, "A", "6_1"}), plain + plain);
    // A blank row empties the texts and leaves the warning line and the marking alone; the
    // heading selects nothing, wherever the mouse was.
    EXPECT_EQ(panel({9, 3, 9, "", ""}), "|||||");
    EXPECT_EQ(panel({0, 4, 0, "Läkemedel", " ID"}) + panel({3, 1, 0, "Läkemedel", " ID"}),
              "nothingnothing");
}

TEST_F(StoreTest, a_mouse_down_follows_the_icon_under_the_left_button) {
    // Ticked and empty boxes, warning, note, history; then the right button, a blank row's box,
    // headings, icons out of their column, and a column without icons.
    const std::array<int, 4> clicks[] = {{1, 3, 2, 1}, {1, 3, 2, 2}, {1, 3, 1, 3},  {1, 3, 1, 6},
                                         {1, 3, 0, 7}, {2, 3, 2, 1}, {1, 13, 2, 0}, {1, 0, 2, 0},
                                         {1, 0, 1, 6}, {1, 0, 0, 7}, {1, 3, 1, 7},  {1, 3, 0, 0},
                                         {1, 3, 3, 1}};
    const char *names[] = {"- ", "out ", "back ", "info ", "history "};
    std::string meanings;
    for (const auto [button, row, col, picture] : clicks) {
        meanings += names[static_cast<int>(MeaningOfMouseDown(button, row, col, picture))];
    }
    EXPECT_EQ(meanings, "out back info info history - - - - - - - - ");

    // The switch and the grid's set-up show their own boxes; only the switch goes back to search.
    for (const int32_t number :
         {errors::PatientFileMissing, errors::PatientFileDamaged, errors::LoginResponseDamaged}) {
        const ChkModeFailure report = ChkModeFailureReport(MireloError(number, "Fel"));
        EXPECT_EQ(shown(report.box) + (report.backToSearch ? " back" : ""),
                  number == errors::LoginResponseDamaged ? "[] -2147220990 Fel"
                                                         : "[stop] Fel back");
    }
    EXPECT_EQ(shown(SetupFlexGridFailureBox(MireloError(5, "Ogiltigt"))),
              "[stop] Kunde inte skapa struktur för flexgrid: Ogiltigt");
    // A tick on a patient whom another workstation is changing: the box of every handler.
    EXPECT_EQ(shown(MouseDownFailureBox(MireloError(errors::PatientFileBusy, Busy))), Held);
}

// The extended information lists the newest product of each number with a note or a warning, its
// icons and red twins as the view's. It seeks a product by its ID, else by its product number, no
// further down than the current row, where its fill left the later of the last red twins; an empty
// product number finds a blank row. The view seeks the ID in the whole grid. A grid of its heading
// alone finds nothing; an empty ID takes the marking away, as the heading row does.
TEST_F(StoreTest, the_notes_grid_lists_and_seeks_its_products_no_further_down_than_it_allows) {
    const platform::XmlDocument document = parsedXml(patientText(
        Pnr, "T", "T",
        {{.id = "A2", .regNr = "100", .atcCode = "X01", .note = "a", .allergicHistory = "1"},
         {.id = "A1", .regNr = "100", .atcCode = "X01", .note = "äldre"},
         {.id = "B", .regNr = "200", .atcCode = "X01", .note = "b", .allergic = "1"},
         {.id = "C", .regNr = "300", .atcCode = "Y01"},
         {.id = "D", .regNr = "400", .atcCode = "", .note = "d"},
         {.id = "E", .regNr = "500", .atcCode = "", .note = "e"},
         {.id = "G", .regNr = "600", .atcCode = "Z01", .note = "g", .allergic = "1"}}));
    const extended_info::Fill notes = extended_info::FillFlexGrid(document, true, 11);
    const MedicationOverview view = FillFlexGrid(document, true, 14);
    EXPECT_EQ(rowsOf(notes, extended_info::grid),
              (Texts{"A2 32 red", "B 01 red", "D 02 red", "E 02 red", "G 01"}));
    EXPECT_EQ(notes.currentRow, 4);
    // The fill's rows with blank ones below, and where searches in them end.
    const auto grid = [](const ProductGridFill &fill, int currentRow) {
        return ShownGrid{fill.gridRows, currentRow, [&fill](int row, int col) {
                             return row > std::ssize(fill.rows)
                                        ? ""
                                        : fill.rows[row - 1].cells[col].text;
                         }};
    };
    const ShownGrid twins = grid(notes, 4), blanks = grid(notes, 7), all = grid(view, 0);
    using extended_info::RowOfProduct;
    using enum RowSearch::End;
    const RowSearch none{NotFound}, emptyId{EmptyId}, noRows{GridWithoutRows};
    const auto at = [](int row) { return RowSearch{Found, row}; };
    EXPECT_EQ((std::vector{RowOfProduct(twins, "G", ""), RowOfProduct(twins, "Q", "400"),
                           RowOfProduct(twins, "E", ""), RowOfProduct(twins, "Q", "600"),
                           RowOfProduct(blanks, "Q", ""), RowOfProduct(twins, "", "400"),
                           RowOfId(all, "G"), RowOfId(all, "Q"), RowOfId({.rows = 1}, "G")}),
              (std::vector{none, at(3), at(4), none, at(6), emptyId, at(7), none, noRows}));
}

// The sections of a patient's printed list: each heading, then its entries in brackets, each line
// after a ";", or what the section says when empty.
std::string printedSections(const std::vector<ProductFields> &products, const std::string &history,
                            bool showPast) {
    storePatientFile(Pnr + ".xml", patientText(Pnr, "Tolvansson", "Tolvan", products, {}, history));
    std::string sections;
    for (const PrintedSection &section : ReadPrintedMedicationList(Pnr, showPast, Sig).sections) {
        sections +=
            section.heading + ":" + (section.entries.empty() ? " " + section.whenEmpty : "");
        for (const PrintedEntry &entry : section.entries) {
            sections += std::accumulate(entry.lines.begin(), entry.lines.end(), " [" + entry.title,
                                        [](auto a, auto &b) { return a + "; " + b; }) +
                        "]";
        }
        sections += "\n";
    }
    return sections;
}

// Current products in file order, every product number with a warning once with the reason of its
// latest record (records stand newest first), past products only when the view shows them. Notes
// are never printed.
TEST_F(StoreTest, the_printed_list_holds_current_products_warnings_and_the_past_on_show) {
    const std::string alvedon = "Alvedon Tablett 500 mg Orion";
    const std::string none = "Överkänslighet: Ingen känd överkänslighet registrerad\n";
    const std::vector<ProductFields> visit = {
        {.packageSize = std::nullopt, .repeats = "3", .prescribedTimestamp = "i går", .note = "N"},
        {.checked = "0", .takenOutBy = "Dr Berg", .takenOutTimestamp = Now},
        {.checked = "0"}};
    const std::string current = "Aktuella läkemedel: [" + alvedon +
                                "; Dosering: 1 tablett 3 gånger dagligen; Uttag: 3 ggr · "
                                "Ordinerat: i går]\n" +
                                none;
    const struct {
        std::vector<ProductFields> products;
        std::string history;
        bool showPast;
        std::string sections;
    } cases[] = {
        {{}, "", true, "Aktuella läkemedel: Inga aktuella läkemedel\n" + none},
        {visit, "", false, current},
        {visit, "", true,
         current + "Utsatta läkemedel: [" + alvedon + "; Utsatt 2026-03-15 av Dr Berg] [" +
             alvedon + "; Ersatt av en senare förskrivning]\n"},
        {{{.regNr = "R2",
           .companyName = "Johnson &amp; Johnson",
           .dosage = "&lt; 4\nper dygn",
           .allergic = "1"},
          {.regNr = "R3", .checked = "0", .allergic = "1"},
          {.regNr = "R2", .checked = "0", .allergic = "1"}},
         "<History>" + historyRecord("R2", "1", "Utslag", "Dr. Ek", Now) +
             historyRecord("R2", "1", "Klåda", "Dr. Ek", Now) +
             historyRecord("R9", "1", "Annan", "Dr. Ek", Now) + "</History>",
         false,
         "Aktuella läkemedel: [Alvedon Tablett 500 mg Johnson & Johnson; Dosering: < 4\nper dygn; "
         "Förpackning: 1 X 20 st · Uttag: 1 ggr · Ordinerat: 2026-01-10]\nÖverkänslighet: "
         "[Alvedon; "
         "Produktnummer: R2; Orsak: Utslag] [Alvedon; Produktnummer: R3]\n"},
    };
    for (const auto &test : cases) {
        EXPECT_EQ(printedSections(test.products, test.history, test.showPast), test.sections);
    }
    EXPECT_EQ(
        ReadPrintedMedicationList(Pnr, true, Sig).patientLines,
        (Texts{"Namn: Tolvan Tolvansson", "Personnummer: " + Pnr,
               "Adress: Storgatan 1, 111 22 Stockholm", "Utskriven: "s + Now, "Läkare: " + Sig}));
    storeDamaged(Pnr + ".xml");
    EXPECT_THAT(failure([] { ReadPrintedMedicationList(Pnr, true, Sig); }), StartsWith(Damaged));
}

using namespace platform;

// What a parse gave: "parsed", or the reason of its failure as the boxes show it. A failure is
// never thrown: the parse says false and leaves a non-zero code in the document.
std::string parseOutcome(bool parsed, const XmlDocument &document) {
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
        EXPECT_EQ(parseOutcome(document.loadXML(text), document), reason) << text;
    }
    // A file is decoded by its declaration; a missing file fails as a damaged one does.
    writeBytes(path("utf8.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC5sa</a>");
    XmlDocument utf8, missing;
    EXPECT_EQ(parseOutcome(utf8.load(path("utf8.xml")), utf8),
              "Otillåtet tecken i dokumentet. (rad 1, kolumn 42)");
    EXPECT_EQ(parseOutcome(missing.load(path("saknas.xml")), missing),
              "Systemet kan inte hitta den angivna filen: " + path("saknas.xml"));
}

TEST_F(XmlDocumentTest, a_node_held_from_a_query_outlives_the_text_that_replaced_it) {
    XmlDocument document =
        parsedXml("<r><Checked>1<Product><ID>inner</ID></Product></Checked></r>");
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
        EXPECT_EQ(parseOutcome(beyond.loadXML(documentUsing(uses)), beyond),
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
    // With the references a stored file needs, too.
    EXPECT_EQ(document.xml(CanScramble),
              LibxmlSerialisedXml(document.asNode().handle(), "UTF-8", CanScramble));
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
        {"<a><!-- c --><b>ý &lt; ≥</b></a>", false},
        {"<a><b><![CDATA[x<y]]></b></a>", false},
        {R"(<!DOCTYPE a [<!ENTITY e "<b/>">]><a>&e;</a>)", false},
        {"<a><?p x?><b/></a>", false}};
    for (const auto &[text, plain] : trees) {
        SCOPED_TRACE(text.substr(0, 80));
        expectWrittenAndWalkedAsLibxml2Does(parsedXml(text), plain);
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
