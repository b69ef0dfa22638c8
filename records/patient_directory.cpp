#include "records/patient_directory.h"

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "platform/file_system.h"
#include "records/patient_file.h"

#include <QString>
#include <algorithm>

namespace mirelo {
namespace {

constexpr int WholeNumberLength = 12;

// The key compared with the leading characters of a name or number, both upper-cased, as
// many characters as the key has. Upper-casing works on characters, so Swedish letters in a
// typed key compare as the user expects.
class KeyPrefix {
  public:
    explicit KeyPrefix(const std::string &key) : upperKey_(QString::fromStdString(key).toUpper()) {}

    bool begins(const std::string &text) const {
        return QString::fromStdString(text).left(upperKey_.size()).toUpper() == upperKey_;
    }

  private:
    QString upperKey_;
};

// The last three characters of a name, not its extension: "1912xml" passes as well.
bool endsInXml(const std::string &name) {
    return QString::fromStdString(name).right(3).toUpper() == QStringLiteral("XML");
}

// The given name is left out: two patients of one family are told apart by the number alone.
std::string listLine(const std::string &pnr, const std::string &familyName) {
    return pnr + " " + familyName;
}

void listMatchingFiles(const std::string &key, std::vector<std::string> &list1) {
    const KeyPrefix prefix(key);
    for (const platform::FileEntry &file : platform::GetFolderFiles(session().gDataPath)) {
        if (prefix.begins(file.Name) && endsInXml(file.Name)) {
            AddPatientToList(file.Path, key, list1);
        }
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
