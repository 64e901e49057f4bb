#pragma once

#include <QWidget>

#include <memory>

class ProfileSettings;

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

namespace Ui
{
class NewProfileEdit;
}

/// The form of a profile that is being made: its name, its basic settings, the button "Override
/// Defaults" and its advanced settings. Everything can be edited at once; the advanced settings
/// follow the button alone.
class NewProfileEdit : public QWidget
{
    Q_OBJECT

public:
    /// profile must have its record; the form stays with the record that the profile has now.
    NewProfileEdit(HParser::Generator *generator, ProfileSettings *profile,
                   QWidget *parent = nullptr);
    ~NewProfileEdit() override;

    /// Gives the first field the focus.
    void focusFirstField();

signals:
    /// Opens the advanced settings for override, or closes them.
    void editAdvancedSignal(bool on);

public slots:
    /// Takes over the state of the button.
    void editAdvancedSlot(bool on);

private:
    std::unique_ptr<Ui::NewProfileEdit> ui;
    HParser::StructSettings *record;
    QWidget *firstField = nullptr;
};
