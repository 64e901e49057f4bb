#include "firmware/velantorfirmwaretoolwindow.h"

#include "support/fakeuploader.h"
#include "support/messageboxanswers.h"
#include "support/pretendedports.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QtTest>

#include <memory>

using FirmwareTool::VelantorFirmwareToolWindow;

namespace
{

/// A desktop's own font as long as it lives.
struct DesktopFont {
    explicit DesktopFont(const QFont &font) { QApplication::setFont(font); }
    ~DesktopFont() { QApplication::setFont(before); }
    const QFont before = QApplication::font();
};

} // namespace

/// What the window of the firmware tool and its help show, and how they are laid out.
class FirmwareToolFormTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void showsItselfInFrontOfAll();
    void textsOfTheForm_data();
    void textsOfTheForm();
    void menusHoldTheirEntriesInOrder();
    void nothingIsUnderWayAtFirst();
    void tabFollowsTheUser();
    void showsAllTextsWhole_data();
    void showsAllTextsWhole();
    void rowsAreAligned();
    void marksMoveNothing();
    void aLongNameGivesWay();
    void helpTellsTheSteps();
    void helpIsWholeInAnyFont_data();
    void helpIsWholeInAnyFont();

private:
    template <typename T> T *widget(const char *name) const
    {
        T *found = tool->findChild<T *>(name);
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    void open() { tool = new VelantorFirmwareToolWindow(owner.get()); }

    std::unique_ptr<FakeUploader> uploader;
    std::unique_ptr<QWidget> owner;
    QPointer<VelantorFirmwareToolWindow> tool;
};

void FirmwareToolFormTest::init()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0")};
    uploader = std::make_unique<FakeUploader>();
    owner = std::make_unique<QWidget>();
}

void FirmwareToolFormTest::cleanup()
{
    owner.reset();
    QVERIFY(!tool);
    uploader.reset();
}

void FirmwareToolFormTest::showsItselfInFrontOfAll()
{
    open();
    QVERIFY(tool->isVisible());
    QVERIFY(tool->isWindow());
    QCOMPARE(tool->parentWidget(), owner.get());
    QCOMPARE(tool->windowTitle(), QStringLiteral("Velantor Firmware Tool"));
    QCOMPARE(tool->windowModality(), Qt::ApplicationModal);
    QVERIFY(tool->testAttribute(Qt::WA_DeleteOnClose));
}

void FirmwareToolFormTest::textsOfTheForm_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::newRow("help") << "actionHelp"
                          << "Getting Started...";
    QTest::newRow("load") << "actionLoad_File"
                          << "Load File...";
    QTest::newRow("exit") << "actionExit"
                          << "Exit";
    QTest::newRow("erase") << "eraseLable"
                           << "Erasing Flash";
    QTest::newRow("load row") << "loadingLable"
                              << "Loading File";
    QTest::newRow("upload") << "uploadingLabel"
                            << "Uploading";
    QTest::newRow("verify") << "verifyingLabel"
                            << "Verifying";
    QTest::newRow("profiles") << "deleteProfilesCB"
                              << "Overwrite Profile Data";
    QTest::newRow("browse") << "selectFileButton"
                            << "Browse...";
    QTest::newRow("file") << "fileSelectedLabel"
                          << "No File Selected";
    QTest::newRow("submit") << "submitButton"
                            << "Update Firmware";
    QTest::newRow("close") << "closeButton"
                           << "Close";
    for (const char *mark : {"eraseFlashCM", "loadFileCM", "uploadCM", "verifyCM"})
        QTest::newRow(mark) << mark << "";
}

void FirmwareToolFormTest::textsOfTheForm()
{
    QFETCH(QString, name);
    open();
    auto *object = tool->findChild<QObject *>(name);
    QVERIFY(object);
    QTEST(object->property("text").toString(), "text");
    QCOMPARE(widget<QCheckBox>("deleteProfilesCB")->toolTip(),
             QStringLiteral("Check this if you are getting an \"Invalid Type\" error when "
                            "attempting to connect"));
}

void FirmwareToolFormTest::menusHoldTheirEntriesInOrder()
{
    open();
    QStringList found;
    for (const QAction *menu : tool->menuBar()->actions()) {
        found.append(menu->menu()->objectName() + QStringLiteral(": ") + menu->text());
        for (const QAction *entry : menu->menu()->actions())
            found.append(entry->isSeparator() ? QStringLiteral("--") : entry->objectName());
    }
    QCOMPARE(found,
             QStringList({QStringLiteral("menuFile: File"), QStringLiteral("actionLoad_File"),
                          QStringLiteral("--"), QStringLiteral("actionExit"),
                          QStringLiteral("menuHelp: Help"), QStringLiteral("actionHelp")}));
}

