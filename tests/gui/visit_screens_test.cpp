#include "browser_processes.h"
#include "korvalo_process.h"
#include "platform/gui/file_pickers.h"
#include "platform/gui/widget_message_box.h"
#include "platform/translations/swedish_qt_texts.h"
#include "screen_test.h"
#include "screens/frmMedicationListPreview.h"
#include "scripted_browser.h"

#include <QFileDialog>
#include <QMdiArea>
#include <QMessageBox>
#include <QProcess>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <regex>

namespace mirelo::testing {
namespace {

const std::string Pnr = "191212121212";

class VisitScreensTest : public ScreenTest {};

TEST_F(VisitScreensTest, the_login_screen_starts_in_the_password_box_and_Avsluta_asks_nothing) {
    writeSettingsFile({.username = "abc", .saveUsername = "1", .dataPath = appDir() + "/data/"});
    frmSplash &splash = Screen<frmSplash>();
    EXPECT_TRUE(splash.chkSaveUsername->isChecked() && splash.focusWidget() == splash.txtPassword &&
                splash.txtPassword->echoMode() == QLineEdit::Password &&
                !splash.windowIcon().pixmap(48).isNull());
    EXPECT_EQ((QStringList{splash.txtUsername->text(), splash.windowTitle(), splash.Submit->text(),
                           splash.Command1->text(), splash.lblSupportInfo->text()}),
              (QStringList{"abc", "Mirelo Inloggning", "Logga in", "Avsluta",
                           "Telefon: 08-123 456 70 | Fax: 08-123 456 79\r\nE-post: "
                           "support@mirelo.example"}));
    EXPECT_THROW(splash.Command1->click(), ProcessEnded);
    EXPECT_THAT(said(), IsEmpty());
    // A settings file that can't be read ends the process before the login screen shows.
    Unload<frmSplash>();
    writeBytes(path("System/Settings.xml"), "<Settings><Username>");
    EXPECT_THROW(Screen<frmSplash>(), ProcessEnded);
    EXPECT_THAT(said(),
                ElementsAre(StartsWith("[stop] Inställningsfilen är skadad.\r\nAnledning: ")));
}

TEST_F(VisitScreensTest, the_search_opens_a_whole_number_and_hands_off_one_without_a_file) {
    BrowserScript script;
    scriptBrowsers(script);
    storePatient(Pnr, {});
    storePatient("191313131313", {});
    frmMain &finder = Screen<frmMain>();
    showFrame();
    search("19121212-1212");
    frmShowPatient &view = Screen<frmShowPatient>();
    EXPECT_TRUE(view.isVisible() && finder.isVisible() && finder.List1->count() == 0);
    // Each screen stands whole in the frame, at its top left.
    for (QWidget *screen : std::initializer_list<QWidget *>{&finder, &view}) {
        const QRect panel = screen->parentWidget()->geometry();
        EXPECT_TRUE(panel == QRect(QPoint(0, 0), screen->size()) &&
                    Screen<mainApp>().mdiArea->viewport()->rect().contains(panel));
    }

    for (QWidget *focus : std::initializer_list<QWidget *>{view.FlexGrid, view.chkMode}) {
        focus->setFocus();
        QTest::keyClick(focus, Qt::Key_Return);
    }
    EXPECT_EQ(script.browsersMade, 2);
    // Ctrl+A closes from every screen of the frame, also from a text box.
    nextAnswers = {platform::MsgBoxResult::No, platform::MsgBoxResult::No};
    for (QWidget *focus : std::initializer_list<QWidget *>{view.FlexGrid, finder.txtSearch}) {
        focus->setFocus();
        QTest::keyClick(focus, Qt::Key_A, Qt::ControlModifier);
    }
    EXPECT_EQ(said(), Texts(2, "[warning yes/no] Vill du verkligen avsluta Mirelo?"));
    view.chkMode->setFocus();
    QTest::keyClick(view.chkMode, Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), finder.txtSearch);

