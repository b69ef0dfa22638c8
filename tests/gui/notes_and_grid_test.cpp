#include "screen_test.h"

#include <QClipboard>
#include <QScrollBar>

namespace mirelo::testing {
namespace {

using platform::FlexGrid;

const std::string Pnr = "191212121212", Signed = "Dr. Berg|2026-03-15 14:05:09|";
const std::string Asked = "[warning yes/no] Är du säker på att du vill ta bort notering?";
const std::string Warned = "[warning yes/no] Denna notering innehåller varning om läkemedels"
                           "överkänslighet.\r\nÄr du säker på att du vill ta bort notering?";
const std::string Product = "Alvedon Tablett 500 mg Orion, ordinerat av: Doktor Ek";
// Of each product the note, author, time, warning and history mark; this user's records.
const std::string Notes = "//Product/*[starts-with(name(), 'ExtendedMedicalInfo') or starts-with("
                          "name(), 'Allergic')] | //History/*[*[4] = 'Dr. Berg']/*[position() > 1]";

Texts rows(const FlexGrid *grid, int first, int last) {
    Texts lines(grid->Rows());
    for (int row = 0; row < grid->Rows(); ++row) {
        for (int col = first; col <= last; ++col) {
            lines[row] += (col == first ? "" : "|") + grid->TextMatrix(row, col).toStdString();
        }
    }
    return lines;
}

class NoteScreensTest : public ScreenTest {
  protected:
    void SetUp() override {
        ScreenTest::SetUp();
        session().gSignature = "Dr. Berg";
        frmExtendedInfo::Text1Changed = frmExtendedInfo::Text2Changed = false;
    }
    std::string file() const { return path("data/" + Pnr + ".xml"); }
    static void store(const std::vector<ProductFields> &products,
                      const std::array<std::string, 3> &general = {},
                      const std::string &history = {}) {
        storePatientFile(Pnr + ".xml",
                         patientText(Pnr, "Tolvansson", "Tolvan", products, general, history));
    }
    std::string stored(const std::string &query = Notes) const {
        return texts(readStoredPatient(file()), query);
    }
    // Keys know no letters beyond ASCII.
    static void type(QPlainTextEdit *box, const char *text) {
        QTest::mouseClick(box->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        box->moveCursor(QTextCursor::End);
        box->insertPlainText(QString::fromUtf8(text));
    }
    static void giveReason(const char *reason, const QStringList &buttons) {
        whileOpen<frmAllergicExtendedInfo>([=](frmAllergicExtendedInfo &dialog) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
            dialog.txtExtendedMedicalInfo->setPlainText(QString::fromUtf8(reason));
            for (const QString &button : buttons) {
                EXPECT_TRUE(dialog.isVisible()) << "closed by no key and by no failed save";
                QTest::keyClick(button == "OK" ? dialog.cmdSave : dialog.cmdCancel, Qt::Key_Return);
            }
        });
    }
};

// A change of the warning alone leaves the dialog open and the view as it was. A fill or an
// Avbryt that clicked the box would open the reason dialog unasked and hold the test.
TEST_F(NoteScreensTest, the_note_dialog_saves_deletes_and_changes_the_warning_by_its_buttons_only) {
    const std::string same, closed = "closed, the view filled", note = "Utsatt \"x\"\n& följs upp";
    // Typed into the reason dialog if it opens, else over the note; unless `left`, no byte changes.
    for (const auto &[allergic, typed, does, says, left, after] : std::vector<
             std::tuple<std::string, const char *, QString, std::string, std::string, std::string>>{
             {"1", note.c_str(), "OK", "", note + "|" + Signed + "1|0|", closed},
             {"1", "", "OK", "", "|" + Signed + "1|0|", closed},
             {"0", "Dosering ≥ 2 ý", "OK", "", "Dosering ≥ 2 ý|" + Signed + "0|0|", closed},
             {"0", "Dosering\v", "OK", "[] 5 Tecknet U+000B kan inte sparas.", same, "open"},
             {"0", "Klåda", "box, Avbryt", "", same, "open"},
             {"0", "Klåda", "box, OK", "", "Rad ett\nRad två|||1|1|1|Klåda|" + Signed, "ticked"},
             {"1", "Klåda", "box, Avbryt", "", same, "ticked"},
             {"0", "Klåda\f", "box, OK, Avbryt",
              "[stop] Fel uppstod: Tecknet U+000C kan inte sparas.", same, "open"},
             {"0", nullptr, "Ta bort, No", Asked, same, "open"},
             {"0", nullptr, "Ta bort", Asked, "|" + Signed + "0|0|", closed},
             {"1", "Klåda", "Ta bort, Avbryt", Warned, same, "ticked"},
             {"1", "Klåda", "Ta bort, OK", Warned, "|" + Signed + "0|1|0|Klåda|" + Signed,
              closed}}) {
        SCOPED_TRACE(allergic + " " + does.toStdString());
        store({{.id = "2_1", .note = "Rad ett\nRad två", .allergic = allergic}});
        const std::string before = readBytes(file());
        frmMedicalNote &dialog = Screen<frmMedicalNote>();
        dialog.ReadPatientFile("2_1", Pnr);
        EXPECT_EQ((dialog.Frame1->title() + "|" + dialog.txtExtendedMedicalInfo->toPlainText())
                      .toStdString(),
                  "Notering om: " + Product + "|Rad ett\nRad två");
        EXPECT_EQ(dialog.chkAllergic->isChecked(), allergic == "1");
        dialog.show();
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QStringList steps = does.split(", ");
        const QString first = steps.takeFirst();
        if (steps.removeAll("No") > 0) {
            nextAnswers = {platform::MsgBoxResult::No};
        }
        if (!steps.isEmpty()) {
            giveReason(typed, steps);
        } else if (typed != nullptr) {
            dialog.txtExtendedMedicalInfo->setPlainText(QString::fromUtf8(typed));
        }
        // Enter presses a button that has the focus, as Space does.
        QAbstractButton *pressed = first == "OK" ? dialog.cmdSave
                                   : first == "box"
                                       ? static_cast<QAbstractButton *>(dialog.chkAllergic)
                                       : dialog.cmdDelete;
        QTest::keyClick(pressed, first == "box" ? Qt::Key_Space : Qt::Key_Return);
        EXPECT_EQ(said(), says.empty() ? Texts{} : Texts{says});
        EXPECT_EQ(left.empty() ? readBytes(file()) : stored(), left.empty() ? before : left);
        const bool filled = Screen<frmShowPatient>().FlexGrid->TextMatrix(1, 7) == "2_1";
        const std::string state = !(IsLoaded<frmMedicalNote>() && dialog.isVisible()) ? "closed"
                                  : dialog.chkAllergic->isChecked()                   ? "ticked"
                                                                                      : "open";
        EXPECT_EQ(state + (filled ? ", the view filled" : ""), after);
        Unload<frmShowPatient>();
    }
}

// The screen opens on a product, by its button at the first row, and acts on the product it shows.
TEST_F(NoteScreensTest, the_notes_list_the_newest_product_of_each_number_with_a_note_or_warning) {
    store({{.id = "A2", .regNr = "100", .atcCode = "X01", .note = "a", .allergicHistory = "1"},
           {.id = "A1", .regNr = "100", .atcCode = "X01", .note = "äldre"},
           {.id = "B", .regNr = "200", .atcCode = "X01", .note = "b", .allergic = "1"},
           {.id = "C", .regNr = "300", .atcCode = "Y01"},
           {.id = "D", .regNr = "400", .atcCode = "", .note = "d"},
           {.id = "E", .regNr = "500", .atcCode = "", .note = "e"},
           {.id = "G", .regNr = "600", .atcCode = "Z01", .note = "g", .allergic = "1"}});
    EXPECT_TRUE(Screen<frmExtendedInfo>().chkAllergic->isHidden()) << "no product shown yet";
    openPatient(Pnr).cmdNote_Click();
    frmExtendedInfo &screen = Screen<frmExtendedInfo>();
    FlexGrid *grid = screen.FlexGrid;
    EXPECT_TRUE(screen.Text2->toPlainText() == "a" && screen.Text2->isEnabled());
    EXPECT_EQ(rows(grid, 6, 6), (Texts{" ID", "A2", "B", "D", "E", "G", "", "", "", "", ""}));
    EXPECT_EQ(rows(grid, 2, 9)[1], "Alvedon Tablett 500 mg Orion|2026-01-10T09:30:00|1 ggr|1 X 20 "
                                   "st|A2|X01|100|1 tablett 3 gånger dagligen");

    // A product sought and not found leaves the clicked one on show; one found is shown, marked.
    clickCell(grid, 2, 2);
    screen.ReadPatientFolder(Pnr);
    screen.SelectFlexGridID("G", "");
    EXPECT_EQ(screen.Text2->toPlainText().toStdString(), "b") << "still the clicked product";
    screen.SelectFlexGridID("Q", "400");
    EXPECT_TRUE(screen.Text2->toPlainText() == "d" && grid->HighLight() == 1) << "by the RegNr";
    // The view's icon finds its product below the row the fill left current; the warning and
    // note taken away there, with a move of the row and a refill between, touch no other product.
    screen.cmdClose->click();
    frmShowPatient &view = Screen<frmShowPatient>();
    view.SelectFlexGridID("G");
    clickCell(view.FlexGrid, view.FlexGrid->Row(), 1);
    unloadNow();
    EXPECT_EQ(Screen<frmExtendedInfo>().Text2->toPlainText(), "g");
    QTest::keyClick(Screen<frmExtendedInfo>().FlexGrid, Qt::Key_Up); // the pointer not on a row
    giveReason("", {"OK"});
    Screen<frmExtendedInfo>().cmdDeleteNote->click();
    EXPECT_EQ(stored("//Product[ID = 'E' or ID = 'G']/ExtendedMedicalInfo | //History/*/RegNr"),
              "e||600|");
    std::vector<ProductFields> many(12, {.note = "n"});
    for (int i = 0; i < 12; ++i) {
        many[i].id = many[i].regNr = many[i].atcCode = std::to_string(i);
    }
    store(many);
    Screen<frmExtendedInfo>().ReadPatientFolder(Pnr);
    grid = Screen<frmExtendedInfo>().FlexGrid;
    EXPECT_EQ(grid->TextMatrix(12, 6), "11");
    store({{.id = "F", .note = "f"}});
    Screen<frmExtendedInfo>().ReadPatientFolder(Pnr);
    EXPECT_EQ(rows(grid, 6, 6), (Texts{" ID", "F", "", "", "", "", "", "", "", "", "", "", ""}));
}

TEST_F(NoteScreensTest, the_notes_are_saved_on_leaving_their_boxes_and_the_warning_with_a_reason) {
    const std::string a58(58, 'a'), b28(28, 'b'), b29(29, 'b'), c116(116, 'c');
    store({{.id = "S1_1", .regNr = "100", .note = "Första\nAndra"},
           {.id = "S2_1", .regNr = "200", .note = "annan"}},
          {"Rad ett\nRad två", "Dr. Karl-Fredrik Lindqvist-Öberg", "2026-01-01 10:00:00"},
          "<History>" + historyRecord("200", "1", a58, "Dr. Ek", "2026-03-15 14:05:09") +
              historyRecord("200", "0", b28 + "\n" + b29, "Dr. Ek", "15/3/26 2:05 PM") +
              historyRecord("200", "1", c116, "Dr. Ek", "2026-01-02 08:00:00") +
              historyRecord("200", "ja", "", "Dr. Ek", "") + "</History>");
    openPatient(Pnr).cmdNote_Click();
    frmExtendedInfo &screen = Screen<frmExtendedInfo>();
    FlexGrid *grid = screen.FlexGrid;
    EXPECT_EQ(
        (screen.Frame1->title() + "|" + screen.Text1->toPlainText() + "|" + screen.Label3->text())
            .toStdString(),
        "Övrig information om Tolvan Tolvansson|Rad ett\nRad två|Dr. Karl-Fredrik "
        "Lindqvist-Öberg - 2026-01-01 10:00:00");
    EXPECT_GE(screen.Label3->width(), screen.Label3->sizeHint().width()) << "the time too";
    type(screen.Text1, "X");
    clickCell(grid, 1, 3);
    EXPECT_EQ(stored("//PatientData/*[starts-with(name(), 'GeneralInfo')]"),
              "Rad ett\nRad tvåX|" + Signed);
    EXPECT_EQ((screen.Frame2->title() + "|" + screen.Text2->toPlainText()).toStdString(),
              "Notering för patient ang: " + Product + "|Första\nAndra");
    type(screen.Text2, " ny");
    clickCell(grid, 2, 3);
    session().gSignature = "Dr. Other";
    type(screen.Text2, "");
    clickCell(grid, 1, 3);
    EXPECT_EQ(stored("//ExtendedMedicalInfo | //ExtendedMedicalInfoBy"),
              "Första\nAndra ny|Dr. Berg|annan|Dr. Other|");

    session().gSignature = "Dr. Berg";
    clickCell(grid, 2, 3);
    giveReason("Utslag", {"OK"});
    QTest::mouseClick(screen.chkAllergic, Qt::LeftButton);
    const std::string first = "Första\nAndra ny|" + Signed + "0|0|", utslag = "1|Utslag|" + Signed;
    EXPECT_EQ(stored(), first + "annan|Dr. Other|2026-03-15 14:05:09|1|1|" + utslag);
    EXPECT_TRUE(grid->CellPictureAt(2, 0) == 3 && grid->CellPictureAt(2, 1) == 1 &&
                screen.chkAllergic->isChecked() && screen.cmdAllergicHistory->isVisible());
    // By the icon, beside the screen, up to a record that can't be read.
    clickCell(grid, 2, 0);
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    const FlexGrid *list = history.FlexGrid;
    EXPECT_TRUE(history.isVisible() && !history.isModal());
    EXPECT_EQ(said(), Texts{"[stop] Kunde inte skapa struktur för flexgrid: Typerna matchar inte"});
    EXPECT_EQ(history.Frame1->title(), "Historik för överkänslighet: Alvedon Tablett 500 mg Orion");
    EXPECT_EQ(rows(list, 0, 4),
              (Texts{"|Ö.käns|Datum|Förskrivare|Beskrivning", "|Ja|2026-03-15|Dr. Berg|Utslag",
                     "|Ja|2026-03-15|Dr. Ek|" + a58, "|Nej|15/3/26 2:|Dr. Ek|" + b28 + "  " + b29,
                     "|Ja|2026-01-02|Dr. Ek|" + c116, "||||"}));
    EXPECT_EQ((std::vector{list->RowHeight(3), list->RowHeight(4), list->ColWidth(0),
                           list->ColWidth(4), list->CellAlignmentAt(1, 1),
                           list->CellAlignmentAt(1, 4), int(list->CellFontBoldAt(0, 4))}),
              (std::vector{2 * list->RowHeight(2), 3 * list->RowHeight(2), 0, 3700, 4, 1, 1}));
    // The bold heading keeps the two dots of its Ö: they are what tells it from an O.
    const auto heading = [list] {
        return list->viewport()->grab().toImage().copy(list->visualItemRect(list->item(0, 1)));
    };
    const QImage withDots = heading();
    history.FlexGrid->setTextMatrix(0, 1, "O.käns");
    const QImage withoutDots = heading();
    int dotPixels = 0;
    for (int pixel = 0; pixel < withDots.width() * withDots.height(); ++pixel) {
        const QPoint at(pixel % withDots.width(), pixel / withDots.width());
        dotPixels += std::abs(withDots.pixelColor(at).lightness() -
                              withoutDots.pixelColor(at).lightness()) > 64;
    }
    EXPECT_GE(dotPixels, 2);
    // Esc unloads as Återgå does: the next list starts from a fresh grid, not over this one.
    QTest::keyClick(&history, Qt::Key_Escape);
    // The button, waiting, looks the records up by the dosage.
    Texts byButton;
    whileOpen<frmAllergicHistory>([&byButton](frmAllergicHistory &dialog) {
        byButton = rows(dialog.FlexGrid, 1, 4);
        dialog.cmdBack->click();
    });
    QTest::mouseClick(screen.cmdAllergicHistory, Qt::LeftButton);
    EXPECT_EQ(byButton, (Texts{"Ö.käns|Datum|Förskrivare|Beskrivning", "|||"}));
    giveReason("Fel", {"OK"});
    QTest::mouseClick(screen.cmdDeleteNote, Qt::LeftButton);
    EXPECT_EQ(said(), Texts{Warned});
    EXPECT_EQ(stored(), first + "|" + Signed + "0|1|0|Fel|" + Signed + utslag);

    // Filled again with the view hidden, the list keeps the general note typed, not its author.
    store({{.id = "S1_1", .note = "annan"}}, {"Annan", "Dr B", "2026-02-02 08:00:00"});
    screen.cmdDeleteNote->click();
    EXPECT_EQ(said(), Texts{Asked});
    EXPECT_EQ((screen.Text1->toPlainText() + "|" + screen.Label3->text()).toStdString(),
              "Rad ett\nRad tvåX|Dr B - 2026-02-02 08:00:00");
    EXPECT_TRUE(grid->TextMatrix(1, 6).isEmpty() && !screen.Text2->isEnabled() &&
                !screen.cmdDeleteNote->isVisible());
    std::filesystem::remove(file());
    QTest::mouseClick(screen.cmdClose, Qt::LeftButton);
    EXPECT_EQ(said(), Texts{"[] -2147220985 Patientens fil saknas."});
    EXPECT_TRUE(IsLoaded<frmExtendedInfo>());
}

// A paste from a word processor carries control characters, which no file can hold: each box
// drops them as they come and shows the rest, and what it shows is what its file holds, also
// when the program ends before the box was left.
TEST_F(NoteScreensTest, a_paste_into_any_box_is_stored_as_the_box_shows_it) {
    const std::string shown = "ab ≥ 2 ý", settings = path("System/Settings.xml");
    QApplication::clipboard()->setText(QString::fromUtf8("a\vb ≥ 2 ý"));
    const auto paste = [&](QWidget *box) {
        box->setFocus();
        QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
        const char *text = qobject_cast<QLineEdit *>(box) != nullptr ? "text" : "plainText";
        EXPECT_THAT(box->property(text).toString().toStdString(), HasSubstr(shown));
    };
    paste(Screen<frmMain>().txtSearch);
    store({{.id = "2_1", .note = "n"}});
    frmMedicalNote &dialog = Screen<frmMedicalNote>();
    dialog.ReadPatientFile("2_1", Pnr);
    paste(dialog.txtExtendedMedicalInfo);
    dialog.cmdSave->click();
    openPatient(Pnr).cmdNote_Click();
    frmExtendedInfo &screen = Screen<frmExtendedInfo>();
    paste(screen.Text2);
    whileOpen<frmAllergicExtendedInfo>([&](frmAllergicExtendedInfo &reason) {
        paste(reason.txtExtendedMedicalInfo);
        reason.cmdSave->click();
        reason.done(0); // should the save have failed
    });
    QTest::mouseClick(screen.chkAllergic, Qt::LeftButton);
    paste(screen.Text1);
    EXPECT_THROW(Screen<mainApp>().close(), ProcessEnded); // the window's X, answered Ja
    EXPECT_EQ(stored("//GeneralInfo | //ExtendedMedicalInfo | //AllergicInfoHistory"),
              shown + "|" + shown + shown + "n|" + shown + "|");
    writeSettingsFile({.dataPath = appDir() + "/data/"});
    frmSplash &splash = Screen<frmSplash>();
    splash.chkSaveUsername->setChecked(true);
    paste(splash.txtPassword);
    splash.txtPassword->clear();
    paste(splash.txtUsername);
    splash.Submit->click();
    frmSettings &folder = Screen<frmSettings>();
    paste(folder.txtPath);
    folder.OKButton->click();
    EXPECT_THAT(readBytes(settings), HasSubstr("<Username>ab &#8805; 2 \xFD</Username>"));
    EXPECT_THAT(readBytes(settings), HasSubstr("/data/ab &#8805; 2 \xFD/</DataPath>"));
    EXPECT_EQ(said(), (Texts{"[warning yes/no] Vill du verkligen avsluta Mirelo?",
                             "[] Fyll i Användarnamn samt Lösenord."}));
}

// Sizes were designed for a narrower font; a check box shows its box alone, a label beside it.
// Who is logged in shows whole on the screen's line, apart from its caption.
TEST_F(NoteScreensTest, every_fixed_caption_of_every_screen_shows_whole_and_uncovered) {
    session().gSignature = "Dr. Karin Lindqvist, Vårdcentralen Åby";
    for (QWidget *screen : std::initializer_list<QWidget *>{
             &Screen<frmSplash>(), &Screen<frmMain>(), &Screen<frmShowPatient>(),
             &Screen<frmExtendedInfo>(), &Screen<frmMedicalNote>(),
             &Screen<frmAllergicExtendedInfo>(), &Screen<frmAllergicHistory>(),
             &Screen<frmPatInfo>(), &Screen<frmAbout>(), &Screen<frmSettings>()}) {
        SCOPED_TRACE(screen->objectName().toStdString());
        for (const QPushButton *button : screen->findChildren<QPushButton *>()) {
            QStyleOptionButton option;
            option.initFrom(button);
            EXPECT_LE(button->fontMetrics().horizontalAdvance(QString(button->text()).remove('&')),
                      button->style()
                          ->subElementRect(QStyle::SE_PushButtonContents, &option, button)
                          .width())
                << button->objectName().toStdString();
        }
        for (const QLabel *label : screen->findChildren<QLabel *>()) {
            if (label->wordWrap() || label->isHidden() || label->text().isEmpty()) {
                continue;
            }
            const QFontMetrics metrics = label->fontMetrics();
            QRect text =
                metrics.boundingRect(label->contentsRect(), int(label->alignment()), label->text());
            EXPECT_TRUE(text.width() <= label->contentsRect().width() &&
                        label->geometry().right() < label->parentWidget()->width())
                << label->objectName().toStdString();
            // Nor may a later control, stacked above the label, cover the ink of its last line
            // or the blank after it.
            text.setWidth(text.width() + metrics.horizontalAdvance(' '));
            text.setHeight(metrics.lineSpacing() * int(label->text().count('\n')) +
                           metrics.ascent() +
                           metrics.tightBoundingRect(label->text().section('\n', -1)).bottom() + 1);
            const QObjectList &siblings = label->parent()->children();
            for (const QObject *sibling : siblings.mid(siblings.indexOf(label) + 1)) {
                const auto *control = qobject_cast<const QWidget *>(sibling);
                EXPECT_FALSE(control != nullptr && !control->isHidden() &&
                             control->geometry().intersects(text.translated(label->pos())))
                    << label->objectName().toStdString() << " under "
                    << control->objectName().toStdString();
            }
        }
    }
}

class FlexGridTest : public ScreenTest {
  protected:
    void SetUp() override {
        ScreenTest::SetUp();
        ensureScreenResources();
        grid = std::make_unique<FlexGrid>();
        grid->setCols(5);
        grid->setRows(4);
        grid->setFixedCols(2);
        grid->setImageList(platform::ImageList::FromFiles(":/icons/imagelist1_%1.svg", 7));
        grid->show();
        QObject::connect(grid.get(), &FlexGrid::SelChange, [this] {
            events << QString::asprintf("SelChange %d,%d-%d", grid->Row(), grid->Col(),
                                        grid->ColSel());
        });
        QObject::connect(grid.get(), &FlexGrid::MouseDown, [this](int button, int shift) {
            events << QString::asprintf("MouseDown %d %d at %d,%d current %d,%d", button, shift,
                                        grid->MouseRow(), grid->MouseCol(), grid->Row(),
                                        grid->Col());
        });
    }
    QRect cell(int row, int col) const { return grid->visualItemRect(grid->item(row, col)); }
    QImage drawn(QRect part) const { return grid->viewport()->grab().toImage().copy(part); }

