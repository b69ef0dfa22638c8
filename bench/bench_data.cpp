#include "bench_data.h"

#include "core/application_context.h"
#include "patient_file_builder.h"
#include "platform/xml_document.h"
#include "prescription_message_builder.h"
#include "test_environment.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace mirelo::bench {

BenchInstallation::BenchInstallation() {
    std::string pattern = (fs::temp_directory_path() / "mirelo-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary directory");
    }
    directory_ = pattern;
    fs::create_directory(directory_ + "/in");
    fs::create_directory(directory_ + "/data");
    setApplicationDirectoryForTesting(directory_);
    session().gDataPath = data();
}

BenchInstallation::~BenchInstallation() {
    setApplicationDirectoryForTesting("");
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
}

std::string patientPlainText(const std::string &pnr, int products) {
    std::vector<testing::ProductFields> fields(products);
    for (int i = 0; i < products; ++i) {
        fields[i].id = std::to_string(i + 1) + "_1";
        fields[i].regNr = std::to_string(100000 + i);
        fields[i].atcCode = "N02BE" + std::to_string(i);
        fields[i].checked = i % 3 == 2 ? "0" : "1";
    }
    platform::XmlDocument document;
    document.loadXML(testing::patientText(pnr, "Åström", "Märta", fields));
    return document.xml();
}

std::string scrambledByRule(const std::string &plainText) {
    return testing::scrambleBytes(testing::utf8ToLatin1(plainText));
}

std::string unscrambledByRule(const std::string &stored) {
    return testing::unscrambleBytes(stored);
}

std::string codePageBytes(const std::string &utf8) {
    return testing::utf8ToLatin1(utf8);
}

std::string prescriptionMessageBytes(const std::string &pnr, int items) {
    testing::PrescriptionMessage message;
    message.pnr = pnr;
    for (int i = 0; i < items; ++i) {
        testing::MessageItem item;
        item.itemId = std::to_string(i + 1);
        item.regNr = std::to_string(500000 + i);
        item.atcCode = "C07AB" + std::to_string(i);
        message.items.push_back(item);
    }
    return testing::utf8ToLatin1(testing::prescriptionMessageText(message));
}

void writeFile(const std::string &path, const std::string &bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        throw std::runtime_error("can't write " + path);
    }
}

std::string readFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::string patientFolder(const std::string &cache, int patients) {
    const std::string root = cache + "/folder-" + std::to_string(patients);
    const std::string folder = root + "/data/";
    if (fs::exists(root + "/complete")) {
        return folder;
    }
    fs::remove_all(root);
    fs::create_directories(folder);
    char pnr[32];
    for (int i = 0; i < patients; ++i) {
        if (i < 10) {
            std::snprintf(pnr, sizeof pnr, "191212%06d", i);
        } else if (i < 20) {
            std::snprintf(pnr, sizeof pnr, "20%010d", i);
        } else {
            std::snprintf(pnr, sizeof pnr, "19%02d%08d", 20 + i % 80, i);
        }
        writeFile(folder + pnr + ".xml", scrambledByRule(patientPlainText(pnr, 1)));
    }
    writeFile(root + "/complete", "");
    return folder;
}

} // namespace mirelo::bench
