#include "support/typednumbers.h"

#include <QTest>

QList<QLocale> desktopLanguages()
{
    return {QLocale::c(), QLocale(QLocale::German, QLocale::Germany),
            QLocale(QLocale::Arabic, QLocale::Egypt)};
}

void addPastedNumbers()
{
    QTest::addColumn<QString>("pasted");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const QString &pasted, const char *shown) {
        QTest::newRow(name) << pasted << QString(shown);
    };
    row("blanks and a comma", " 6,25 ", "6.3");
    row("blanks that do not break", QStringLiteral("\u00a07\u202f"), "7.0");
    row("exponent", "1e1", "8.0");
    row("small exponent", "55e-1", "5.5");
    row("larger than a double", "1e400", "8.0");
    row("below all doubles", "-1e400", "0.5");
    row("negative", "-5", "0.5");
    row("typographic minus", QStringLiteral("\u22125"), "0.5");
    row("sign", "+5", "5.0");
    row("Arabic digit", QStringLiteral("\u0667"), "7.0");
    row("Arabic number", QStringLiteral("\u0666\u066b\u0662"), "6.2");
    row("line end", "5.5\n", "5.5");
    row("unit is refused", "5.2 Amps", "4.0");
    row("nan is refused", "nan", "4.0");
    row("inf is refused", "inf", "4.0");
    row("hexadecimal is refused", "0x10", "4.0");
    row("word is refused", "five", "4.0");
    row("two numbers are refused", "1;2", "4.0");
    row("groups are refused", "1.000,5", "4.0");
}