    std::unique_ptr<FlexGrid> grid;
    QStringList events;
};

// The screens' handlers move the current cell themselves and must not hear their own moves.
TEST_F(FlexGridTest, only_the_user_raises_SelChange_and_MouseDown_in_the_order_of_the_click) {
    grid->setRow(2);
    grid->setCol(3);
    grid->Clear();
    EXPECT_EQ(std::pair(grid->MouseRow(), grid->MouseCol()), std::pair(0, 0));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::ControlModifier, cell(1, 3).center());
    clickCell(grid.get(), 1, 3);
    QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, cell(0, 4).center());
    // A double click is one MouseDown; a third press soon after is a click of its own.
    for (const auto &[type, time] :
         {std::pair(QEvent::MouseButtonPress, 2000), std::pair(QEvent::MouseButtonRelease, 2050),
          std::pair(QEvent::MouseButtonPress, 2150), std::pair(QEvent::MouseButtonDblClick, 2150),
          std::pair(QEvent::MouseButtonRelease, 2200), std::pair(QEvent::MouseButtonPress, 2300)}) {
        const bool held = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick;
        QMouseEvent event(type, cell(2, 2).center(),
                          grid->viewport()->mapToGlobal(cell(2, 2).center()), Qt::LeftButton,
                          held ? Qt::LeftButton : Qt::NoButton, {});
        event.setTimestamp(time);
        QApplication::sendEvent(grid->viewport(), &event);
    }
    clickCell(grid.get(), 3, 0);
    EXPECT_EQ(events,
              (QStringList{"MouseDown 1 2 at 1,3 current 2,3", "SelChange 1,3-3",
                           "MouseDown 1 0 at 1,3 current 1,3", "MouseDown 2 0 at 0,4 current 1,3",
                           "MouseDown 1 0 at 2,2 current 1,3", "SelChange 2,2-2",
                           "MouseDown 1 0 at 2,2 current 2,2", "SelChange 3,2-4",
                           "MouseDown 1 0 at 3,0 current 3,2"}));
}

