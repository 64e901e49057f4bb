#include "xml/lenientutf8.h"

#include <QBuffer>
#include <QtTest>

using XMLGeneratorParser::LenientUtf8;

namespace
{
/// Gives a few bytes at a time, and fails after some.
class SlowDevice : public QBuffer
{
public:
    SlowDevice(QByteArray *bytes, int portion) : QBuffer(bytes), portion(portion)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        return QBuffer::readData(data, qMin<qint64>(maxSize, portion));
    }

private:
    int portion;
};

/// Like a file on a broken disk: there is more, but it cannot be read.
class BrokenDevice : public QIODevice
{
public:
    BrokenDevice() { open(QIODevice::ReadOnly | QIODevice::Unbuffered); }
    bool atEnd() const override { return false; }
    qint64 size() const override { return 100; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64) override { return -1; }
};
} // namespace

class LenientUtf8Test : public QObject
{
    Q_OBJECT

private slots:
    void makesItReadable_data();
    void makesItReadable();
    void portionsDoNotMatter();
    void everyPairOfBytesComesOutWellFormed();
    void endsWhereTheSourceFails();
    void isForTextThatMayBeUtf8_data();
    void isForTextThatMayBeUtf8();
};

void LenientUtf8Test::makesItReadable_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");
    const auto same = [](const char *name, const QByteArray &bytes) {
        QTest::newRow(name) << bytes << bytes;
    };
    same("nothing", "");
    same("ASCII", "<a>1 & 2</a>\t\r\n");
    same("two bytes", "20 \xC2\xB0\x43");
    same("three bytes", "\xE2\x82\xAC");
    same("four bytes", "\xF0\x9F\x98\x80");
    same("the last characters of each length", "\x7F\xDF\xBF\xEF\xBF\xBD\xF4\x8F\xBF\xBF");
    same("a byte order mark", "\xEF\xBB\xBF<a/>");
    QTest::newRow("Latin-1") << QByteArray("20\xB0"
                                           "C")
                             << QByteArray("20\xC2\xB0"
                                           "C");
    QTest::newRow("Latin-1 at the end") << QByteArray("\xE4") << QByteArray("\xC3\xA4");
    QTest::newRow("a cut character") << QByteArray("\xE2\x82") << QByteArray("\xC3\xA2\xC2\x82");
    QTest::newRow("longer than needed") << QByteArray("\xC0\x80") << QByteArray("\xC3\x80\xC2\x80");
    QTest::newRow("longer than needed, three bytes")
        << QByteArray("\xE0\x9F\xBF") << QByteArray("\xC3\xA0\xC2\x9F\xC2\xBF");
    QTest::newRow("a surrogate") << QByteArray("\xED\xA0\x80")
                                 << QByteArray("\xC3\xAD\xC2\xA0\xC2\x80");
    QTest::newRow("beyond Unicode")
        << QByteArray("\xF4\x90\x80\x80") << QByteArray("\xC3\xB4\xC2\x90\xC2\x80\xC2\x80");
    QTest::newRow("control characters")
        << QByteArray("a\0b\x01\x1F\x7F", 6) << QByteArray("ab\x7F");
    QTest::newRow("Latin-1 before UTF-8")
        << QByteArray("\xE4\xC2\xB0") << QByteArray("\xC3\xA4\xC2\xB0");
}

void LenientUtf8Test::makesItReadable()
{
    QFETCH(QByteArray, bytes);
    QBuffer source(&bytes);
    QVERIFY(source.open(QIODevice::ReadOnly));
    LenientUtf8 device(&source);
    QTEST(device.readAll(), "expected");
    QVERIFY(device.atEnd());
}

void LenientUtf8Test::portionsDoNotMatter()
{
    QByteArray bytes;
    for (int i = 0; i < 20000; ++i)
        bytes += "a\xC2\xB0\xE2\x82\xAC\xF0\x9F\x98\x80\xE4";
    QByteArray expected = bytes;
    expected.replace("\xE4", "\xC3\xA4");
    for (int portion : {1, 2, 3, 5, 4096}) {
        SlowDevice source(&bytes, portion);
        LenientUtf8 device(&source);
        QByteArray read;
        while (!device.atEnd())
            read += device.read(1 + portion % 3);
        QVERIFY2(read == expected, qPrintable(QString::number(portion)));
    }
}

void LenientUtf8Test::everyPairOfBytesComesOutWellFormed()
{
    for (int pair = 0; pair < 0x10000; ++pair) {
        QByteArray bytes;
        bytes += static_cast<char>(pair >> 8);
        bytes += static_cast<char>(pair & 0xFF);
        bytes += "\x80\x80";
        QBuffer source(&bytes);
        QVERIFY(source.open(QIODevice::ReadOnly));
        LenientUtf8 device(&source);
        const QByteArray read = device.readAll();
        // Qt's decoder puts replacement characters where it finds no UTF-8.
        QVERIFY2(QString::fromUtf8(read).toUtf8() == read && !read.contains("\xEF\xBF\xBD"),
                 bytes.toHex());
    }
}

void LenientUtf8Test::endsWhereTheSourceFails()
{
    BrokenDevice source;
    LenientUtf8 device(&source);
    QCOMPARE(device.readAll(), QByteArray());
    QVERIFY(device.atEnd());
}

void LenientUtf8Test::isForTextThatMayBeUtf8_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("meant");
    QTest::newRow("nothing") << QByteArray() << true;
    QTest::newRow("no declaration") << QByteArray("<VelantorProfiles>") << true;
    QTest::newRow("no encoding declared") << QByteArray("<?xml version=\"1.0\"?><a/>") << true;
    QTest::newRow("UTF-8 declared")
        << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>") << true;
    QTest::newRow("UTF-8 declared, otherwise")
        << QByteArray("\xEF\xBB\xBF<?xml version='1.0' encoding = 'utf-8'?><a/>") << true;
    QTest::newRow("Latin-1 declared")
        << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a/>") << false;
    QTest::newRow("an encoding elsewhere") << QByteArray("<a encoding=\"ISO-8859-1\"/>") << true;
    QTest::newRow("an encoding behind the declaration")
        << QByteArray("<?xml version=\"1.0\"?><a encoding=\"ISO-8859-1\"/>") << true;
    QTest::newRow("UTF-16, little end first") << QByteArray("\xFF\xFE<\0", 4) << false;
    QTest::newRow("UTF-16, big end first") << QByteArray("\xFE\xFF\0<", 4) << false;
    QTest::newRow("UTF-16 without mark") << QByteArray("<\0V\0", 4) << false;
}

void LenientUtf8Test::isForTextThatMayBeUtf8()
{
    QFETCH(QByteArray, bytes);
    QBuffer source(&bytes);
    QVERIFY(source.open(QIODevice::ReadOnly));
    QTEST(LenientUtf8::isMeantFor(&source), "meant");
    QCOMPARE(source.pos(), qint64(0));
}

QTEST_GUILESS_MAIN(LenientUtf8Test)
#include "tst_lenientutf8.moc"
