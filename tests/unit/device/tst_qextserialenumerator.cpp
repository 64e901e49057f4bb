#include "support/pseudoterminal.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <linux/capability.h>
#include <memory>
#include <qextserialenumerator.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
/// For the rest of this process permissions count, for root as for everybody else.
void giveUpReadingEverything()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    QCOMPARE(syscall(SYS_capget, &header, data), 0L);
    data[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
    QCOMPARE(syscall(SYS_capset, &header, data), 0L);
}
} // namespace

class QextSerialEnumeratorTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void listsAnAnnouncedSimulator();
    void listsSimulatorsByNumber();
    void listsAPortOnceThatIsAnnouncedTwice();
    void listsNoneAfterItIsWithdrawn();
    void listsNoneWithoutARuntimeFolder_data();
    void listsNoneWithoutARuntimeFolder();
    void readsOneLine_data();
    void readsOneLine();
    void passesOverAPipe();
    void passesOverAFolderAndALink();
    void passesOverAnUnreadableFile();

private:
    static QStringList simulators();
    void write(const QString &file, const QByteArray &content) const;

    std::unique_ptr<QTemporaryDir> runtime;
};

void QextSerialEnumeratorTest::init()
{
    runtime = std::make_unique<QTemporaryDir>();
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime->path()));
    QVERIFY(QDir(runtime->path()).mkdir(QStringLiteral("velantor-ports")));
}

QStringList QextSerialEnumeratorTest::simulators()
{
    QStringList names;
    for (const QextPortInfo &port : QextSerialEnumerator::getPorts()) {
        if (port.enumName == QStringLiteral("simulator"))
            names.append(port.portName);
    }
    return names;
}

void QextSerialEnumeratorTest::write(const QString &file, const QByteArray &content) const
{
    QFile target(runtime->filePath(QStringLiteral("velantor-ports/") + file));
    QVERIFY(target.open(QIODevice::WriteOnly));
    QCOMPARE(target.write(content), qint64(content.size()));
}

void QextSerialEnumeratorTest::listsAnAnnouncedSimulator()
{
    PseudoTerminal terminal;
    terminal.announce();

    const QList<QextPortInfo> ports = QextSerialEnumerator::getPorts();
    QVERIFY(!ports.isEmpty());
    const QextPortInfo port = ports.last();
    QCOMPARE(port.portName, terminal.portName());
    QCOMPARE(port.physName, QStringLiteral("/dev/") + terminal.portName());
    QVERIFY(port.friendName.contains(terminal.portName()));
    QCOMPARE(port.vendorID, 0);
    QCOMPARE(port.productID, 0);
}

void QextSerialEnumeratorTest::listsSimulatorsByNumber()
{
    PseudoTerminal terminals[3];
    QList<int> numbers;
    for (PseudoTerminal &terminal : terminals) {
        terminal.announce();
        numbers.append(terminal.portName().mid(4).toInt());
    }
    std::sort(numbers.begin(), numbers.end());

    QStringList expected;
    for (int number : qAsConst(numbers))
        expected.append(QStringLiteral("pts/") + QString::number(number));
    QCOMPARE(simulators(), expected);
}

void QextSerialEnumeratorTest::listsAPortOnceThatIsAnnouncedTwice()
{
    PseudoTerminal terminal;
    terminal.announce();
    write(QStringLiteral("again"), terminal.portName().toLatin1());
    QCOMPARE(simulators(), QStringList(terminal.portName()));
}

void QextSerialEnumeratorTest::listsNoneAfterItIsWithdrawn()
{
    PseudoTerminal terminal;
    terminal.announce();
    terminal.withdraw();
    QCOMPARE(simulators(), QStringList());
}

void QextSerialEnumeratorTest::listsNoneWithoutARuntimeFolder_data()
{
    QTest::addColumn<QByteArray>("folder"); // null: the variable is not set
    QTest::newRow("not set") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("relative") << QByteArray(".");
    QTest::newRow("does not exist") << QByteArray("/nonexistent/folder");
    QTest::newRow("a file") << QByteArray("/etc/passwd");
}

