#include "screens/frmAllergicHistory.h"

#include "platform/file_system.h"
#include "platform/gui/flex_grid.h"
#include "platform/message_box.h"
#include "records/allergy_history_list.h"
#include "records/patient_file.h"
#include "records/product_grid.h"
#include "screens/dialog_window.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QPushButton>

namespace mirelo::screens {
namespace {

void writeCell(platform::FlexGrid *grid, int row, int col, const std::optional<std::string> &text) {
    if (!text) {
        return;
    }
    grid->setRow(row);
    grid->setCol(col);
    grid->setCellAlignment(HistoryGridColumns()[col - 1].cellAlignment);
    grid->setText(QString::fromStdString(*text));
}

} // namespace

frmAllergicHistory::frmAllergicHistory() {
    setUpDialogWindow(this, CloseBox::Shown);
    setObjectName(QStringLiteral("frmAllergicHistory"));
    setWindowTitle(QStringLiteral("Mirelo"));
    sizeTwips(this, 8280, 6000);
    setFont(dialogFont());

    Frame1 = makeControl<QGroupBox>(this, "Frame1");
    placeTwips(Frame1, 120, 120, 7935, 5295);
    FlexGrid = makeControl<platform::FlexGrid>(Frame1, "FlexGrid");
    placeTwips(FlexGrid, 120, 360, 7700, 4815);
    FlexGrid->setCols(history_grid::Cols);
    FlexGrid->setRows(2);
    FlexGrid->setFixedRows(1);
    FlexGrid->setFixedCols(1);
    // The cells pad their text more than the columns were measured for: a date fits its column
    // only a little smaller.
    QFont gridFont = dialogFont();
    gridFont.setPointSizeF(7.5);
    FlexGrid->setFont(gridFont);
    // A long reason runs on over the lines that its row is made high for.
    FlexGrid->setWordWrap(true);
    cmdBack = makeButton(this, "cmdBack", QStringLiteral("Återgå"), 7200, 5520, 855, 285);
    applyTabOrder({{0, FlexGrid}, {1, cmdBack}});

    connect(cmdBack, &QPushButton::clicked, this, &frmAllergicHistory::cmdBack_Click);
}

// The grid isn't cleared: a fresh dialog starts from its design, and a second fill of a dialog
// still open writes over the rows it had, leaving the rows below and their heights.
void frmAllergicHistory::listHistory(const std::string &pnr, const std::string &regNr,
                                     const std::string &name) {
    try {
        const std::string path = platform::GetFile(PatientFilePath(pnr)).Path;
        SetupHistoryGrid();
        Frame1->setTitle(dataCaption("Historik för överkänslighet: " + name));
        const HistoryList list = ListAllergyHistory(path, regNr);
        for (size_t index = 0; index < list.rows.size(); ++index) {
            const int row = static_cast<int>(index) + 1;
            if (row > FlexGrid->Rows() - 1) {
                FlexGrid->AddItem(QString());
            }
            const HistoryRow &record = list.rows[index];
            writeCell(FlexGrid, row, history_grid::Status, record.status);
            writeCell(FlexGrid, row, history_grid::Date, record.date);
            writeCell(FlexGrid, row, history_grid::By, record.by);
            writeCell(FlexGrid, row, history_grid::Description, record.description);
            if (record.description) {
                const int lines = HistoryRowLines(
                    static_cast<int>(FlexGrid->TextMatrix(row, history_grid::Description).size()));
                FlexGrid->setRowHeightTwips(row, FlexGrid->RowHeight(row) * lines);
            }
        }
        if (list.failure) {
            throw *list.failure;
        }
    } catch (const MireloError &error) {
        platform::MsgBox(SetupFlexGridFailureBox(error));
    }
}

void frmAllergicHistory::SetupHistoryGrid() {
    // The hidden first column was designed wider before it was hidden; it ends at 0.
    FlexGrid->setColWidth(0, 200);
    FlexGrid->setColAlignment(0, platform::FlexGrid::AlignCenterCenter);
    FlexGrid->setColWidth(0, 0);
    for (int col = history_grid::Status; col < history_grid::Cols; ++col) {
        const HistoryColumn &column = HistoryGridColumns()[col - 1];
        FlexGrid->setRow(0);
        FlexGrid->setCol(col);
        FlexGrid->setCellFontBold(true);
        FlexGrid->setCellAlignment(platform::FlexGrid::AlignCenterCenter);
        FlexGrid->setText(QString::fromStdString(column.heading));
        FlexGrid->setColWidth(col, column.width);
    }
}

void frmAllergicHistory::cmdBack_Click() {
    Unload<frmAllergicHistory>();
}

// Closing the window by its frame, or by Esc, drops the list as Återgå does, so that the next
// list starts anew instead of writing over this one and multiplying its row heights again.
void frmAllergicHistory::closeEvent(QCloseEvent *event) {
    event->accept();
    Unload<frmAllergicHistory>();
}

} // namespace mirelo::screens
