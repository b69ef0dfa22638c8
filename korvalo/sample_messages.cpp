#include "sample_messages.h"

#include "prescription_message.h"

#include <array>
#include <cstdio>

namespace korvalo {
namespace {

constexpr std::array FamilyNames{"Andersson", "Öberg",     "Lindqvist", "Åström",
                                 "Nyström",   "Bergkvist", "Ekdahl"};
constexpr std::array GivenNames{"Märta",  "Per",  "Åsa",   "Göran",
                                "Ingrid", "Lars", "Sofia", "Jörgen"};
constexpr std::array Streets{"Storgatan 12", "Ängsvägen 3", "Kyrkbacken 7", "Sjöviksvägen 41"};
constexpr std::array Cities{std::array{"114 55", "Stockholm"}, std::array{"413 04", "Göteborg"},
                            std::array{"753 20", "Uppsala"}, std::array{"903 26", "Umeå"}};
constexpr std::array Dosages{"1 tablett 3 gånger dagligen", "1 tablett på morgonen",
                             "Enligt ordination", "1-2 tabletter vid behov, högst 6 per dygn"};

std::string personalNumber(int index) {
    char text[32];
    std::snprintf(text, sizeof text, "19%02d%02d%02d%04d", 30 + index % 70, 1 + index % 12,
                  1 + index % 28, 1000 + index % 9000);
    return text;
}

Prescription samplePrescription(int index) {
    const auto &city = Cities[index % Cities.size()];
    Prescription prescription{{personalNumber(index), FamilyNames[index % FamilyNames.size()],
                               GivenNames[index % GivenNames.size()],
                               Streets[index % Streets.size()], city[0], city[1]},
                              "Dr. Karin Lindqvist",
                              IssueTimestampNow(),
                              {}};
    const auto &catalogue = Catalogue();
    const int items = 1 + index % 3;
    for (int i = 0; i < items; ++i) {
        PrescribedItem item;
        item.product = catalogue[(index + i) % catalogue.size()];
        item.dosage = Dosages[(index + i) % Dosages.size()];
        item.repeats = std::to_string(1 + (index + i) % 4);
        prescription.items.push_back(item);
    }
    return prescription;
}

} // namespace

std::string WriteSampleMessages(const std::string &inbox, int count) {
    std::string written;
    for (int index = 0; index < count; ++index) {
        written += WritePrescriptionMessage(inbox, samplePrescription(index)) + "\n";
    }
    return written;
}

} // namespace korvalo
