#include "profiles/profilename.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"
#include "ui_profilename.h"

#include <QHelpEvent>
#include <QIcon>
#include <QPalette>
#include <QToolTip>

#include <utility>

namespace
{

/// Setting a style sheet polishes the widget and its children anew, also where it is the same one.
void applyStyleSheet(QWidget *widget, const QString &sheet)
{
    if (widget->styleSheet() != sheet)
        widget->setStyleSheet(sheet);
}

/// The picture of an active profile's lamp, or of another's. Read once for all rows.
const QIcon &lamp(bool on)
{
    static const QIcon green(QStringLiteral(":/new/images/greenlight.PNG"));
    static const QIcon none(QStringLiteral(":/new/images/nolight.PNG"));
    return on ? green : none;
}

/// A row is white or grey whatever the desktop's colours are, so what is written there is black.
void writeBlack(QLabel *label)
{
    QPalette colours = label->palette();
    colours.setColor(QPalette::WindowText, Qt::black);
    colours.setColor(QPalette::Text, Qt::black); // what counts within a list
    label->setPalette(colours);
}

void describe(QWidget *button, const QString &text)
{
    button->setToolTip(text);
    button->setAccessibleName(text);
}

} // namespace

ProfileName::ProfileName(ProfileNameListWidget *item, QWidget *parent)
    : QWidget(parent), listItem(item), ui(std::make_unique<Ui::ProfileName>())
{
    ui->setupUi(this);
    // Without it the background of the style sheet reaches the children only.
    setAttribute(Qt::WA_StyledBackground);

    writeBlack(ui->profileTitle);
    writeBlack(ui->profileSubtitle);
    setTitle(QStringLiteral("Title"));
    setSubtitle(QStringLiteral("Subtitle"));
    applyStyleSheet(ui->activeProfileButton, QStringLiteral("border:none;"));
    showActive(false);
    showDefault(false);
    for (QPushButton *button :
         {ui->activeProfileButton, ui->defaultProfileButton, ui->deleteProfileButton}) {
        button->setCursor(Qt::PointingHandCursor);
        button->installEventFilter(this);
    }
    applyStyleSheet(ui->deleteProfileButton,
                    QStringLiteral("color: rgb(180,180,180); border:none;"));
    describe(ui->deleteProfileButton, tr("Delete Profile"));
}

ProfileName::~ProfileName()
{
    if (!listItem)
        return;
    listItem->profileName = nullptr;
    // An item that left the list has no owner but its row.
    if (!listItem->listWidget())
        delete listItem;
}

void ProfileName::setProfileSettings(ProfileSettings *settings)
{
    profileSettings = settings;
    share = ProfileShare(settings);
    HParser::StructSettings *record = settings->structSettings;
    activeSetting = record->getStructSettingByName(QStringLiteral("active"));
    defaultSetting = record->getStructSettingByName(QStringLiteral("defaultprofile"));
    activeSetting->setBoolSilently(false);
    defaultSetting->setBoolSilently(false);
}

void ProfileName::setTitle(QString title)
{
    ui->profileTitle->setText(title);
}

QString ProfileName::getTitle() const
{
    return ui->profileTitle->text();
}

void ProfileName::setSubtitle(QString subtitle)
{
    ui->profileSubtitle->setText(subtitle);
}

QString ProfileName::getSubtitle() const
{
    return ui->profileSubtitle->text();
}

void ProfileName::setActive(bool on)
{
    showActive(on);
    activeSetting->setValue(on);
}

bool ProfileName::getActiveStatus() const
{
    return activeSetting->getBool();
}

void ProfileName::setDefault(bool on)
{
    showDefault(on);
    defaultSetting->setValue(on);
}

bool ProfileName::getDefaultStatus() const
{
    return defaultSetting->getBool();
}

void ProfileName::showActive(bool on)
{
    ui->activeProfileButton->setIcon(lamp(on));
    describe(ui->activeProfileButton, on ? tr("Active") : tr("Not Active"));
}

void ProfileName::showDefault(bool on)
{
    applyStyleSheet(ui->defaultProfileButton,
                    on ? QStringLiteral("color: black; border:none;")
                       : QStringLiteral("color: rgb(170,170,170); border:none;"));
    describe(ui->defaultProfileButton, on ? tr("Default") : tr("Not Default"));
}

void ProfileName::highlight()
{
    applyStyleSheet(this, QStringLiteral("background-color:rgb(200,200,200);"));
    setItalic(true);
}

void ProfileName::dehighlight()
{
    applyStyleSheet(this, QStringLiteral("background-color:rgb(255,255,255);"));
    setItalic(false);
}

