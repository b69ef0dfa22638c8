#pragma once

#include <functional>
#include <string>

namespace mirelo::platform {

enum class MsgBoxIcon { None, Stop, Exclamation, Warning };
enum class MsgBoxButtons { OK, YesNo };
enum class MsgBoxResult { OK, Yes, No };
// The button that Enter presses: the first unless a question names the second.
enum class MsgBoxDefault { First, Second };

// Every box the program shows goes through here. The title is the application's unless a
// screen names another.
MsgBoxResult MsgBox(const std::string &text, MsgBoxButtons buttons = MsgBoxButtons::OK,
                    MsgBoxIcon icon = MsgBoxIcon::None, const std::string &title = "Mirelo",
                    MsgBoxDefault defaultButton = MsgBoxDefault::First);

struct MsgBoxRequest {
    std::string text;
    MsgBoxButtons buttons;
    MsgBoxIcon icon;
    std::string title;
    MsgBoxDefault defaultButton = MsgBoxDefault::First;
};

// Who answers the boxes: the widget box in the running program, a script in tests.
using MsgBoxPresenter = std::function<MsgBoxResult(const MsgBoxRequest &)>;
void setMsgBoxPresenter(MsgBoxPresenter presenter);

} // namespace mirelo::platform
