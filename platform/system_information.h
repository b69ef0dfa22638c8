#pragma once

#include <cstdint>
#include <string>

namespace mirelo::platform {

// The root of the machine-wide keys of the system registry.
inline constexpr uint32_t HKEY_LOCAL_MACHINE = 0x80000002;

// Reads a text value of the system registry. This platform has no registry: the answer is
// always false, with the text emptied, as for a key that isn't there.
bool GetKeyValue(uint32_t root, const std::string &keyName, const std::string &valueName,
                 std::string &value);

// Starts a program in a normal window and a process of its own; false when it can't be started.
bool StartProgram(const std::string &path);

// Starts the first system information tool found on the search path, in a window and a process
// of its own; false when none is installed or it can't be started.
bool StartSystemInformationTool();

} // namespace mirelo::platform