TEST_F(FlexGridTest, Clear_keeps_rows_and_widths_and_AddItem_adds_a_row_of_tab_separated_cells) {
    grid->setColWidth(3, 0);
    grid->setColWidth(4, 1500);
    grid->AddItem("\t\tAlvedon\t\t2 X 20\tspill");
    EXPECT_EQ(grid->TextMatrix(4, 2) + "|" + grid->TextMatrix(4, 4), "Alvedon|2 X 20");
    grid->setTextMatrix(2, 3, "S1_1");
    grid->setCellPictureAt(2, 1, 6);
    grid->setCellForeColorAt(2, 4, Qt::red);
    grid->Clear();
    EXPECT_TRUE(grid->Rows() == 5 && grid->columnWidth(4) == 100 && grid->isColumnHidden(3));
    EXPECT_TRUE(grid->TextMatrix(2, 3).isEmpty() && grid->CellPictureAt(2, 1) == 0 &&
                grid->CellForeColorAt(2, 4) != Qt::red);
    EXPECT_THAT([&] { grid->setRow(5); },
                ::testing::Throws<MireloError>(::testing::Property(&MireloError::number, 30009)));
    EXPECT_THAT([&] { grid->setCol(5); },
                ::testing::Throws<MireloError>(::testing::Property(&MireloError::number, 30010)));
}

