#pragma once

#include <QListWidget>
#include <QPointer>

/// While it lives, a row can join the list at a cost that does not grow with the number of rows:
/// the list, which is hidden meanwhile, places its rows once, at the end, instead of all of them
/// after each new one.
class BulkInsertion
{
public:
    explicit BulkInsertion(QListWidget *list);
    ~BulkInsertion();
    BulkInsertion(const BulkInsertion &) = delete;
    BulkInsertion &operator=(const BulkInsertion &) = delete;

private:
    /// Null where there is nothing to be done at the end.
    QPointer<QListWidget> list;
    /// The list or what of it has the focus in its window; null for something else.
    QPointer<QWidget> focus;
};
