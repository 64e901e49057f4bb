#include "profiles/profilenamelistwidget.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"

QListWidget *ProfileNameListWidget::qlistWidget = nullptr;

ProfileNameListWidget::ProfileNameListWidget(ProfileSettings *settings, QListWidget *list, int type)
    : QListWidgetItem(list, type), profileName(new ProfileName(this))
{
    profileName->setProfileSettings(settings);
    profileName->updateTitle();
    profileName->updateDescription();
    setSizeHint(QSize(0, profileName->height()));
}

ProfileNameListWidget::~ProfileNameListWidget()
{
    if (!profileName)
        return;
    profileName->forgetListItem();
    // A widget that was placed belongs to the list.
    if (!profileName->parent())
        delete profileName;
}

ProfileNameListWidget *ProfileNameListWidget::clone(ProfileNameListWidget *item)
{
    ProfileName *old = item->profileName;
    // Taken before the new row clears both flags of the profile.
    const bool active = old->getActiveStatus();
    const bool isDefault = old->getDefaultStatus();

    auto *copy = new ProfileNameListWidget(old->getProfileSettings());
    copy->profileName->setTitle(old->getTitle());
    copy->profileName->setSubtitle(old->getSubtitle());
    copy->profileName->setActive(active);
    copy->profileName->setDefault(isDefault);
    copy->profileName->continueEditOf(old);
    return copy;
}

void ProfileNameListWidget::appendToList()
{
    insertInList(qlistWidget->count());
}

void ProfileNameListWidget::prependToList()
{
    insertInList(0);
}

void ProfileNameListWidget::insertInList(int row)
{
    qlistWidget->insertItem(row, this);
    qlistWidget->setItemWidget(this, profileName);
}
