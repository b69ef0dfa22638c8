#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mirelo::platform {

// A file as the folder walk hands it out: its name with extension and its full path.
struct FileEntry {
    std::string Name;
    std::string Path;
};

// A file's size and the moment of its last change, to the nanosecond.
struct FileStamp {
    std::uintmax_t size = 0;
    std::chrono::system_clock::time_point lastChange;
    bool operator==(const FileStamp &) const = default;
};

bool FileExists(const std::string &path);
// Fails with 53 when there is no such file.
FileStamp GetFileStamp(const std::string &path);
bool FolderExists(const std::string &path);
// Creates one level; a missing parent (76) or an existing folder (58) is a failure.
void CreateFolder(const std::string &path);
// The files of one folder, not of its subfolders, sorted by name.
std::vector<FileEntry> GetFolderFiles(const std::string &path);
// The same, of only the files whose name passes `keep`; the others cost no more than their name.
std::vector<FileEntry> GetFolderFiles(const std::string &path,
                                      const std::function<bool(const std::string &)> &keep);
// A name as the look-up regardless of case compares it: its ASCII letters in lower case, whatever
// the locale, so that every workstation folds a name alike.
std::string FoldedFileName(std::string name);
// The path itself when the file is there, else the path of the file whose name matches its
// name regardless of case; nothing when there is neither.
std::optional<std::string> FindFileIgnoringCase(const std::string &path);
// The file found as above. Fails with 53 when there is none.
FileEntry GetFile(const std::string &path);
// Fails with 58 if the destination exists.
void MoveFile(const std::string &source, const std::string &destination);
// Without force a file whose write permission is off is not deleted but fails with 70.
void DeleteFile(const std::string &path, bool force);

// Whole files in and out, byte for byte. Writing replaces the file at once and whole: on any
// failure the old file stays as it was and the numbered error is raised.
std::string ReadAllBytes(const std::string &path);
void WriteAllBytes(const std::string &path, const std::string &bytes);

} // namespace mirelo::platform
