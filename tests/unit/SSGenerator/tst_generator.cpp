#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "childprocess.h"

#include <QtTest>

using namespace HParser;

namespace
{

QString delivered(const char *file)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QString::fromLatin1(file);
}

} // namespace

class TestGenerator : public QObject
{
    Q_OBJECT

private slots:
    void readsTheMasterSchema();
};

void TestGenerator::readsTheMasterSchema()
{
    Generator generator;
    generator.setHFileLocation(delivered("master.ss"));
    QVERIFY(generator.parseSSFile());
    QVERIFY(generator.isMaster());
    QCOMPARE(generator.getProfileStartWordAddress(), 39936);
    QCOMPARE(generator.getChemistrySettings().size(), 3);
    QCOMPARE(generator.hwVersion(), 48);
}

QTEST_GUILESS_MAIN(TestGenerator)
#include "tst_generator.moc"
