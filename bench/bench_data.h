#pragma once

#include <string>

namespace mirelo::bench {

// A temporary application directory laid out as an installation (in/, data/), made the
// program's own for as long as it lives, and removed with everything in it afterwards.
class BenchInstallation {
  public:
    BenchInstallation();
    ~BenchInstallation();
    BenchInstallation(const BenchInstallation &) = delete;
    BenchInstallation &operator=(const BenchInstallation &) = delete;

    const std::string &directory() const { return directory_; }
    std::string inbox() const { return directory_ + "/in/"; }
    std::string data() const { return directory_ + "/data/"; }

  private:
    std::string directory_;
};

// The plain text of a patient file with that many products, as the program itself writes it
// (declaration, tab indentation); every product has its own ID, RegNr and ATC code.
std::string patientPlainText(const std::string &pnr, int products);

// The stored bytes of plain text, scrambled by the rule on its own, not by the program.
std::string scrambledByRule(const std::string &plainText);
// The plain bytes (code page) of stored bytes by the rule on its own.
std::string unscrambledByRule(const std::string &stored);

// UTF-8 text as the code page's bytes.
std::string codePageBytes(const std::string &utf8);

// A prescription message for the patient with that many new products, in the service's bytes.
std::string prescriptionMessageBytes(const std::string &pnr, int items);

void writeFile(const std::string &path, const std::string &bytes);
std::string readFile(const std::string &path);

// A data folder of `patients` small patient files, kept under `cache` between runs since
// making it takes longer than searching it: ten numbers begin with 191212, ten with 2, the
// rest with 19 and two digits from 20 to 99. Gives the folder's path, ending in "/".
std::string patientFolder(const std::string &cache, int patients);

} // namespace mirelo::bench
