#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace mirelo {

// Every failure of the program travels as this one exception, carrying the number the user
// is shown and a Swedish description. The event handlers pick their message by the number.
class MireloError : public std::runtime_error {
  public:
    MireloError(int32_t number, std::string description)
        : std::runtime_error(description), number_(number), description_(std::move(description)) {}

    int32_t number() const { return number_; }
    const std::string &description() const { return description_; }

  private:
    int32_t number_;
    std::string description_;
};

// The program's own numbers.
namespace errors {
inline constexpr int32_t SettingsDamaged = static_cast<int32_t>(0x80040201);
inline constexpr int32_t LoginResponseDamaged = static_cast<int32_t>(0x80040202);
inline constexpr int32_t VnrResponseDamaged = static_cast<int32_t>(0x80040203);
inline constexpr int32_t PatientFileDamaged = static_cast<int32_t>(0x80040204);
inline constexpr int32_t InboxMissing = static_cast<int32_t>(0x80040205);
inline constexpr int32_t PrescriptionFileDamaged = static_cast<int32_t>(0x80040206);
inline constexpr int32_t PatientFileMissing = static_cast<int32_t>(0x80040207);
// Another workstation holds the patient's file for a change longer than a writer waits.
inline constexpr int32_t PatientFileBusy = static_cast<int32_t>(0x80040208);

// What the HTTP object fails with when the server can't be reached.
inline constexpr int32_t ServerUnreachable = static_cast<int32_t>(0x800C0005);
// A query that is not valid XPath, such as one holding a value with a double quote.
inline constexpr int32_t InvalidQuery = static_cast<int32_t>(0x80004005);
} // namespace errors

// The run time's numbers, as the screens' handlers expect them.
namespace runtime {
inline constexpr int32_t InvalidArgument = 5;
inline constexpr int32_t Overflow = 6;
inline constexpr int32_t TypeMismatch = 13;
inline constexpr int32_t FileNotFound = 53;
inline constexpr int32_t FileAlreadyExists = 58;
inline constexpr int32_t PermissionDenied = 70;
inline constexpr int32_t PathNotFound = 76;
inline constexpr int32_t ObjectNotSet = 91;
inline constexpr int32_t NotSupportedByObject = 438;

inline std::string description(int32_t number) {
    switch (number) {
    case InvalidArgument:
        return "Ogiltigt argument eller anrop av procedur";
    case Overflow:
        return "Spill";
    case TypeMismatch:
        return "Typerna matchar inte";
    case FileNotFound:
        return "Filen hittades inte";
    case FileAlreadyExists:
        return "Filen finns redan";
    case PermissionDenied:
        return "Åtkomst nekad";
    case PathNotFound:
        return "Sökvägen hittades inte";
    case ObjectNotSet:
        return "Objektvariabeln eller blockvariabeln With har inte angetts";
    case NotSupportedByObject:
        return "Objektet har inte stöd för egenskapen eller metoden";
    default:
        return "Okänt fel";
    }
}

[[noreturn]] inline void raise(int32_t number) {
    throw MireloError(number, description(number));
}
} // namespace runtime

// A parse failure's description: the Swedish sentence, CR LF, and the parser's reason.
inline std::string withReason(const std::string &sentence, const std::string &reason) {
    return sentence + "\r\nAnledning: " + reason;
}

} // namespace mirelo
