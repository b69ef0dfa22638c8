#pragma once

namespace mirelo::screens::support {

// The support organisation's contact, shown on the login screen and in About.
inline constexpr const char *PostalAddress = "Box 1234, 111 22 Stockholm";
inline constexpr const char *Telephone = "08-123 456 70";
inline constexpr const char *Fax = "08-123 456 79";
inline constexpr const char *Mail = "support@mirelo.example";

} // namespace mirelo::screens::support
