// Writes the seed inputs of the fuzz harnesses, one folder per harness, from the builders the
// tests use, so that the seeds are the files and answers Mirelo meets in use; and a dictionary
// of their element names.
#include "core/application_context.h"
#include "patient_file_builder.h"
#include "platform/document_building.h"
#include "prescription_message_builder.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

using namespace mirelo;
using namespace mirelo::testing;

namespace fs = std::filesystem;

namespace {

void writeSeeds(const fs::path &folder, const std::vector<std::string> &seeds) {
    fs::create_directories(folder);
    for (size_t index = 0; index < seeds.size(); ++index) {
        writeBytes((folder / ("seed-" + std::to_string(index))).string(), seeds[index]);
    }
}

std::vector<ProductFields> sampleProducts() {
    ProductFields current;
    ProductFields takenOut;
    takenOut.id = "2_1";
    takenOut.regNr = "100002";
    takenOut.productName = "Ipren";
    takenOut.atcCode = "M01AE01";
    takenOut.takenOutBy = "Doktor Ek";
    takenOut.takenOutTimestamp = "2026-02-01T08:00:00";
    ProductFields warned;
    warned.id = "3_1";
    warned.regNr = "100003";
    warned.atcCode = "N02BE01";
    warned.allergic = "1";
    warned.allergicHistory = "1";
    warned.note = "Magbesvär";
    warned.noteBy = "Doktor Ek";
    warned.noteTimestamp = "2026-01-12T10:00:00";
    warned.checked = "0";
    ProductFields sparse;
    sparse.id = "4_1";
    sparse.omitted = {"PackageSize", "Strength", "Checked"};
    return {current, takenOut, warned, sparse};
}

std::vector<std::string> patientSeeds() {
    const std::vector<ProductFields> products = sampleProducts();
    return {
        utf8ToLatin1(patientText("191212121212", "Åström", "Märta", {})),
        utf8ToLatin1(patientText("191212121212", "Åström", "Märta", {products[0]})),
        utf8ToLatin1(patientText("191212121212", "Åström", "Märta", products)),
    };
}

std::vector<std::string> messageSeeds() {
    PrescriptionMessage known;
    known.pnr = "191212121212";
    known.items = {MessageItem{}};
    PrescriptionMessage twoItems = known;
    MessageItem second;
    second.itemId = "2";
    second.regNr = "100002";
    second.productName = "Ipren";
    second.atcCode = "M01AE01";
    second.omitted = {"TimeValue", "PackageSize"};
    twoItems.items.push_back(second);
    PrescriptionMessage nameless = known;
    nameless.omitted = {"IdValue"};
    PrescriptionMessage newPatient = known;
    newPatient.pnr = "19400101-1234";
    PrescriptionMessage noNumber = known;
    noNumber.pnr = "Öberg";
    return {utf8ToLatin1(prescriptionMessageText(known)),
            utf8ToLatin1(prescriptionMessageText(twoItems)),
            utf8ToLatin1(prescriptionMessageText(nameless)),
            utf8ToLatin1(prescriptionMessageText(newPatient)),
            utf8ToLatin1(prescriptionMessageText(noNumber))};
}

std::vector<std::string> intakeSeeds() {
    const std::string separator = "\n=====PATIENT=====\n";
    const std::vector<std::string> messages = messageSeeds();
    const std::vector<std::string> patients = patientSeeds();
    std::vector<std::string> seeds = {messages[0], messages[3]};
    for (const std::string &message : messages) {
        seeds.push_back(message + separator + patients[2]);
    }
    seeds.push_back(messages[0] + separator + patients[0]);
    seeds.push_back(messages[1] + separator + patients[1]);
    return seeds;
}

std::vector<std::string> settingsSeeds(const fs::path &scratch) {
    setApplicationDirectoryForTesting(scratch.string());
    SettingsFields plain;
    SettingsFields saved;
    saved.username = "Läkare";
    saved.saveUsername = "1";
    saved.dataPath = "/srv/mirelo/data/";
    saved.server = "https://korvalo.example";
    SettingsFields old;
    old.loginUrl.reset();
    old.initXmlUrl.reset();
    old.saveUsername = " 1 ";
    std::vector<std::string> seeds;
    for (const SettingsFields &fields : {plain, saved, old}) {
        writeSettingsFile(fields);
        seeds.push_back(readBytes(SettingsFilePath()));
    }
    setApplicationDirectoryForTesting("");
    return seeds;
}

std::string loginAnswer(const std::vector<std::pair<std::string, std::string>> &messages) {
    platform::XmlDocument answer;
    const platform::XmlNode root = platform::StartDocument(answer, "LoginResponse");
    root.appendElement("Signature", "Dr Märta Åström");
    for (const auto &[status, description] : messages) {
        const platform::XmlNode message = root.appendElement("Message");
        message.appendElement("Status", status);
        message.appendElement("Description", description);
    }
    return answer.encodedXml();
}

std::vector<std::string> loginSeeds() {
    return {loginAnswer({{"0", "Välkommen"}}),
            loginAnswer({{"2", "Felaktigt användarnamn eller lösenord."}}),
            loginAnswer({{"1", "Nytt avtal"}, {"3", "Byt lösenord"}, {"0", ""}}),
            loginAnswer({{"0", ""}, {"4", "Kontot är spärrat"}}), loginAnswer({})};
}

// The element names of all seeds as libFuzzer dictionary entries, opening and closing tags,
// and the bits of XML syntax a mutation rarely makes by chance: the parser under the harnesses
// is not instrumented, so the fuzzer can't learn them from comparisons.
std::string dictionary(const std::vector<std::vector<std::string>> &seedSets) {
    std::set<std::string> names;
    const std::regex tag("<([A-Za-z][A-Za-z0-9]*)");
    for (const auto &seeds : seedSets) {
        for (const std::string &seed : seeds) {
            for (auto match = std::sregex_iterator(seed.begin(), seed.end(), tag);
                 match != std::sregex_iterator(); ++match) {
                names.insert((*match)[1]);
            }
        }
    }
    std::string entries;
    for (const std::string &name : names) {
        entries += "\"<" + name + ">\"\n\"</" + name + ">\"\n\"<" + name + "/>\"\n";
    }
    for (const char *syntax :
         {"<![CDATA[", "]]>", "<!--", "-->", "<!DOCTYPE x [", "<!ENTITY", "&#x", "&amp;", "<?",
          "?>", "encoding=\\\"UTF-8\\\"", "encoding=\\\"UTF-16\\\"", "xmlns:"}) {
        entries += "\"" + std::string(syntax) + "\"\n";
    }
    return entries;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <seed folder>\n", argv[0]);
        return 2;
    }
    const fs::path out = argv[1];
    const fs::path scratch = out / ".scratch";
    fs::create_directories(scratch);
    const std::vector<std::vector<std::string>> seedSets = {intakeSeeds(), patientSeeds(),
                                                            settingsSeeds(scratch), loginSeeds()};
    writeSeeds(out / "intake", seedSets[0]);
    writeSeeds(out / "patient_reading", seedSets[1]);
    writeSeeds(out / "serialising", seedSets[1]);
    writeSeeds(out / "settings", seedSets[2]);
    writeSeeds(out / "login_answer", seedSets[3]);
    fs::remove_all(scratch);
    writeBytes((out / "xml.dict").string(), dictionary(seedSets));
    return 0;
}
