#include "app/command_line.h"
#include "platform/gui/mirelo_application.h"
#include "platform/gui/widget_message_box.h"
#include "platform/heap.h"
#include "platform/http_request.h"
#include "platform/process_browser.h"
#include "platform/translations/swedish_qt_texts.h"
#include "platform/xml_document.h"
#include "screens/frmSplash.h"
#include "screens/screen_instance.h"

int main(int argc, char **argv) {
    mirelo::platform::initialiseHeap();
    mirelo::platform::initialiseXml();
    mirelo::platform::MireloApplication application(argc, argv);
    mirelo::platform::installSwedishQtTexts(application);
    mirelo::platform::initialiseHttp();
    mirelo::platform::installWidgetMessageBox();
    mirelo::app::ApplyCommandLine(application);
    // The hand-over browser is a program of its own, installed beside this one.
    mirelo::platform::installProcessBrowser(
        (QCoreApplication::applicationDirPath() + QStringLiteral("/mirelo-browser")).toStdString());
    // The process starts by loading the login screen; everything after is driven by its events.
    mirelo::screens::Screen<mirelo::screens::frmSplash>().show();
    return application.exec();
}
