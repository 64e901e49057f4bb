#include "app/configfile.h"

#include "support/filesizelimit.h"
#include "support/inchild.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/workingdirectory.h"

#include <QApplication>
#include <QButtonGroup>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMoveEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <sys/stat.h>

namespace
{
const QString NAME = QStringLiteral("config.txt");
const QByteArray HEAD("############################\n"
                      "## Configuration Settings ##\n"
                      "############################\n"
                      "\n"
                      "# Any line starting with '#' is ignored\n"
                      "\n");
} // namespace

/// The preference about updates: its file, and the dialog that asks for it.
class ConfigFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void saysNothingAtFirst();
    void dialogAsksForUpdates();
    void everyTextFits_data();
    void everyTextFits();
    void readsThePreference_data();
    void readsThePreference();
    void whatDoesNotNameItChangesNothing_data();
    void whatDoesNotNameItChangesNothing();
    void firstStartAsks();
    void goesWhereTheWindowGoesAtTheStart();
    void whatIsNoFileAsks_data();
    void whatIsNoFileAsks();
    void whoMayNotReadIsAsked();
    void answerIsWrittenAndTold_data();
    void answerIsWrittenAndTold();
    void anUnusedDialogWritesNothing_data();
    void anUnusedDialogWritesNothing();
    void failedCreationIsTold();
    void failedChangeKeepsThePreference();
    void fullDiskKeepsTheFile_data();
    void fullDiskKeepsTheFile();
    void whoMayNotWriteKeepsTheFile();
    void editingBeginsWithThePreference_data();
    void editingBeginsWithThePreference();
    void buttonsStayAsLastUsed();
    void oneHandlerIsConnected();
    void opensInEachMode();

private:
    QRadioButton *automatic() const { return config->findChild<QRadioButton *>("autoRadio"); }
    QRadioButton *manual() const { return config->findChild<QRadioButton *>("manualRadio"); }
    QPushButton *done() const { return config->findChild<QPushButton *>("done"); }
    /// Reads a file with this content.
    void read(const QByteArray &content)
    {
        folder->write(NAME, content);
        config->readFile();
    }

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<ConfigFile> config;
    std::unique_ptr<QSignalSpy> parsed;
    std::unique_ptr<MessageBoxAnswers> boxes;
};

void ConfigFileTest::init()
{
    folder = std::make_unique<WorkingDirectory>();
    config = std::make_unique<ConfigFile>();
    parsed = std::make_unique<QSignalSpy>(config.get(), &ConfigFile::parsed);
    boxes = std::make_unique<MessageBoxAnswers>();
}

void ConfigFileTest::cleanup()
{
    boxes.reset();
    parsed.reset();
    config.reset();
    folder.reset();
}

void ConfigFileTest::saysNothingAtFirst()
{
    QVERIFY(!config->isValid());
    QVERIFY(!config->isAuto());
    QVERIFY(!config->isVisible());
    QVERIFY(!QFile::exists(NAME));
}

void ConfigFileTest::dialogAsksForUpdates()
{
    QCOMPARE(config->windowTitle(), QStringLiteral("Setup"));
    QCOMPARE(config->size(), QSize(409, 347));
    QVERIFY(!config->isModal());
    auto *title = config->findChild<QLabel *>("title");
    QCOMPARE(title->text(), QStringLiteral("Setup Notifications"));
    QVERIFY(title->frameShape() != QFrame::NoFrame);
    const auto *label = config->findChild<QLabel *>("label");
    QVERIFY(label->wordWrap());
    QCOMPARE(label->text(),
             QStringLiteral("Would you like to get automatic notifications when there is a new "
                            "software or firmware update available? You will have the option to "
                            "confirm the download yourself.\n\nIf you choose to manually check for "
                            "updates, they can be found under the File menu, at \"Check for new "
                            "Firmware...\" and \"Check for new Software...\"."));
    QCOMPARE(automatic()->text(), QStringLiteral("Automatic (Recommended)"));
    QCOMPARE(manual()->text(), QStringLiteral("Manual"));
    QVERIFY(automatic()->isChecked());
    QCOMPARE(config->findChild<QButtonGroup *>("swGroup")->buttons(),
             QList<QAbstractButton *>({automatic(), manual()}));
    QCOMPARE(done()->text(), QStringLiteral("Done"));

    config->show();
    const int titleMiddle = title->width() / 2;
    QCOMPARE(title->grab().toImage().pixelColor(titleMiddle, title->height() - 4),
             QColor(Qt::white));
    const QList<const QWidget *> column{title, label, automatic(), manual(), done()};
    for (int i = 1; i < column.size(); ++i)
        QVERIFY(column[i]->y() >= column[i - 1]->geometry().bottom());
}

