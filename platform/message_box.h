#pragma once

#include <functional>
#include <string>

namespace mirelo::platform {

enum class MsgBoxIcon { None, Stop, Exclamation, Warning };
enum class MsgBoxButtons { OK, YesNo };
enum class MsgBoxResult { OK, Yes, No };
// The button that Enter presses: the first unless a question names the second.
enum class MsgBoxDefault { First, Second };

struct MsgBoxRequest {
    std::string text;
    MsgBoxButtons buttons;
    MsgBoxIcon icon;
    std::string title;
    MsgBoxDefault defaultButton = MsgBoxDefault::First;
};

// Every box the program shows goes through here. The title is the application's unless a
// screen names another.
MsgBoxResult MsgBox(const std::string &text, MsgBoxButtons buttons = MsgBoxButtons::OK,
                    MsgBoxIcon icon = MsgBoxIcon::None, const std::string &title = "Mirelo",
                    MsgBoxDefault defaultButton = MsgBoxDefault::First);
// A box worded below the screens, such as the box of a failure.
MsgBoxResult MsgBox(const MsgBoxRequest &box);

// Who answers the boxes: the widget box in the running program, a script in tests.
using MsgBoxPresenter = std::function<MsgBoxResult(const MsgBoxRequest &)>;
void setMsgBoxPresenter(MsgBoxPresenter presenter);

} // namespace mirelo::platform
