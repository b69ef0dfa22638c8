#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// The file of a patient: gDataPath + personal number + ".xml", the number as it stands. The
// name is the patient's only key, so a file stored under another case of the same name (as
// "191212121212.XML") is the patient's file for every reader and writer alike.
std::string PatientFilePath(const std::string &pnr);

// Whether a personal number can name a file in the data folder: no path separator, no "..",
// no control character. A number that can't is never looked up or written.
bool IsPatientFileName(const std::string &pnr);

// Read, unscramble and drop every tab, the tabs the serialiser put in front of nested elements
// and any inside values too, so that they don't pile up with each reading and writing.
std::string ReadPatientText(const std::string &path);

// The one reading path: the text above, parsed. A file that doesn't parse is 0x80040204
// "Patientfil är skadad." with the parser's reason.
platform::XmlDocument ReadPatientFile(const std::string &path);

// A patient file as one action read it, for the next step of the same action to use instead of
// reading the file again: opening a patient fills the grid and then shows the first row.
struct PatientReading {
    std::string path;
    platform::XmlDocument patient;
};

// The patient's file as a screen's fill reads it: found whatever the case of its name, a missing
// one 0x80040207 "Patientens fil saknas.", a damaged one 0x80040204.
PatientReading ReadPatientFolderFile(const std::string &pnr);

// The search list reads the unscrambled text as it stands, tabs and all.
platform::XmlDocument ReadPatientFileKeepingTabs(const std::string &path);

// The one writing path: the document's text, scrambled, written over the file in place. Every
// character of the text is kept: one the scrambling can't store stands as a character reference.
void WritePatientFile(const platform::XmlDocument &patient, const std::string &path);
// The bytes that path stores for the document, for a writer that weighs them first.
std::string StoredPatientBytes(const platform::XmlDocument &patient);

} // namespace mirelo
