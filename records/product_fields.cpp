#include "records/product_fields.h"

#include "core/conversions.h"

namespace mirelo {

std::string ProductField(const platform::XmlNode &product, const char *name) {
    return product.firstElementAt(name).text();
}

bool ProductFlagIsSet(const platform::XmlNode &product, const char *name) {
    return CInt(ProductField(product, name)) == 1;
}

bool ProductCheckedIs(const platform::XmlNode &product, const std::string &value) {
    for (const platform::XmlNode &checked : product.elementsAt("Checked")) {
        if (checked.text() == value) {
            return true;
        }
    }
    return false;
}

std::string ProductDisplayName(const platform::XmlNode &product) {
    const std::string name = ProductField(product, "ProductName");
    const std::string form = ProductField(product, "Form");
    const std::string strength = ProductField(product, "Str");
    return name + " " + form + " " + strength + " " + ProductField(product, "CompanyName");
}

std::string ProductPackages(const platform::XmlNode &product) {
    const platform::XmlNode size = product.firstElementAt("PackageSize");
    if (size.isNull()) {
        return {};
    }
    return ProductField(product, "NumberOfPackages") + " X " + size.text();
}

std::string ProductRepeats(const platform::XmlNode &product) {
    return ProductField(product, "DispensingRepeatNumber") + " ggr";
}

std::string WithCrLf(const std::string &text) {
    std::string boxed;
    for (const char c : text) {
        if (c == '\n') {
            boxed += '\r';
        }
        boxed += c;
    }
    return boxed;
}

} // namespace mirelo