    // Only a personal number is handed over as a new patient; a name that finds nobody is told so.
    search("Öberg");
    EXPECT_EQ(said(), Texts{"[exclamation] Ingen patient hittades för \"Öberg\". En ny patient kan "
                            "läggas upp med ett personnummer på 10 eller 12 siffror."});
    search("990101+1234");
    EXPECT_EQ(script.browsersMade, 3);
    EXPECT_THAT(script.field("txtXml"), HasSubstr("<Pnr>990101+1234</Pnr>"));
    search("--");
    EXPECT_EQ(said(), Texts{"[] Ange personnummer vid sökning"});
    search("19");
    ASSERT_EQ(finder.List1->count(), 2);
    std::filesystem::remove(path("data/" + Pnr + ".xml"));
    finder.cmdSelPat->click();
    EXPECT_EQ(said(), Texts{"[stop] Patientens fil saknas."});
    ASSERT_EQ(finder.List1->count(), 1);
    EXPECT_EQ(finder.List1->item(0)->text(), "191313131313 Tolvansson");
    finder.List1->clear();
    finder.cmdSelPat->click();
    EXPECT_EQ(said(), Texts{"[exclamation] Det finns inga patienter i listan!\r\n"
                            "Använd \"Sök\"-funktionen eller \"Lista alla\"."});

