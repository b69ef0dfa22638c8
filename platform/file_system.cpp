#include "platform/file_system.h"

#include "core/mirelo_error.h"
#include "platform/file_error.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace mirelo::platform {
namespace {

bool isRegularFile(const std::string &path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

// Beyond this many letters in a name, a look-up regardless of case walks the folder.
constexpr size_t MaxSpellingLetters = 8;

struct FileCloser {
    void operator()(FILE *file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<FILE, FileCloser>;

// A temporary file in the folder of the file it is to replace; removed again unless it took
// that file's place. Its name begins with a dot and ends in no ".xml", so neither the search
// nor the inbox ever sees it.
class PendingFile {
  public:
    explicit PendingFile(const fs::path &target) {
        for (int attempt = 0; descriptor_ < 0; ++attempt) {
            path_ = (target.parent_path() /
                     ("." + target.filename().string() + "." + std::to_string(::getpid()) + "-" +
                      std::to_string(attempt) + ".tmp"))
                        .string();
            descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (descriptor_ < 0 && errno != EEXIST) {
                RaiseFileError(errno);
            }
        }
    }
    PendingFile(const PendingFile &) = delete;
    PendingFile &operator=(const PendingFile &) = delete;
    ~PendingFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        if (!path_.empty()) {
            ::unlink(path_.c_str());
        }
    }

    int descriptor() const { return descriptor_; }

    void write(const std::string &bytes) {
        size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t step =
                ::write(descriptor_, bytes.data() + written, bytes.size() - written);
            if (step < 0 && errno == EINTR) {
                continue;
            }
            if (step <= 0) {
                RaiseFileError(step < 0 ? errno : ENOSPC);
            }
            written += static_cast<size_t>(step);
        }
        if (::fsync(descriptor_) != 0) {
            RaiseFileError(errno);
        }
    }

    void replace(const std::string &target) {
        const int closed = ::close(descriptor_);
        descriptor_ = -1;
        if (closed != 0) {
            RaiseFileError(errno);
        }
        if (std::rename(path_.c_str(), target.c_str()) != 0) {
            RaiseFileError(errno);
        }
        path_.clear();
        syncFolder(fs::path(target).parent_path());
    }

  private:
    // The rename itself is made durable by flushing the folder that holds both names.
    static void syncFolder(const fs::path &folder) {
        const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor >= 0) {
            ::fsync(descriptor);
            ::close(descriptor);
        }
    }

    std::string path_;
    int descriptor_ = -1;
};

} // namespace

bool FileExists(const std::string &path) {
    return isRegularFile(path);
}

FileStamp GetFileStamp(const std::string &path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        RaiseFileError(errno);
    }
    const auto sinceEpoch = std::chrono::seconds(status.st_mtim.tv_sec) +
                            std::chrono::nanoseconds(status.st_mtim.tv_nsec);
    return {static_cast<std::uintmax_t>(status.st_size),
            std::chrono::system_clock::time_point(
                std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch))};
}

