#include "editors/profileedit.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/advancedsettingsgrid.h"
#include "editors/basicsettingsgrid.h"
#include "editors/formparts.h"
#include "editors/statssettingsgrid.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"
#include "ui_profileedit.h"

using HParser::StructSettings;

namespace
{

QList<HParser::StructSetting *> statsOf(const ProfileSettings *profile)
{
    const ProfileStats *stats = profile->getStats();
    return stats ? stats->structSettings->getStructSettings() : QList<HParser::StructSetting *>();
}

} // namespace

ProfileEdit::ProfileEdit(HParser::Generator *generator, ProfileSettings *profile, QWidget *parent)
    : QWidget(parent),
      ui(std::make_unique<Ui::ProfileEdit>()),
      share(profile),
      record(profile->structSettings)
{
    ui->setupUi(this);
    auto *basic = new BasicSettingsGrid(true, record, generator, ui->profileSettings);
    auto *advanced = new AdvancedSettingsGrid(
        record, generator, record->getStructSettingByName(QStringLiteral("external_thermistor")),
        ui->profileSettingsAdvanced);
    new StatsSettingsGrid(statsOf(profile), generator, ui->profileStats);
    makeRoom(this, {ui->profileSettings, ui->hline, ui->editAdvanced, ui->profileSettingsAdvanced,
                    ui->hline2, ui->label, ui->profileStats});
    if (!basic->getFields().isEmpty())
        setTabOrder(basic->getFields().last(), ui->editAdvanced);

    ui->editAdvanced->setChecked(record->getAdvancedSettingsEdited());
    connect(record, &StructSettings::advancedEditedChanged, ui->editAdvanced,
            &QPushButton::setChecked);
    connect(ui->editAdvanced, &QPushButton::clicked, this, &ProfileEdit::editAdvancedSlot);
    connect(this, &ProfileEdit::enableEditingSignal, basic, &BasicSettingsGrid::editSettings);
    connect(this, &ProfileEdit::editAdvancedSignal, advanced,
            &AdvancedSettingsGrid::setAdvancedMode);
    connect(this, &ProfileEdit::enableEditingSignal, advanced, &AdvancedSettingsGrid::editSettings);
}

ProfileEdit::~ProfileEdit() = default;

void ProfileEdit::enableEditingSlot(bool on)
{
    ui->editAdvanced->setEnabled(on);
    editAdvancedSlot();
    emit enableEditingSignal(on);
}

void ProfileEdit::editAdvancedSlot()
{
    const bool on = ui->editAdvanced->isChecked();
    if (on != record->getAdvancedSettingsEdited())
        record->setAdvancedSettingsEdited(on);
    emit editAdvancedSignal(on);
}