void ProfileName::setItalic(bool on)
{
    for (QLabel *label : {ui->profileTitle, ui->profileSubtitle}) {
        QFont font = label->font();
        font.setItalic(on);
        label->setFont(font);
    }
}

void ProfileName::saveBackups()
{
    delete backupValues;
    backupValues = profileSettings->structSettings->deepCopyWithValues();
    backupValues->setParent(this);
    advancedSettingsEditedBackup = profileSettings->structSettings->getAdvancedSettingsEdited();
}

void ProfileName::restoreBackup()
{
    if (!backupValues)
        return;

    const bool wasActive = getActiveStatus();
    const bool wasDefault = getDefaultStatus();
    profileSettings->structSettings->setAdvancedSettingsEdited(advancedSettingsEditedBackup);
    restoreBackupValues();
    // A value whose bound stands behind it in the record was cut by the bound's edited value.
    restoreBackupValues();

    showActive(getActiveStatus());
    showDefault(getDefaultStatus());
    // Another row may have become the default one since: the list's owner has to sort that out.
    if (getActiveStatus() != wasActive)
        emit activeStatusChangeRequest(this, getActiveStatus());
    if (getDefaultStatus() != wasDefault)
        emit defaultStatusChangeRequest(this, getDefaultStatus());
}

void ProfileName::restoreBackupValues()
{
    for (const HParser::StructSetting *saved : backupValues->getOriginalOrderStructSettings()) {
        HParser::StructSetting *live =
            profileSettings->structSettings->getStructSettingByName(saved->name);
        live->advancedEnabled = advancedSettingsEditedBackup;
        const QString text = saved->getValue();
        switch (live->settingKind) {
        case HParser::SettingKind::Bool:
            live->setValue(text != QLatin1String("false"));
            break;
        case HParser::SettingKind::Num:
            live->setValue(text.toDouble());
            break;
        case HParser::SettingKind::String:
        case HParser::SettingKind::List:
            live->setValue(text);
            break;
        case HParser::SettingKind::Unknown:
            break;
        }
    }
}

void ProfileName::continueEditOf(ProfileName *other)
{
    editing = other->editing;
    advancedSettingsEditedBackup = other->advancedSettingsEditedBackup;
    delete backupValues;
    backupValues = std::exchange(other->backupValues, nullptr);
    if (backupValues)
        backupValues->setParent(this);
}

void ProfileName::saveCurrentValuesAsOriginal()
{
    originalValues = profileSettings->structSettings->deepCopyWithValues();
    originalValues->setParent(this);
}

void ProfileName::removeOriginalValues()
{
    originalValues = nullptr;
}

void ProfileName::on_activeProfileButton_clicked()
{
    emit activeStatusChangeRequest(this, !activeSetting->getBool());
}

void ProfileName::on_defaultProfileButton_clicked()
{
    emit defaultStatusChangeRequest(this, !defaultSetting->getBool());
}

void ProfileName::on_deleteProfileButton_clicked()
{
    emit deleteMeSignal(this);
}

void ProfileName::settingValueChanged()
{
    const bool changed =
        originalValues && !profileSettings->structSettings->compare(originalValues);
    setTitle(valueOf(QStringLiteral("title")) + QLatin1String(changed ? "**" : ""));
    updateDescription();
}

void ProfileName::updateTitle()
{
    setTitle(valueOf(QStringLiteral("title")));
}

void ProfileName::updateDescription()
{
    setSubtitle(valueOf(QStringLiteral("description")));
}

QString ProfileName::valueOf(const QString &member) const
{
    return profileSettings->structSettings->getStructSettingByName(member)->getValue();
}

void ProfileName::enterEvent(QEvent *event)
{
    applyStyleSheet(ui->deleteProfileButton, QStringLiteral("color: rgb(255,0,0); border:none;"));
    QWidget::enterEvent(event);
}

void ProfileName::leaveEvent(QEvent *event)
{
    applyStyleSheet(ui->deleteProfileButton,
                    QStringLiteral("color: rgb(180,180,180); border:none;"));
    QWidget::leaveEvent(event);
}

bool ProfileName::eventFilter(QObject *button, QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::eventFilter(button, event);
    // A tooltip takes the style sheet of the widget that it is shown for: of a button it would be
    // pale grey and without a frame.
    const auto *widget = static_cast<const QWidget *>(button);
    const QRect area(widget->mapTo(window(), QPoint(0, 0)), widget->size());
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), widget->toolTip(), window(),
                       area);
    return true;
}