    // In the box itself Nej is the default: Ctrl+A and Enter leave Mirelo open.
    platform::installWidgetMessageBox();
    QString asked;
    QTimer::singleShot(0, [&asked] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        asked = box->text() + " " + box->defaultButton()->text();
        QTest::keyClick(box, Qt::Key_Return);
    });
    QTest::keyClick(finder.txtSearch, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(asked, "Vill du verkligen avsluta Mirelo? &Nej");
    EXPECT_TRUE(!processEnded && Screen<mainApp>().isVisible());
}

// A dialog stands over the frame and is never minimised on its own, which would leave the frame
// deaf to every click; the login, before the frame, stands alone.
TEST_F(VisitScreensTest, every_dialog_is_the_frames_with_a_close_box_at_most) {
    const auto minimised = [](QDialog *dialog) {
        dialog->showMinimized();
        QApplication::processEvents();
        const Qt::WindowFlags flags = dialog->windowFlags();
        const std::string window =
            dialog->objectName().toStdString() + (dialog->isMinimized() ? " minimised" : "") +
            (dialog->parentWidget() ? " the frame's" : "") +
            (flags & Qt::WindowCloseButtonHint ? " closes" : "") +
            (flags & (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint) ? " more" : "") +
            (dialog->minimumSize() != dialog->maximumSize() ? " resizes" : "");
        dialog->hide();
        return window;
    };
    Texts windows{minimised(&Screen<frmSplash>())};
    showFrame();
    frmMedicationListPreview preview({}, Pnr);
    for (QDialog *dialog : std::initializer_list<QDialog *>{
             &Screen<frmMedicalNote>(), &Screen<frmAllergicExtendedInfo>(),
             &Screen<frmAllergicHistory>(), &Screen<frmPatInfo>(), &Screen<frmAbout>(),
             &Screen<frmSettings>(), &preview}) {
        windows.push_back(minimised(dialog));
    }
    EXPECT_EQ(
        windows,
        (Texts{"frmSplash", "frmMedicalNote the frame's", "frmAllergicExtendedInfo the frame's",
               "frmAllergicHistory the frame's closes", "frmPatInfo the frame's closes",
               "frmAbout the frame's closes", "frmSettings the frame's closes",
               "frmMedicationListPreview the frame's closes"}));
}

TEST_F(VisitScreensTest, the_view_shows_its_grid_opens_its_dialogs_and_drops_itself_for_the_next) {
    const std::string signature = "Dr. Karl-Fredrik Lindqvist-Öberg, Vårdcentralen Östra Hamngatan";
    std::vector<ProductFields> products(30, {.checked = "0"});
    products[0] = {.id = "A_1", .atcCode = "B01AA03", .note = "Blödningsrisk", .allergic = "1"};
    products[0].companyName = "Johnson &amp; Johnson";
    products[0].insertedBy = products[0].takenOutBy = signature;
    products[1] = {.id = "B_1", .productName = "Levaxin", .atcCode = "H03AA01", .note = "Fasta"};
    products[1].allergicHistory = "1";
    products[2].checked = products[3].checked = "1";
    storePatient(Pnr, products);
    storePatient("202002022222", {});
    frmShowPatient &view = openPatient(Pnr);
    platform::FlexGrid *grid = view.FlexGrid;
    EXPECT_EQ(grid->Rows(), 31);
    // A refill, as after a prescription, leaves the list where it was: the top row in sight.
    view.ReadPatientFolder(Pnr);
    EXPECT_EQ(grid->rowViewportPosition(1), grid->rowHeight(0));
    // The maker's "&" is no shortcut mark in the caption.
    EXPECT_EQ(view.Frame1->title().toStdString(),
              "Alvedon Tablett 500 mg Johnson && Johnson, ordinerat av: Doktor Ek");
    EXPECT_EQ((std::vector<int>{grid->CellPictureAt(1, 1), grid->CellPictureAt(2, 0),
                                grid->CellPictureAt(2, 1), grid->CellPictureAt(5, 2)}),
              (std::vector<int>{3, 7, 6, 2}));
    EXPECT_TRUE(grid->CellForeColorAt(3, 10) == Qt::red && grid->CellForeColorAt(4, 0) == Qt::red &&
                grid->CellForeColorAt(1, 3) != Qt::red);
    EXPECT_TRUE(grid->isColumnHidden(7) && grid->CellFontBoldAt(0, 3));
    // Only ids known to be in the grid are asked for: another one runs past the last row.
    EXPECT_THROW(view.SelectFlexGridID("not-in-the-grid"), MireloError);
    // A long signature stops before the next caption and shows whole as its tooltip.
    for (const QLabel *value : {view.Label12, view.Label13}) {
        EXPECT_EQ(value->text() + value->toolTip(), QString::fromStdString(signature + signature));
        EXPECT_LT(value->geometry().right() + value->fontMetrics().horizontalAdvance(' '),
                  view.Label15->geometry().left());
    }

    // The warning triangle stands where the note button would; both open in place of the view.
    clickCell(grid, 1, 1);
    EXPECT_TRUE(Screen<frmExtendedInfo>().isVisible() && !view.isVisible());
    Screen<frmExtendedInfo>().cmdClose->click();
    ASSERT_TRUE(view.isVisible() && view.cmdExtInfo->isVisible() && view.cmdNote->isHidden());
    view.cmdExtInfo->click();
    EXPECT_TRUE(Screen<frmExtendedInfo>().isVisible() && !view.isVisible());
    EXPECT_EQ(Screen<frmExtendedInfo>().FlexGrid->Row(), 1);
    Screen<frmExtendedInfo>().cmdClose->click();
    clickCell(grid, 2, 0);
    EXPECT_TRUE(Screen<frmAllergicHistory>().isVisible() && view.isVisible());
    EXPECT_THAT(Screen<frmAllergicHistory>().Frame1->title().toStdString(), HasSubstr("Levaxin"));
    Screen<frmAllergicHistory>().cmdBack->click();

    // Past products hidden: the note is asked of the top one taken out, though its row went.
    view.chkMode->click();
    EXPECT_TRUE(grid->Rows() == 31 && grid->TextMatrix(5, 3).isEmpty());
    EXPECT_TRUE(grid->Row() == 1 && !view.Label11->isHidden());
    std::string noteOn;
    whileOpen<frmMedicalNote>([&noteOn](frmMedicalNote &note) {
        noteOn = note.ID;
        note.cmdSave->click();
    });
    clickCell(grid, 1, 2);
    EXPECT_EQ(noteOn + " " + grid->TextMatrix(1, 7).toStdString(), "A_1 B_1");

    QTest::mouseClick(view.cmdNyPatient, Qt::LeftButton);
    unloadNow();
    EXPECT_TRUE(!IsLoaded<frmShowPatient>() && Screen<frmMain>().isVisible());
    frmShowPatient &next = openPatient("202002022222");
    EXPECT_TRUE(next.chkMode->isChecked() && next.FlexGrid->Rows() == 14);
    EXPECT_THAT(said(), IsEmpty());
}

TEST_F(VisitScreensTest, a_tick_after_the_file_vanished_shows_error_53_whichever_way_it_came) {
    const struct {
        const char *name;
        int row;
        bool byKeyboard;
    } roads[] = {{"marked row", 1, false}, {"other row", 2, false}, {"row keyed to", 2, true}};
    for (const auto &road : roads) {
        SCOPED_TRACE(road.name);
        storePatient(Pnr, {{.id = "S2_1"}, {.id = "S1_1"}});
        frmShowPatient &view = openPatient(Pnr);
        if (road.byKeyboard) {
            QTest::keyClick(view.FlexGrid, Qt::Key_Down);
        }
        std::filesystem::remove(path("data/" + Pnr + ".xml"));
        clickCell(view.FlexGrid, road.row, 2);
        EXPECT_EQ(said(), Texts{"[stop] Filen hittades inte"});
        EXPECT_TRUE(view.isVisible() && view.FlexGrid->CellPictureAt(road.row, 2) == 1);
        view.cmdNyPatient->click();
        unloadNow();
    }
}

// The view's buttons have no handler: a file gone or damaged since the view was filled ends
// the process with the run time's report, and the file stays as it was.
TEST_F(VisitScreensTest, a_file_lost_or_damaged_under_the_buttons_ends_the_process_untouched) {
    const std::string bad = "[stop] Körfel '-2147220988':\r\nPatientfil är skadad.\r\nAnledning: ";
    const struct {
        const char *name;
        std::string harmed; // empty: the file is gone
        QPushButton *frmShowPatient::*button;
        ::testing::Matcher<Texts> report;
    } cases[] = {
        {"details of a missing file", "", &frmShowPatient::cmdPatInfo,
         ElementsAre("[stop] Körfel '53':\r\nFilen hittades inte")},
        {"details of a damaged file", "<Patient", &frmShowPatient::cmdPatInfo,
         ElementsAre(StartsWith(bad))},
        {"Ordinera on a damaged file", "<Patient", &frmShowPatient::cmdSend,
         ElementsAre(StartsWith(bad))},
    };
    const std::string file = path("data/" + Pnr + ".xml");
    for (const auto &test : cases) {
        SCOPED_TRACE(test.name);
        storePatient(Pnr, {});
        frmShowPatient &view = openPatient(Pnr);
        test.harmed.empty() ? void(std::filesystem::remove(file)) : writeBytes(file, test.harmed);
        EXPECT_THROW(QTest::mouseClick(view.*test.button, Qt::LeftButton), ProcessEnded);
        EXPECT_THAT(said(), test.report);
        EXPECT_EQ(readBytes(file), test.harmed);
        Unload<frmPatInfo>();
        Unload<frmShowPatient>();
        unloadNow();
    }
}

TEST_F(VisitScreensTest, about_opens_by_ctrl_O_and_starts_the_system_tool_only_when_there_is_one) {
    showFrame();
    const QByteArray searchPath = qgetenv("PATH");
    qputenv("PATH", QByteArray::fromStdString(appDir()));
    QStringList shown;
    whileOpen<frmAbout>([&](frmAbout &about) {
        shown = {about.windowTitle(),   about.lblTitle->text(),       about.lblVersion->text(),
                 about.Frame1->title(), about.lblDescription->text(), about.cmdSysInfo->text()};
        about.cmdSysInfo->click();
        EXPECT_EQ(said(), Texts{"[] System Information Is Unavailable At This Time"});
        EXPECT_TRUE(about.isVisible());
        writeBytes(path("hardinfo"), "#!/bin/sh\n/usr/bin/touch '" + path("started") + "'\n");
        std::filesystem::permissions(path("hardinfo"), std::filesystem::perms::owner_all);
        about.cmdSysInfo->click();
        EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(path("started")); }));
        QTest::keyClick(&about, Qt::Key_Escape);
    });
    QTest::keyClick(Screen<frmMain>().txtSearch, Qt::Key_O, Qt::ControlModifier);
    qputenv("PATH", searchPath);
    unloadNow();
    EXPECT_EQ(shown, (QStringList{"Om Mirelo", "Mirelo", "Version 1.0.2", "Kontaktinformation",
                                  "Brenmark AB", "&System Info..."}));
    EXPECT_THAT(said(), IsEmpty());
    EXPECT_FALSE(IsLoaded<frmAbout>());
}

