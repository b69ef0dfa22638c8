#include "screens/frmMedicationListPreview.h"

#include "core/clock.h"
#include "core/mirelo_error.h"
#include "platform/file_system.h"
#include "platform/gui/file_pickers.h"
#include "platform/message_box.h"
#include "screens/medication_list_pages.h"
#include "screens/screen_layout.h"

#include <QAction>
#include <QDir>
#include <QPrinter>
#include <QStandardPaths>
#include <QToolBar>
#include <QToolButton>

namespace mirelo::screens {
namespace {

// The list's name wherever the physician meets it again: in a file saved of it, in the print
// dialog's own file and in a printer's queue.
QString ListName(const std::string &pnr) {
    return QStringLiteral("Läkemedelslista %1 %2")
        .arg(QString::fromStdString(pnr), Now().toString(QStringLiteral("yyyy-MM-dd")));
}

} // namespace

frmMedicationListPreview::frmMedicationListPreview(PrintedMedicationList list,
                                                   const std::string &pnr)
    : list_(std::move(list)), pnr_(pnr) {
    // Wide enough for the preview's tools and ours in one row, on the screen the frame was made
    // for.
    setUpModalDialog(this, "frmMedicationListPreview", QStringLiteral("Mirelo Läkemedelslista"),
                     13800, 10800);
    printer()->setPageLayout(MedicationListPageLayout());
    printer()->setDocName(ListName(pnr_));
    connect(this, &QPrintPreviewDialog::paintRequested, this,
            [this](QPrinter *printer) { PaintMedicationList(list_, *printer); });

    QToolBar *tools = findChild<QToolBar *>();
    tools->addSeparator();
    cmdSavePdf = tools->addAction(QStringLiteral("Spara som PDF…"));
    cmdSavePdf->setObjectName(QStringLiteral("cmdSavePdf"));
    qobject_cast<QToolButton *>(tools->widgetForAction(cmdSavePdf))
        ->setToolButtonStyle(Qt::ToolButtonTextOnly);
    connect(cmdSavePdf, &QAction::triggered, this, &frmMedicationListPreview::cmdSavePdf_Click);
}

void frmMedicationListPreview::cmdSavePdf_Click() {
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const std::string suggested =
        QDir(documents).filePath(ListName(pnr_) + QStringLiteral(".pdf")).toStdString();
    const std::optional<std::string> path =
        platform::ChooseFileToSave(this, "Spara som PDF", suggested, "PDF-dokument (*.pdf)", "pdf");
    if (!path) {
        return;
    }
    try {
        platform::WriteAllBytes(*path, MedicationListPdf(list_));
    } catch (const MireloError &error) {
        platform::MsgBox("Läkemedelslistan kunde inte sparas i " + *path +
                             ".\r\nAnledning: " + error.description(),
                         platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo");
    }
}

} // namespace mirelo::screens
