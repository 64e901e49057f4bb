#include "xml/xmlutility.h"

#include <QtTest>

using XMLGeneratorParser::XMLUtility;

class XMLUtilityTest : public QObject
{
    Q_OBJECT

private slots:
    void tagFromString_data();
    void tagFromString();
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

QTEST_GUILESS_MAIN(XMLUtilityTest)
#include "tst_xmlutility.moc"
