#include "records/patient_directory.h"

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "platform/file_system.h"
#include "records/patient_file.h"

#include <QString>
#include <algorithm>
#include <string_view>

namespace mirelo {
namespace {

constexpr int WholeNumberLength = 12;

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Not the C library's toupper: the locale must not change what a search finds.
char upperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool equalUpperAscii(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return upperAscii(x) == upperAscii(y); });
}

// The key compared with the leading characters of a name or number, both upper-cased, as
// many characters as the key has. Upper-casing works on characters, so Swedish letters in a
// typed key compare as the user expects. Where both sides are plain ASCII, as personal numbers
// are, a byte is a character and the comparison needs no conversion: a search walks every
// name in the folder.
class KeyPrefix {
  public:
    explicit KeyPrefix(const std::string &key)
        : key_(key), asciiKey_(isAscii(key)), upperKey_(QString::fromStdString(key).toUpper()) {}

    bool begins(const std::string &text) const {
        if (asciiKey_) {
            const std::string_view lead = std::string_view(text).substr(0, key_.size());
            if (isAscii(lead)) {
                return lead.size() == key_.size() && equalUpperAscii(lead, key_);
            }
        }
        return QString::fromStdString(text).left(upperKey_.size()).toUpper() == upperKey_;
    }

  private:
    std::string key_;
    bool asciiKey_;
    QString upperKey_;
};

// The last three characters of a name, not its extension: "1912xml" passes as well.
bool endsInXml(const std::string &name) {
    if (name.size() >= 3 && isAscii(std::string_view(name).substr(name.size() - 3))) {
        return equalUpperAscii(std::string_view(name).substr(name.size() - 3), "XML");
    }
    return QString::fromStdString(name).right(3).toUpper() == QStringLiteral("XML");
}

// The given name is left out: two patients of one family are told apart by the number alone.
std::string listLine(const std::string &pnr, const std::string &familyName) {
    return pnr + " " + familyName;
}

void listMatchingFiles(const std::string &key, std::vector<std::string> &list1) {
    const KeyPrefix prefix(key);
    const auto candidate = [&prefix](const std::string &name) {
        return prefix.begins(name) && endsInXml(name);
    };
    for (const platform::FileEntry &file :
         platform::GetFolderFiles(session().gDataPath, candidate)) {
        AddPatientToList(file.Path, key, list1);
    }
}

std::optional<std::string> fileToOpenDirectly(const std::string &key) {
    if (!platform::FolderExists(session().gDataPath)) {
        runtime::raise(runtime::PathNotFound);
    }
    if (!IsPatientFileName(key)) {
        return std::nullopt;
    }
    try {
        if (endsInXml(platform::GetFile(PatientFilePath(key)).Name)) {
            return key;
        }
    } catch (const MireloError &) {
        // A number with no file: the empty list tells the search screen so.
    }
    return std::nullopt;
}

} // namespace

std::string SearchKeyFromText(const std::string &typed) {
    std::string key = typed;
    key.erase(std::remove(key.begin(), key.end(), '-'), key.end());
    return key;
}

bool IsWholePersonalNumber(const std::string &key) {
    return QString::fromStdString(key).size() >= WholeNumberLength;
}

std::string PnrOfListLine(const std::string &line) {
    return line.substr(0, line.find(' '));
}

PatientSearchOutcome SearchPatient(const std::string &key, std::vector<std::string> &list1) {
    if (!IsWholePersonalNumber(key)) {
        listMatchingFiles(key, list1);
        return {};
    }
    return {fileToOpenDirectly(key)};
}

void AddPatientToList(const std::string &path, const std::string &key,
                      std::vector<std::string> &list1) {
    const platform::XmlDocument patient = ReadPatientFileKeepingTabs(path);
    const std::string pnr = patient.selectSingleNode("//Patient/PatientData/Pnr").text();
    if (KeyPrefix(key).begins(pnr)) {
        list1.push_back(
            listLine(pnr, patient.selectSingleNode("//Patient/PatientData/FamilyName").text()));
    }
}

} // namespace mirelo
