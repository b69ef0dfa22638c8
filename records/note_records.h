#pragma once

#include "core/mirelo_error.h"
#include "platform/xml_document.h"

#include <functional>
#include <string>

namespace mirelo {

// The physician's own entries in a patient's file: the note on a product, the warning of
// hypersensitivity, the history of the warning and the general note on the patient.
//
// Every operation here is one whole read, change and write of the file gDataPath + pnr + ".xml":
// the file is asked for (a missing one fails with the file service's 53), its patient locked
// against the other workstations (0x80040208 when one of them holds it longer than a writer
// waits), read afresh and parsed (a damaged one fails with 0x80040204), changed in the document
// only, and written once as the last step. A failure anywhere leaves the file byte for byte as it
// was, and nothing is kept in memory afterwards. None of them catches anything: every failure
// goes to the caller as a MireloError, which the screen's handler shows with ReportNoteFailure or
// ReportReasonDialogFailure below. The process always goes on, and the screen stays as it is.
//
// A note and a warning belong to the product, not to the prescription: they are spread over
// every Product with the RegNr of the picked one, that RegNr always read from the file. The
// values are those on the screen at the moment of the call: `allergic` is chkAllergic's value,
// 0 or 1; `signature` is gSignature. Each time written is the local timestamp of the clock,
// taken anew at each place of use.
//
// Only `id` and the RegNr enter a query, between double quotes, unescaped: one holding a double
// quote is an invalid query. Note texts and reasons keep every character they hold; a control
// character but tab, line feed and carriage return can't be stored, and the operation fails
// with 5 naming it, before anything is written.

// Which screen's variant of an operation that both screens hold.
enum class NoteScreen { MedicalNote, ExtendedInfo };

// frmMedicalNote's cmdSave_Click: on every product of the picked one's RegNr sets Allergic to
// `allergic`, the note, its author and its time. With an empty RegNr nothing is changed, the
// typed note is dropped, and the file is written all the same.
// After it, the caller refreshes frmShowPatient (ReadPatientFolder) and closes the dialog; after
// a failure it does neither.
void SaveMedicalNote(const std::string &pnr, const std::string &id, const std::string &note,
                     int allergic, const std::string &signature);

// frmExtendedInfo's SaveProductNote (`id` from txtNoteChanged's tag): the same without Allergic.
// Before the write, and so even when the write then fails, `setNoteChangedCaption` is given
// signature + " - " + the time, for txtNoteChanged. Nothing is refreshed and nothing closes.
void SaveProductNote(const std::string &pnr, const std::string &id, const std::string &note,
                     const std::string &signature,
                     const std::function<void(const std::string &)> &setNoteChangedCaption);

// deleteNote: the picked product gets Allergic "0", an empty note, and the deleting user's
// signature and time as the note's author and time; AllergicHistory and every history record
// stay. Then the same on every product of its RegNr if the screen's test says so:
// - MedicalNote: the RegNr is not the empty text;
// - ExtendedInfo: the RegNr as a truth value, so "0" clears the picked product alone, and an
//   empty RegNr or one that isn't a number fails with 13 and nothing is written.
// After it: MedicalNote refreshes frmShowPatient, then closes the dialog; a failure goes to
// cmdDelete_Click's handler. ExtendedInfo catches its own failures (ReportNoteFailure) and
// otherwise refreshes frmShowPatient, then its own ReadPatientFolder, puts the grid's current
// row on 1 and calls FlexGrid_SelChange.
void deleteNote(const std::string &pnr, const std::string &id, const std::string &signature,
                NoteScreen screen);

// SaveAllergicHistory: a new record of the warning state `allergic` and the `reason` goes first
// in History, which is made as the last child of Patient if it isn't there yet (an existing one
// is appended again, where it already stands); every product of the RegNr gets Allergic and
// AllergicHistory "1". The note and its author and time stay as they are.
// - MedicalNote: the record is made always, with an empty RegNr too. Refresh nothing after.
// - ExtendedInfo: the picked product's AllergicHistory is set "1" first; with an empty RegNr
//   there is no record to insert and the operation fails with 91, nothing written. After it,
//   the caller fills its own grid again (ReadPatientFolder) and reselects the row by `id`
//   (SelectFlexGridID).
// Called from frmAllergicExtendedInfo's OK while the reason dialog is open; a failure is
// reported with ReportReasonDialogFailure.
void SaveAllergicHistory(const std::string &pnr, const std::string &id, int allergic,
                         const std::string &reason, const std::string &signature,
                         NoteScreen screen);

// A history record that isn't in any patient's file yet, together with the document of its own
// that holds it until it is inserted into one (a copy then goes in).
struct AllergicHistoryNode {
    platform::XmlDocument owner;
    platform::XmlNode record;
};

// CreateAllergicHistoryNode: AllergicHistory with RegNr, AllergicStatusHistory, AllergicInfo-
// History, AllergicInfoByHistory and AllergicInfoTimestampHistory, in that order.
AllergicHistoryNode CreateAllergicHistoryNode(const std::string &regNr, int allergic,
                                              const std::string &reason,
                                              const std::string &signature);

// What frmExtendedInfo shows while its general note is saved, set at the moments it always was.
struct GeneralInfoMarks {
    // Text1's tag: "NoChange" around the assignment of the note, then the empty text. A failure
    // in between leaves "NoChange".
    std::function<void(const std::string &)> setText1Tag;
    // Label3: signature + " - " + a time of its own, before the write, so also when it fails.
    std::function<void(const std::string &)> setLabel3Caption;
};

// SaveGeneralInfo (Text1_LostFocus): GeneralInfo, GeneralInfoBy and GeneralInfoTimestamp of
// PatientData. A file without them fails with 91 at the first one. Nothing to refresh after.
void SaveGeneralInfo(const std::string &pnr, const std::string &generalNote,
                     const std::string &signature, const GeneralInfoMarks &marks);

// The box of a failure under frmMedicalNote's cmdSave_Click and cmdDelete_Click, frmExtended-
// Info's deleteNote, Text1_LostFocus and Text2_LostFocus: the number in decimal, one blank, the
// description; OK, no icon, the application's title. The screen stays; the process goes on. A
// patient held by another workstation is told as HeldPatientBox words it.
void ReportNoteFailure(const MireloError &error);

// The box of a failure under frmAllergicExtendedInfo's cmdSave_Click: "Fel uppstod: " and the
// description, with a stop icon, titled "Mirelo", or HeldPatientBox's. The process goes on.
void ReportReasonDialogFailure(const MireloError &error);

} // namespace mirelo
