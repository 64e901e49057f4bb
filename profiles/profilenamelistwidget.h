#pragma once

#include <QListWidget>

class ProfileName;
class ProfileSettings;

/// The list's item of one profile. Its place in the list is the profile's identity.
///
/// Item and row widget live and die together: the list destroys the widget of a removed item as
/// soon as its event loop runs again, and the item goes with it. Until then both may be used.
class ProfileNameListWidget : public QListWidgetItem
{
public:
    /// An item with a row widget on settings, in which the row takes a share. The widget shows in
    /// the list only after one of the functions below has placed it.
    explicit ProfileNameListWidget(ProfileSettings *settings, QListWidget *list = nullptr,
                                   int type = QListWidgetItem::Type);
    ~ProfileNameListWidget() override;
    ProfileNameListWidget(const ProfileNameListWidget &) = delete;
    ProfileNameListWidget &operator=(const ProfileNameListWidget &) = delete;

    /// A new item, not yet in the list, on the same profile: for moving a row, since an item that
    /// leaves the list loses its widget. Shows what the old row shows, and an edit in progress goes
    /// on in it; the values to compare with for the mark of unsaved changes stay behind.
    static ProfileNameListWidget *clone(ProfileNameListWidget *item);

    void appendToList();
    void prependToList();
    void insertInList(int row);

    /// The row widget; null only while the list dies.
    ProfileName *profileName = nullptr;

    /// The one list of the application.
    static QListWidget *qlistWidget;

private:
    using QListWidgetItem::clone;
};
