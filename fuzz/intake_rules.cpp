#include "intake_rules.h"

#include "core/mirelo_error.h"
#include "core/text_scrambling.h"
#include "file_bytes.h"
#include "intake/message_bounds.h"
#include "platform/record_lock.h"
#include "platform/xml_document.h"
#include "records/patient_file.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

namespace mirelo::fuzzing {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;

const std::string PatientSeparator = "\n=====PATIENT=====\n";

// Every file but the data folder's lock file, which holds nothing and stays once made.
Files filesUnder(const std::string &folder) {
    Files files;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory() && entry.path().filename() != platform::RecordLockFileName) {
            files[entry.path().string()] = testing::readBytes(entry.path().string());
        }
    }
    return files;
}

bool isUnder(const std::string &path, const std::string &folder) {
    return path.compare(0, folder.size(), folder) == 0;
}

// A patient file as the program reads it: unscrambled, its tabs dropped, parsed.
std::string asRead(const std::string &stored) {
    std::string text = UnscrambleText(stored);
    std::erase(text, '\t');
    platform::XmlDocument patient;
    patient.loadXML(text);
    return patient.xml();
}

// The IDs the message's items are to stand under in the patient's list.
std::set<std::string> itemIds(const platform::XmlDocument &message) {
    std::set<std::string> ids;
    for (const platform::XmlNode &item : message.selectNodes("//PrescriptionItemDetails")) {
        ids.insert(message.selectSingleNode("//PrescriptionSetId").text() + "_" +
                   item.selectSingleNode("PrescriptionItemId").text());
    }
    return ids;
}

class Rules {
  public:
    Rules(const IntakeScene &scene, const std::function<ScanOutcome()> &scan)
        : scene_(scene), scan_(scan), message_(scene.appDir + "/in/message.xml"),
          data_(scene.appDir + "/data/"), error_(scene.appDir + "/Error/") {}

    std::optional<std::string> broken(const std::string &input) {
        const std::size_t split = input.find(PatientSeparator);
        messageBytes_ = input.substr(0, split);
        testing::writeFinishedMessage(message_, messageBytes_);
        if (split != std::string::npos) {
            testing::writeBytes(data_ + "191212121212.xml", testing::scrambleBytes(input.substr(
                                                                split + PatientSeparator.size())));
        }
        parsedMessage_.load(message_);
        const Files before = filesUnder(scene_.watched);
        const ScanOutcome outcome = scan_();
        const Files after = filesUnder(scene_.watched);
        for (const auto &[path, bytes] : after) {
            if (!isUnder(path, data_) && !isUnder(path, error_) && path != message_) {
                return "nothing is written outside the data, inbox and error folders: " + path;
            }
        }
        if (outcome.boxes == 0) {
            return brokenByTakingIn(outcome, before, after);
        }
        if (outcome.processEnded && after != before) {
            return "a failed intake leaves every file as it was, the message in the inbox";
        }
        if (!outcome.processEnded && (outcome.boxes != 1 || !setAsideAlone(before, after))) {
            return "a message set aside is told of in one box and moved to Error/ as it was";
        }
        return std::nullopt;
    }

  private:
    bool setAsideAlone(Files before, Files after) const {
        const auto aside = std::find_if(after.begin(), after.end(), [&](const auto &file) {
            return isUnder(file.first, error_) && !before.contains(file.first);
        });
        if (aside == after.end() || aside->second != messageBytes_) {
            return false;
        }
        after.erase(aside);
        before.erase(message_);
        return after == before;
    }

    std::optional<std::string> brokenByTakingIn(const ScanOutcome &outcome, const Files &before,
                                                const Files &after) {
        if (outcome.processEnded) {
            return "the process ends only after a box";
        }
        if (after.contains(message_)) {
            return "a message taken in without a box is gone from the inbox";
        }
        long long growth = 0;
        for (const auto &[path, bytes] : after) {
            const auto old = before.find(path);
            if (isUnder(path, data_) && (old == before.end() || old->second != bytes)) {
                growth += static_cast<long long>(bytes.size()) -
                          (old == before.end() ? 0 : static_cast<long long>(old->second.size()));
                if (const auto unreadable = brokenOnReading(path)) {
                    return unreadable;
                }
            }
        }
        if (growth > static_cast<long long>(MessageGrowthLimit(messageBytes_.size()))) {
            return "a message grows the data folder by at most the bound for its size";
        }
        return brokenByTakingInAgain(after);
    }

    std::optional<std::string> brokenOnReading(const std::string &path) const {
        try {
            const platform::XmlDocument patient = ReadPatientFile(path);
            const std::string pnr =
                parsedMessage_
                    .selectSingleNode("//SubjectOfCare/PatientMatchingInfo/PatientId/IdValue")
                    .text();
            if (PatientFilePath(pnr) != path) {
                return std::nullopt;
            }
            std::set<std::string> listed;
            for (const platform::XmlNode &id :
                 patient.selectNodes("/Patient/MedicalList/Product/ID")) {
                listed.insert(id.text());
            }
            if (!std::ranges::includes(listed, itemIds(parsedMessage_))) {
                return "a message deleted has its products in the patient's list";
            }
        } catch (const MireloError &error) {
            return "a patient file written by intake reads back (" + path + ": " +
                   error.description() + ")";
        }
        return std::nullopt;
    }

    std::optional<std::string> brokenByTakingInAgain(const Files &once) {
        testing::writeFinishedMessage(message_, messageBytes_);
        const ScanOutcome again = scan_();
        const Files twice = filesUnder(scene_.watched);
        const auto same = [&](const auto &file, const auto &other) {
            return file.first == other.first &&
                   (file.second == other.second ||
                    (isUnder(file.first, data_) && asRead(file.second) == asRead(other.second)));
        };
        if (again.boxes != 0 ||
            !std::equal(once.begin(), once.end(), twice.begin(), twice.end(), same)) {
            return "a message taken in twice changes nothing the second time";
        }
        return std::nullopt;
    }

    const IntakeScene &scene_;
    const std::function<ScanOutcome()> &scan_;
    const std::string message_;
    const std::string data_;
    const std::string error_;
    std::string messageBytes_;
    platform::XmlDocument parsedMessage_;
};

} // namespace

std::optional<std::string> BrokenIntakeRule(const IntakeScene &scene, const std::string &input,
                                            const std::function<ScanOutcome()> &scan) {
    return Rules(scene, scan).broken(input);
}

} // namespace mirelo::fuzzing