void ConfigFileTest::everyTextFits_data()
{
    QTest::addColumn<int>("points");
    QTest::newRow("usual font") << 9;
    QTest::newRow("large font") << 20;
}

void ConfigFileTest::everyTextFits()
{
    QFETCH(int, points);
    QFont font = config->font();
    font.setPointSize(points);
    config->setFont(font);
    config->show();
    QVERIFY(QTest::qWaitForWindowExposed(config.get()));
    const auto *label = config->findChild<QLabel *>("label");
    QVERIFY(label->height() >= label->heightForWidth(label->width()));
    for (const QWidget *widget : {static_cast<QWidget *>(automatic()),
                                  static_cast<QWidget *>(manual()), static_cast<QWidget *>(done())})
        QVERIFY(widget->width() >= widget->sizeHint().width() &&
                widget->height() >= widget->sizeHint().height());
}

void ConfigFileTest::readsThePreference_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isAuto");
    QTest::newRow("true") << QByteArray("automatic_updates true\n") << true;
    QTest::newRow("false") << QByteArray("automatic_updates false\n") << false;
    QTest::newRow("no line end") << QByteArray("automatic_updates false") << false;
    QTest::newRow("with the head") << HEAD + "automatic_updates false\n" << false;
    QTest::newRow("another word") << QByteArray("automatic_updates no\n") << true;
    QTest::newRow("another case") << QByteArray("automatic_updates False\n") << true;
    QTest::newRow("no value") << QByteArray("automatic_updates\n") << true;
    QTest::newRow("two blanks") << QByteArray("automatic_updates  false\n") << true;
    QTest::newRow("words behind the value")
        << QByteArray("automatic_updates false true\n") << false;
    QTest::newRow("tab behind the value") << QByteArray("automatic_updates false\t\n") << true;
    QTest::newRow("the later line wins")
        << QByteArray("automatic_updates true\nautomatic_updates false\n") << false;
    QTest::newRow("the later line wins, the other way round")
        << QByteArray("automatic_updates false\nautomatic_updates true\n") << true;
    QTest::newRow("a comment behind it")
        << QByteArray("automatic_updates true\n   # automatic_updates false\n") << true;
    QTest::newRow("unknown keys") << QByteArray("colour blue\nautomatic_updates false\nsize\n\n")
                                  << false;
    QTest::newRow("other line ends")
        << QByteArray("# a comment\r\nautomatic_updates false\r\n") << false;
    QTest::newRow("letters from everywhere")
        << QByteArray("gr\xc3\xb6\xc3\x9f"
                      "e \xf0\x9f\x94\x8b\nautomatic_updates false\n")
        << false;
}

void ConfigFileTest::readsThePreference()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, isAuto);
    for (const char *before : {"automatic_updates true", "automatic_updates false"}) {
        read(before);
        parsed->clear();
        read(content);
        QCOMPARE(config->isAuto(), isAuto);
        QVERIFY(config->isValid());
        QCOMPARE(parsed->size(), 1);
        QVERIFY(!config->isVisible());
        QCOMPARE(folder->read(NAME), content);
    }
}

void ConfigFileTest::whatDoesNotNameItChangesNothing_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("empty lines") << QByteArray("\n\n");
    QTest::newRow("only comments") << QByteArray("# one\n#two\n");
    QTest::newRow("a comment with blanks before it")
        << QByteArray("   # automatic_updates false\n\t#automatic_updates true\n");
    QTest::newRow("a tab makes one word") << QByteArray("automatic_updates\ttrue\n");
    QTest::newRow("a tab makes one word, false") << QByteArray("automatic_updates\tfalse\n");
    QTest::newRow("a blank before the key")
        << QByteArray(" automatic_updates true\n automatic_updates false\n");
    QTest::newRow("another key") << QByteArray("Automatic_updates true\nautomatic_update false\n");
    QTest::newRow("zeros") << QByteArray(3, '\0');
    QTest::newRow("no text at all") << QByteArray("\xff\xfe\x80\n\x80");
}

