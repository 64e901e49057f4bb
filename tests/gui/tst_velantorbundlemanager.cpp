#include "bundles/velantorbundlemanager.h"

#include "app/applicationglobalmap.h"
#include "bundles/velantorbundle.h"
#include "support/bundlemember.h"
#include "support/messageboxanswers.h"
#include "support/workingdirectory.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QWidget>

#include <memory>
#include <sys/stat.h>

namespace
{
QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, int(size));
}

const QString limit = "999.999"_s;
const QString unpackRun = "--unpack"_s;

QByteArray header(const QByteArray &version, const QByteArray &minSoftware)
{
    return "...\nVERSION = " + version + "\nMIN_SOFTWARE_VERSION_REQUIRED = " + minSoftware +
           "\n...\n";
}

const QByteArray tables = bundleMember("device_overwrite_profiles.txt", "overwrite\n") +
                          bundleMember("device_keep_profiles.txt", "keep\n");

QString bundleVersion()
{
    return ApplicationGlobalMap::getString("bundle_version"_s);
}
} // namespace

class VelantorBundleManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void picksTheNewestBelowTheLimit_data();
    void picksTheNewestBelowTheLimit();
    void passesOverWhatIsNoBundle();
    void tellsThatThereAreNoBundles();
    void findsTheBundle_data();
    void findsTheBundle();
    void dialogsBelongToTheWindow();
    void tooNewIsToldOnceForTheNewest();
    void tooNewAloneEndsWithNoBundles();
    void outdatedBelowTooNewIsNotOffered();
    void theOfferNamesItself();
    void closingTheOfferDeclines();
    void acceptingTheOfferWithNothingNewAsksAgain();
    void acceptingTheOfferFindsTheNewBundle();

    void unpacksTheLatest();
    void unpackingRestoresTheOverwriteTable();
    void noBundleLeavesTheFiles();
    void aBundleThatCannotBeUnpackedIsKept();
    void aBundleThatCannotBeUnpackedIsToldOnStandardOutput();

private:
    void write(const QString &name, const QByteArray &content) { folder->write(name, content); }
    /// The version in the header of the bundle found, or "none".
    QString found(VelantorBundleManager &manager);

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<MessageBoxAnswers> boxes;
    VelantorBundleManager manager{nullptr};
};

void VelantorBundleManagerTest::init()
{
    folder = std::make_unique<WorkingDirectory>();
    boxes = std::make_unique<MessageBoxAnswers>();
    ApplicationGlobalMap::putString("bundle_version"_s, "before"_s);
}

void VelantorBundleManagerTest::cleanup()
{
    boxes.reset();
    folder.reset();
}

QString VelantorBundleManagerTest::found(VelantorBundleManager &from)
{
    const std::unique_ptr<VelantorBundle> bundle(from.findLatestValidBundle());
    return bundle ? bundle->valueFromKey("VERSION"_s) : "none"_s;
}

void VelantorBundleManagerTest::picksTheNewestBelowTheLimit_data()
{
    using Files = QStringList;
    QTest::addColumn<QStringList>("files"); // "name" or "name=version in the header"
    QTest::addColumn<QString>("limit");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");
    QTest::newRow("only one") << Files{"v1.039.velantor"_s} << limit << "v1.039.velantor"
                              << "1.039";
    QTest::newRow("newest by number, not by text")
        << Files{"v1.100.velantor"_s, "v1.39.velantor"_s} << limit << "v1.100.velantor"
        << "1.100";
    QTest::newRow("header before name")
        << Files{"v9.velantor=1.2"_s, "v1.3.velantor"_s} << limit << "v1.3.velantor"
        << "1.3";
    QTest::newRow("invalid version is skipped")
        << Files{"v9.velantor=1.0rc"_s, "v1.3.velantor"_s} << limit << "v1.3.velantor"
        << "1.3";
    QTest::newRow("version 0 is skipped")
        << Files{"notes.velantor"_s, "v0.1.velantor"_s} << limit << "v0.1.velantor"
        << "0.1";
    QTest::newRow("the limit itself is out") << Files{"v2.velantor"_s, "v1.5.velantor"_s} << "2"
                                             << "v1.5.velantor"
                                             << "1.5";
    QTest::newRow("999.999 is out")
        << Files{"v999.999.velantor"_s, "v1000.velantor"_s, "v999.998.velantor"_s} << limit
        << "v999.998.velantor"
        << "999.998";
    QTest::newRow("of equal versions the first by name, whatever the case")
        << Files{"B.velantor=1.39"_s, "a.velantor=1.039"_s, "C.velantor=1.039"_s} << limit
        << "a.velantor"
        << "1.039";
    QTest::newRow("longer is newer")
        << Files{"v1.2.velantor"_s, "v1.2.0.velantor"_s} << limit << "v1.2.0.velantor"
        << "1.2.0";
    QTest::newRow("other extensions")
        << Files{"v3.velantor.part"_s, "v4.VELANTOR"_s, "v5velantor"_s, "v1.velantor"_s} << limit
        << "v1.velantor"
        << "1";
}

