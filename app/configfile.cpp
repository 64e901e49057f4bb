#include "app/configfile.h"

#include "app/filenames.h"
#include "ui_configfile.h"

#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QSaveFile>
#include <QStringList>
#include <QTextStream>
#include <QWindow>

namespace
{
/// Bytes. A file that was written here has a few hundred, comments of its user make it some more.
constexpr qint64 largestFile = 1024 * 1024;

const QString head = QStringLiteral("############################\n"
                                    "## Configuration Settings ##\n"
                                    "############################\n"
                                    "\n"
                                    "# Any line starting with '#' is ignored\n"
                                    "\n");

QString text(bool automaticUpdates)
{
    return head + AUTO_UPDATES_KEY +
           QStringLiteral(" %1\n").arg(automaticUpdates ? QStringLiteral("true")
                                                        : QStringLiteral("false"));
}
} // namespace

ConfigFile::ConfigFile(QWidget *parent)
    : QDialog(parent),
      ui(std::make_unique<Ui::ConfigFile>()),
      configFile(std::make_unique<QFile>(CONFIG_FILE))
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

ConfigFile::~ConfigFile() = default;

void ConfigFile::readFile()
{
    if (openFile(ReadOnly))
        parseFile();
    else
        showFor(&ConfigFile::writeFile);
}

void ConfigFile::parseFile()
{
    QTextStream stream(configFile.get());
    stream.setCodec("UTF-8");
    for (const QString &line : stream.readAll().split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (line.trimmed().startsWith(QLatin1Char('#')))
            continue;
        const QStringList words = line.split(QLatin1Char(' '));
        if (words.first() == AUTO_UPDATES_KEY)
            automaticUpdates = words.value(1) != QLatin1String("false");
    }
    valid = true;
    emit parsed();
}

bool ConfigFile::openFile(Mode mode)
{
    // A folder or a pipe of that name is no file, and one of them would have us wait for ever.
    const QFileInfo there(CONFIG_FILE);
    if (there.exists() && !there.isFile())
        return false;
    if (mode == WriteOnly) {
        configFile = std::make_unique<QSaveFile>(CONFIG_FILE);
        return configFile->open(QIODevice::WriteOnly | QIODevice::Text);
    }
    configFile = std::make_unique<QFile>(CONFIG_FILE);
    if (there.size() > largestFile)
        return false;
    return configFile->open((mode == ReadOnly ? QIODevice::ReadOnly : QIODevice::ReadWrite) |
                            QIODevice::Text);
}

bool ConfigFile::writeData()
{
    const bool wanted = ui->autoRadio->isChecked();
    configFile->write(text(wanted).toUtf8());
    auto *replacement = qobject_cast<QSaveFile *>(configFile.get());
    // A full disk shows when the buffer is emptied, of which commit() does not tell.
    if (!replacement || !replacement->flush() || !replacement->commit())
        return false;
    automaticUpdates = wanted;
    valid = true;
    emit parsed();
    close();
    return true;
}

void ConfigFile::writeFile()
{
    save(tr("Cannot Create Config File"),
         tr("Unable to create the config file! To check for updates manually, go to File -> Check "
            "for new Firmware... and File -> Check for new software..."));
}

void ConfigFile::rewriteFile()
{
    save(tr("Cannot Write To Config File"),
         tr("Unable to overwrite the config file! To check for updates manually, go to File -> "
            "Check for new Firmware... and File -> Check for new software..."));
}

void ConfigFile::editFile()
{
    if (!isAuto())
        ui->manualRadio->setChecked(true);
    showFor(&ConfigFile::rewriteFile);
}

void ConfigFile::showEvent(QShowEvent *event)
{
    // A text that wraps does not make its window high enough for a large font.
    resize(width(), qMax(height(), heightForWidth(width())));
    QDialog::showEvent(event);
    const QWindow *window = parentWidget() ? parentWidget()->windowHandle() : nullptr;
    if (window && !window->isExposed())
        parentWidget()->installEventFilter(this);
}

/// At the start of the suite its window is not on the screen yet when the dialog comes up: the
/// dialog goes along to the place that it gets.
bool ConfigFile::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Move) {
        watched->removeEventFilter(this);
        adjustPosition(parentWidget());
    }
    return QDialog::eventFilter(watched, event);
}

/// Shows the dialog, whose button then leads there and nowhere else.
void ConfigFile::showFor(void (ConfigFile::*save)())
{
    disconnect(ui->done, nullptr, this, nullptr);
    connect(ui->done, &QPushButton::clicked, this, save);
    show();
    raise();
    activateWindow();
}

void ConfigFile::save(const QString &titleOfFailure, const QString &failure)
{
    if (openFile(WriteOnly) && writeData())
        return;
    valid = false;
    auto *box =
        new QMessageBox(QMessageBox::Warning, titleOfFailure, failure, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}
