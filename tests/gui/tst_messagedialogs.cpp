#include "app/applicationglobalmap.h"
#include "app/buildinfo.h"
#include "app/messagedialogs.h"
#include "support/messageboxanswers.h"

#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTest>
#include <QWidget>

#include <functional>

namespace
{
using Show = std::function<int(QWidget *)>;

const QString downloads =
    QStringLiteral("https://shop.example/downloads/?file=VelantorProfileEditor_Linux");
} // namespace

Q_DECLARE_METATYPE(Show)
Q_DECLARE_METATYPE(QMessageBox::Icon)
Q_DECLARE_METATYPE(QMessageBox::StandardButton)

class MessageDialogsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void boxes_data();
    void boxes();
    void continueWithoutProfiles_data();
    void continueWithoutProfiles();
    void manyNamesStayOnTheScreen_data();
    void manyNamesStayOnTheScreen();
    void enterRemovesNoProfiles();
    void namesNoMoreThanABoxCanTake();
    void askDeleteAll_data();
    void askDeleteAll();
    void askAppend_data();
    void askAppend();
    void help();
    void about_data();
    void about();
    void boxesEndWithoutParent();
};

void MessageDialogsTest::initTestCase()
{
    qputenv("VELANTOR_SITE", "https://shop.example");
}

void MessageDialogsTest::boxes_data()
{
    QTest::addColumn<Show>("show");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QMessageBox::Icon>("icon");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, Show show, const char *title, QMessageBox::Icon icon,
                        const QString &text) {
        QTest::newRow(name) << show << QString::fromLatin1(title) << icon << text;
    };
    using M = MessageDialogs;
    row(
        "incompatible profiles",
        [](QWidget *p) {
            return M::incompatibleProfilesNotImported(
                p, QStringLiteral("24"), {QStringLiteral("A - B"), QStringLiteral("C - D")});
        },
        "Incompatible Profiles", QMessageBox::Information,
        QStringLiteral("The following profiles aren't compatible with the 24V Velantor's hardware "
                       "limits. \n\nA - B\nC - D\n\nThey can not be imported."));
    row("firmware downloaded", &M::firmwareDownloaded, "New Firmware!", QMessageBox::Information,
        QStringLiteral("The latest firmware has been downloaded. Please go to File -->Update "
                       "Velantor Firmware... to flash it."));
    row("software update", &M::softwareUpdateNeeded, "New Software Available!",
        QMessageBox::Information,
        QStringLiteral("There is a new software upgrade available! Please click <a href = \"") +
            downloads + QStringLiteral("\">here</a> to download the latest version."));
    row(
        "bundle too old",
        [](QWidget *p) {
            return M::currentBundleTooOld(p, VersionString(QStringLiteral("1.006")),
                                          VersionString(QStringLiteral("1.105")));
        },
        "Velantor Bundle Update Required", QMessageBox::Information,
        QStringLiteral("Velantor Software Suite version 1.105 requires Velantor Bundle version "
                       "1.006 or higher. Please reinstall the Software Suite."));
    row(
        "software too old",
        [](QWidget *p) {
            return M::currentSoftwareTooOld(p, QStringLiteral("1.200"),
                                            VersionString(QStringLiteral("2.1")));
        },
        "Software Update Required", QMessageBox::Information,
        QStringLiteral("Velantor Bundle v1.200 requires Velantor Software Suite v2.1 or higher. "
                       "You currently have v1.105. Download it from:<br/><center><a href = \"") +
            downloads + QStringLiteral("\">") + downloads + QStringLiteral("</a></center>"));
    row("main folder", &M::mainFolderNotFound, "Installation Error", QMessageBox::Critical,
        QStringLiteral("The folder Velantor Software Suite Files could not be found. Please try "
                       "reinstalling the program."));
    row("schema missing", &M::ssFileMissing, "Installation Error", QMessageBox::Critical,
        QStringLiteral("The file \"master.ss\" could not be found.\n\nPlease try reinstalling the "
                       "program. If that doesn't work the \".velantor\" bundle might be corrupted, "
                       "try looking for a more recent version of software."));
    row("uploader missing", &M::vexaMissing, "Installation Error", QMessageBox::Critical,
        QStringLiteral("The executable vexa.bin could not be found. Please try reinstalling the "
                       "program."));
    row("device table missing", &M::deviceTxtMissing, "Installation Error", QMessageBox::Critical,
        QStringLiteral("The file device.txt could not be found. Please try reinstalling the "
                       "program.If that doesn't work the .velantor bundle might be corrupted, "
                       "please find a new one."));
    row("image not read", &M::hexImportReadError, "Import from HEX status", QMessageBox::Warning,
        QStringLiteral("An error occured while importing profiles from HEX. Please try again."));
    row("image checksum", &M::hexImportChecksumError, "Import from HEX status",
        QMessageBox::Warning,
        QStringLiteral("An error occured while importing profiles from HEX. Please try again. "
                       "(Checksum)"));
    row("image type", &M::hexImportTypeError, "Import from HEX status", QMessageBox::Warning,
        QStringLiteral("An error occured while importing profiles from HEX. Please try again. "
                       "(Invalid Type Field)"));
    row("xml not read", &M::xmlImportReadError, "Import from XML status", QMessageBox::Warning,
        QStringLiteral("Failed to read the XML file specified. Please try again."));
    row("firmware check", &M::firmwareCheckerError, "Error!", QMessageBox::Warning,
        QStringLiteral("An error occured while checking for firmware updates. Please make sure you "
                       "are connected to the internet, and try again."));
    row("another charger", &M::velantorNotSameAsConnected, "Velantor Not Recognized",
        QMessageBox::Warning,
        QStringLiteral("The Velantor you are attempting to save to doesn't match either the "
                       "hardware version or the barcode of the Velantor previously "
                       "connected!<br><br>Aborting write!"));
}

