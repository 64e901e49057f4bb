#pragma once

#include <QRect>
#include <QSize>

namespace Ui
{
class MainWindow;
}

/// Places the children of the main window by hand: the list grows with the height, the pane with
/// both, and what stands in the pane keeps to its centre line and its lower edge.
class PaneLayout
{
public:
    /// Remembers the edges that the form gave to the "Cancel" button of the profile view, and how
    /// far it put "Load Defaults" from the lower edge of the pane. ui must outlive this object.
    explicit PaneLayout(Ui::MainWindow *ui);

    /// Places everything for a window of this size.
    void place(const QSize &window);

private:
    void placeList(int height);
    /// Returns how far the pane's right and lower edges moved.
    QSize placePane(const QSize &window);
    void placeCancelButton(int centre);
    void placeDefaultsButton();
    bool showsDeviceSettings() const;
    /// The upper edge of what stands in the pane's first row.
    int firstRow() const;

    Ui::MainWindow *ui;
    QRect cancelInProfileView;
    int defaultsAboveLowerEdge;
};
