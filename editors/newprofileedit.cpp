#include "editors/newprofileedit.h"

#include "SSGenerator/structsettings.h"
#include "editors/advancedsettingsgrid.h"
#include "editors/basicsettingsgrid.h"
#include "editors/formparts.h"
#include "editors/namesettingsgrid.h"
#include "profiles/profilesettings.h"
#include "ui_newprofileedit.h"

NewProfileEdit::NewProfileEdit(HParser::Generator *generator, ProfileSettings *profile,
                               QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::NewProfileEdit>()), record(profile->structSettings)
{
    ui->setupUi(this);
    auto *name = new NameSettingsGrid(record, generator, ui->profileName);
    auto *basic = new BasicSettingsGrid(true, record, generator, ui->profileSettings);
    auto *advanced = new AdvancedSettingsGrid(
        record, generator, record->getStructSettingByName(QStringLiteral("external_thermistor")),
        ui->profileSettingsAdvanced);
    makeRoom(this, {ui->profileName, ui->hline, ui->profileSettings, ui->hline2, ui->editAdvanced,
                    ui->profileSettingsAdvanced});

    const QList<QWidget *> before = name->getFields() + basic->getFields();
    if (!before.isEmpty()) {
        firstField = before.first();
        setTabOrder(before.last(), ui->editAdvanced);
    }

    connect(ui->editAdvanced, &QPushButton::clicked, this, &NewProfileEdit::editAdvancedSlot);
    connect(this, &NewProfileEdit::editAdvancedSignal, advanced,
            &AdvancedSettingsGrid::editSettings);
    connect(this, &NewProfileEdit::editAdvancedSignal, advanced,
            &AdvancedSettingsGrid::setAdvancedMode);
}

NewProfileEdit::~NewProfileEdit() = default;

void NewProfileEdit::focusFirstField()
{
    if (firstField)
        firstField->setFocus();
}

void NewProfileEdit::editAdvancedSlot(bool on)
{
    record->setAdvancedSettingsEdited(on);
    emit editAdvancedSignal(on);
}