void MessageDialogsTest::boxes()
{
    QFETCH(Show, show);
    QWidget parent;
    MessageBoxAnswers answers;
    QWidget *parentOfBox = nullptr;
    answers.push([&](QMessageBox *box) {
        parentOfBox = box->parentWidget();
        QVERIFY(box->button(QMessageBox::Ok));
        box->button(QMessageBox::Ok)->click();
    });

    QCOMPARE(show(&parent), int(QMessageBox::Ok));
    QCOMPARE(answers.seen().size(), 1);
    const MessageBoxAnswers::Box box = answers.seen().first();
    QTEST(box.title, "title");
    QTEST(box.icon, "icon");
    QTEST(box.text, "text");
    QCOMPARE(box.buttons.size(), 1);
    QVERIFY(box.modal);
    QCOMPARE(parentOfBox, &parent);
    QVERIFY(parent.findChildren<QMessageBox *>().isEmpty());
}

void MessageDialogsTest::continueWithoutProfiles_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("press");
    QTest::newRow("yes") << QMessageBox::Yes;
    QTest::newRow("no") << QMessageBox::No;
    QTest::newRow("closed") << QMessageBox::NoButton;
}

void MessageDialogsTest::continueWithoutProfiles()
{
    QFETCH(QMessageBox::StandardButton, press);
    QWidget parent;
    MessageBoxAnswers answers;
    if (press == QMessageBox::NoButton)
        answers.pushClose();
    else
        answers.push(press);

    const int result = MessageDialogs::continueWithoutIncompatibleProfiles(
        &parent, QStringLiteral("48"), {QStringLiteral("A - B"), QStringLiteral("C - D")});
    QCOMPARE(result, int(press == QMessageBox::Yes ? QMessageBox::Yes : QMessageBox::No));
    const MessageBoxAnswers::Box box = answers.seen().value(0);
    QCOMPARE(box.title, QStringLiteral("Incompatible Profiles"));
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.text,
             QStringLiteral("The following profiles aren't compatible with the 48V Velantor's "
                            "hardware limits. \n\nA - B\nC - D\n\nThey must be removed. Are you "
                            "sure you would like to continue?"));
    QCOMPARE(box.buttons.size(), 2);
    QVERIFY(parent.findChildren<QMessageBox *>().isEmpty());
}