void ConfigFileTest::whatDoesNotNameItChangesNothing()
{
    QFETCH(QByteArray, content);
    read(content);
    QVERIFY(!config->isAuto());
    QCOMPARE(parsed->size(), 1);
    for (const bool before : {true, false}) {
        read(before ? "automatic_updates true" : "automatic_updates false");
        parsed->clear();
        read(content);
        QCOMPARE(config->isAuto(), before);
        QCOMPARE(parsed->size(), 1);
    }
}

void ConfigFileTest::firstStartAsks()
{
    config->readFile();
    QVERIFY(config->isVisible());
    QVERIFY(!config->isModal());
    QVERIFY(automatic()->isChecked());
    QCOMPARE(parsed->size(), 0);
    QVERIFY(!config->isValid());
    QVERIFY(!QFile::exists(NAME));
}

void ConfigFileTest::goesWhereTheWindowGoesAtTheStart()
{
    const auto moveTo = [](QWidget *window, const QPoint &place) {
        const QPoint before = window->pos();
        window->move(place);
        QMoveEvent event(place, before);
        QApplication::sendEvent(window, &event);
    };
    QWidget window;
    window.resize(700, 700);
    window.winId(); // known to the desktop, which has not placed it yet
    ConfigFile asking(&window);
    asking.readFile();
    moveTo(&window, QPoint(60, 40));
    const QPoint distance =
        asking.geometry().center() - QRect(window.pos(), window.size()).center();
    QVERIFY2(distance.manhattanLength() < 60,
             qPrintable(QStringLiteral("%1 %2").arg(distance.x()).arg(distance.y())));
    // Later the user moves windows alone.
    const QPoint there = asking.pos();
    moveTo(&window, QPoint(0, 0));
    QCOMPARE(asking.pos(), there);
}

void ConfigFileTest::whatIsNoFileAsks_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"folder", "pipe", "device", "huge"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void ConfigFileTest::whatIsNoFileAsks()
{
    QFETCH(QString, kind);
    if (kind == QLatin1String("folder")) {
        QVERIFY(QDir().mkdir(NAME));
    } else if (kind == QLatin1String("pipe")) {
        QCOMPARE(mkfifo("config.txt", 0600), 0);
    } else if (kind == QLatin1String("device")) {
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), NAME));
    } else {
        QFile file(NAME);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("automatic_updates true\n");
        QVERIFY(file.resize(qint64(1) << 30)); // of holes
    }
    config->readFile();
    QVERIFY(config->isVisible());
    QCOMPARE(parsed->size(), 0);
    QVERIFY(!config->isAuto());
    if (kind == QLatin1String("huge")) {
        done()->click();
        QCOMPARE(folder->read(NAME), HEAD + "automatic_updates true\n");
        return;
    }
    // And nothing can be written there.
    done()->click();
    QTRY_COMPARE(boxes->titles(), QStringList("Cannot Create Config File"));
    QVERIFY(QFileInfo::exists(NAME) && !QFileInfo(NAME).isFile());
    QCOMPARE(parsed->size(), 0);
}

void ConfigFileTest::whoMayNotReadIsAsked()
{
    folder->write(NAME, "automatic_updates true\n");
    QVERIFY(QFile::setPermissions(NAME, QFile::Permissions()));
    QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x5555)));
    const int asked = inChild([this] {
        if (!becomeOrdinaryUser())
            return 2;
        config->readFile();
        return config->isVisible() && !config->isAuto() ? 1 : 0;
    });
    QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));
    QCOMPARE(asked, 1);
}

void ConfigFileTest::answerIsWrittenAndTold_data()
{
    QTest::addColumn<bool>("isAuto");
    QTest::newRow("automatic") << true;
    QTest::newRow("manual") << false;
}

