#pragma once

#include "profiles/profileshare.h"

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
class ProfileEdit;
}

/// The form of an existing profile: its basic settings, the button "Override Defaults", its
/// advanced settings and its statistics. The fields write into the profile at once.
///
/// While the button is up, the advanced settings hold their defaults and follow the basic ones.
/// While it is down, they keep what the user typed, within their bounds.
class ProfileEdit : public QWidget
{
    Q_OBJECT

public:
    /// profile must have its record. The form stays with the record and the statistics that the
    /// profile has now.
    ProfileEdit(HParser::Generator *generator, ProfileSettings *profile, QWidget *parent = nullptr);
    ~ProfileEdit() override;

signals:
    void enableEditingSignal(bool on);
    /// Opens the advanced settings for override, or closes them.
    void editAdvancedSignal(bool on);

public slots:
    /// Enters or leaves edit mode.
    void enableEditingSlot(bool on);
    /// Takes over the state of the button.
    void editAdvancedSlot();

private:
    std::unique_ptr<Ui::ProfileEdit> ui;
    /// The fields write into the record, and the form may stay behind when its row has gone.
    ProfileShare share;
    HParser::StructSettings *record;
};
