#pragma once

class QMessageBox;
class QWidget;

namespace UploadDownload
{

/// A new box, owned by parent, that tells how to get a failed transfer going. It has no buttons
/// yet and is not shown.
QMessageBox *newTransferFailedBox(QWidget *parent);

} // namespace UploadDownload