// A good path is stored in the whole visit; here the picker only fills the box, Avbryt forgets it.
TEST_F(VisitScreensTest, the_settings_dialog_keeps_file_and_session_but_on_a_good_OK) {
    const std::string data = appDir() + "/data/", file = path("System/Settings.xml");
    writeSettingsFile({.dataPath = data});
    const std::string before = readBytes(file);
    const auto pick = [](const std::optional<std::string> &choice) {
        platform::setNextFolderChoice(choice);
        Screen<frmSettings>().cmdBrowse->click();
        return Screen<frmSettings>().txtPath->text().toStdString();
    };
    EXPECT_EQ(pick(std::nullopt), data);
    EXPECT_EQ(pick(appDir() + "/saknas/vald"), appDir() + "/saknas/vald/");
    EXPECT_EQ(said(), Texts{"[] Välj korrekt sökväg till en katalog. Sökvägen hittades inte"});
    EXPECT_EQ(pick(appDir() + "/vald"), appDir() + "/vald/");
    // The picker itself speaks Swedish.
    platform::installSwedishQtTexts(*qApp);
    QStringList picker;
    QTimer::singleShot(0, [&picker] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        for (const QWidget *control : dialog->findChildren<QWidget *>()) {
            if (const auto *label = qobject_cast<const QLabel *>(control)) {
                picker << label->text();
            } else if (const auto *button = qobject_cast<const QPushButton *>(control)) {
                picker << button->text();
            }
        }
        dialog->reject();
    });
    Screen<frmSettings>().cmdBrowse->click();
    EXPECT_EQ(picker.join("|").toStdString(), "Sök i:|Katalog:|Öppna|Avbryt|Filer av typen:");
    QTest::keyClick(&Screen<frmSettings>(), Qt::Key_Escape);
    unloadNow();
    EXPECT_FALSE(IsLoaded<frmSettings>());
    EXPECT_TRUE(std::filesystem::is_directory(appDir() + "/vald")) << "the picker made it";

    const auto pressOK = [&](const std::string &typed) {
        Screen<frmSettings>().txtPath->setText(QString::fromStdString(typed));
        Screen<frmSettings>().OKButton->click();
        unloadNow();
        EXPECT_EQ(session().gDataPath, data);
        return said();
    };
    EXPECT_EQ(pressOK(""), Texts{"[] Det måste finnas en sökväg till datakatalogen. "});
    EXPECT_TRUE(IsLoaded<frmSettings>()) << "an empty box keeps the dialog open";
    EXPECT_EQ(pressOK(appDir() + "/saknas/ny"),
              Texts{"[stop] Kontakta support och ange följande fel: 76 Sökvägen hittades inte"});
    EXPECT_FALSE(IsLoaded<frmSettings>());
    EXPECT_EQ(readBytes(file), before);
    writeBytes(file, "<Settings><DataPath>");
    EXPECT_THAT(pressOK(appDir() + "/annan"),
                ElementsAre(StartsWith("[stop] Kunde inte läsa inställningsfil.\r\nAnledning: ")));
    EXPECT_EQ(readBytes(file), "<Settings><DataPath>");
}

