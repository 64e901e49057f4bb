#include "firmware/stringmanipulation.h"

#include "support/capturedoutput.h"

#include <QtTest>

using FirmwareTool::StringManipulation;

class StringManipulationTest : public QObject
{
    Q_OBJECT

private slots:
    void findsCharacters_data();
    void findsCharacters();
    void findsTexts_data();
    void findsTexts();
    void findsPatterns_data();
    void findsPatterns();
    void printsCodes_data();
    void printsCodes();
    void measures_data();
    void measures();
    void compares_data();
    void compares();
    void comparesBeginnings_data();
    void comparesBeginnings();
    void recognisesTheUploader_data();
    void recognisesTheUploader();
    void readsPercentages_data();
    void readsPercentages();
    void namesPorts_data();
    void namesPorts();
    void namesFiles_data();
    void namesFiles();
};

void StringManipulationTest::findsCharacters_data()
{
    QTest::addColumn<char>("character");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("index");

    QTest::newRow("first") << 'U' << QByteArray("Upload") << 0;
    QTest::newRow("last") << 'd' << QByteArray("Upload") << 5;
    QTest::newRow("twice") << 'o' << QByteArray("oolong") << 0;
    QTest::newRow("other case") << 'u' << QByteArray("Upload") << -1;
    QTest::newRow("absent") << 'x' << QByteArray("Upload") << -1;
    QTest::newRow("empty text") << 'x' << QByteArray("") << -1;
    QTest::newRow("the end is no character") << '\0' << QByteArray("Upload") << -1;
    QTest::newRow("beyond ASCII") << '\xC3' << QByteArray("a\xC3\xA4") << 1;
}

void StringManipulationTest::findsCharacters()
{
    QFETCH(char, character);
    QFETCH(QByteArray, text);
    QFETCH(int, index);
    QCOMPARE(StringManipulation::indexOf(character, text.constData()), index);
    QCOMPARE(StringManipulation::contains(character, text.constData()), index >= 0);
}

void StringManipulationTest::findsTexts_data()
{
    QTest::addColumn<QByteArray>("needle");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("found");

    QTest::newRow("whole") << QByteArray("verify fail") << QByteArray("verify fail") << true;
    QTest::newRow("begin") << QByteArray("verify") << QByteArray("verify fail") << true;
    QTest::newRow("end") << QByteArray("fail") << QByteArray("verify fail") << true;
    QTest::newRow("behind a line end") << QByteArray("fail") << QByteArray("a\nfail\n") << true;
    QTest::newRow("other case") << QByteArray("Fail") << QByteArray("verify fail") << false;
    QTest::newRow("over a line end") << QByteArray("a b") << QByteArray("a\nb") << false;
    QTest::newRow("longer than the text") << QByteArray("fails") << QByteArray("fail") << false;
    QTest::newRow("empty text") << QByteArray("a") << QByteArray("") << false;
    QTest::newRow("empty needle") << QByteArray("") << QByteArray("a") << true;
    QTest::newRow("no pattern") << QByteArray("a.c") << QByteArray("abc") << false;
    QTest::newRow("beyond ASCII") << QByteArray("\xC3\xA4") << QByteArray("l\xC3\xA4uft") << true;
}

void StringManipulationTest::findsTexts()
{
    QFETCH(QByteArray, needle);
    QFETCH(QByteArray, text);
    QTEST(StringManipulation::contains(needle.constData(), text.constData()), "found");
}

void StringManipulationTest::findsPatterns_data()
{
    QTest::addColumn<QByteArray>("pattern");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("found");

    const QByteArray noAnswer("Bootloader Version is.*Timeout");
    QTest::newRow("same line") << noAnswer << QByteArray("Bootloader Version is...Timeout") << true;
    QTest::newRow("over a line end")
        << noAnswer << QByteArray("\nBootloader Version is...\nTimeout!") << true;
    QTest::newRow("amid other lines")
        << noAnswer << QByteArray("a\nBootloader Version is...\n\n\nTimeout!\nb") << true;
    QTest::newRow("nothing between")
        << noAnswer << QByteArray("Bootloader Version isTimeout") << true;
    QTest::newRow("other order") << noAnswer << QByteArray("Timeout!\nBootloader Version is...")
                                 << false;
    QTest::newRow("other case") << noAnswer << QByteArray("Bootloader Version is...timeout")
                                << false;
    QTest::newRow("cut") << noAnswer << QByteArray("Bootloader Version is...") << false;
    QTest::newRow("anchored") << QByteArray("^b") << QByteArray("ab") << false;
    QTest::newRow("class of characters") << QByteArray("\\d+") << QByteArray("v12") << true;
}

