#pragma once

#include <string>
#include <vector>

namespace korvalo {

// A product the physician can prescribe on the service's pages.
struct CatalogueProduct {
    std::string vnr;
    std::string regNr;
    std::string name;
    std::string company;
    std::string form;
    std::string strengthNumber;
    std::string strengthUnit;
    std::string atcCode;
    std::string packageSize;
};

const std::vector<CatalogueProduct> &Catalogue();
// The product with that product number, or null.
const CatalogueProduct *FindProduct(const std::string &vnr);

} // namespace korvalo
