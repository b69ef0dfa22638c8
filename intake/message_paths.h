#pragma once

namespace mirelo::message_paths {

// Where a prescription message names its prescriber and the moment it was issued.
inline constexpr const char *PrescriberName =
    "//NewPrescriptionMessage/PrescriptionMessage/MessageSender/HealthcareAgent/"
    "HealthcareParty/HealthcarePerson/Name";
inline constexpr const char *IssueTimestamp =
    "//NewPrescriptionMessage/PrescriptionMessage/GeneralPrescriptionMessageInformation/"
    "IdOfMessageByOriginator/IssueDateAndTimeOfMessage";

} // namespace mirelo::message_paths
