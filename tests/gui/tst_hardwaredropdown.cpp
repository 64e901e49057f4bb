#include "bundles/hardwaredropdown.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QPalette>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <memory>

namespace
{
QString schema(const char *name)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QLatin1String(name);
}

/// Sevens stand for what no model allows, so that a bound that was not written shows.
const QList<double> UNTOUCHED{7, 7, 7, 7, 7, 7, 7};
const QList<double> LIMITS_24{24, 34, 15, 34, 15, 34, 15};
const QList<double> LIMITS_48{48, 63, 8, 63, 8, 63, 8};
const QList<double> LIMITS_72{72, 103, 5, 103, 5, 103, 5};
} // namespace

/// The choice of the charger's model, and the limits that it writes.
class HardwareDropdownTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void offersTheModels();
    void startsWithTheSchemasOwnLimits();
    void writesTheLimitsOfTheModel_data();
    void writesTheLimitsOfTheModel();
    void boundsArePlainNumbers();
    void limitsStandBeforeAnyoneHears();
    void leavesTheLimitsOfAStrictSchema();
    void goesBackToTheFormerItem();
    void firstRefusalGoesBackTo48();
    void refusedInsideTheChange();
    void locksToTheModelOfAStrictSchema_data();
    void locksToTheModelOfAStrictSchema();
    void sameModelIsNoChange();
    void schemaOfNoModelShowsNothing();
    void unlocksWithTheLimitsOfTheItemShown();
    void isChosenByKey();
    void isNotChosenWhileLocked();
    void wheelChoosesNothing();
    void lockedModelCanBeRead_data();
    void lockedModelCanBeRead();

private:
    QComboBox *combo() const { return dropdown.get(); }
    HParser::StructSetting *member(const char *chemistry, const char *name) const
    {
        return generator->getChemistrySettingsByName(QLatin1String(chemistry))
            ->getStructSettingByName(QLatin1String(name));
    }
    /// The upper bounds, in the order of the constants above.
    QList<double> limits() const
    {
        return {member("Nickel", "nominal_full_V")->upperBound->toDouble(),
                member("Nickel", "max_V")->upperBound->toDouble(),
                member("Nickel", "bulk_I")->upperBound->toDouble(),
                member("Lead", "full_V")->upperBound->toDouble(),
                member("Lead", "bulk_I")->upperBound->toDouble(),
                member("Lithium", "full_V")->upperBound->toDouble(),
                member("Lithium", "bulk_I")->upperBound->toDouble()};
    }
    void overwriteLimits()
    {
        for (const char *name : {"nominal_full_V", "max_V", "bulk_I"})
            member("Nickel", name)->setUpperBound(QStringLiteral("7"));
        for (const char *chemistry : {"Lead", "Lithium"}) {
            for (const char *name : {"full_V", "bulk_I"})
                member(chemistry, name)->setUpperBound(QStringLiteral("7"));
        }
    }

    std::unique_ptr<HParser::Generator> generator;
    std::unique_ptr<HardwareDropdown> dropdown;
};

void HardwareDropdownTest::init()
{
    dropdown.reset();
    generator = std::make_unique<HParser::Generator>();
    generator->parseSSFile(schema("master.ss"));
    dropdown = std::make_unique<HardwareDropdown>(generator.get(), nullptr);
}

void HardwareDropdownTest::offersTheModels()
{
    QStringList found;
    for (int i = 0; i < dropdown->count(); ++i)
        found.append(dropdown->itemText(i) + "=" + dropdown->itemData(i).toString());
    QCOMPARE(found, QStringList({"24V=24", "48V=48", "72V=72"}));
    QCOMPARE(combo()->currentIndex(), 1);
    QVERIFY(dropdown->isEnabled());
}

void HardwareDropdownTest::startsWithTheSchemasOwnLimits()
{
    overwriteLimits();
    const HardwareDropdown other(generator.get(), nullptr);
    QCOMPARE(other.currentText(), QStringLiteral("48V"));
    QCOMPARE(limits(), UNTOUCHED);
    // Also the first of all, which nobody has changed yet, writes its own when it is unlocked.
    dropdown->enable();
    QCOMPARE(limits(), LIMITS_48);
}

void HardwareDropdownTest::writesTheLimitsOfTheModel_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QList<double>>("expected");
    QTest::newRow("24V") << 0 << LIMITS_24;
    QTest::newRow("48V") << 1 << LIMITS_48;
    QTest::newRow("72V") << 2 << LIMITS_72;
}

void HardwareDropdownTest::writesTheLimitsOfTheModel()
{
    QFETCH(int, index);
    QFETCH(QList<double>, expected);
    dropdown->setCurrentIndex(index == 0 ? 2 : 0);
    overwriteLimits();
    QSignalSpy told(dropdown.get(), &HardwareDropdown::newLimits);
    dropdown->setCurrentIndex(index);
    QCOMPARE(limits(), expected);
    QCOMPARE(told.count(), 1);
    QCOMPARE(generator->hwVersion(), dropdown->currentData().toInt());
}

