#include "screens/allergy_reason_opener.h"

#include "screens/frmExtendedInfo.h"
#include "screens/frmMedicalNote.h"
#include "screens/screen_instance.h"

namespace mirelo::screens {

AllergyReasonOpener *OpenerNamed(const std::string &caller) {
    // "ShowPat" is the note dialog that the medication view brings up, not the view itself.
    if (caller == "ShowPat") {
        return &Screen<frmMedicalNote>();
    }
    if (caller == "ExtInfo") {
        return &Screen<frmExtendedInfo>();
    }
    return nullptr;
}

} // namespace mirelo::screens