void VelantorBundleManagerTest::picksTheNewestBelowTheLimit()
{
    QFETCH(QStringList, files);
    QFETCH(QString, limit);
    for (const QString &file : files) {
        const QStringList parts = file.split(QLatin1Char('='));
        write(parts.first(),
              parts.size() == 2 ? header(parts.last().toUtf8(), "1.0") : QByteArray());
    }
    QTEST(manager.getBundleUnderVersion(limit), "name");
    QTEST(bundleVersion(), "version");
    QVERIFY(boxes->seen().isEmpty());
}

void VelantorBundleManagerTest::passesOverWhatIsNoBundle()
{
    write("v1.039.velantor"_s, header("1.039", "1.100"));
    QVERIFY(QDir().mkdir("v5.velantor"_s));
    QCOMPARE(mkfifo("v6.velantor", 0600), 0);
    QVERIFY(QFile::link("/dev/zero"_s, "v7.velantor"_s));
    QVERIFY(QFile::link("missing"_s, "v8.velantor"_s));
    write("v9.velantor"_s, "...\n");
    QVERIFY(QFile::resize("v9.velantor"_s, qint64(1) << 31)); // zeros to no end
    QCOMPARE(found(manager), "1.039"_s);
    QVERIFY(boxes->seen().isEmpty());
}

void VelantorBundleManagerTest::tellsThatThereAreNoBundles()
{
    write("notes.velantor"_s, QByteArray());
    write("v2.velantor"_s, header("1.0rc", "1.0"));
    QCOMPARE(manager.getBundleUnderVersion(limit), QString());
    QCOMPARE(boxes->seen().size(), 1);
    const MessageBoxAnswers::Box box = boxes->seen().first();
    QCOMPARE(box.title, "No Bundles"_s);
    QCOMPARE(box.text, "No valid bundles were found! Please reinstall, or contact Tolk for "
                       "support."_s);
    QCOMPARE(box.buttons.size(), 1);
    QVERIFY(box.buttons.first().contains("OK"_s));
    QVERIFY(box.modal);
    QCOMPARE(bundleVersion(), "before"_s);
}

void VelantorBundleManagerTest::findsTheBundle_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QStringList>("titles");
    const QStringList offer{"Outdated Bundle"_s};
    const QStringList tooNew{"Software Update Required"_s, "No Bundles"_s};
    QTest::newRow("shipped") << header("1.039", "1.100") << "1.039" << QStringList();
    QTest::newRow("needs this software") << header("1.039", "1.105") << "1.039" << QStringList();
    QTest::newRow("needs the next software") << header("1.039", "1.106") << "none" << tooNew;
    QTest::newRow("needs a longer version") << header("1.039", "1.105.0") << "none" << tooNew;
    QTest::newRow("oldest accepted") << header("1.006", "1.0") << "1.006" << QStringList();
    QTest::newRow("one below") << header("1.005", "1.0") << "none" << offer;
    QTest::newRow("old and too new") << header("1.005", "9") << "none" << offer;
    QTest::newRow("does not say what it needs")
        << QByteArray("...\nVERSION = 1.039\n...\n") << "none" << offer;
    QTest::newRow("needs nothing in particular") << header("1.039", "") << "none" << offer;
    QTest::newRow("needs no version at all") << header("1.039", "any") << "1.039" << QStringList();
}

