#pragma once

#include <optional>
#include <string>
#include <vector>

namespace mirelo {

// The search box's text as a search key: every hyphen removed, blanks and letters kept.
std::string SearchKeyFromText(const std::string &typed);

// A key of 12 characters or more is taken as a whole personal number and opened directly;
// a shorter one is the beginning of numbers and lists every patient it begins.
bool IsWholePersonalNumber(const std::string &key);

// A list line is the personal number, one blank and the family name. The line is the only
// place the hit is kept, so the number is whatever stands before its first blank.
std::string PnrOfListLine(const std::string &line);

// What a search asks of the screens beyond the lines it added.
struct PatientSearchOutcome {
    // A whole personal number whose file is there: the medication view reads this number and
    // comes up over the search screen, which stays visible. Every step of that opening runs
    // even when the one before it failed, and no failure is reported: a damaged file brings
    // up the view with whatever its grid held.
    std::optional<std::string> openInMedicationView;
};

// Searches the data folder for the key, which is never empty.
// A short key walks the folder in name order and appends a line to list1 for every file
// whose name begins with the key and ends in "XML" (both regardless of case) and whose Pnr
// inside begins with the key too; only files that pass both name tests are opened. A failure
// ends the walk at that file and is raised, and the lines already appended stay.
// A whole number appends nothing: its file is looked up and, if it is there, it is to be
// opened directly; if it is not, or anything about it fails, nothing is said.
// A data folder that can't be opened is raised in either mode. list1 is never cleared here.
PatientSearchOutcome SearchPatient(const std::string &key, std::vector<std::string> &list1);

// Reads one candidate file (its tabs kept) and appends its line to list1 when its Pnr begins
// with the key, regardless of case. A damaged file is 0x80040204; a missing Pnr, or a missing
// FamilyName on a match, is 91.
void AddPatientToList(const std::string &path, const std::string &key,
                      std::vector<std::string> &list1);

} // namespace mirelo