void HardwareDropdownTest::boundsArePlainNumbers()
{
    dropdown->setCurrentIndex(0);
    QCOMPARE(member("Nickel", "nominal_full_V")->upperBound->toString(), QStringLiteral("24"));
    QCOMPARE(member("Lithium", "bulk_I")->upperBound->toString(), QStringLiteral("15"));
    // Copies carry them, as profiles are made.
    const std::unique_ptr<HParser::StructSettings> copy(
        generator->copyFlashstackElementSettings(QStringLiteral("Lead")));
    copy->buildFormulaTrees();
    HParser::StructSetting *voltage = copy->getStructSettingByName(QStringLiteral("full_V"));
    voltage->setValue(50.0);
    QCOMPARE(voltage->getValue(), QStringLiteral("34"));
}

void HardwareDropdownTest::limitsStandBeforeAnyoneHears()
{
    QList<double> whenHeard;
    connect(dropdown.get(), &HardwareDropdown::newLimits, this, [&] { whenHeard = limits(); });
    dropdown->setCurrentIndex(2);
    QCOMPARE(whenHeard, LIMITS_72);
}

void HardwareDropdownTest::leavesTheLimitsOfAStrictSchema()
{
    generator->parseSSFile(schema("24V_rev7.ss"));
    QSignalSpy told(dropdown.get(), &HardwareDropdown::newLimits);
    dropdown->setCurrentIndex(2);
    QCOMPARE(limits(), LIMITS_24);
    QCOMPARE(told.count(), 1); // the change is told all the same
    dropdown->enable();
    QCOMPARE(limits(), LIMITS_24);
}

void HardwareDropdownTest::goesBackToTheFormerItem()
{
    dropdown->setCurrentIndex(2);
    dropdown->setCurrentIndex(0);
    QSignalSpy told(dropdown.get(), &HardwareDropdown::newLimits);
    dropdown->revertLimits();
    QCOMPARE(combo()->currentIndex(), 2);
    QCOMPARE(limits(), LIMITS_72);
    QCOMPARE(told.count(), 1); // profiles are held against the old limits again
    dropdown->revertLimits();  // the two have changed their places
    QCOMPARE(combo()->currentIndex(), 0);
    QCOMPARE(limits(), LIMITS_24);
}

void HardwareDropdownTest::firstRefusalGoesBackTo48()
{
    dropdown->setCurrentIndex(0);
    dropdown->revertLimits();
    QCOMPARE(dropdown->currentText(), QStringLiteral("48V"));
    QCOMPARE(limits(), LIMITS_48);
}

void HardwareDropdownTest::refusedInsideTheChange()
{
    QList<int> heard;
    connect(dropdown.get(), &HardwareDropdown::newLimits, this, [&] {
        heard.append(dropdown->currentData().toInt());
        if (heard.size() == 1)
            dropdown->revertLimits();
    });
    dropdown->setCurrentIndex(0);
    QCOMPARE(heard, QList<int>({24, 48}));
    QCOMPARE(dropdown->currentText(), QStringLiteral("48V"));
    QCOMPARE(limits(), LIMITS_48);
    // The next refusal goes back to the same item.
    heard.clear();
    dropdown->setCurrentIndex(2);
    QCOMPARE(heard, QList<int>({72, 48}));
    QCOMPARE(dropdown->currentText(), QStringLiteral("48V"));
}

void HardwareDropdownTest::locksToTheModelOfAStrictSchema_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("model");
    QTest::newRow("24 V") << QByteArray("24V_rev7.ss") << "24V";
    QTest::newRow("48 V") << QByteArray("48V_FSv2.ss") << "48V";
    QTest::newRow("first 48 V") << QByteArray("48V_FSv1.ss") << "48V";
    QTest::newRow("72 V") << QByteArray("72V_rev7.ss") << "72V";
}

void HardwareDropdownTest::locksToTheModelOfAStrictSchema()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, model);
    dropdown->setCurrentIndex(model == QLatin1String("24V") ? 2 : 0);
    generator->parseSSFile(schema(file.constData()));
    QSignalSpy told(dropdown.get(), &HardwareDropdown::newLimits);
    dropdown->disable();
    QCOMPARE(dropdown->currentText(), model);
    QVERIFY(!dropdown->isEnabled());
    QCOMPARE(told.count(), 1);
    // After the charger has gone its model stays, until the user changes it.
    generator->parseSSFile(schema("master.ss"));
    dropdown->enable();
    QCOMPARE(dropdown->currentText(), model);
    QVERIFY(dropdown->isEnabled());
    QCOMPARE(told.count(), 1);
    QCOMPARE(generator->hwVersion(), dropdown->currentData().toInt());
}

void HardwareDropdownTest::sameModelIsNoChange()
{
    generator->parseSSFile(schema("48V_FSv2.ss"));
    QSignalSpy told(dropdown.get(), &HardwareDropdown::newLimits);
    dropdown->disable();
    QCOMPARE(told.count(), 0);
    QVERIFY(!dropdown->isEnabled());
}

