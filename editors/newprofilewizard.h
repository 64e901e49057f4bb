#pragma once

#include <QDialog>

#include <memory>

class NewProfileEdit;
class ProfileSettings;

namespace HParser
{
class Generator;
}

namespace Ui
{
class NewProfileWizard;
}

/// Makes a new profile in two steps: the user chooses a chemistry of the schema, then fills in the
/// settings.
///
/// Application-modal; deletes itself on close. Return acts on the button that has the focus and on
/// no other, since it also ends the typing in a field.
class NewProfileWizard : public QDialog
{
    Q_OBJECT

public:
    /// Shows itself. A later change of the generator's schema is not followed.
    NewProfileWizard(HParser::Generator *generator, QWidget *parent = nullptr);
    ~NewProfileWizard() override;

signals:
    /// The user has finished. profile has all its values and belongs to the rows that show it from
    /// now on (see ProfileShare).
    void newProfileMade(ProfileSettings *profile);

public slots:
    void on_backButton_clicked();
    void on_finishButton_clicked();
    void on_cancelButton_clicked();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    enum class Step { Choosing = 0, Editing = 1, Finished = 2 };

    void setUpButtons();
    void askChemistry();
    /// The chemistry button that sent the signal was chosen.
    void on_nextButton_clicked();
    void editSettingsWiz(const QString &chemistry);
    void saveProfile();
    void enterStep(Step newStep);
    void fitScreen();

    std::unique_ptr<Ui::NewProfileWizard> ui;
    HParser::Generator *generator;
    std::unique_ptr<ProfileSettings> profile; ///< until it is handed on
    NewProfileEdit *form = nullptr;           ///< owns the profile's record until then
    Step step = Step::Choosing;
};
