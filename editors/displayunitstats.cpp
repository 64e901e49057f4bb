#include "editors/displayunitstats.h"

#include "SSGenerator/generator.h"
#include "editors/advancedsettingsgrid.h"
#include "ui_displayunitstats.h"

DisplayUnitStats::DisplayUnitStats(HParser::Generator *generator, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::DisplayUnitStats>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    new AdvancedSettingsGrid(generator->getUnitStatsStruct(), generator, nullptr, ui->unitstats);
    ui->OKButton->setFocus();
    connect(ui->OKButton, &QPushButton::clicked, this, &DisplayUnitStats::on_OKButtonClicked);
}

DisplayUnitStats::~DisplayUnitStats() = default;

void DisplayUnitStats::on_OKButtonClicked()
{
    close();
}
