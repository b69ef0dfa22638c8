#pragma once

#include "core/mirelo_error.h"
#include "platform/message_box.h"
#include "platform/record_lock.h"
#include "platform/xml_document.h"

#include <chrono>
#include <optional>
#include <string>

namespace mirelo {

// The file of a patient: gDataPath + personal number + ".xml", the number as it stands. The
// name is the patient's only key, so a file stored under another case of the same name (as
// "191212121212.XML") is the patient's file for every reader and writer alike.
std::string PatientFilePath(const std::string &pnr);

// Whether a personal number can name a file in the data folder: no path separator, no "..",
// no control character. A number that can't is never looked up or written.
bool IsPatientFileName(const std::string &pnr);

// How long a writer waits for a patient whom another workstation is changing. A change there
// takes tens of milliseconds, a few hundred over a slow link or behind a queue of writers; the
// physician is never kept waiting longer than this.
inline constexpr std::chrono::milliseconds PatientLockPatience{3000};

// Makes its holder the one writer of a patient's file among all the workstations that share the
// data folder, for as long as it lives: taken where an operation reads the file in order to
// change it, and let go after the new file has taken the old one's place, so that no change is
// ever written over one it didn't read. Readers that only show take none: the rename gives them
// a whole file, old or new. The lock is the patient's number in any case of its letters, as the
// file is found, not the spelling of the file's name.
// Past `patience` it fails with 0x80040208 "Patienten ändras just nu på en annan arbetsstation.
// Inget har sparats; försök igen om en stund.", before the file is read.
class PatientFileLock {
  public:
    explicit PatientFileLock(const std::string &pnr,
                             std::chrono::milliseconds patience = PatientLockPatience);

    const std::string &pnr() const { return pnr_; }

  private:
    std::string pnr_;
    platform::RecordLock lock_;
};

// The box of a patient held by another workstation, alike under every handler that can meet it:
// the description alone, with an exclamation mark rather than a stop, for nothing went wrong
// and nothing is lost; the screen stays as it was, for the physician to try again. Nothing for
// any other failure, which each handler words as it always has.
std::optional<platform::MsgBoxRequest> HeldPatientBox(const MireloError &error);

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
