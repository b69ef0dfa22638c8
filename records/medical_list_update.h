#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// Takes the product with the id out of the current medication, or puts it back, in the file
// of the patient: a current product gets Checked "0" and the user's signature and the local
// time as TakenOutBy and TakenOutTimestamp; any other gets Checked "1" with InsertedBy and
// InsertedTimestamp. The other pair stays as it stood, so a product that went out and back
// shows both. The file is read once and written once; other products of the same RegNr are
// left alone, even if that makes two of them current.
// A missing file is the file service's own 53, a damaged one 0x80040204, an id that isn't in
// the file 91, and a patient whom another workstation is changing 0x80040208 after a wait of a
// few seconds; in each case the file is untouched.
// Gives the document as written, from which the view can be filled again without reading the
// file another time.
platform::XmlDocument updateMedicalList(const std::string &id, const std::string &pnr);

} // namespace mirelo
