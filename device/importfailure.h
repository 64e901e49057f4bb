#pragma once

#include <QCoreApplication>
#include <QMessageBox>
#include <QString>

namespace UploadDownload
{

/// What a box tells of an import that failed.
struct ImportFailure {
    Q_DECLARE_TR_FUNCTIONS(ImportFailure)

public:
    /// What to tell of the code that the import of a flash-stack image threw; any number is good.
    static ImportFailure of(int code);

    QString title;
    QMessageBox::Icon icon;
    QString text; ///< may hold a link
};

} // namespace UploadDownload