void MessageDialogsTest::manyNamesStayOnTheScreen_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("scrolls");
    QTest::newRow("a delivered set") << 17 << false;
    QTest::newRow("a large file") << 5000 << true;
}

void MessageDialogsTest::manyNamesStayOnTheScreen()
{
    QFETCH(int, count);
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(QStringLiteral("Profile %1 - x").arg(i));
    MessageBoxAnswers answers;
    QRect place;
    bool scrolls = false;
    bool buttonInSight = false;
    answers.push([&](QMessageBox *box) {
        place = box->geometry();
        const auto *area = box->findChild<QScrollArea *>();
        scrolls = area && area->isVisible();
        const QAbstractButton *button = box->buttons().first();
        buttonInSight = box->rect().contains(button->geometry());
        box->close();
    });
    MessageDialogs::incompatibleProfilesNotImported(nullptr, "48", names);
    QTEST(scrolls, "scrolls");
    QVERIFY(place.height() < QGuiApplication::primaryScreen()->availableGeometry().height());
    QVERIFY(buttonInSight);
    QVERIFY(answers.seen().first().text.contains("\nProfile " + QString::number(count - 1)));
}

void MessageDialogsTest::enterRemovesNoProfiles()
{
    MessageBoxAnswers answers;
    answers.push([](QMessageBox *box) {
        QVERIFY(box->button(QMessageBox::No) && box->button(QMessageBox::Yes));
        QTest::keyClick(box, Qt::Key_Return);
    });
    QCOMPARE(MessageDialogs::continueWithoutIncompatibleProfiles(nullptr, QStringLiteral("72"),
                                                                 {QStringLiteral("A - B")}),
             int(QMessageBox::No));
}

void MessageDialogsTest::namesNoMoreThanABoxCanTake()
{
    const QString head = QStringLiteral("The following profiles aren't compatible with the 48V "
                                        "Velantor's hardware limits. \n\n");
    const QString tail = QStringLiteral("\nThey can not be imported.");
    QStringList names;
    while (names.size() < 5000)
        names.append(QString::number(names.size()));
    const QString shown = names.join('\n') + '\n';
    MessageBoxAnswers answers;
    MessageDialogs::incompatibleProfilesNotImported(nullptr, QStringLiteral("48"), names);
    QCOMPARE(answers.seen().last().text, head + shown + tail);
    names += {QStringLiteral("x"), QStringLiteral("y")};
    MessageDialogs::incompatibleProfilesNotImported(nullptr, QStringLiteral("48"), names);
    QCOMPARE(answers.seen().last().text, head + shown + "... and 2 more\n" + tail);
}

void MessageDialogsTest::askDeleteAll_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QMessageBox::StandardButton>("press");
    QTest::addColumn<int>("expected");
    QTest::newRow("yes") << Qt::Key_unknown << QMessageBox::Yes << int(QMessageBox::Yes);
    QTest::newRow("no") << Qt::Key_unknown << QMessageBox::No << int(QMessageBox::No);
    QTest::newRow("enter") << Qt::Key_Return << QMessageBox::NoButton << int(QMessageBox::No);
    QTest::newRow("escape") << Qt::Key_Escape << QMessageBox::NoButton << int(QMessageBox::No);
}

void MessageDialogsTest::askDeleteAll()
{
    QFETCH(Qt::Key, key);
    QFETCH(QMessageBox::StandardButton, press);
    MessageBoxAnswers answers;
    answers.push([&](QMessageBox *box) {
        if (key == Qt::Key_unknown)
            box->button(press)->click();
        else
            QTest::keyClick(box, key);
    });

    QTEST(MessageDialogs::askDeleteAllProfiles(nullptr), "expected");
    const MessageBoxAnswers::Box box = answers.seen().value(0);
    QCOMPARE(box.title, QStringLiteral("Delete All Profiles?"));
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.text,
             QStringLiteral("This will remove all profiles from the profile list. This operation "
                            "cannot be undone. Continue?"));
    QCOMPARE(box.buttons.size(), 2);
}