// Ctrl+P in the view previews the list read from the file, and "Spara som PDF…" writes it: every
// page has its head, every product stands whole on one page, in the view's order. The file is
// only read; one that can't be read gives the view's box and no preview.
TEST_F(VisitScreensTest, the_medication_list_goes_to_a_pdf_of_whole_products_under_a_head) {
    std::vector<ProductFields> products(120);
    for (int i = 0; i < 120; ++i) {
        products[i] = {.productName = "Preparat" + std::to_string(i),
                       .dosage = i % 7 ? "Dos" : "Dos\nmed mat\noch vatten",
                       .repeats = std::to_string(i)};
    }
    products.push_back({.regNr = "R9", .checked = "0", .allergic = "1"});
    storePatient(Pnr, products);
    const std::string file = path("data/" + Pnr + ".xml"), before = readBytes(file);
    mainApp &frame = showFrame();
    frmShowPatient &view = openPatient(Pnr);
    EXPECT_EQ(frame.PrintList->text() + frame.PrintList->shortcut().toString(),
              "Skriv ut läkemedelslista…Ctrl+P");
    // Whatever preview opens is saved into the file; it speaks Swedish, Qt's tools included.
    platform::installSwedishQtTexts(*qApp);
    QStringList tools;
    const auto saveAs = [&tools](const std::string &pdf) {
        QTimer::singleShot(0, [pdf, &tools] {
            if (auto *preview =
                    qobject_cast<frmMedicationListPreview *>(QApplication::activeModalWidget())) {
                tools = {preview->windowTitle()};
                for (const QAction *tool : preview->findChild<QToolBar *>()->actions()) {
                    if (!tool->toolTip().isEmpty()) {
                        tools << tool->toolTip();
                    }
                }
                platform::setNextFileToSave(pdf);
                preview->cmdSavePdf->trigger();
                preview->reject();
            }
        });
    };
    saveAs(path("lista.pdf"));
    QTest::keyClick(view.FlexGrid, Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(tools.join('|').toStdString(),
              "Mirelo Läkemedelslista|Anpassa till bredden|Anpassa till sidan|Zooma ut|Zooma in|"
              "Stående|Liggande|Första sidan|Föregående sida|Nästa sida|Sista sidan|"
              "Visa en sida i taget|Visa uppslag|Visa alla sidor|Utskriftsformat|Skriv ut|"
              "Spara som PDF…");
    QProcess reader;
    reader.start("pdftotext", {"-layout", QString::fromStdString(path("lista.pdf")), "-"});
    ASSERT_TRUE(reader.waitForFinished());
    const QStringList pages =
        QString(reader.readAllStandardOutput()).split('\f', Qt::SkipEmptyParts);
    for (qsizetype i = 0, last = 0; i < 120; ++i) {
        const qsizetype page = pages.indexOf(
            QRegularExpression(QStringLiteral("(?s).*Preparat%1 .*Uttag: %1 ggr.*").arg(i)));
        EXPECT_TRUE(page >= last) << i;
        last = page;
    }
    for (qsizetype page = 0; page < pages.size(); ++page) {
        EXPECT_TRUE(
            pages[page].contains("Läkemedelslista för Tolvan Tolvansson, 191212121212") &&
            pages[page].contains(QStringLiteral("Sida %1 av %2").arg(page + 1).arg(pages.size())))
            << page;
    }
    EXPECT_THAT(
        pages.join("").simplified().toStdString(),
        ::testing::ContainsRegex("Adress: Storgatan 1, 111 22 Stockholm Utskriven: "
                                 "2026-03-15 14:05:09 .* Överkänslighet Alvedon Produktnummer: "
                                 "R9 Utsatta läkemedel Alvedon Tablett 500 mg Orion Ersatt"));
    EXPECT_EQ(readBytes(file), before);

    std::filesystem::remove(file);
    saveAs(path("saknas.pdf"));
    frame.PrintList->trigger();
    EXPECT_EQ(said(), Texts{"[stop] Patientens fil saknas."});
    view.cmdNyPatient->click();
    QApplication::processEvents();
    EXPECT_TRUE(!std::filesystem::exists(path("saknas.pdf")) && !frame.PrintList->isEnabled() &&
                pages.size() > 4);
}

TEST_F(VisitScreensTest, a_visit_runs_through_the_screens_and_leaves_exactly_its_marks) {
    KorvaloProcess korvalo({"--inbox", path("in")});
    writeSettingsFile({.dataPath = appDir() + "/data/", .server = korvalo.baseUrl()});
    BrowserScript script;
    scriptBrowsers(script);
    // No given name, street or postal code: the blanks show as the file has them.
    const auto withoutAddress = [](const std::string &text) {
        return std::regex_replace(text, std::regex("(<StreetName>|<PostalCode>)[^<]*"), "$1");
    };
    const ProductFields waran{
        .id = "S1_1", .regNr = "200002", .productName = "Waran", .atcCode = "B01AA03"};
    storePatientFile(Pnr + ".xml",
                     withoutAddress(patientText(Pnr, "Åström", "", {{.id = "S2_1"}, waran})));
    const std::string signature = "Dr. Karin Lindqvist, Vårdcentralen Åby";

    // A refused login keeps what was typed, whichever way it was sent.
    logIn("demo", "fel");
    frmSplash &splash = Screen<frmSplash>();
    QTest::keyClick(splash.txtUsername, Qt::Key_Enter);
    QTest::mouseClick(splash.Submit, Qt::LeftButton);
    EXPECT_EQ(said(), Texts(3, "[stop] Felaktigt användarnamn eller lösenord."));
    EXPECT_EQ(splash.txtUsername->text() + " " + splash.txtPassword->text(), "demo fel");
    splash.txtPassword->setText("demo123");
    QTest::keyClick(splash.txtPassword, Qt::Key_Return);
    ASSERT_TRUE(IsLoaded<mainApp>());
    mainApp &frame = Screen<mainApp>();
    frmMain &finder = Screen<frmMain>();
    EXPECT_TRUE(frame.isVisible() && finder.isVisible() && !IsLoaded<frmSplash>());
    EXPECT_EQ(finder.txtLoggedIn->text().toStdString(), signature);
    EXPECT_EQ(frame.windowTitle() + " | " + finder.windowTitle(), "Mirelo | Tavmor Mirelo");
    EXPECT_TRUE(frame.Timer1->isActive() && frame.Timer1->interval() == 1000);
    EXPECT_FALSE(frame.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));

    showFrame();
    search("1912");
    ASSERT_EQ(finder.List1->count(), 1);
    EXPECT_EQ(finder.List1->currentItem()->text(), "191212121212 Åström");
    EXPECT_EQ(QApplication::focusWidget(), finder.List1);
    QTest::keyClick(finder.List1, Qt::Key_Return);
    frmShowPatient &view = Screen<frmShowPatient>();
    platform::FlexGrid *grid = view.FlexGrid;
    ASSERT_TRUE(view.isVisible() && !finder.isVisible());
    EXPECT_EQ(QApplication::focusWidget(), grid);
    EXPECT_EQ((QStringList{view.txtPnr->text(), view.txtFName->text(), view.Frame1->title()}),
              (QStringList{"191212121212", " Åström",
                           "Alvedon Tablett 500 mg Orion, ordinerat av: Doktor Ek"}));
    QStringList moves;
    for (const Qt::Key key :
         {Qt::Key_Down, Qt::Key_End, Qt::Key_Home, Qt::Key_PageDown, Qt::Key_PageUp}) {
        QTest::keyClick(grid, key);
        moves << QString::number(grid->Row()) + view.Frame1->title().section(' ', 0, 0);
    }
    EXPECT_EQ(moves, (QStringList{"2Waran", "13", "1Alvedon", "13", "1Alvedon"}));

    whileOpen<frmMedicalNote>([](frmMedicalNote &note) {
        note.txtExtendedMedicalInfo->insertPlainText("Yrsel");
        whileOpen<frmAllergicExtendedInfo>([](frmAllergicExtendedInfo &reason) {
            reason.txtExtendedMedicalInfo->insertPlainText("Utslag");
            reason.cmdSave->click();
        });
        note.chkAllergic->click();
        note.cmdSave->click();
    });
    clickCell(grid, 1, 2);
    unloadNow();
    // Past products shown, Alvedon moves below the current one, unticked, and stays marked.
    EXPECT_TRUE(grid->Row() == 2 && grid->TextMatrix(2, 7) == "S2_1");
    EXPECT_EQ(grid->CellPictureAt(2, 2), 2);
    clickCell(grid, 2, 3);
    QTest::mouseClick(view.cmdAllergicHistory, Qt::LeftButton);
    EXPECT_TRUE(Screen<frmAllergicHistory>().isVisible());
    EXPECT_EQ(Screen<frmAllergicHistory>().FlexGrid->TextMatrix(1, 4), "Utslag");
    Screen<frmAllergicHistory>().cmdBack->click();
    QStringList details;
    whileOpen<frmPatInfo>([&details](frmPatInfo &shown) {
        details = {shown.windowTitle(),   shown.Frame1->title(),    shown.txtPnr->text(),
                   shown.txtName->text(), shown.txtAddress->text(), shown.txtZipCity->text()};
        QTest::keyClick(shown.cmdOK, Qt::Key_Space);
    });
    QTest::mouseClick(view.cmdPatInfo, Qt::LeftButton);
    unloadNow();
    EXPECT_EQ(details, (QStringList{"Mirelo", "Patientuppgifter", "191212121212", " Åström", "",
                                    " Stockholm"}));
    EXPECT_FALSE(IsLoaded<frmPatInfo>());

    showFrame();
    QTest::keyClick(grid, Qt::Key_Return);
    // The patient is handed over as the file now stands: Alvedon, taken out, stays behind.
    EXPECT_THAT(script.field("txtXml"),
                AllOf(HasSubstr("<FamilyName>Åström</FamilyName>"),
                      HasSubstr("<ProductName>Waran</ProductName>"), Not(HasSubstr("Alvedon"))));
    EXPECT_TRUE(view.isVisible());
    QTest::mouseClick(view.cmdNyPatient, Qt::LeftButton);
    unloadNow();
    EXPECT_TRUE(!IsLoaded<frmShowPatient>() && finder.isVisible());

    // A new data folder serves the next intake and search at once; the list shown stays.
    whileOpen<frmSettings>([this](frmSettings &settings) {
        settings.txtPath->setText(QString::fromStdString(appDir() + "/reserv"));
        QTest::keyClick(settings.txtPath, Qt::Key_Return);
    });
    QTest::keyClick(finder.txtSearch, Qt::Key_I, Qt::ControlModifier);
    unloadNow();
    EXPECT_EQ(session().gDataPath, appDir() + "/reserv/");
    EXPECT_THAT(readBytes(path("System/Settings.xml")),
                HasSubstr("<DataPath>" + appDir() + "/reserv/</DataPath>"));
    EXPECT_EQ(finder.List1->count(), 1);
    writePrescriptionMessage(path("in/m.xml"), {.pnr = "202002022222"});
    for (int tick = 0; tick < 10; ++tick) {
        frame.Timer1_Timer();
    }
    search("20");
    ASSERT_EQ(finder.List1->count(), 1);
    EXPECT_EQ(finder.List1->item(0)->text(), "202002022222 Åström");

    // No keeps frame, timer and tick count; ticks pass while a hand-off waits for its page.
    frame.Timer1_Timer();
    const int ticks = frame.tickCount();
    nextAnswers = {platform::MsgBoxResult::No, platform::MsgBoxResult::No};
    frame.close();
    frame.Exit->trigger();
    EXPECT_EQ(said(), Texts(2, "[warning yes/no] Vill du verkligen avsluta Mirelo?"));
    EXPECT_TRUE(frame.isVisible() && finder.isVisible() && frame.Timer1->isActive());
    {
        const platform::BrowserWait waiting;
        frame.Timer1_Timer();
    }
    EXPECT_EQ(frame.tickCount(), ticks);
    EXPECT_THROW(frame.close(), ProcessEnded);

    ProductFields alvedon{.id = "S2_1", .checked = "0", .note = "Yrsel", .allergic = "1"};
    alvedon.noteBy = alvedon.takenOutBy = signature;
    alvedon.noteTimestamp = alvedon.takenOutTimestamp = Now;
    alvedon.allergicHistory = "1";
    EXPECT_EQ(
        readBytes(path("data/" + Pnr + ".xml")),
        storedBytes(withoutAddress(patientText(
            Pnr, "Åström", "", {alvedon, waran}, {},
            "<History>" + historyRecord("100001", "1", "Utslag", signature, Now) + "</History>"))));
}

