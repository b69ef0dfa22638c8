#pragma once

#include <cstdint>
#include <functional>

namespace mirelo {

// One pass through the inbox: every file whose name ends in "xml", in any case, is taken into
// its patient's file and deleted; one without a personal number is moved to Error/ under a
// dated name. Gives whether at least one message was handled and deleted. Any failure leaves
// the pass at once, with the message that failed and those after it still in the inbox.
bool ReadFolder();

// The poll of the inbox, run by the main frame's one-second timer; it needs no window, so the
// frame hands it the two things it asks of the medication view.
class InboxTimer {
  public:
    // Every tenth tick scans the inbox, and if a message was handled while the medication view
    // was visible, the view is filled again for whichever patient it shows. A failure of the
    // product number exchange is shown and the process goes on; any other failure is shown
    // and ends the process, leaving the message in the inbox for the next run.
    void Timer1_Timer(const std::function<bool()> &isMedicationViewVisible,
                      const std::function<void()> &refreshMedicationView);

    int16_t tickCount() const { return tickCount_; }

  private:
    int16_t tickCount_ = 0;
};

} // namespace mirelo
