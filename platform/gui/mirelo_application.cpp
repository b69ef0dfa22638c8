#include "platform/gui/mirelo_application.h"

#include "core/mirelo_error.h"
#include "platform/message_box.h"
#include "platform/process_end.h"

namespace mirelo::platform {

MireloApplication::MireloApplication(int &argc, char **argv) : QApplication(argc, argv) {}

bool MireloApplication::notify(QObject *receiver, QEvent *event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const MireloError &error) {
        ReportUnhandledFailure(error.number(), error.description());
    } catch (const std::exception &error) {
        ReportUnhandledFailure(runtime::InvalidArgument, error.what());
    }
}

void ReportUnhandledFailure(int number, const std::string &description) {
    MsgBox("Körfel '" + std::to_string(number) + "':\r\n" + description, MsgBoxButtons::OK,
           MsgBoxIcon::Stop, "Mirelo");
    EndProcess();
}

} // namespace mirelo::platform
