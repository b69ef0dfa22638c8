#include "catalogue.h"

namespace korvalo {

const std::vector<CatalogueProduct> &Catalogue() {
    static const std::vector<CatalogueProduct> products{
        {"146712", "19920312", "Alvedon", "Haleon", "Tablett", "500", "mg", "N02BE01", "20 st"},
        {"004853", "19860714", "Ipren", "Johnson & Johnson", "Tablett", "200", "mg", "M01AE01",
         "30 st"},
        {"051763", "19680125", "Waran", "Karo Pharma", "Tablett", "2,5", "mg", "B01AA03", "100 st"},
        {"148619", "19690909", "Levaxin", "Takeda", "Tablett", "50", "mikrog", "H03AA01", "100 st"},
        {"012385", "20020418", "Omeprazol Actavis", "Teva", "Enterokapsel, hård", "20", "mg",
         "A02BC01", "28 st"},
        {"196574", "19990602", "Enalapril Sandoz", "Sandoz", "Tablett", "10", "mg", "C09AA02",
         "100 st"},
    };
    return products;
}

const CatalogueProduct *FindProduct(const std::string &vnr) {
    for (const CatalogueProduct &product : Catalogue()) {
        if (product.vnr == vnr) {
            return &product;
        }
    }
    return nullptr;
}

} // namespace korvalo