void StringManipulationTest::findsPatterns()
{
    QFETCH(QByteArray, pattern);
    QFETCH(QByteArray, text);
    QTEST(StringManipulation::containsRegex(pattern.constData(), text.constData()), "found");
}

void StringManipulationTest::printsCodes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("printed");

    QTest::newRow("nothing") << QByteArray("") << QByteArray("------");
    QTest::newRow("letters") << QByteArray("Hi") << QByteArray("---72|105|---");
    QTest::newRow("line end and backspace") << QByteArray("\n\b%") << QByteArray("---10|8|37|---");
    QTest::newRow("beyond ASCII") << QByteArray("\xC3\xA4") << QByteArray("---195|164|---");
}

void StringManipulationTest::printsCodes()
{
    QFETCH(QByteArray, text);
    QTEST(printedBy([&] { StringManipulation::printStringChars(text.constData()); }), "printed");
}

void StringManipulationTest::measures_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("length");

    QTest::newRow("empty") << QByteArray("") << 0;
    QTest::newRow("letters") << QByteArray("abc") << 3;
    QTest::newRow("bytes, not characters") << QByteArray("\xC3\xA4") << 2;
}

void StringManipulationTest::measures()
{
    QFETCH(QByteArray, text);
    QTEST(StringManipulation::length(text.constData()), "length");
}

void StringManipulationTest::compares_data()
{
    QTest::addColumn<QByteArray>("a");
    QTest::addColumn<QByteArray>("b");
    QTest::addColumn<bool>("equal");

    QTest::newRow("equal") << QByteArray("abc") << QByteArray("abc") << true;
    QTest::newRow("both empty") << QByteArray("") << QByteArray("") << true;
    QTest::newRow("first is longer") << QByteArray("abcd") << QByteArray("abc") << false;
    QTest::newRow("second is longer") << QByteArray("abc") << QByteArray("abcd") << false;
    QTest::newRow("one empty") << QByteArray("") << QByteArray("a") << false;
    QTest::newRow("other case") << QByteArray("abc") << QByteArray("abC") << false;
}

void StringManipulationTest::compares()
{
    QFETCH(QByteArray, a);
    QFETCH(QByteArray, b);
    QTEST(StringManipulation::equals(a.constData(), b.constData()), "equal");
}

void StringManipulationTest::comparesBeginnings_data()
{
    QTest::addColumn<QByteArray>("a");
    QTest::addColumn<QByteArray>("b");
    QTest::addColumn<int>("n");
    QTest::addColumn<bool>("equal");

    QTest::newRow("equal beginnings") << QByteArray("abcX") << QByteArray("abcY") << 3 << true;
    QTest::newRow("one further") << QByteArray("abcX") << QByteArray("abcY") << 4 << false;
    QTest::newRow("whole texts") << QByteArray("abc") << QByteArray("abc") << 3 << true;
    QTest::newRow("both too short") << QByteArray("abc") << QByteArray("abc") << 4 << false;
    QTest::newRow("first too short") << QByteArray("ab") << QByteArray("abc") << 3 << false;
    QTest::newRow("second too short") << QByteArray("abc") << QByteArray("ab") << 3 << false;
    QTest::newRow("first characters differ")
        << QByteArray("xbc") << QByteArray("abc") << 3 << false;
    QTest::newRow("none") << QByteArray("a") << QByteArray("b") << 0 << true;
    QTest::newRow("none of empty texts") << QByteArray("") << QByteArray("") << 0 << true;
    QTest::newRow("fewer than none") << QByteArray("a") << QByteArray("b") << -5 << true;
    QTest::newRow("one of empty texts") << QByteArray("") << QByteArray("") << 1 << false;
    QTest::newRow("one") << QByteArray("ax") << QByteArray("ay") << 1 << true;
}

void StringManipulationTest::comparesBeginnings()
{
    QFETCH(QByteArray, a);
    QFETCH(QByteArray, b);
    QFETCH(int, n);
    QTEST(StringManipulation::equalsLength(a.constData(), b.constData(), n), "equal");
}

void StringManipulationTest::recognisesTheUploader_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("matches"); ///< the digits of the functions that match

    QTest::newRow("no device table")
        << QByteArray("3 1.\nCould not find device.txt file!\n") << QByteArray("1");
    QTest::newRow("loaded") << QByteArray("\nbuffers cleared\nhex file loaded") << QByteArray("2");
    QTest::newRow("written") << QByteArray("Upload Progress 100%\nFlash Write success!")
                             << QByteArray("5");
    QTest::newRow("different") << QByteArray("\nverify fail at row address 600 with rowsize 10")
                               << QByteArray("6");
    QTest::newRow("no image") << QByteArray("failed to find input file!") << QByteArray("7");
    QTest::newRow("several") << QByteArray("hex file loaded\nverify fail") << QByteArray("26");
    QTest::newRow("nothing") << QByteArray("") << QByteArray("");
    QTest::newRow("almost") << QByteArray("Could not find device.tx hex file load Flash write "
                                          "success Verify fail failed to find input")
                            << QByteArray("");
}

