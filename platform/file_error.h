#pragma once

namespace mirelo::platform {

// The file service's failure for a system error number: 53 for a file that isn't there, 76 for a
// path through something that isn't a folder, 58 for a name already taken, 70 for what may not
// be done, and 70 with the system's own words for anything else.
[[noreturn]] void RaiseFileError(int error);

} // namespace mirelo::platform
