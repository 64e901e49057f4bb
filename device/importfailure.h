#pragma once

#include <QMessageBox>
#include <QString>

namespace UploadDownload
{

/// What a box tells of an import that failed.
struct ImportFailure {
    QString title;
    QMessageBox::Icon icon;
    QString text; ///< may hold a link
};

/// What to tell of the code that the import of a flash-stack image threw; any number is good.
ImportFailure importFailure(int code);

} // namespace UploadDownload