void QextSerialEnumeratorTest::listsNoneWithoutARuntimeFolder()
{
    QFETCH(QByteArray, folder);
    PseudoTerminal terminal;
    terminal.announce();
    // Where a relative name would lead.
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(runtime->path()));
    if (folder.isNull())
        qunsetenv("XDG_RUNTIME_DIR");
    else
        qputenv("XDG_RUNTIME_DIR", folder);
    const QStringList found = simulators();
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime->path()));
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(found, QStringList());
}

void QextSerialEnumeratorTest::readsOneLine_data()
{
    // "%1" stands for the number of a terminal that exists.
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("listed");
    QTest::newRow("with line end") << QByteArray("pts/%1\n") << true;
    QTest::newRow("without line end") << QByteArray("pts/%1") << true;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("only a line end") << QByteArray("\n") << false;
    QTest::newRow("two lines") << QByteArray("pts/%1\npts/%1\n") << false;
    QTest::newRow("empty line behind") << QByteArray("pts/%1\n\n") << false;
    QTest::newRow("leading blank") << QByteArray(" pts/%1\n") << false;
    QTest::newRow("trailing blank") << QByteArray("pts/%1 \n") << false;
    QTest::newRow("carriage return") << QByteArray("pts/%1\r\n") << false;
    QTest::newRow("zero byte") << QByteArray("pts/%1\0", 7) << false;
    QTest::newRow("with /dev/") << QByteArray("/dev/pts/%1\n") << false;
    QTest::newRow("upper case") << QByteArray("PTS/%1\n") << false;
    QTest::newRow("leading zero") << QByteArray("pts/0%1\n") << false;
    QTest::newRow("negative") << QByteArray("pts/-%1\n") << false;
    QTest::newRow("no number") << QByteArray("pts/\n") << false;
    QTest::newRow("other name in the folder") << QByteArray("pts/ptmx\n") << false;
    QTest::newRow("way out of the folder") << QByteArray("pts/../tty\n") << false;
    QTest::newRow("another device") << QByteArray("tty\n") << false;
    QTest::newRow("no such terminal") << QByteArray("pts/99999999\n") << false;
    QTest::newRow("number beyond int") << QByteArray("pts/99999999999999999999\n") << false;
    QTest::newRow("not text") << QByteArray("\xff\xfe\x80pts/%1\n") << false;
    QTest::newRow("huge") << QByteArray("pts/%1\n") + QByteArray(1 << 20, 'x') << false;
}

void QextSerialEnumeratorTest::readsOneLine()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, listed);
    const PseudoTerminal terminal;
    write(QStringLiteral("simulator"),
          content.replace("%1", terminal.portName().mid(4).toLatin1()));
    QCOMPARE(simulators(), listed ? QStringList(terminal.portName()) : QStringList());
}

void QextSerialEnumeratorTest::passesOverAPipe()
{
    PseudoTerminal terminal;
    terminal.announce();
    const QString pipe = runtime->filePath(QStringLiteral("velantor-ports/pipe"));
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QCOMPARE(simulators(), QStringList(terminal.portName()));
}

void QextSerialEnumeratorTest::passesOverAFolderAndALink()
{
    PseudoTerminal terminal;
    terminal.announce();
    QVERIFY(QDir(runtime->path()).mkdir(QStringLiteral("velantor-ports/folder")));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"),
                        runtime->filePath(QStringLiteral("velantor-ports/link"))));
    QCOMPARE(simulators(), QStringList(terminal.portName()));
}

void QextSerialEnumeratorTest::passesOverAnUnreadableFile()
{
    const PseudoTerminal terminal;
    write(QStringLiteral("simulator"), terminal.portName().toLatin1());
    QFile file(runtime->filePath(QStringLiteral("velantor-ports/simulator")));
    QVERIFY(file.setPermissions(QFile::Permissions()));
    giveUpReadingEverything();
    QCOMPARE(simulators(), QStringList());
    QVERIFY(file.setPermissions(QFile::ReadOwner));
    QCOMPARE(simulators(), QStringList(terminal.portName()));
}

QTEST_GUILESS_MAIN(QextSerialEnumeratorTest)
#include "tst_qextserialenumerator.moc"
