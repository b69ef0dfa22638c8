#pragma once

#include "measure.h"

#include <string>
#include <vector>

namespace mirelo::bench {

// Messages taken into patient files of growing size, and a message of many items.
std::vector<Row> intakeRows(const Effort &effort);
// Messages taken in under the patient's lock against the same under a lock held already, and a
// writer waiting for a patient another holds.
std::vector<Row> lockRows(const Effort &effort);
// ScrambleText and UnscrambleText of a mebibyte of patient text.
std::vector<Row> scramblingRows(const Effort &effort);
// The patient search over a practice's data folder, kept under `cache`.
std::vector<Row> searchRows(const Effort &effort, const std::string &cache);
// The medication rows of a patient file, and opening the patient in the medication view.
std::vector<Row> medicationViewRows(const Effort &effort);

// The programs the start-up rows run, each under the offscreen platform.
struct StartupPrograms {
    std::string mirelo;
    std::string helloWorld;
    std::string probePluginFolder;
};
// Start-up to the login window, and memory at the login and search screens.
std::vector<Row> startupRows(const Effort &effort, const StartupPrograms &programs);

} // namespace mirelo::bench
