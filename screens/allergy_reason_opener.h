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
    // The opener's name as the reason dialog's Caller gives it.
    explicit AllergyReasonOpener(const char *caller) : caller_(caller) {}
    ~AllergyReasonOpener() = default;

    // The reason dialog, for a click on the warning box or for the deletion of a note that holds
    // a warning.
    void askForReason(bool deletingNote);
    // Ta bort: asks first, in words that name a warning the note holds. Taking away a warning
    // always leaves a record of why: such a note goes through the reason dialog, which deletes
    // on OK; any other is deleted at once.
    void askToDeleteNote();

  private:
    const char *caller_;
};

// The opener that the reason dialog's Caller names: "ShowPat" for the note dialog, "ExtInfo"
// for the extended information. Any other name touches no screen.
AllergyReasonOpener *OpenerNamed(const std::string &caller);

} // namespace mirelo::screens