void StringManipulationTest::recognisesTheUploader()
{
    QFETCH(QByteArray, text);
    QByteArray matching;
    if (StringManipulation::matchStar1(text.constData()))
        matching += '1';
    if (StringManipulation::matchStar2(text.constData()))
        matching += '2';
    if (StringManipulation::matchStar5(text.constData()))
        matching += '5';
    if (StringManipulation::matchStar6(text.constData()))
        matching += '6';
    if (StringManipulation::matchStar7(text.constData()))
        matching += '7';
    QTEST(matching, "matches");
}

void StringManipulationTest::readsPercentages_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("percentage");

    const QByteArray back(20, '\b');
    QTest::newRow("one digit") << QByteArray("Upload Progress   7%") << 7;
    QTest::newRow("two digits") << QByteArray("Upload Progress  42%") << 42;
    QTest::newRow("three digits") << QByteArray("Upload Progress 100%") << 100;
    QTest::newRow("nothing yet") << QByteArray("Upload Progress   0%") << 0;
    QTest::newRow("ten") << QByteArray("Verify Progress  10%") << 10;
    QTest::newRow("ninety-nine") << QByteArray("Verify Progress  99%") << 99;
    QTest::newRow("with backspaces") << "Upload Progress  63%" + back << 63;
    QTest::newRow("the last of several")
        << "Upload Progress  63%" + back + "Upload Progress  64%" + back << 64;
    QTest::newRow("none") << QByteArray("Now writing") << -1;
    QTest::newRow("empty") << QByteArray("") << -1;
    QTest::newRow("sign alone") << QByteArray("%") << -1;
    QTest::newRow("sign at the start") << QByteArray("% done") << -1;
    QTest::newRow("one character before") << QByteArray("7%") << -1;
    QTest::newRow("two characters before") << QByteArray("42%") << 42;
    QTest::newRow("blank and digit") << QByteArray(" 7%") << 7;
    QTest::newRow("zeroes alone") << QByteArray("00%") << 100;
    QTest::newRow("last sign has no digits") << QByteArray("%  50%") << 50;
    QTest::newRow("letters are not checked") << QByteArray("ab%") << ('a' - '0') * 10 + 'b' - '0';
    QTest::newRow("blank before a letter") << QByteArray(" a%") << 'a' - '0';
    QTest::newRow("below the digits") << QByteArray("/0%") << -10;
    QTest::newRow("two blanks") << QByteArray("  %") << ' ' - '0';
}

void StringManipulationTest::readsPercentages()
{
    QFETCH(QByteArray, text);
    QTEST(StringManipulation::getPercentage(text.constData()), "percentage");
}

void StringManipulationTest::namesPorts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("path");

    QTest::newRow("one digit") << "COM3"
                               << R"(\\.\COM3)";
    QTest::newRow("two digits") << "COM12"
                                << R"(\\.\COM12)";
    QTest::newRow("first of several") << "COMM1"
                                      << R"(\\.\COMM1)";
    QTest::newRow("with other text") << "Port COM4 (USB)"
                                     << R"(\\.\COM4 (USB))";
    QTest::newRow("nothing behind") << "COM"
                                    << R"(\\.\COM)";
}

void StringManipulationTest::namesPorts()
{
    QFETCH(QString, name);
    QTEST(StringManipulation::getComPort(name), "path");
}

void StringManipulationTest::namesFiles_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");

    QTest::newRow("absolute") << "/a/b/v1.039.velantor"
                              << "v1.039.velantor";
    QTest::newRow("relative") << "../b/v1.039.velantor"
                              << "v1.039.velantor";
    QTest::newRow("bare") << "v1.039.velantor"
                          << "v1.039.velantor";
    QTest::newRow("blanks") << "/a b/c d.velantor"
                            << "c d.velantor";
    QTest::newRow("folder") << "/a/b/"
                            << "";
    QTest::newRow("empty") << ""
                           << "";
}

void StringManipulationTest::namesFiles()
{
    QFETCH(QString, path);
    QTEST(StringManipulation::getFileName(path), "name");
}

QTEST_GUILESS_MAIN(StringManipulationTest)
#include "tst_stringmanipulation.moc"
