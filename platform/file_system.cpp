#include "platform/file_system.h"

#include "core/mirelo_error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace mirelo::platform {
namespace {

[[noreturn]] void raiseFor(int error) {
    switch (error) {
    case ENOENT:
        runtime::raise(runtime::FileNotFound);
    case ENOTDIR:
        runtime::raise(runtime::PathNotFound);
    case EEXIST:
        runtime::raise(runtime::FileAlreadyExists);
    case EACCES:
    case EPERM:
    case EROFS:
        runtime::raise(runtime::PermissionDenied);
    default:
        throw MireloError(runtime::PermissionDenied,
                          runtime::description(runtime::PermissionDenied) + " (" +
                              std::strerror(error) + ")");
    }
}

bool isRegularFile(const std::string &path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

struct FileCloser {
    void operator()(FILE *file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<FILE, FileCloser>;

} // namespace

bool FileExists(const std::string &path) {
    return isRegularFile(path);
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
        raiseFor(error.value());
    }
}

std::vector<FileEntry> GetFolderFiles(const std::string &path) {
    std::error_code error;
    fs::directory_iterator walk(path, error);
    if (error) {
        runtime::raise(runtime::PathNotFound);
    }
    std::vector<FileEntry> files;
    for (const fs::directory_entry &entry : walk) {
        std::error_code ignored;
        if (entry.is_regular_file(ignored)) {
            files.push_back({entry.path().filename().string(), entry.path().string()});
        }
    }
    std::sort(files.begin(), files.end(),
              [](const FileEntry &a, const FileEntry &b) { return a.Name < b.Name; });
    return files;
}

FileEntry GetFile(const std::string &path) {
    const fs::path wanted(path);
    if (isRegularFile(path)) {
        return {wanted.filename().string(), path};
    }
    const fs::path folder = wanted.parent_path();
    const std::string wantedName = lowerCase(wanted.filename().string());
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, error)) {
        std::error_code ignored;
        if (entry.is_regular_file(ignored) &&
            lowerCase(entry.path().filename().string()) == wantedName) {
            return {entry.path().filename().string(), entry.path().string()};
        }
    }
    runtime::raise(runtime::FileNotFound);
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
        raiseFor(errno);
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
        raiseFor(errno);
    }
}

std::string ReadAllBytes(const std::string &path) {
    FileHandle file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        raiseFor(errno);
    }
    std::string bytes;
    char chunk[65536];
    size_t read = 0;
    while ((read = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) {
        bytes.append(chunk, read);
    }
    if (std::ferror(file.get())) {
        raiseFor(errno);
    }
    return bytes;
}

void WriteAllBytes(const std::string &path, const std::string &bytes) {
    if (!FolderExists(fs::path(path).parent_path().string())) {
        runtime::raise(runtime::PathNotFound);
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 &&
        (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        runtime::raise(runtime::PermissionDenied);
    }
    FileHandle file(std::fopen(path.c_str(), "wb"));
    if (!file) {
        raiseFor(errno);
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    const bool flushed = std::fflush(file.get()) == 0;
    if (!written || !flushed) {
        raiseFor(errno);
    }
}

} // namespace mirelo::platform
