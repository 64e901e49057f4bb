#pragma once

#include <QDialog>
#include <QMap>
#include <QString>

#include <memory>

namespace Ui
{
class UpdateCheckerDialog;
}

namespace NewFirmwareChecker
{
class NewFirmwareChecker;

/// Shows one check for a new bundle or for new software. A new bundle is fetched at once.
///
/// Application-modal; deletes itself on close, which drops what is being fetched.
class UpdateCheckerDialog : public QDialog
{
    Q_OBJECT

public:
    explicit UpdateCheckerDialog(QWidget *parent = nullptr);
    ~UpdateCheckerDialog() override;

    /// Shows the dialog and begins its check; returns at once. One of the two, once per dialog.
    void checkForNewBundle();
    void checkForNewSoftware();

public slots:
    /// Ends by the button, the close control or Escape.
    void done(int result) override;

signals:
    /// A new bundle lies in the current directory.
    void newBundle();

private slots:
    void onFirmwareInfoDownloaded(const QMap<QString, QString> &info);
    void onSoftwareInfoDownloaded(const QMap<QString, QString> &firmwareInfo,
                                  const QMap<QString, QString> &softwareInfo);
    void onFirmwareDownloaded();
    void onError();
    void onMainButtonPressed();

private:
    void makeChecker();
    void showWorking(const QString &status);
    void showEnd(const QString &status, int percent);

    std::unique_ptr<Ui::UpdateCheckerDialog> ui;
    NewFirmwareChecker *checker = nullptr;
};

} // namespace NewFirmwareChecker
