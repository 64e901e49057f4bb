#include "xml/xmlutility.h"

#include <QtTest>

using XMLGeneratorParser::XMLUtility;

class XMLUtilityTest : public QObject
{
    Q_OBJECT

private slots:
    void tagFromString_data();
    void tagFromString();
    void escapesReservedChars_data();
    void escapesReservedChars();
    void leavesOutForbiddenChars_data();
    void leavesOutForbiddenChars();
};

void XMLUtilityTest::tagFromString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tag");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("a tag already")
        << QStringLiteral("full_voltage") << QStringLiteral("full_voltage");
    QTest::newRow("hyphens stay") << QStringLiteral("charge_complete_at_-delta_v")
                                  << QStringLiteral("charge_complete_at_-delta_v");
    QTest::newRow("upper case, slash, blank, percent")
        << QStringLiteral("Rate/Max %") << QStringLiteral("rate_max__");
    QTest::newRow("brackets and ampersand") << QStringLiteral("<A>&b") << QStringLiteral("_a__b");
    QTest::newRow("each of several blanks") << QStringLiteral("a  b") << QStringLiteral("a__b");
    QTest::newRow("a hidden member")
        << QStringLiteral("not displayed") << QStringLiteral("not_displayed");
    QTest::newRow("other punctuation and tabs stay")
        << QStringLiteral("a\tb'c\"d.e-f+g") << QStringLiteral("a\tb'c\"d.e-f+g");
    QTest::newRow("beyond ASCII") << QStringLiteral("\u00c4 \u00b0C")
                                  << QStringLiteral("\u00e4_\u00b0c");
}

void XMLUtilityTest::tagFromString()
{
    QFETCH(QString, text);
    QFETCH(QString, tag);
    QCOMPARE(XMLUtility::xmlTagFromString(text), tag);
}

void XMLUtilityTest::escapesReservedChars_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("escaped");
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("plain") << "36V Li(10s)"
                           << "36V Li(10s)";
    QTest::newRow("ampersand and quotes") << "A&B \"x\""
                                          << "A&amp;B &quot;x&quot;";
    QTest::newRow("all five") << "\"&'<>"
                              << "&quot;&amp;&apos;&lt;&gt;";
    QTest::newRow("what is escaped already is escaped") << "&lt;"
                                                        << "&amp;lt;";
    QTest::newRow("the end of an unescaped section") << "]]>"
                                                     << "]]&gt;";
    QTest::newRow("others stay") << QString::fromUtf8("--%/\t\n\xC2\xB0")
                                 << QString::fromUtf8("--%/\t\n\xC2\xB0");
}

void XMLUtilityTest::escapesReservedChars()
{
    QFETCH(QString, text);
    QTEST(XMLUtility::escapeReservedChars(text), "escaped");
}

void XMLUtilityTest::leavesOutForbiddenChars_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("allowed");
    const auto utf16 = [](std::initializer_list<ushort> units) {
        QString text;
        for (ushort unit : units)
            text += QChar(unit);
        return text;
    };
    const auto same = [](const char *name, const QString &text) {
        QTest::newRow(name) << text << text;
    };
    same("nothing", QString());
    same("printable", "A&B <\"x\">");
    same("tab and line ends", "a\tb\nc\r");
    same("a pair of surrogates", utf16({'a', 0xD83D, 0xDE00}));
    same("the edges of what is allowed", utf16({0x20, 0x7F, 0xD7FF, 0xE000, 0xFEFF, 0xFFFD}));
    QTest::newRow("controls") << utf16({'a', 0, 1, 8, 0xB, 0xC, 0xE, 0x1F, 'b'}) << "ab";
    QTest::newRow("half a pair at the end") << utf16({'a', 0xD83D}) << "a";
    QTest::newRow("the other half") << utf16({0xDE00, 'a'}) << "a";
    QTest::newRow("the wrong way round") << utf16({0xDE00, 0xD83D}) << QString();
    QTest::newRow("half a pair before a whole one")
        << utf16({0xD83D, 0xD83D, 0xDE00}) << utf16({0xD83D, 0xDE00});
    QTest::newRow("no characters") << utf16({'a', 0xFFFE, 0xFFFF}) << "a";
}

void XMLUtilityTest::leavesOutForbiddenChars()
{
    QFETCH(QString, text);
    QTEST(XMLUtility::withoutForbiddenChars(text), "allowed");
}

QTEST_GUILESS_MAIN(XMLUtilityTest)
#include "tst_xmlutility.moc"