bool FolderExists(const std::string &path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

void CreateFolder(const std::string &path) {
    fs::path folder(path);
    if (!folder.has_filename()) {
        folder = folder.parent_path();
    }
    std::error_code ignored;
    if (fs::exists(folder, ignored)) {
        runtime::raise(runtime::FileAlreadyExists);
    }
    if (!FolderExists(folder.parent_path().string())) {
        runtime::raise(runtime::PathNotFound);
    }
    std::error_code error;
    if (!fs::create_directory(folder, error)) {
        RaiseFileError(error.value());
    }
}

std::vector<FileEntry> GetFolderFiles(const std::string &path) {
    return GetFolderFiles(path, [](const std::string &) { return true; });
}

// A practice's data folder holds a file per patient: the walk reads the names as the system
// hands them out and only asks after the kind of an entry when the listing doesn't tell it.
std::vector<FileEntry> GetFolderFiles(const std::string &path,
                                      const std::function<bool(const std::string &)> &keep) {
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir(path.c_str()), ::closedir);
    if (!folder) {
        runtime::raise(runtime::PathNotFound);
    }
    const std::string prefix = path.empty() || path.back() == '/' ? path : path + '/';
    std::vector<std::string> names;
    while (const dirent *entry = ::readdir(folder.get())) {
        const std::string name = entry->d_name;
        const bool regular =
            entry->d_type == DT_REG || ((entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) &&
                                        isRegularFile(prefix + name));
        if (regular && keep(name)) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    std::vector<FileEntry> files;
    files.reserve(names.size());
    for (std::string &name : names) {
        std::string filePath = prefix + name;
        files.push_back({std::move(name), std::move(filePath)});
    }
    return files;
}

std::string FoldedFileName(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return name;
}

std::optional<std::string> FindFileIgnoringCase(const std::string &path) {
    if (isRegularFile(path)) {
        return path;
    }
    const fs::path wanted(path);
    const std::string name = wanted.filename().string();
    std::vector<size_t> letters;
    for (size_t i = 0; i < name.size(); ++i) {
        if (std::isalpha(static_cast<unsigned char>(name[i]))) {
            letters.push_back(i);
        }
    }
    // A patient's number and ".xml" have few letters: trying each spelling of them costs a few
    // look-ups, where a walk of a practice's folder costs one per patient.
    if (letters.size() <= MaxSpellingLetters) {
        for (unsigned spelling = 0; spelling < (1u << letters.size()); ++spelling) {
            std::string candidate = name;
            for (size_t bit = 0; bit < letters.size(); ++bit) {
                char &letter = candidate[letters[bit]];
                letter = static_cast<char>((spelling >> bit) & 1u ? std::toupper(letter)
                                                                  : std::tolower(letter));
            }
            const std::string candidatePath = (wanted.parent_path() / candidate).string();
            if (isRegularFile(candidatePath)) {
                return candidatePath;
            }
        }
        return std::nullopt;
    }
    const std::string wantedName = FoldedFileName(name);
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(wanted.parent_path(), error)) {
        std::error_code ignored;
        if (entry.is_regular_file(ignored) &&
            FoldedFileName(entry.path().filename().string()) == wantedName) {
            return entry.path().string();
        }
    }
    return std::nullopt;
}

FileEntry GetFile(const std::string &path) {
    const std::optional<std::string> found = FindFileIgnoringCase(path);
    if (!found) {
        runtime::raise(runtime::FileNotFound);
    }
    return {fs::path(*found).filename().string(), *found};
}

void MoveFile(const std::string &source, const std::string &destination) {
    std::error_code ignored;
    if (fs::exists(destination, ignored)) {
        runtime::raise(runtime::FileAlreadyExists);
    }
    if (!isRegularFile(source)) {
        runtime::raise(runtime::FileNotFound);
    }
    if (std::rename(source.c_str(), destination.c_str()) != 0) {
        RaiseFileError(errno);
    }
}

void DeleteFile(const std::string &path, bool force) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        runtime::raise(runtime::FileNotFound);
    }
    // The permission bits are checked here, since a process running as root ignores them.
    if (!force && (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        runtime::raise(runtime::PermissionDenied);
    }
    if (std::remove(path.c_str()) != 0) {
        RaiseFileError(errno);
    }
}

std::string ReadAllBytes(const std::string &path) {
    FileHandle file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        RaiseFileError(errno);
    }
    std::string bytes;
    char chunk[65536];
    size_t read = 0;
    while ((read = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) {
        bytes.append(chunk, read);
    }
    if (std::ferror(file.get())) {
        RaiseFileError(errno);
    }
    return bytes;
}

void WriteAllBytes(const std::string &path, const std::string &bytes) {
    const fs::path target(path);
    if (!FolderExists(target.parent_path().string())) {
        runtime::raise(runtime::PathNotFound);
    }
    struct stat status {};
    const bool replacing = ::stat(path.c_str(), &status) == 0;
    if (replacing && (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        runtime::raise(runtime::PermissionDenied);
    }
    // The new content goes to a file of its own beside the old one and replaces it only once
    // it is whole on disk: a full disk or a cut write leaves the patient's file as it was.
    PendingFile pending(target);
    if (replacing && ::fchmod(pending.descriptor(), status.st_mode & 07777) != 0) {
        RaiseFileError(errno);
    }
    pending.write(bytes);
    pending.replace(path);
}

} // namespace mirelo::platform