void HardwareDropdownTest::schemaOfNoModelShowsNothing()
{
    generator->parseSSFile(schema("24V_rev7.ss"));
    member("Lithium", "bulk_I")->setUpperBound(QStringLiteral("10"));
    QSignalSpy told(dropdown.get(), &HardwareDropdown::newLimits);
    dropdown->disable();
    QCOMPARE(combo()->currentIndex(), -1);
    QCOMPARE(dropdown->currentText(), QString());
    QVERIFY(!dropdown->isEnabled());
    QCOMPARE(told.count(), 1);

    generator->parseSSFile(schema("master.ss"));
    overwriteLimits();
    dropdown->enable();
    QVERIFY(dropdown->isEnabled());
    QCOMPARE(combo()->currentIndex(), -1);
    QCOMPARE(limits(), UNTOUCHED);
    QCOMPARE(told.count(), 1);
    dropdown->setCurrentIndex(0);
    QCOMPARE(limits(), LIMITS_24);
    dropdown->revertLimits();
    QCOMPARE(combo()->currentIndex(), -1);
    QCOMPARE(limits(), LIMITS_24);
}

void HardwareDropdownTest::unlocksWithTheLimitsOfTheItemShown()
{
    dropdown->setCurrentIndex(2);
    generator->parseSSFile(schema("master.ss"));
    QCOMPARE(limits(), LIMITS_48); // the schema's own
    QSignalSpy told(dropdown.get(), &HardwareDropdown::newLimits);
    dropdown->enable();
    QCOMPARE(limits(), LIMITS_72);
    QCOMPARE(told.count(), 0);
}

void HardwareDropdownTest::isChosenByKey()
{
    dropdown->show();
    QVERIFY(dropdown->focusPolicy() & Qt::TabFocus);
    dropdown->setFocus();
    QTest::keyClick(dropdown.get(), Qt::Key_Down);
    QCOMPARE(dropdown->currentText(), QStringLiteral("72V"));
    QTest::keyClick(dropdown.get(), Qt::Key_2);
    QCOMPARE(dropdown->currentText(), QStringLiteral("24V"));
    QCOMPARE(limits(), LIMITS_24);
}

void HardwareDropdownTest::isNotChosenWhileLocked()
{
    dropdown->show();
    generator->parseSSFile(schema("48V_FSv2.ss"));
    dropdown->disable();
    QTest::keyClick(dropdown.get(), Qt::Key_Down);
    QTest::mouseClick(dropdown.get(), Qt::LeftButton);
    QCOMPARE(dropdown->currentText(), QStringLiteral("48V"));
    QVERIFY(!dropdown->view()->isVisible());
}

void HardwareDropdownTest::wheelChoosesNothing()
{
    dropdown->show();
    QVERIFY(QTest::qWaitForWindowExposed(dropdown.get()));
    dropdown->setFocus();
    const QPointF middle(dropdown->rect().center());
    QWheelEvent wheel(middle, dropdown->mapToGlobal(middle.toPoint()), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(dropdown.get(), &wheel);
    QCOMPARE(dropdown->currentText(), QStringLiteral("48V"));
}

void HardwareDropdownTest::lockedModelCanBeRead_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light desktop") << false;
    QTest::newRow("dark desktop") << true;
}

void HardwareDropdownTest::lockedModelCanBeRead()
{
    QFETCH(bool, dark);
    const QPalette before = QApplication::palette();
    QApplication::setStyle(QStringLiteral("Fusion"));
    if (dark) {
        QPalette night(QColor(40, 40, 40));
        night.setColor(QPalette::Base, QColor(30, 30, 30));
        QApplication::setPalette(night);
    }
    dropdown->show();
    // Without the arrow, how far from the button's colour is what is written there?
    const auto contrast = [this] {
        const QImage text = dropdown->grab(QRect(6, 6, 30, dropdown->height() - 12)).toImage();
        int lightest = 0;
        int darkest = 255;
        for (int y = 0; y < text.height(); ++y) {
            for (int x = 0; x < text.width(); ++x) {
                lightest = qMax(lightest, qGray(text.pixel(x, y)));
                darkest = qMin(darkest, qGray(text.pixel(x, y)));
            }
        }
        return lightest - darkest;
    };
    const int unlocked = contrast();
    QVERIFY(unlocked > 100);
    generator->parseSSFile(schema("48V_FSv2.ss"));
    dropdown->disable();
    QVERIFY(contrast() > unlocked / 2);
    QVERIFY(contrast() < unlocked * 3 / 4); // and seen to be locked
    dropdown->enable();
    QVERIFY(!dropdown->testAttribute(Qt::WA_SetPalette));
    QApplication::setPalette(before);
}

QTEST_MAIN(HardwareDropdownTest)
#include "tst_hardwaredropdown.moc"
