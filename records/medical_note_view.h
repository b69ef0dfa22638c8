#pragma once

#include <cstdint>
#include <string>

namespace mirelo {

// What the note dialog shows of one product when it opens.
struct MedicalNoteView {
    // "Notering om: " name, form, strength and maker, ", ordinerat av: " the prescriber.
    std::string frame1Caption;
    // The note with CR LF line breaks, as a text box holds them.
    std::string note;
    // Allergic as a number: the warning box's value.
    int16_t allergic = 0;
};

// Reads the patient's file afresh (missing: 53, damaged: 0x80040204) and the product with the
// given ID in it; a product that isn't there is the run time's 91.
MedicalNoteView ReadMedicalNoteView(const std::string &pnr, const std::string &id);

} // namespace mirelo
