#include "bundles/velantorbundle.h"

#include "support/filecontent.h"
#include "support/workingdirectory.h"

#include <QDir>
#include <QTest>

#include <memory>

namespace
{
QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, int(size));
}

const QString root = ":/Velantor Software Suite Files/"_s;
const QString bundleName = "v1.039.velantor"_s;
const QString sources = QStringLiteral(VELANTOR_SOURCE_DIR "/resources/");
} // namespace

/// The files that the application carries to unpack them into its working directory.
class EmbeddedFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void holdsTheFilesToUnpack();
    void holdsTheFilesOfTheSources_data();
    void holdsTheFilesOfTheSources();
    void holdsTheUploaderAsBuilt();
    void theBundleNamesItsVersions();
    void theBundleHoldsItsMembersInOrder();
    void theBundleUnpacksToItsSources_data();
    void theBundleUnpacksToItsSources();
    void theBundleHoldsAFirmwareImage();
};

void EmbeddedFilesTest::holdsTheFilesToUnpack()
{
    QCOMPARE(QDir(root).entryList(QDir::Files),
             (QStringList{"device.txt"_s, bundleName, "vexa.bin"_s}));
    QCOMPARE(QDir(root).entryList(QDir::Dirs), QStringList{"saved_profiles"_s});
    QCOMPARE(QDir(root + "saved_profiles"_s).entryList(),
             (QStringList{"24v_default_profiles.xml"_s, "48v_default_profiles.xml"_s,
                          "72v_default_profiles.xml"_s}));
}

void EmbeddedFilesTest::holdsTheFilesOfTheSources_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("source");
    QTest::newRow("device table") << "device.txt"
                                  << "files/device.txt";
    for (const char *voltage : {"24v", "48v", "72v"}) {
        const QString name =
            "saved_profiles/"_s + QLatin1String(voltage) + "_default_profiles.xml"_s;
        QTest::newRow(voltage) << name << name;
    }
}

void EmbeddedFilesTest::holdsTheFilesOfTheSources()
{
    QFETCH(QString, name);
    QFETCH(QString, source);
    QVERIFY(!contentOf(root + name).isEmpty());
    QCOMPARE(contentOf(root + name), contentOf(sources + source));
}

void EmbeddedFilesTest::holdsTheUploaderAsBuilt()
{
    const QByteArray uploader = contentOf(root + "vexa.bin"_s);
    QVERIFY(uploader.startsWith("\x7f"
                                "ELF"));
    QVERIFY(uploader == contentOf(QStringLiteral(UPLOADER)));
}

void EmbeddedFilesTest::theBundleNamesItsVersions()
{
    QCOMPARE(VelantorBundle::getBundleVersion(root + bundleName), "1.039"_s);
    VelantorBundle bundle(root + bundleName);
    bundle.parseKeyValuePairs();
    QCOMPARE(bundle.valueFromKey("MIN_SOFTWARE_VERSION_REQUIRED"_s), "1.100"_s);
}

void EmbeddedFilesTest::theBundleHoldsItsMembersInOrder()
{
    QStringList names;
    for (const QByteArray &line : contentOf(root + bundleName).split('\n')) {
        if (line.startsWith("//////") && line.endsWith("//////"))
            names.append(QString::fromUtf8(line.mid(7).chopped(7)));
    }
    QCOMPARE(names, (QStringList{"device_overwrite_profiles.txt"_s, "setting_tooltips.txt"_s,
                                 "device_keep_profiles.txt"_s, "24V_rev7.ss"_s, "48V_FSv1.ss"_s,
                                 "48V_FSv2.ss"_s, "72V_rev7.ss"_s, "master.ss"_s, "v1.039.hex"_s,
                                 "checksums"_s}));
}

void EmbeddedFilesTest::theBundleUnpacksToItsSources_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"device_overwrite_profiles.txt", "setting_tooltips.txt", "device_keep_profiles.txt",
          "24V_rev7.ss", "48V_FSv1.ss", "48V_FSv2.ss", "72V_rev7.ss", "master.ss", "checksums"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void EmbeddedFilesTest::theBundleUnpacksToItsSources()
{
    QFETCH(QString, name);
    const WorkingDirectory folder;
    VelantorBundle bundle(root + bundleName);
    QVERIFY(bundle.parseBundle());
    QVERIFY(!folder.read(name).isEmpty());
    QCOMPARE(folder.read(name), contentOf(sources + "bundle/"_s + name));
    QCOMPARE(folder.read("device.txt"_s), contentOf(root + "device.txt"_s));
}

void EmbeddedFilesTest::theBundleHoldsAFirmwareImage()
{
    const WorkingDirectory folder;
    VelantorBundle bundle(root + bundleName);
    QVERIFY(bundle.parseBundle());
    QCOMPARE(bundle.getHexFileName(), "v1.039.hex"_s);
    const QByteArray image = folder.read("v1.039.hex"_s);
    QVERIFY(image.startsWith(":020000040000FA\n"));
    QVERIFY(image.contains("\n:00000001FF\n; "));
    QCOMPARE(folder.read("checksums"_s), QByteArray("not implemented\n").repeated(9));
}

QTEST_GUILESS_MAIN(EmbeddedFilesTest)
#include "tst_embeddedfiles.moc"
