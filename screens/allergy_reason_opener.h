#pragma once

#include <string>

class QCheckBox;

namespace mirelo::screens {

// A screen that opens the reason dialog for its warning box. The dialog gives no answer back:
// it reaches into its opener, changing the opener's controls under the "NoClick" guard and
// calling the opener's own operations, which read the box and the reason themselves.
class AllergyReasonOpener {
  public:
    // The opener's warning box. Its change event opens the reason dialog unless its tag is
    // "NoClick".
    virtual QCheckBox *allergicBox() = 0;
    // Empties the box that holds the product's note.
    virtual void emptyNoteBox() = 0;
    // Saves a history record of the box's state with the reason dialog's text.
    virtual void SaveAllergicHistory() = 0;
    virtual void deleteNote() = 0;

  protected:
    ~AllergyReasonOpener() = default;
};

// The opener that the reason dialog's Caller names: "ShowPat" for the note dialog, "ExtInfo"
// for the extended information. Any other name touches no screen.
AllergyReasonOpener *OpenerNamed(const std::string &caller);

} // namespace mirelo::screens
