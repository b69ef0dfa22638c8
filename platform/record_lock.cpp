#include "platform/record_lock.h"

#include "core/mirelo_error.h"
#include "platform/file_error.h"
#include "platform/file_system.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <thread>
#include <unistd.h>

namespace mirelo::platform {
namespace {

constexpr std::chrono::milliseconds FirstPause{1};
constexpr std::chrono::milliseconds LongestPause{4};

// Below 2^31, so that the older lock protocols, which carry 32-bit offsets, carry every byte.
constexpr std::uint64_t LockBytes = 0x7FFFFFFF;

std::function<void(std::chrono::milliseconds)> &pauseForTesting() {
    static std::function<void(std::chrono::milliseconds)> pause;
    return pause;
}

// A hash of fixed definition (FNV-1a), not the library's: every workstation, whatever its
// build, has to find a record at the same byte.
off_t byteOf(const std::string &key) {
    std::uint64_t hash = 14695981039346656037ull;
    for (const unsigned char c : FoldedFileName(key)) {
        hash = (hash ^ c) * 1099511628211ull;
    }
    return static_cast<off_t>(hash % LockBytes);
}

// Another holder's lock is no failure: the attempt is made again after a pause.
void raiseUnlessHeldElsewhere(int error) {
    if (error != EAGAIN && error != EACCES && error != EINTR) {
        RaiseFileError(error);
    }
}

// Open-file-description locks belong to the open lock file, so two locks of one process keep
// each other out as two workstations' do. A system without them has the classic record locks,
// which belong to the process; Mirelo never holds two at once.
std::atomic<bool> openFileLocksMissing{false};

bool tryLock(int descriptor, off_t byte) {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = byte;
    range.l_len = 1;
#ifdef F_OFD_SETLK
    if (!openFileLocksMissing) {
        if (::fcntl(descriptor, F_OFD_SETLK, &range) == 0) {
            return true;
        }
        if (errno != EINVAL) {
            raiseUnlessHeldElsewhere(errno);
            return false;
        }
        openFileLocksMissing = true;
    }
#endif
    if (::fcntl(descriptor, F_SETLK, &range) == 0) {
        return true;
    }
    raiseUnlessHeldElsewhere(errno);
    return false;
}

void pause(std::chrono::milliseconds length) {
    if (pauseForTesting()) {
        pauseForTesting()(length);
    } else {
        std::this_thread::sleep_for(length);
    }
}

} // namespace

RecordLock::RecordLock(const std::string &folder, const std::string &key,
                       std::chrono::milliseconds patience) {
    const std::string path = (std::filesystem::path(folder) / RecordLockFileName).string();
    descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor_ < 0) {
        if (errno == ENOENT) {
            runtime::raise(runtime::PathNotFound);
        }
        RaiseFileError(errno);
    }
    try {
        const off_t byte = byteOf(key);
        std::chrono::milliseconds waited{0};
        std::chrono::milliseconds next = FirstPause;
        while (!(held_ = tryLock(descriptor_, byte)) && waited < patience) {
            const std::chrono::milliseconds length = std::min(next, patience - waited);
            pause(length);
            waited += length;
            next = std::min(next * 2, LongestPause);
        }
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

// Closing the lock file lets the lock go.
RecordLock::~RecordLock() {
    ::close(descriptor_);
}

void setLockPauseForTesting(std::function<void(std::chrono::milliseconds)> pause) {
    pauseForTesting() = std::move(pause);
}

} // namespace mirelo::platform