TEST_F(VisitScreensTest, a_product_prescribed_on_the_service_page_stands_first_and_ticked) {
    KorvaloProcess korvalo({"--inbox", path("in")});
    writeSettingsFile({.dataPath = appDir() + "/data/", .server = korvalo.baseUrl()});
    // Alvedon, as the service's catalogue numbers it, prescribed once before.
    storePatient(Pnr, {{.id = "S1_1", .regNr = "19920312"}});
    const auto inboxHoldsAMessage = [this] {
        return std::ranges::any_of(filesIn(path("in")),
                                   [](const std::string &name) { return name.ends_with(".xml"); });
    };
    logIn("demo", "demo123");
    frmShowPatient &view = openPatient(Pnr);
    BrowserProcesses browsers;
    // A second press while the hand-off is on its way does nothing.
    QTimer::singleShot(0, [&view] { QTest::mouseClick(view.cmdSend, Qt::LeftButton); });
    view.cmdSend->click();
    ASSERT_EQ(browsers.started(), 1u);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return browsers.script(0, "!!document.forms['Prescribe']").toBool(); }, 15000));
    browsers.script(0, "document.querySelector('input[name=vnr][value=\"146712\"]').checked = true;"
                       "document.forms['Prescribe'].submit(); true");
    ASSERT_TRUE(QTest::qWaitFor(inboxHoldsAMessage, 15000));
    // Newer than the frozen clock, the message is whole once a second scan finds it unchanged.
    for (int tick = 0; tick < 20; ++tick) {
        Screen<mainApp>().Timer1_Timer();
    }
    EXPECT_FALSE(inboxHoldsAMessage());
    // The refill marks no row and leaves the panel on the product it showed.
    platform::FlexGrid *grid = view.FlexGrid;
    EXPECT_EQ((QStringList{grid->TextMatrix(1, 9), grid->TextMatrix(2, 7), grid->TextMatrix(2, 9)}),
              (QStringList{"19920312", "S1_1", "19920312"}));
    EXPECT_TRUE(grid->CellPictureAt(1, 2) == 1 && grid->CellPictureAt(2, 2) == 2);
    EXPECT_TRUE(grid->selectedRanges().isEmpty());
    EXPECT_EQ(view.Frame1->title(), "Alvedon Tablett 500 mg Orion, ordinerat av: Doktor Ek");
    EXPECT_THAT(said(), IsEmpty());

    // The password went to the page inside the handover document and nowhere else; the browser
    // engine lives in the browser's own process only.
    korvalo.stop();
    EXPECT_EQ(korvalo.output().find("demo123"), std::string::npos);
    EXPECT_THAT(filesHolding(appDir(), "demo123"), IsEmpty());
    EXPECT_EQ(readBytes("/proc/self/maps").find("WebEngine"), std::string::npos);
}

} // namespace
} // namespace mirelo::testing
