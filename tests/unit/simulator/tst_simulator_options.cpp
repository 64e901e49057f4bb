#include "simulator/options.h"

#include <QTest>

Q_DECLARE_METATYPE(std::vector<std::string>)
using Arguments = std::vector<std::string>;

class SimulatorOptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void readsAll();
    void hasDefaults();
    void refuses_data();
    void refuses();
    void readsNumbers_data();
    void readsNumbers();
    void readsBytes();
};

void SimulatorOptionsTest::readsAll()
{
    std::string error;
    const auto options = simulator::parseOptions(
        {"--page", "p.hex", "--pace", "--power-on", "--with-parent", "--log", "l", "--save", "s",
         "--save-eeprom", "e", "--control", "c", "--reenter", "2.5", "--fault", "silent", "--fault",
         "bad-stx@erase"},
        &error);
    QVERIFY2(options.has_value(), error.c_str());
    QCOMPARE(options->page, std::string("p.hex"));
    QCOMPARE(options->log, std::string("l"));
    QCOMPARE(options->save, std::string("s"));
    QCOMPARE(options->saveEeprom, std::string("e"));
    QCOMPARE(options->control, std::string("c"));
    QVERIFY(options->pace && options->powerOn && options->withParent && !options->help);
    QCOMPARE(options->reenterSeconds.value(), 2.5);
    QCOMPARE(options->faults.size(), size_t(2));
    QCOMPARE(options->faults[1].text, std::string("bad-stx@erase"));
    QVERIFY(simulator::parseOptions({"--help"}, &error)->help);
}

void SimulatorOptionsTest::hasDefaults()
{
    std::string error;
    const auto options = simulator::parseOptions({}, &error);
    QVERIFY(options.has_value());
    QVERIFY(!options->pace && !options->powerOn && !options->withParent && !options->help);
    QVERIFY(options->page.empty() && options->hardware.empty() && options->faults.empty());
    QVERIFY(!options->reenterSeconds);
}

void SimulatorOptionsTest::refuses_data()
{
    QTest::addColumn<Arguments>("arguments");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("unknown") << Arguments{"--speed"}
                             << QByteArray("there is no option \"--speed\"");
    QTest::newRow("no option at all")
        << Arguments{"page.hex"} << QByteArray("there is no option \"page.hex\"");
    QTest::newRow("missing value")
        << Arguments{"--pace", "--log"} << QByteArray("--log wants a value");
    QTest::newRow("empty value") << Arguments{"--log", ""} << QByteArray("--log wants a value");
    QTest::newRow("hardware") << Arguments{"--hardware", "36v"}
                              << QByteArray("--hardware is one of 24v|48v|48v-v1|72v");
    QTest::newRow("two pages") << Arguments{"--hardware", "24v", "--page", "x"}
                               << QByteArray("--page and --hardware both tell what to start from");
    QTest::newRow("seconds") << Arguments{"--reenter", "soon"}
                             << QByteArray("--reenter wants a number of seconds");
    QTest::newRow("fault") << Arguments{"--fault", "loud"}
                           << QByteArray("there is no fault \"loud\"");
}

void SimulatorOptionsTest::refuses()
{
    QFETCH(Arguments, arguments);
    QFETCH(QByteArray, reason);
    std::string error;
    QVERIFY(!simulator::parseOptions(arguments, &error));
    QCOMPARE(QByteArray::fromStdString(error), reason);
}

void SimulatorOptionsTest::readsNumbers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<qulonglong>("number");
    QTest::addColumn<bool>("good");
    QTest::newRow("decimal") << QByteArray("40") << 40ull << true;
    QTest::newRow("hexadecimal") << QByteArray("0x9C00") << 0x9C00ull << true;
    QTest::newRow("large X") << QByteArray("0Xff") << 255ull << true;
    QTest::newRow("empty") << QByteArray() << 7ull << false;
    QTest::newRow("only 0x") << QByteArray("0x") << 7ull << false;
    QTest::newRow("hex without 0x") << QByteArray("9C") << 7ull << false;
    QTest::newRow("negative") << QByteArray("-1") << 7ull << false;
    QTest::newRow("too long") << QByteArray("1234567890") << 7ull << false;
}

void SimulatorOptionsTest::readsNumbers()
{
    QFETCH(QByteArray, text);
    QFETCH(qulonglong, number);
    QFETCH(bool, good);
    unsigned long found = 7;
    QCOMPARE(simulator::parseNumber(text.toStdString(), &found), good);
    QCOMPARE(qulonglong(found), number);
}

void SimulatorOptionsTest::readsBytes()
{
    simulator::Bytes bytes;
    QVERIFY(simulator::fromHex("55 0a0B", &bytes));
    QCOMPARE(bytes, (simulator::Bytes{0x55, 0x0A, 0x0B}));
    QCOMPARE(simulator::toHex(bytes), std::string("55 0A 0B"));
    QVERIFY(!simulator::fromHex("5", &bytes));
    QVERIFY(!simulator::fromHex("5 5", &bytes));
    QVERIFY(!simulator::fromHex("zz", &bytes));
    QCOMPARE(bytes.size(), size_t(3));
    QVERIFY(simulator::fromHex("", &bytes));
    QVERIFY(bytes.empty());
    double seconds = 1;
    QVERIFY(simulator::parseSeconds("0.25", &seconds));
    QCOMPARE(seconds, 0.25);
    for (const char *bad : {"", "x", "-1", "1s", "nan", "inf", "1e9"})
        QVERIFY2(!simulator::parseSeconds(bad, &seconds), bad);
}

QTEST_GUILESS_MAIN(SimulatorOptionsTest)
#include "tst_simulator_options.moc"
