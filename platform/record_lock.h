#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace mirelo::platform {

// The one file of a shared folder on which the folder's records are locked. It stays empty; its
// name begins with a dot and doesn't end in "xml", so no search and no inbox scan lists it.
inline constexpr const char *RecordLockFileName = ".record-locks";

// The write lock of one record of a folder that several workstations share, held until this
// object ends: an advisory record lock on one byte of the folder's lock file, which the file
// server keeps for all its clients (on NFS v4 and SMB 3 as on a local disk) and lets go when the
// holder's process ends, however it ends. The byte comes from the record's key with its letters
// folded as the look-up regardless of case folds them, so every spelling of a name has one lock.
// Two keys may share a byte; then one of them waits for nothing, which is harmless.
class RecordLock {
  public:
    // Tries at once, then again after pauses that grow from 1 ms to 4 ms until they add up to
    // `patience`; held() tells whether the lock came. The lock file is made if it is missing: a
    // folder that isn't there fails with 76, one that may not be written with 70.
    RecordLock(const std::string &folder, const std::string &key,
               std::chrono::milliseconds patience);
    ~RecordLock();
    RecordLock(const RecordLock &) = delete;
    RecordLock &operator=(const RecordLock &) = delete;

    bool held() const { return held_; }

  private:
    int descriptor_ = -1;
    bool held_ = false;
};

// Tests make a pause cost no time, or let the other holder go during one; an empty function
// sleeps again.
void setLockPauseForTesting(std::function<void(std::chrono::milliseconds)> pause);

} // namespace mirelo::platform
