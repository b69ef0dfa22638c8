#include "platform/gui/widget_message_box.h"

#include "platform/message_box.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace mirelo::platform {
namespace {

QMessageBox::Icon iconFor(MsgBoxIcon icon) {
    switch (icon) {
    case MsgBoxIcon::Stop:
        return QMessageBox::Critical;
    case MsgBoxIcon::Exclamation:
    case MsgBoxIcon::Warning:
        return QMessageBox::Warning;
    case MsgBoxIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

MsgBoxResult showBox(const MsgBoxRequest &request) {
    QMessageBox box(iconFor(request.icon), QString::fromStdString(request.title),
                    QString::fromStdString(request.text), QMessageBox::NoButton,
                    QApplication::activeWindow());
    if (request.buttons == MsgBoxButtons::YesNo) {
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.button(QMessageBox::Yes)->setText(QStringLiteral("&Ja"));
        box.button(QMessageBox::No)->setText(QStringLiteral("&Nej"));
        box.setDefaultButton(request.defaultButton == MsgBoxDefault::Second ? QMessageBox::No
                                                                            : QMessageBox::Yes);
        return box.exec() == QMessageBox::Yes ? MsgBoxResult::Yes : MsgBoxResult::No;
    }
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
    return MsgBoxResult::OK;
}

} // namespace

void installWidgetMessageBox() {
    setMsgBoxPresenter(showBox);
}

} // namespace mirelo::platform
