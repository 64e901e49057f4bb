#include <QIcon>
#include <QImageReader>
#include <QPixmap>
#include <QTest>

class ImagesTest : public QObject
{
    Q_OBJECT

private slots:
    void everyPictureHasItsSize_data();
    void everyPictureHasItsSize();
    void denseScreensGetTwiceThePixels_data();
    void denseScreensGetTwiceThePixels();
    void theNewFileIconHoldsThreeSizes();
};

void ImagesTest::everyPictureHasItsSize_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    const QSize toolBarIcon(20, 20);
    const QSize lamp(16, 16);
    QTest::newRow("not connected") << QStringLiteral("LEDoff.png") << toolBarIcon;
    QTest::newRow("connected") << QStringLiteral("LEDon.png") << toolBarIcon;
    QTest::newRow("disconnect") << QStringLiteral("redLEDon.png") << toolBarIcon;
    QTest::newRow("read") << QStringLiteral("download.png") << toolBarIcon;
    QTest::newRow("write") << QStringLiteral("upload.png") << toolBarIcon;
    QTest::newRow("charger") << QStringLiteral("velantor.png") << QSize(52, 33);
    QTest::newRow("maker") << QStringLiteral("tolk_logo.png") << QSize(84, 24);
    QTest::newRow("window") << QStringLiteral("icon_linux.png") << QSize(128, 128);
    QTest::newRow("active profile") << QStringLiteral("greenlight.PNG") << lamp;
    QTest::newRow("inactive profile") << QStringLiteral("nolight.PNG") << lamp;
}

void ImagesTest::everyPictureHasItsSize()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    const QImage picture(QStringLiteral(":/new/images/") + name);
    QCOMPARE(picture.size(), size);
    QVERIFY(picture.hasAlphaChannel());
    QCOMPARE(qAlpha(picture.pixel(0, 0)), 0);
}

void ImagesTest::denseScreensGetTwiceThePixels_data()
{
    everyPictureHasItsSize_data();
}

void ImagesTest::denseScreensGetTwiceThePixels()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    const QString dense = QString(name).replace(QLatin1Char('.'), QLatin1String("@2x."));
    QCOMPARE(QImage(QStringLiteral(":/new/images/") + dense).size(), 2 * size);
}

void ImagesTest::theNewFileIconHoldsThreeSizes()
{
    QVERIFY(QImageReader::supportedImageFormats().contains("ico"));
    const QIcon icon(QStringLiteral(":/new/images/new_file.ico"));
    QCOMPARE(icon.availableSizes(), (QList<QSize>{{16, 16}, {32, 32}, {48, 48}}));
    for (const QSize &size : icon.availableSizes())
        QCOMPARE(icon.pixmap(size).size(), size);
}

QTEST_MAIN(ImagesTest)
#include "tst_images.moc"