void ConfigFileTest::answerIsWrittenAndTold()
{
    QFETCH(bool, isAuto);
    config->readFile();
    (isAuto ? automatic() : manual())->click();
    bool visibleWhenTold = false;
    QByteArray fileWhenTold;
    connect(config.get(), &ConfigFile::parsed, this, [&] {
        visibleWhenTold = config->isVisible();
        fileWhenTold = folder->read(NAME);
        QCOMPARE(config->isAuto(), isAuto);
    });
    QTest::mouseClick(done(), Qt::LeftButton);
    QCOMPARE(parsed->size(), 1);
    QVERIFY(visibleWhenTold);
    QCOMPARE(fileWhenTold,
             HEAD + (isAuto ? "automatic_updates true\n" : "automatic_updates false\n"));
    QVERIFY(!config->isVisible());
    QVERIFY(config->isValid());
    QCOMPARE(config->isAuto(), isAuto);
    QVERIFY(boxes->seen().isEmpty());
    QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList(NAME));

    // The next start remembers.
    ConfigFile next;
    next.readFile();
    QVERIFY(!next.isVisible());
    QCOMPARE(next.isAuto(), isAuto);
}

void ConfigFileTest::anUnusedDialogWritesNothing_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("close control") << false;
    QTest::newRow("Escape") << true;
}

void ConfigFileTest::anUnusedDialogWritesNothing()
{
    QFETCH(bool, byKey);
    config->readFile();
    manual()->click();
    if (byKey)
        QTest::keyClick(config.get(), Qt::Key_Escape);
    else
        config->close();
    QVERIFY(!config->isVisible());
    QVERIFY(!QFile::exists(NAME));
    QCOMPARE(parsed->size(), 0);
    QVERIFY(!config->isAuto());
    // It is asked again.
    ConfigFile next;
    next.readFile();
    QVERIFY(next.isVisible());
}

void ConfigFileTest::failedCreationIsTold()
{
    config->readFile();
    QVERIFY(QDir().mkdir(NAME));
    QTest::mouseClick(done(), Qt::LeftButton);
    QTRY_COMPARE(boxes->seen().size(), 1);
    const MessageBoxAnswers::Box box = boxes->seen().first();
    QCOMPARE(box.title, QStringLiteral("Cannot Create Config File"));
    QCOMPARE(box.text, QStringLiteral("Unable to create the config file! To check for updates "
                                      "manually, go to File -> Check for new Firmware... and File "
                                      "-> Check for new software..."));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QStringList("OK"));
    QVERIFY(!config->isValid());
    QVERIFY(!config->isAuto());
    QCOMPARE(parsed->size(), 0);
    QVERIFY(config->isVisible());
    QTRY_VERIFY(!config->findChild<QMessageBox *>());

    // With the obstacle away the same dialog does it.
    QVERIFY(QDir().rmdir(NAME));
    QTest::mouseClick(done(), Qt::LeftButton);
    QCOMPARE(parsed->size(), 1);
    QVERIFY(config->isAuto());
    QVERIFY(!config->isVisible());
}

void ConfigFileTest::failedChangeKeepsThePreference()
{
    read("automatic_updates true\n");
    QVERIFY(QFile::remove(NAME));
    QVERIFY(QDir().mkdir(NAME));
    config->editFile();
    manual()->click();
    parsed->clear();
    QTest::mouseClick(done(), Qt::LeftButton);
    QTRY_COMPARE(boxes->seen().size(), 1);
    const MessageBoxAnswers::Box box = boxes->seen().first();
    QCOMPARE(box.title, QStringLiteral("Cannot Write To Config File"));
    QCOMPARE(box.text, QStringLiteral("Unable to overwrite the config file! To check for updates "
                                      "manually, go to File -> Check for new Firmware... and File "
                                      "-> Check for new software..."));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QVERIFY(!config->isValid());
    QVERIFY(config->isAuto());
    QCOMPARE(parsed->size(), 0);
    QVERIFY(config->isVisible());
}

void ConfigFileTest::fullDiskKeepsTheFile_data()
{
    QTest::addColumn<int>("room");
    QTest::newRow("nothing fits") << 0;
    QTest::newRow("all but the last byte") << HEAD.size() + 23;
}

