#include "platform/gui/mirelo_application.h"
#include "platform/gui/web_browser.h"
#include "platform/gui/widget_message_box.h"
#include "platform/http_request.h"
#include "platform/xml_document.h"
#include "screens/frmSplash.h"
#include "screens/screen_instance.h"

int main(int argc, char **argv) {
    mirelo::platform::initialiseXml();
    // The hand-over browser shares the application's OpenGL contexts; set before the application.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    mirelo::platform::MireloApplication application(argc, argv);
    mirelo::platform::initialiseHttp();
    mirelo::platform::installWidgetMessageBox();
    mirelo::platform::installWebBrowser();
    // The process starts by loading the login screen; everything after is driven by its events.
    mirelo::screens::Screen<mirelo::screens::frmSplash>().show();
    return application.exec();
}
