#include "editors/newprofilewizard.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsettings.h"
#include "editors/newprofileedit.h"
#include "editors/screenroom.h"
#include "editors/settingslineedit.h"
#include "profiles/profilesettings.h"
#include "profiles/profileshare.h"
#include "ui_newprofilewizard.h"

#include <QKeyEvent>

NewProfileWizard::NewProfileWizard(HParser::Generator *generator, QWidget *parent)
    : QDialog(parent),
      ui(std::make_unique<Ui::NewProfileWizard>()),
      generator(generator),
      profile(std::make_unique<ProfileSettings>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    fitScreen();
    enterStep(Step::Choosing);
    setUpButtons();
    askChemistry();
    show();
}

NewProfileWizard::~NewProfileWizard() = default;

void NewProfileWizard::fitScreen()
{
    // What a small screen has no room for is scrolled to.
    setFixedSize(size().boundedTo(roomOnScreen(this)));
}

void NewProfileWizard::setUpButtons()
{
    for (const HParser::StructSettings *chemistry : generator->getChemistrySettings()) {
        auto *button = new QPushButton(chemistry->getDescriptiveName(), ui->setChem);
        // Tells the chemistry where the desktop writes the mark of a key into the text.
        button->setObjectName(chemistry->getDescriptiveName());
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, &NewProfileWizard::on_nextButton_clicked);
        ui->chemistryButtons->addWidget(button);
    }
}

void NewProfileWizard::askChemistry()
{
    ui->subtitle->setText(QStringLiteral("------------------"));
    ui->editSettings->hide();
    ui->setChem->show();
    if (ui->chemistryButtons->count() > 0)
        ui->chemistryButtons->itemAt(0)->widget()->setFocus();
}

void NewProfileWizard::on_nextButton_clicked()
{
    editSettingsWiz(sender()->objectName());
}

void NewProfileWizard::editSettingsWiz(const QString &chemistry)
{
    if (!profile->initializeStructSettings(chemistry, generator))
        return;
    enterStep(Step::Editing);
    ui->subtitle->setText(chemistry);
    ui->setChem->hide();

    auto *box = new QVBoxLayout(ui->editSettings);
    box->setContentsMargins(0, 0, 0, 0);
    form = new NewProfileEdit(generator, profile.get());
    profile->structSettings->setParent(form);
    box->addWidget(form, 0, Qt::AlignHCenter | Qt::AlignTop);
    ui->editSettings->show();
    form->focusFirstField();
}

void NewProfileWizard::on_backButton_clicked()
{
    form->hide();
    form->deleteLater();
    form = nullptr;
    delete ui->editSettings->layout();
    enterStep(Step::Choosing);
    askChemistry();
}

void NewProfileWizard::on_finishButton_clicked()
{
    // A click by key or by a screen reader leaves the focus in the field where one is typing.
    if (auto *field = qobject_cast<SettingsLineEdit *>(focusWidget()))
        field->saveSetting();
    enterStep(Step::Finished);
    saveProfile();
}

void NewProfileWizard::saveProfile()
{
    profile->structSettings->setParent(nullptr);
    profile->initializeNewProfile();
    // The receiver has the profile until the last row that shows it is gone. This window, whose
    // fields write into it, goes before any row can: it closes at once.
    ProfileShare::handOver(profile.get());
    emit newProfileMade(profile.release());
    close();
}

void NewProfileWizard::on_cancelButton_clicked()
{
    close();
}

void NewProfileWizard::enterStep(Step newStep)
{
    step = newStep;
    ui->backButton->setEnabled(step == Step::Editing);
    ui->finishButton->setEnabled(step == Step::Editing);
}

void NewProfileWizard::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QDialog::keyPressEvent(event);
        return;
    }
    if (auto *button = qobject_cast<QPushButton *>(focusWidget()))
        button->click();
}