void VelantorBundleManagerTest::findsTheBundle()
{
    QFETCH(QByteArray, content);
    boxes->push([](QMessageBox *box) { box->close(); });
    write("b.velantor"_s, content);
    QTEST(found(manager), "version");
    QTEST(boxes->titles(), "titles");
}

void VelantorBundleManagerTest::dialogsBelongToTheWindow()
{
    QWidget window;
    VelantorBundleManager owned(&window);
    QWidget *parent = nullptr;
    boxes->push([&parent](QMessageBox *box) {
        parent = box->parentWidget();
        box->close();
    });
    QVERIFY(!owned.findLatestValidBundle());
    QCOMPARE(parent, &window);
    write("b.velantor"_s, header("1.005", "1.0"));
    parent = nullptr;
    boxes->push([&parent](QMessageBox *box) {
        parent = box->parentWidget();
        box->button(QMessageBox::No)->click();
    });
    QVERIFY(!owned.findLatestValidBundle());
    QCOMPARE(parent, &window);
}

void VelantorBundleManagerTest::tooNewIsToldOnceForTheNewest()
{
    write("v1.060.velantor"_s, header("1.060", "1.300"));
    write("v1.050.velantor"_s, header("1.050", "1.200"));
    write("v1.039.velantor"_s, header("1.039", "1.100"));
    QCOMPARE(found(manager), "1.039"_s);
    QCOMPARE(boxes->titles(), QStringList{"Software Update Required"_s});
    QVERIFY(boxes->seen().first().text.startsWith(
        "Velantor Bundle v1.060 requires Velantor Software Suite v1.300 or higher. You "_s));
    QCOMPARE(bundleVersion(), "1.039"_s);
}

void VelantorBundleManagerTest::tooNewAloneEndsWithNoBundles()
{
    write("v1.050.velantor"_s, header("1.050", "1.200"));
    QCOMPARE(found(manager), "none"_s);
    QCOMPARE(boxes->titles(), (QStringList{"Software Update Required"_s, "No Bundles"_s}));
    QCOMPARE(bundleVersion(), "1.050"_s);
}

void VelantorBundleManagerTest::outdatedBelowTooNewIsNotOffered()
{
    write("v1.050.velantor"_s, header("1.050", "1.200"));
    write("v1.005.velantor"_s, header("1.005", "1.0"));
    QCOMPARE(found(manager), "none"_s);
    QCOMPARE(boxes->titles(), QStringList{"Software Update Required"_s});
    QCOMPARE(bundleVersion(), "1.005"_s);
}

void VelantorBundleManagerTest::theOfferNamesItself()
{
    write("v1.005.velantor"_s, header("1.005", "1.0"));
    QStringList standardButtons;
    boxes->push([&standardButtons](QMessageBox *box) {
        for (QAbstractButton *button : box->buttons())
            standardButtons.append(QString::number(box->standardButton(button)));
        box->button(QMessageBox::No)->click();
    });
    QCOMPARE(found(manager), "none"_s);
    QCOMPARE(boxes->titles(), QStringList{"Outdated Bundle"_s});
    QCOMPARE(boxes->seen().first().text,
             "Your bundle is out-of-date and not compatible with this software. Would you like "
             "to download the latest version?"_s);
    standardButtons.sort();
    QCOMPARE(standardButtons,
             (QStringList{QString::number(QMessageBox::Yes), QString::number(QMessageBox::No)}));
    QCOMPARE(bundleVersion(), "1.005"_s);
}

void VelantorBundleManagerTest::closingTheOfferDeclines()
{
    write("v1.005.velantor"_s, header("1.005", "1.0"));
    boxes->pushClose();
    QCOMPARE(found(manager), "none"_s);
    QCOMPARE(boxes->titles(), QStringList{"Outdated Bundle"_s});
}