void FirmwareToolFormTest::nothingIsUnderWayAtFirst()
{
    open();
    for (const char *bar : {"eraseFlashPB", "loadFilePB", "uploadPB", "verifyPB"}) {
        QCOMPARE(widget<QProgressBar>(bar)->minimum(), 0);
        QCOMPARE(widget<QProgressBar>(bar)->maximum(), 100);
        QCOMPARE(widget<QProgressBar>(bar)->value(), 0);
    }
    for (const char *mark : {"eraseFlashCM", "loadFileCM", "uploadCM", "verifyCM"})
        QVERIFY(widget<QLabel>(mark)->isVisible());
    QVERIFY(!widget<QCheckBox>("deleteProfilesCB")->isChecked());
    QVERIFY(widget<QPushButton>("submitButton")->isEnabled());
    QVERIFY(widget<QPushButton>("closeButton")->isEnabled());
    QCOMPARE(widget<QLineEdit>("fileInputBox")->text(), QString());
    QVERIFY(uploader->runs().isEmpty());
}

void FirmwareToolFormTest::tabFollowsTheUser()
{
    open();
    tool->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(tool));
    QStringList order;
    for (int step = 0; step < 6; ++step) {
        order.append(tool->focusWidget()->objectName());
        QTest::keyClick(tool->focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(order,
             QStringList({QStringLiteral("selectFileButton"), QStringLiteral("fileInputBox"),
                          QStringLiteral("comPortsDropdown"), QStringLiteral("deleteProfilesCB"),
                          QStringLiteral("submitButton"), QStringLiteral("closeButton")}));
    QCOMPARE(tool->focusWidget()->objectName(), QStringLiteral("selectFileButton"));
}

void FirmwareToolFormTest::showsAllTextsWhole_data()
{
    QTest::addColumn<QFont>("font");
    QTest::newRow("the suite's") << QFont(QStringLiteral("Arial"), 9);
    QTest::newRow("the desktop's") << QApplication::font();
    QTest::newRow("wide") << QFont(QStringLiteral("DejaVu Sans"), 14, QFont::Bold);
    QTest::newRow("huge") << QFont(QStringLiteral("DejaVu Sans"), 22);
}

void FirmwareToolFormTest::showsAllTextsWhole()
{
    QFETCH(QFont, font);
    const DesktopFont desktop(font);
    open();
    QVERIFY(QTest::qWaitForWindowExposed(tool));
    for (QWidget *shown : tool->centralWidget()->findChildren<QWidget *>()) {
        if (!shown->property("text").isValid() || shown == widget<QLineEdit>("fileInputBox"))
            continue;
        if (shown->objectName() == QStringLiteral("fileSelectedLabel"))
            continue; // gives way
        QVERIFY2(shown->width() >= shown->sizeHint().width() &&
                     shown->height() >= shown->sizeHint().height(),
                 qPrintable(shown->objectName()));
        QVERIFY2(tool->centralWidget()->rect().contains(
                     QRect(shown->mapTo(tool->centralWidget(), QPoint()), shown->size())),
                 qPrintable(shown->objectName()));
    }
}

void FirmwareToolFormTest::rowsAreAligned()
{
    open();
    QVERIFY(QTest::qWaitForWindowExposed(tool));
    const int left = widget<QWidget>("eraseFlashPB")->x();
    for (const char *name : {"fileInputBox", "fileSelectedLabel", "comPortsDropdown",
                             "deleteProfilesCB", "loadFilePB", "uploadPB", "verifyPB"})
        QVERIFY2(widget<QWidget>(name)->x() == left, name);
    const int right = widget<QWidget>("eraseFlashPB")->geometry().right();
    for (const char *name : {"loadFilePB", "uploadPB", "verifyPB"})
        QVERIFY2(widget<QWidget>(name)->geometry().right() == right, name);
    QCOMPARE(widget<QComboBox>("comPortsDropdown")->geometry().right(),
             widget<QLineEdit>("fileInputBox")->geometry().right());
}

void FirmwareToolFormTest::marksMoveNothing()
{
    open();
    QVERIFY(QTest::qWaitForWindowExposed(tool));
    const QRect before = widget<QWidget>("eraseFlashPB")->geometry();
    for (const char *mark : {"eraseFlashCM", "loadFileCM", "uploadCM", "verifyCM"})
        widget<QLabel>(mark)->setText(QString(QChar(0x221A)));
    QApplication::processEvents();
    tool->centralWidget()->layout()->activate();
    QCOMPARE(widget<QWidget>("eraseFlashPB")->geometry(), before);
}

void FirmwareToolFormTest::aLongNameGivesWay()
{
    open();
    QVERIFY(QTest::qWaitForWindowExposed(tool));
    const QSize before = tool->size();
    const QSize least = tool->minimumSizeHint();
    const QString name = QString(300, QLatin1Char('W')) + QStringLiteral(".velantor");
    widget<QLineEdit>("fileInputBox")->setText(name);
    tool->on_fileInputBox_textEdited(name);
    QApplication::processEvents();
    QCOMPARE(tool->size(), before);
    QCOMPARE(tool->minimumSizeHint(), least);
    QCOMPARE(widget<QLabel>("fileSelectedLabel")->text(),
             QStringLiteral("File Selected : ") + name);
}

void FirmwareToolFormTest::helpTellsTheSteps()
{
    open();
    MessageBoxAnswers user;
    int width = 0;
    int height = 0;
    QWidget *over = nullptr;
    user.push([&](QMessageBox *box) {
        over = box->parentWidget();
        width = box->width();
        height = box->height();
        box->close();
    });
    tool->findChild<QAction *>(QStringLiteral("actionHelp"))->trigger();
    QCOMPARE(user.seen().size(), 1);
    const MessageBoxAnswers::Box box = user.seen().first();
    QCOMPARE(over, tool.data());
    QVERIFY(box.modal);
    QCOMPARE(box.title, QStringLiteral("Basic Usage"));
    QCOMPARE(box.icon, QMessageBox::NoIcon);
    QVERIFY2(width >= 550, qPrintable(QString::number(width)));
    QVERIFY(height <= QGuiApplication::primaryScreen()->size().height());
    const QString heading =
        QStringLiteral("<b><font size = \"5\">Velantor Firmware Tool Basic Usage:</font></b>");
    QVERIFY(box.text.startsWith(heading));
    QVERIFY(box.text.mid(heading.size()).startsWith(QStringLiteral("<font size = \"4\"><ol><li>")));
    QVERIFY(box.text.endsWith(QStringLiteral("</li></ol></font>")));
    QStringList steps;
    for (const QString &part : box.text.split(QStringLiteral("<li>"), Qt::SkipEmptyParts).mid(1))
        steps.append(part.section(QStringLiteral("</li>"), 0, 0));
    QCOMPARE(
        steps,
        QStringList(
            {QStringLiteral(
                 "Connect the USB end of the USB->TTL programming cable to your computer, and TRS "
                 "end (1/8\" audio plug) to the programming adapter cable of the Velantor."),
             QStringLiteral(
                 "Put the Velantor in bootloader mode. This is accomplished by leaving the "
                 "Velantor powered off for 30 seconds, and then pressing and holding the lower "
                 "button when AC power is applied. If bootloader mode if reached before powering "
                 "on the Velantor, the OLED display screen will be completely blank."),
             QStringLiteral("Select the firmware file to upload via the \"Browse...\" button of "
                            "the software tool."),
             QStringLiteral(
                 "Select the correct COM port from the drop down list. It will default to the "
                 "highest number COM port available, which is usually correct. If in doubt, you "
                 "can check the windows device manager and expand the \"Ports (COM & LPT)\" field "
                 "to see which COM port number is associated with the USB Serial Port."),
             QStringLiteral(
                 "With the Velantor plugged in and in bootloader mode, a firmware file selected, "
                 "and the correct COM port chosen, press the \"Update Firmware\" button. The "
                 "progress bars will show the upload process as the Velantor is erased, "
                 "repogrammed, and then verified. Do not unplug the Velantor until this process "
                 "is complete.")}));
}

void FirmwareToolFormTest::helpIsWholeInAnyFont_data()
{
    showsAllTextsWhole_data();
}

void FirmwareToolFormTest::helpIsWholeInAnyFont()
{
    QFETCH(QFont, font);
    const DesktopFont desktop(font);
    open();
    MessageBoxAnswers user;
    QRect inBox;
    QRect box;
    bool reachesItsEnd = false;
    user.push([&](QMessageBox *shown) {
        auto *text = shown->findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
        const auto *area = shown->findChild<QScrollArea *>();
        const QWidget *seen = area ? static_cast<const QWidget *>(area) : text;
        box = shown->rect();
        inBox = QRect(seen->mapTo(shown, QPoint()), seen->size());
        // No line is longer than its place, and the last one can be scrolled to.
        reachesItsEnd = text->height() >= text->heightForWidth(text->width()) &&
                        (!area || text->width() <= area->viewport()->width());
        shown->close();
    });
    tool->helpProgram();
    QVERIFY(box.contains(inBox));
    QVERIFY(reachesItsEnd);
    QVERIFY(box.height() <= QGuiApplication::primaryScreen()->size().height());
}

QTEST_MAIN(FirmwareToolFormTest)
#include "tst_firmwaretoolform.moc"
