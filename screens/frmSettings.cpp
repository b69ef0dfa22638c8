#include "screens/frmSettings.h"

#include "core/application_context.h"
#include "platform/gui/file_pickers.h"
#include "platform/message_box.h"
#include "records/settings_store.h"
#include "screens/dialog_window.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace mirelo::screens {

frmSettings::frmSettings() {
    setUpDialogWindow(this, CloseBox::Shown, Qt::Tool);
    setObjectName(QStringLiteral("frmSettings"));
    setWindowTitle(QStringLiteral("Mirelo Inställningar"));
    setModal(true);
    sizeTwips(this, 5085, 1785);

    txtPath = makeControl<QLineEdit>(this, "txtPath");
    placeTwips(txtPath, 120, 480, 4815, 285);
    cmdBrowse = makeButton(this, "cmdBrowse", QStringLiteral("Bläddra"), 3720, 840, 1215, 285);
    OKButton = makeButton(this, "OKButton", QStringLiteral("OK"), 3720, 1320, 1215, 285);
    OKButton->setDefault(true);
    Label2 = makeLabel(this, "Label2", QStringLiteral("Sökväg till patientkatalog:"), 120, 240,
                       2775, 255);
    Label2->setFont(verdana(8.25));
    CancelButton =
        makeButton(this, "CancelButton", QStringLiteral("Avbryt"), 2400, 1320, 1215, 285);
    for (QPushButton *button : {cmdBrowse, OKButton, CancelButton}) {
        button->setFont(verdana(8.25));
        QPalette palette = button->palette();
        palette.setColor(QPalette::Button, QColor(0xE0, 0xE0, 0xE0));
        button->setPalette(palette);
    }
    applyTabOrder({{0, txtPath}, {1, cmdBrowse}, {2, OKButton}, {4, CancelButton}});

    connect(cmdBrowse, &QPushButton::clicked, this, &frmSettings::cmdBrowse_Click);
    connect(OKButton, &QPushButton::clicked, this, &frmSettings::OKButton_Click);
    connect(CancelButton, &QPushButton::clicked, this, &frmSettings::CancelButton_Click);
    Form_Load();
}

void frmSettings::Form_Load() {
    txtPath->setText(QString::fromStdString(session().gDataPath));
}

// The picker only fills the box; nothing is stored before OK.
void frmSettings::cmdBrowse_Click() {
    const std::optional<std::string> folder = platform::BrowseForFolder(this, "Välj en katalog");
    if (!folder) {
        return;
    }
    const ChosenFolder chosen = TakeChosenFolder(*folder);
    txtPath->setText(QString::fromStdString(chosen.txtPath));
    if (chosen.failure) {
        platform::MsgBox("Välj korrekt sökväg till en katalog. " + chosen.failure->description());
    }
}

void frmSettings::OKButton_Click() {
    try {
        if (txtPath->text().isEmpty()) {
            // No failure has come before this box: the description that follows is empty.
            platform::MsgBox("Det måste finnas en sökväg till datakatalogen. ");
            return;
        }
        txtPath->setText(QString::fromStdString(SaveDataPath(txtPath->text().toStdString())));
    } catch (const MireloError &error) {
        platform::MsgBox(SaveDataPathFailureText(error), platform::MsgBoxButtons::OK,
                         platform::MsgBoxIcon::Stop, "Mirelo");
    }
    Unload<frmSettings>();
}

void frmSettings::CancelButton_Click() {
    Unload<frmSettings>();
}

} // namespace mirelo::screens
