#include "firmware/elidedlabel.h"

#include <QHelpEvent>
#include <QLayout>
#include <QTest>
#include <QToolTip>

class ElidedLabelTest : public QObject
{
    Q_OBJECT

private slots:
    void looksLikeALabelWithRoom();
    void showsBothEndsWithoutRoom();
    void asksForNoWidth();
    void aNameIsNoMarkup();
    void theToolTipTellsWhatIsLeftOut_data();
    void theToolTipTellsWhatIsLeftOut();
};

namespace
{
QImage picture(QLabel *label, const QString &text, int width)
{
    label->setText(text);
    label->resize(width, 20);
    return label->grab().toImage();
}

const QString longText =
    QStringLiteral("File Selected : ") + QString(300, QLatin1Char('w')) + QStringLiteral(".end");
} // namespace

void ElidedLabelTest::looksLikeALabelWithRoom()
{
    ElidedLabel elided;
    QLabel plain;
    const QString text = QStringLiteral("File Selected : fw.velantor");
    QCOMPARE(picture(&elided, text, 400), picture(&plain, text, 400));
}

void ElidedLabelTest::showsBothEndsWithoutRoom()
{
    ElidedLabel elided;
    QLabel plain;
    const QString shown = elided.fontMetrics().elidedText(longText, Qt::ElideMiddle, 200);
    QVERIFY(shown.startsWith(QStringLiteral("File Sel")));
    QVERIFY(shown.endsWith(QStringLiteral(".end")));
    QCOMPARE(picture(&elided, longText, 200), picture(&plain, shown, 200));
    QCOMPARE(elided.text(), longText);
}

void ElidedLabelTest::asksForNoWidth()
{
    ElidedLabel elided;
    QLabel plain;
    elided.setText(longText);
    plain.setText(longText);
    QCOMPARE(elided.minimumSizeHint(), QSize(0, plain.minimumSizeHint().height()));
    QCOMPARE(elided.sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
}

void ElidedLabelTest::aNameIsNoMarkup()
{
    ElidedLabel elided;
    QLabel plain;
    plain.setTextFormat(Qt::PlainText);
    const QString text = QStringLiteral("<b>fw</b>.velantor");
    QCOMPARE(picture(&elided, text, 400), picture(&plain, text, 400));
}

void ElidedLabelTest::theToolTipTellsWhatIsLeftOut_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << "fw.velantor"
                             << "";
    QTest::newRow("the middle") << longText << "<span>" + longText;
    QTest::newRow("no markup") << "<b>" + longText << "<span>&lt;b&gt;" + longText;
}

void ElidedLabelTest::theToolTipTellsWhatIsLeftOut()
{
    QFETCH(QString, text);
    ElidedLabel elided;
    elided.setText(text);
    elided.resize(200, 20);
    elided.show();
    QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), elided.mapToGlobal(QPoint(5, 5)));
    QVERIFY(QApplication::sendEvent(&elided, &event));
    QTEST(QToolTip::text(), "expected");
    elided.hide();
    QToolTip::hideText();
}

QTEST_MAIN(ElidedLabelTest)
#include "tst_elidedlabel.moc"
