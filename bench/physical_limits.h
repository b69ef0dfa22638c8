#pragma once

#include <string>
#include <vector>

// What the hardware and the libraries can't do faster: each operation the program performs,
// done once in the plainest way, with nothing of the program in it.
namespace mirelo::bench::limit {

// One pass through a 256-entry table.
void shiftBytes(const std::string &in, std::string &out, const unsigned char (&table)[256]);
const unsigned char (&scrambleTable())[256];
const unsigned char (&unscrambleTable())[256];

// Parses bytes once with libxml2 and frees the tree; throws if they don't parse.
void parseOnce(const std::string &bytes);

// Reads a stored patient file, unscrambles it, parses it once and walks its products once,
// giving every product's element texts in file order.
std::vector<std::vector<std::string>> productTexts(const std::string &path);

// Waits for a lock on the whole of a lock file, woken by the system the moment the holder lets go,
// then lets go itself.
void waitForWholeFileLock(const std::string &path);

// The names in a folder that begin with the prefix, in one listing.
std::vector<std::string> folderNames(const std::string &folder, const std::string &prefix);

} // namespace mirelo::bench::limit
