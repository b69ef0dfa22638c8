#pragma once

#include <string>

namespace korvalo {

// Drops generated prescription messages into the inbox, for demonstrations and benchmarks:
// varied patients, one to three products each. Gives the paths written, one per line.
std::string WriteSampleMessages(const std::string &inbox, int count);

} // namespace korvalo