// Icons sit flush on the grey of the fixed columns; a text too long or too tall shows no dots.
TEST_F(FlexGridTest, what_the_grid_draws_stands_whole_and_in_its_place) {
    grid->setColWidth(1, 200);
    grid->setCellPictureAt(3, 1, 3);
    const QImage triangle = grid->imageList().ListImage(3).toImage();
    EXPECT_EQ(triangle.pixelColor(0, 0), QColor(224, 224, 224));
    QRect centred(QPoint(), triangle.size());
    centred.moveCenter(cell(3, 1).center());
    EXPECT_EQ(drawn(centred), triangle.convertToFormat(drawn(centred).format()));

    grid->setColWidth(3, 1080);
    grid->setTextMatrix(1, 3, "2026-11-23 14:30:00 och mer därtill");
    EXPECT_EQ(grid->item(1, 3)->toolTip(), "2026-11-23 14:30:00 och mer därtill");
    const QRect narrow = cell(1, 3);
    const QImage cut = drawn(narrow);
    grid->setColWidth(3, 6000);
    EXPECT_EQ(drawn(narrow), cut);
    QFont small = grid->font();
    small.setPointSizeF(7.5);
    grid->setFont(small);
    grid->setWordWrap(true);
    grid->setColWidth(3, 1930);
    grid->setTextMatrix(1, 3, "Dr. Karin Lindqvist,");
    const QImage firstLineAlone = drawn(cell(1, 3));
    grid->setTextMatrix(1, 3, "Dr. Karin Lindqvist, Vårdcentralen Åby");
    EXPECT_EQ(drawn(cell(1, 3)), firstLineAlone);

    grid->setRows(40);
    for (int row = 1; row < 40; ++row) {
        grid->setColWidth(row % 3 + 2, 3000);
        grid->setTextMatrix(0, row % 3 + 2, "Rubrik");
        grid->setTextMatrix(row, 2, QString::number(row));
    }
    const QRect all = grid->viewport()->rect(), headingRow(0, 0, all.width(), cell(0, 2).height());
    const QRect fixedCols(0, 0, cell(0, 2).left(), all.height());
    const QImage before = drawn(all);
    grid->verticalScrollBar()->setValue(grid->verticalScrollBar()->maximum());
    const QImage down = drawn(all);
    EXPECT_TRUE(down.copy(headingRow) == before.copy(headingRow) && down != before);
    grid->horizontalScrollBar()->setValue(grid->horizontalScrollBar()->maximum());
    EXPECT_TRUE(drawn(fixedCols) == down.copy(fixedCols) && drawn(all) != down);
    // Scrolled, the heading still takes a click without moving; the pointer alone sets MouseRow.
    events.clear();
    const QString current = QString::asprintf("current %d,%d", grid->Row(), grid->Col());
    clickCell(grid.get(), 0, 4);
    const QPoint over = cell(38, 3).center();
    QMouseEvent move(QEvent::MouseMove, over, grid->viewport()->mapToGlobal(over), Qt::NoButton,
                     Qt::NoButton, {});
    QApplication::sendEvent(grid->viewport(), &move);
    EXPECT_EQ(events, QStringList{"MouseDown 1 0 at 0,4 " + current});
    EXPECT_EQ(std::pair(grid->MouseRow(), grid->MouseCol()), std::pair(38, 3));
    // The keys bring a row out from under the fixed row, the thumb along at once; a move by
    // the program alone scrolls nothing.
    grid->setRow(38);
    grid->setCol(2);
    QScrollBar *scroll = grid->verticalScrollBar();
    EXPECT_EQ(scroll->value(), scroll->maximum());
    QTest::keyClick(grid.get(), Qt::Key_Home);
    EXPECT_EQ(grid->Row(), 1);
    EXPECT_TRUE(cell(1, 2).top() > cell(0, 2).bottom() && scroll->value() == 0);
    // However high its rows, the list shows its first row whole under the heading, and its
    // last whole at the end.
    grid->setRowHeightTwips(2, 3 * grid->RowHeight(2));
    QTest::keyClick(grid.get(), Qt::Key_End);
    EXPECT_TRUE(grid->Row() == 39 && cell(39, 2).bottom() < grid->viewport()->height());
    for (int value = scroll->maximum(); value >= 0; --value) {
        scroll->setValue(value);
        EXPECT_EQ(grid->rowViewportPosition(1 + value), grid->rowHeight(0)) << value;
    }
}

} // namespace
} // namespace mirelo::testing