void VelantorBundleManagerTest::acceptingTheOfferWithNothingNewAsksAgain()
{
    write("v1.005.velantor"_s, header("1.005", "1.0"));
    boxes->push(QMessageBox::Yes);
    boxes->push(QMessageBox::Yes);
    boxes->push(QMessageBox::No);
    QCOMPARE(found(manager), "none"_s);
    const QString title = "Outdated Bundle"_s;
    QCOMPARE(boxes->titles(), (QStringList{title, title, title}));
}

void VelantorBundleManagerTest::acceptingTheOfferFindsTheNewBundle()
{
    write("v1.005.velantor"_s, header("1.005", "1.0"));
    QWidget window;
    QList<QWidget *> parents;
    VelantorBundleManager downloading(&window, [this, &parents](QWidget *parent) {
        parents.append(parent);
        if (parents.size() == 2)
            write("v1.040.velantor"_s, header("1.040", "1.100"));
    });
    boxes->push(QMessageBox::Yes);
    boxes->push(QMessageBox::Yes);
    QCOMPARE(found(downloading), "1.040"_s);
    QCOMPARE(boxes->seen().size(), 2);
    QCOMPARE(parents, (QList<QWidget *>{&window, &window}));
}

void VelantorBundleManagerTest::unpacksTheLatest()
{
    write("v1.039.velantor"_s,
          header("1.039", "1.100") + tables + bundleMember("master.ss", "new\n"));
    write("v1.038.velantor"_s,
          header("1.038", "1.100") + tables + bundleMember("master.ss", "old\n"));
    QVERIFY(manager.extractLatestValidBundle());
    QCOMPARE(folder->read("master.ss"_s), QByteArray("new\n"));
    QCOMPARE(bundleVersion(), "1.039"_s);
    QVERIFY(boxes->seen().isEmpty());
}

void VelantorBundleManagerTest::unpackingRestoresTheOverwriteTable()
{
    write("v1.039.velantor"_s, header("1.039", "1.100") + tables);
    write("device.txt"_s, "keep\n");
    QVERIFY(manager.extractLatestValidBundle());
    QCOMPARE(folder->read("device.txt"_s), QByteArray("overwrite\n"));
}

void VelantorBundleManagerTest::noBundleLeavesTheFiles()
{
    write("device.txt"_s, "earlier\n");
    QVERIFY(!manager.extractLatestValidBundle());
    QCOMPARE(folder->read("device.txt"_s), QByteArray("earlier\n"));
    QCOMPARE(boxes->titles(), QStringList{"No Bundles"_s});
}

void VelantorBundleManagerTest::aBundleThatCannotBeUnpackedIsKept()
{
    write("v1.039.velantor"_s, header("1.039", "1.100") + bundleMember("master.ss", "new\n"));
    const std::unique_ptr<VelantorBundle> bundle(manager.findLatestValidBundle());
    QVERIFY(bundle);
    QVERIFY(!manager.parseAndSaveBundleFiles(bundle.get()));
    QCOMPARE(bundle->valueFromKey("VERSION"_s), "1.039"_s);
    QVERIFY(!manager.extractLatestValidBundle());
    QVERIFY(boxes->seen().isEmpty());
}

void VelantorBundleManagerTest::aBundleThatCannotBeUnpackedIsToldOnStandardOutput()
{
    write("v1.039.velantor"_s, header("1.039", "1.100") + bundleMember("master.ss", "new\n"));
    QProcess run;
    run.start(QCoreApplication::applicationFilePath(), {unpackRun});
    QVERIFY(run.waitForFinished());
    QCOMPARE(run.exitStatus(), QProcess::NormalExit);
    QCOMPARE(run.exitCode(), 1);
    QCOMPARE(run.readAllStandardOutput(), QByteArray("Could not parse Velantor Bundle\n"));
}

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // The test runs itself to see what a failure leaves on standard output.
    if (app.arguments().contains(unpackRun))
        return VelantorBundleManager(nullptr).extractLatestValidBundle() ? 0 : 1;
    VelantorBundleManagerTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_velantorbundlemanager.moc"
