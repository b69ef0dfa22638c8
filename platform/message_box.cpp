#include "platform/message_box.h"

#include <stdexcept>

namespace mirelo::platform {
namespace {

MsgBoxPresenter &presenter() {
    static MsgBoxPresenter current;
    return current;
}

} // namespace

MsgBoxResult MsgBox(const std::string &text, MsgBoxButtons buttons, MsgBoxIcon icon,
                    const std::string &title, MsgBoxDefault defaultButton) {
    return MsgBox({text, buttons, icon, title, defaultButton});
}

MsgBoxResult MsgBox(const MsgBoxRequest &box) {
    if (!presenter()) {
        throw std::logic_error("no message box presenter installed");
    }
    return presenter()(box);
}

void setMsgBoxPresenter(MsgBoxPresenter next) {
    presenter() = std::move(next);
}

} // namespace mirelo::platform
