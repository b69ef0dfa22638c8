#include "records/medical_note_view.h"

#include "core/conversions.h"
#include "platform/file_system.h"
#include "records/patient_file.h"
#include "records/product_fields.h"

namespace mirelo {
MedicalNoteView ReadMedicalNoteView(const std::string &pnr, const std::string &id) {
    const platform::XmlDocument patient =
        ReadPatientFile(platform::GetFile(PatientFilePath(pnr)).Path);
    const platform::XmlNode product = patient.selectSingleNode("//Product[ID = \"" + id + "\"]");
    const auto field = [&product](const char *name) {
        return product.selectSingleNode(name).text();
    };
    MedicalNoteView view;
    view.frame1Caption = "Notering om: " + field("ProductName") + " " + field("Form") + " " +
                         field("Str") + " " + field("CompanyName") +
                         ", ordinerat av: " + field("PrescribedBy");
    view.note = WithCrLf(field("ExtendedMedicalInfo"));
    view.allergic = CInt(field("Allergic"));
    return view;
}

} // namespace mirelo
