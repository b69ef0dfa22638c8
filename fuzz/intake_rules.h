#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace mirelo::fuzzing {

// What one scan of the inbox did besides writing files.
struct ScanOutcome {
    std::size_t boxes = 0;
    bool processEnded = false;
};

// Where a scan works: an application directory with empty in/ and data/ folders, its gDataPath
// at data/, and a folder around it in which nothing is to be written outside those folders and
// Error/.
struct IntakeScene {
    std::string appDir;
    std::string watched;
};

// Lays out an input of the intake harness: a message, written whole into in/, then, after a
// line "=====PATIENT=====", the plain bytes of the patient file 191212121212.xml, stored
// scrambled. Runs the scan and gives the first rule of intake that its outcome broke, if any.
// There are three outcomes. A box that ended the process, with every file as it was. One box
// that didn't, with the message set aside in Error/ byte for byte and every other file as it
// was. No box, with the message gone, every patient file it wrote readable, the message's
// products in the list under Patient, the data folder grown by at most the bound for the
// message's size, and the same message taken in again changing nothing in what the program
// reads. In any outcome nothing is written outside data/, in/ and Error/.
std::optional<std::string> BrokenIntakeRule(const IntakeScene &scene, const std::string &input,
                                            const std::function<ScanOutcome()> &scan);

} // namespace mirelo::fuzzing
