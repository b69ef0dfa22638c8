#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace mirelo {

// The messages a pass left because the service may still have been writing them, each with the
// size and last change the pass saw.
using UnfinishedMessages = std::map<std::string, platform::FileStamp>;

// One pass through the inbox: every file whose name ends in "xml", in any case, is taken into
// its patient's file and deleted, once it is whole: its last change is a few seconds old, or
// its size and last change are those `unfinished` holds from the pass before. One that is
// still being written is left for the next pass without a word. One without a personal number
// is moved to Error/ under a dated name, and a box says which and why. One for a patient whom
// another workstation is changing stays for the next pass, without a word. Gives whether at
// least one message was handled and deleted. Any other failure leaves the pass at once, with the
// message that failed and those after it still in the inbox.
bool ReadFolder(UnfinishedMessages &unfinished);

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
    UnfinishedMessages unfinished_;
};

} // namespace mirelo
