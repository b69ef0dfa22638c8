#pragma once

#include <QApplication>

namespace mirelo::platform {

// The application object with the run time's own report: a failure that no event handler
// caught shows "Körfel '<number>':" and its description, and ends the process.
class MireloApplication : public QApplication {
  public:
    MireloApplication(int &argc, char **argv);
    bool notify(QObject *receiver, QEvent *event) override;
};

// The report itself, for failures that escape outside event delivery.
[[noreturn]] void ReportUnhandledFailure(int number, const std::string &description);

} // namespace mirelo::platform