void MessageDialogsTest::askAppend_data()
{
    QTest::addColumn<QString>("press");
    QTest::addColumn<int>("expected");
    QTest::newRow("add") << QStringLiteral("&Add Profiles") << 16384;
    QTest::newRow("replace") << QStringLiteral("&Replace Profiles") << 65536;
    QTest::newRow("closed") << QString() << 65536;
}

void MessageDialogsTest::askAppend()
{
    QFETCH(QString, press);
    MessageBoxAnswers answers;
    if (press.isEmpty())
        answers.pushClose();
    else
        answers.push(press);

    QTEST(MessageDialogs::askAppendProfiles(nullptr), "expected");
    const MessageBoxAnswers::Box box = answers.seen().value(0);
    QCOMPARE(box.title, QStringLiteral("Add Profiles to List?"));
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.text, QStringLiteral("Do you want to add the imported profiles to the current "
                                      "list of profiles, or replace them?<br>"));
    QCOMPARE(box.buttons,
             QStringList({QStringLiteral("&Add Profiles"), QStringLiteral("&Replace Profiles")}));
}

void MessageDialogsTest::help()
{
    MessageBoxAnswers answers;
    int width = 0;
    answers.push([&](QMessageBox *box) {
        width = box->width();
        box->button(QMessageBox::Ok)->click();
    });

    QCOMPARE(MessageDialogs::helpVelantorProfileEditor(nullptr), int(QMessageBox::Ok));
    const MessageBoxAnswers::Box box = answers.seen().value(0);
    QCOMPARE(box.title, QStringLiteral("Basic Usage"));
    QCOMPARE(box.icon, QMessageBox::NoIcon);
    QVERIFY(box.text.startsWith(
        QStringLiteral("<b><font size = \"5\">Velantor Software Suite Basic Usage:</font></b><font "
                       "size = \"4\">")));
    QVERIFY(box.text.endsWith(QStringLiteral("</font>")));
    QVERIFY(box.text.contains(QStringLiteral("Notes:")));
    QVERIFY(box.text.contains(QStringLiteral("<a href = \"https://shop.example/velantor")));
    QCOMPARE(box.text.section(QStringLiteral("</ol>"), 0, 0).count(QStringLiteral("</li><br>")), 4);
    QVERIFY2(width >= 550, qPrintable(QString::number(width)));
}

void MessageDialogsTest::about_data()
{
    QTest::addColumn<QString>("bundle");
    QTest::newRow("bundle in use") << QStringLiteral("1.039");
    QTest::newRow("no bundle") << QString();
}

void MessageDialogsTest::about()
{
    QFETCH(QString, bundle);
    ApplicationGlobalMap::putString(QStringLiteral("bundle_version"), bundle);
    MessageBoxAnswers answers;
    answers.push(QMessageBox::Ok);

    QCOMPARE(MessageDialogs::aboutVelantorProfileEditor(nullptr), int(QMessageBox::Ok));
    const MessageBoxAnswers::Box box = answers.seen().value(0);
    QCOMPARE(box.title, QStringLiteral("About Velantor Software Suite"));
    QCOMPARE(box.icon, QMessageBox::NoIcon);
    const QString blanks(22, QLatin1Char(' '));
    const QString start = QStringLiteral("<center><b>Velantor Software Suite<br>") + blanks +
                          QStringLiteral("Build: v1.105 - RELEASE - ") + compilationDate() +
                          QStringLiteral("<br><br></b>") + blanks +
                          QStringLiteral("Velantor Bundle Version: v") + bundle +
                          QStringLiteral("<br><br>");
    QCOMPARE(box.text.left(start.size()), start);
    const QString end = QStringLiteral(
        "<br>For more information and support, visit <a href = "
        "\"https://shop.example/velantor\">https://shop.example/velantor</a></center>");
    QCOMPARE(box.text.right(end.size()), end);
    QVERIFY(box.text.size() > start.size() + end.size());
}

void MessageDialogsTest::boxesEndWithoutParent()
{
    MessageBoxAnswers answers;
    answers.pushClose();
    QCOMPARE(MessageDialogs::firmwareDownloaded(nullptr), int(QMessageBox::Ok));
}

QTEST_MAIN(MessageDialogsTest)
#include "tst_messagedialogs.moc"