void ConfigFileTest::fullDiskKeepsTheFile()
{
    QFETCH(int, room);
    const QByteArray old("# mine\nautomatic_updates true\n");
    read(old);
    parsed->clear();
    config->editFile();
    manual()->click();
    {
        const FileSizeLimit limit(static_cast<rlim_t>(room));
        done()->click();
    }
    QTRY_COMPARE(boxes->titles(), QStringList("Cannot Write To Config File"));
    QCOMPARE(folder->read(NAME), old);
    QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList(NAME));
    QVERIFY(config->isAuto());
    QCOMPARE(parsed->size(), 0);
    const FileSizeLimit limit(HEAD.size() + 24);
    done()->click();
    QCOMPARE(folder->read(NAME), HEAD + "automatic_updates false\n");
}

void ConfigFileTest::whoMayNotWriteKeepsTheFile()
{
    const QByteArray old("automatic_updates true\n");
    read(old);
    QVERIFY(QFile::setPermissions(NAME, QFile::Permissions(0x4444)));
    QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));
    const int kept = inChild([this] {
        if (!becomeOrdinaryUser())
            return 2;
        config->editFile();
        manual()->click();
        done()->click();
        return config->isAuto() && config->findChild<QMessageBox *>() ? 1 : 0;
    });
    QCOMPARE(kept, 1);
    QCOMPARE(folder->read(NAME), old);
}

void ConfigFileTest::editingBeginsWithThePreference_data()
{
    answerIsWrittenAndTold_data();
}

void ConfigFileTest::editingBeginsWithThePreference()
{
    QFETCH(bool, isAuto);
    read(isAuto ? "automatic_updates true\n" : "automatic_updates false\n");
    parsed->clear();
    config->editFile();
    QVERIFY(config->isVisible());
    QVERIFY(!config->isModal());
    QCOMPARE(automatic()->isChecked(), isAuto);
    QCOMPARE(manual()->isChecked(), !isAuto);
    QCOMPARE(parsed->size(), 0);
    (isAuto ? manual() : automatic())->click();
    QCOMPARE(config->isAuto(), isAuto);
    done()->click();
    QCOMPARE(config->isAuto(), !isAuto);
    QCOMPARE(parsed->size(), 1);
    QVERIFY(!config->isVisible());
    QCOMPARE(folder->read(NAME),
             HEAD + (isAuto ? "automatic_updates false\n" : "automatic_updates true\n"));
}

void ConfigFileTest::buttonsStayAsLastUsed()
{
    read("automatic_updates true\n");
    config->editFile();
    manual()->click();
    config->close();
    QVERIFY(config->isAuto());
    config->editFile();
    QVERIFY(manual()->isChecked());
}

void ConfigFileTest::oneHandlerIsConnected()
{
    QVERIFY(QDir().mkdir(NAME));
    config->readFile();
    config->readFile();
    done()->click();
    QTRY_COMPARE(boxes->titles(), QStringList("Cannot Create Config File"));
    boxes->clear();
    config->editFile();
    config->editFile();
    done()->click();
    QTRY_COMPARE(boxes->titles(), QStringList("Cannot Write To Config File"));
    boxes->clear();
    QVERIFY(QDir().rmdir(NAME));
    config->readFile();
    done()->click();
    QCOMPARE(parsed->size(), 1);
    QVERIFY(boxes->seen().isEmpty());
}

void ConfigFileTest::opensInEachMode()
{
    QVERIFY(!config->openFile(ConfigFile::ReadOnly));
    folder->write(NAME, "automatic_updates true\n");
    QVERIFY(config->openFile(ConfigFile::ReadOnly));
    config->parseFile();
    QVERIFY(config->isAuto());
    folder->write(NAME, "automatic_updates false\n");
    QVERIFY(config->openFile(ConfigFile::ReadWrite));
    config->parseFile();
    QVERIFY(!config->isAuto());
    QVERIFY(config->openFile(ConfigFile::WriteOnly));
    QVERIFY(config->writeData());
    QVERIFY(config->isAuto());
    QCOMPARE(int(ConfigFile::ReadWrite), 0);
    QCOMPARE(int(ConfigFile::ReadOnly), 1);
    QCOMPARE(int(ConfigFile::WriteOnly), 2);
}

QTEST_MAIN(ConfigFileTest)
#include "tst_configfile.moc"
