#include "records/patient_file.h"

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "core/text_scrambling.h"
#include "platform/file_system.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace mirelo {
namespace {

platform::XmlDocument parsePatientText(const std::string &text) {
    platform::XmlDocument patient;
    patient.setAsync(false);
    patient.setValidateOnParse(true);
    patient.loadXML(text);
    if (patient.parseError().errorCode != 0) {
        throw MireloError(errors::PatientFileDamaged,
                          withReason("Patientfil är skadad.", patient.parseError().reason));
    }
    return patient;
}

// Tabs are dropped from a stored file's text before it is parsed, as they always have been.
// The text shrinks in place; eight bytes that hold no tab, most of them, are moved at once.
void dropTabs(std::string &text) {
    constexpr uint64_t Ones = 0x0101010101010101ull;
    constexpr uint64_t Tabs = Ones * '\t';
    constexpr uint64_t HighBits = Ones * 0x80;
    char *out = text.data();
    const char *in = text.data();
    const char *const end = in + text.size();
    for (; end - in >= 8; in += 8) {
        uint64_t eight = 0;
        std::memcpy(&eight, in, 8);
        const uint64_t tabsZeroed = eight ^ Tabs;
        if (((tabsZeroed - Ones) & ~tabsZeroed & HighBits) == 0) {
            std::memcpy(out, &eight, 8);
            out += 8;
            continue;
        }
        for (int k = 0; k < 8; ++k) {
            *out = in[k];
            out += in[k] != '\t';
        }
    }
    for (; in < end; ++in) {
        *out = *in;
        out += *in != '\t';
    }
    text.resize(static_cast<size_t>(out - text.data()));
}

} // namespace

std::string PatientFilePath(const std::string &pnr) {
    const std::string exact = session().gDataPath + pnr + ".xml";
    return platform::FindFileIgnoringCase(exact).value_or(exact);
}

bool IsPatientFileName(const std::string &pnr) {
    const bool controlCharacter = std::any_of(pnr.begin(), pnr.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    });
    return !controlCharacter && pnr.find_first_of("/\\") == std::string::npos &&
           pnr.find("..") == std::string::npos;
}

PatientFileLock::PatientFileLock(const std::string &pnr, std::chrono::milliseconds patience)
    : pnr_(pnr), lock_(session().gDataPath, pnr, patience) {
    if (!lock_.held()) {
        throw MireloError(errors::PatientFileBusy,
                          "Patienten ändras just nu på en annan arbetsstation. Inget har sparats; "
                          "försök igen om en stund.");
    }
}

std::optional<platform::MsgBoxRequest> HeldPatientBox(const MireloError &error) {
    if (error.number() != errors::PatientFileBusy) {
        return std::nullopt;
    }
    return platform::MsgBoxRequest{error.description(), platform::MsgBoxButtons::OK,
                                   platform::MsgBoxIcon::Exclamation, "Mirelo"};
}

std::string ReadPatientText(const std::string &path) {
    std::string text = UnscrambleText(platform::ReadAllBytes(path));
    dropTabs(text);
    return text;
}

platform::XmlDocument ReadPatientFile(const std::string &path) {
    return parsePatientText(ReadPatientText(path));
}

PatientReading ReadPatientFolderFile(const std::string &pnr) {
    try {
        std::string path = platform::GetFile(PatientFilePath(pnr)).Path;
        platform::XmlDocument patient = ReadPatientFile(path);
        return {std::move(path), std::move(patient)};
    } catch (const MireloError &error) {
        if (error.number() == runtime::FileNotFound) {
            throw MireloError(errors::PatientFileMissing, "Patientens fil saknas.");
        }
        throw;
    }
}

platform::XmlDocument ReadPatientFileKeepingTabs(const std::string &path) {
    return parsePatientText(UnscrambleText(platform::ReadAllBytes(path)));
}

void WritePatientFile(const platform::XmlDocument &patient, const std::string &path) {
    platform::WriteAllBytes(path, StoredPatientBytes(patient));
}

// A character that the stored code can't hold (one beyond the code page, or û, ý, þ and ÿ, which
// the shift can't move) goes in as a character reference, so the file keeps what was typed and
// reads back whole; a file without one is stored as it always was.
std::string StoredPatientBytes(const platform::XmlDocument &patient) {
    return ScrambleText(patient.xml(CanScramble));
}

} // namespace mirelo
