#include "suitestory.h"

#include "app/filenames.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "support/filecontent.h"
#include "support/updatepreference.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLineEdit>
#include <QProcess>
#include <QTest>

namespace
{
const QString REAL_UPLOADER = QStringLiteral("uploader.bin");
} // namespace

SuiteStory::SuiteStory()
{
    if (!home.isValid())
        qFatal("no home for the story");
    const QString runtime = home.filePath(QStringLiteral("run"));
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.filePath(QStringLiteral("data"))));
    chooseManualUpdates();
}

SuiteStory::~SuiteStory()
{
    window.reset();
    simulated.reset();
    QDir::setCurrent(QDir::rootPath());
}

SimulatorProcess &SuiteStory::plugIn(const QStringList &options)
{
    simulated.reset();
    simulated = std::make_unique<SimulatorProcess>(options);
    return *simulated;
}

QString SuiteStory::chargerMode()
{
    const QString key = QStringLiteral("mode ");
    for (const QString &line : charger().control(QStringLiteral("state"))) {
        if (line.startsWith(key))
            return line.mid(key.size());
    }
    return {};
}

void SuiteStory::mend()
{
    charger().control(QStringLiteral("clear"));
    if (charger().port() == QLatin1String("unplugged"))
        charger().control(QStringLiteral("plug"));
}

void SuiteStory::open()
{
    window = std::make_unique<MainWindow>();
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get(), PATIENCE))
        qFatal("the window does not come up");
}

void SuiteStory::replaceUploader(const QByteArray &shell)
{
    if (!QFile::exists(REAL_UPLOADER) && !QFile::rename(VEXA_FILE_NAME, REAL_UPLOADER))
        qFatal("there is no uploader");
    QFile::remove(VEXA_FILE_NAME);
    QFile script(VEXA_FILE_NAME);
    if (!script.open(QIODevice::WriteOnly))
        qFatal("no script for the uploader");
    script.write("#!/bin/sh\n" + shell);
    script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
}

void SuiteStory::bringUploaderBack()
{
    QFile::remove(VEXA_FILE_NAME);
    if (!QFile::rename(REAL_UPLOADER, VEXA_FILE_NAME))
        qFatal("the uploader was not replaced");
}

QAction *SuiteStory::action(const char *name) const
{
    return window->findChild<QAction *>(QLatin1String(name));
}

bool SuiteStory::isConnected() const
{
    return !action("connectAction")->isEnabled() && action("disconnectAction")->isEnabled();
}

QDialog *SuiteStory::dialog()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *widget : windows) {
        auto *dialog = qobject_cast<QDialog *>(widget);
        if (dialog && dialog->isVisible() && !qobject_cast<QMessageBox *>(widget))
            return dialog;
    }
    return nullptr;
}

bool SuiteStory::waitForDialogsToEnd()
{
    return QTest::qWaitFor([] { return !dialog() && !QApplication::activeModalWidget(); },
                           PATIENCE);
}

bool SuiteStory::startConnecting()
{
    action("connectAction")->trigger();
    return QTest::qWaitFor([] { return dialog() != nullptr; }, PATIENCE);
}

bool SuiteStory::pressConnect()
{
    auto *ports = dialog()->findChild<QComboBox *>(QStringLiteral("comPortsDropdown"));
    auto *button = dialog()->findChild<QPushButton *>(QStringLiteral("okButton"));
    const QString port = charger().portName();
    // A cable that was pulled and plugged in again has to be noticed first.
    const auto isListed = [=] { return button->isEnabled() && ports->findText(port) >= 0; };
    if (!QTest::qWaitFor(isListed, PATIENCE))
        return false;
    ports->setCurrentText(port);
    QTest::mouseClick(button, Qt::LeftButton);
    return waitForDialogsToEnd() && isConnected();
}

bool SuiteStory::connectCharger()
{
    return startConnecting() && pressConnect();
}

bool SuiteStory::readData()
{
    action("readDataAction")->trigger();
    return waitForDialogsToEnd();
}

bool SuiteStory::saveData()
{
    action("saveDataAction")->trigger();
    return endSaving();
}

bool SuiteStory::endSaving()
{
    const auto mayBeClosed = [] {
        QDialog *front = dialog();
        if (!front)
            return true;
        auto *ok = front->findChild<QPushButton *>(QStringLiteral("okButton"));
        return ok && ok->isEnabled() && !QApplication::activePopupWidget() &&
               !qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    };
    if (!QTest::qWaitFor(mayBeClosed, 2 * PATIENCE)) // four runs of the uploader
        return false;
    if (QDialog *front = dialog())
        QTest::mouseClick(front->findChild<QPushButton *>(QStringLiteral("okButton")),
                          Qt::LeftButton);
    return waitForDialogsToEnd();
}

bool SuiteStory::disconnectCharger()
{
    action("disconnectAction")->trigger();
    return !isConnected();
}

QListWidget *SuiteStory::list() const
{
    return window->findChild<QListWidget *>(QStringLiteral("profileNamesList"));
}

ProfileName *SuiteStory::row(int index) const
{
    return qobject_cast<ProfileName *>(list()->itemWidget(list()->item(index)));
}

QStringList SuiteStory::titles() const
{
    QStringList result;
    for (int i = 0; i < list()->count(); ++i)
        result.append(row(i)->getTitle());
    return result;
}

void SuiteStory::select(int index)
{
    const QRect place = list()->visualItemRect(list()->item(index));
    // The row's own labels let a click through to the list.
    QTest::mouseClick(row(index), Qt::LeftButton, {}, QPoint(20, place.height() / 2));
}

QWidget *SuiteStory::front() const
{
    QWidget *dialogInFront = dialog();
    return dialogInFront ? dialogInFront : window.get();
}

void SuiteStory::bringToFront() const
{
    // Off screen nobody activates the window when a dialog before it has gone.
    QApplication::setActiveWindow(front());
    if (!front()->isActiveWindow())
        qFatal("the window stays in the background");
}

void SuiteStory::press(const char *button) const
{
    bringToFront();
    auto *found = widget<QAbstractButton>(button);
    if (!found) {
        const auto buttons = front()->findChildren<QAbstractButton *>();
        for (QAbstractButton *candidate : buttons) {
            if (candidate->isVisible() && candidate->text() == QLatin1String(button))
                found = candidate;
        }
    }
    if (!found || !found->isVisible() || !found->isEnabled())
        qFatal("%s cannot be pressed", button);
    QTest::mouseClick(found, Qt::LeftButton);
}

QWidget *SuiteStory::field(const char *name) const
{
    const auto widgets = front()->findChildren<QWidget *>();
    for (QWidget *candidate : widgets) {
        const bool isField = qobject_cast<QLineEdit *>(candidate) ||
                             qobject_cast<QAbstractSpinBox *>(candidate) ||
                             qobject_cast<QCheckBox *>(candidate);
        if (isField && candidate->isVisible() && candidate->accessibleName() == QLatin1String(name))
            return candidate;
    }
    return nullptr;
}

QString SuiteStory::shown(const char *name) const
{
    const QWidget *found = field(name);
    if (const auto *line = qobject_cast<const QLineEdit *>(found))
        return line->text();
    if (const auto *spin = qobject_cast<const QAbstractSpinBox *>(found))
        return spin->text();
    if (const auto *box = qobject_cast<const QCheckBox *>(found))
        return box->isChecked() ? QStringLiteral("on") : QStringLiteral("off");
    return QStringLiteral("no field ") + QLatin1String(name);
}

void SuiteStory::type(const char *name, const QString &text) const
{
    bringToFront();
    QWidget *found = field(name);
    if (!found || !found->isEnabled())
        qFatal("nothing can be typed into %s", name);
    QTest::mouseClick(found, Qt::LeftButton, {}, QPoint(8, found->height() / 2));
    if (!found->hasFocus())
        qFatal("%s does not take the focus", name);
    QTest::keyClick(found, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(found, text);
}

void SuiteStory::enter(const char *name, const QString &text) const
{
    type(name, text);
    QTest::keyClick(field(name), Qt::Key_Tab);
}

void SuiteStory::choose(const QString &modelName) const
{
    bringToFront();
    QTest::mouseClick(model(), Qt::LeftButton);
    if (!QTest::qWaitFor([this] { return model()->view()->isVisible(); }, PATIENCE))
        qFatal("the list of models does not open");
    QTest::keyClick(model()->view(), Qt::Key_Home);
    for (int i = 0; i < model()->findText(modelName); ++i)
        QTest::keyClick(model()->view(), Qt::Key_Down);
    QTest::keyClick(model()->view(), Qt::Key_Return);
    if (!QTest::qWaitFor([this] { return !model()->view()->isVisible(); }, PATIENCE))
        qFatal("the list of models stays open");
}

void SuiteStory::tick(const char *name) const
{
    bringToFront();
    QWidget *found = field(name);
    if (!found || !found->isEnabled())
        qFatal("%s cannot be ticked", name);
    QTest::mouseClick(found, Qt::LeftButton, {}, QPoint(8, found->height() / 2));
}

QByteArray SuiteStory::workingFile(const QString &name)
{
    return contentOf(name);
}

QString SuiteStory::pageOnCharger()
{
    const QString image = home.filePath(QStringLiteral("page.hex"));
    charger().control(QStringLiteral("save ") + image);
    QProcess reader;
    reader.setProcessChannelMode(QProcess::MergedChannels);
    reader.start(QStringLiteral("python3"),
                 {QStringLiteral(VELANTOR_SOURCE_DIR "/tests/support/flashpage.py"), image});
    reader.waitForFinished();
    return QString::fromUtf8(reader.readAll());
}

QJsonObject SuiteStory::onCharger(const char *element)
{
    QJsonObject latest;
    const QJsonArray elements = QJsonDocument::fromJson(pageOnCharger().toUtf8()).array();
    for (const QJsonValue &value : elements) {
        if (value[QStringLiteral("element")].toString() == QLatin1String(element))
            latest = value.toObject();
    }
    return latest;
}

QList<QJsonObject> SuiteStory::profilesOnCharger()
{
    QMap<int, QJsonObject> latest;
    const QJsonArray elements = QJsonDocument::fromJson(pageOnCharger().toUtf8()).array();
    for (const QJsonValue &value : elements) {
        const QJsonObject element = value.toObject();
        if (element.contains(QStringLiteral("title")))
            latest[element[QStringLiteral("profile_id")].toInt()] = element;
    }
    QList<QJsonObject> kept;
    for (const QJsonObject &profile : qAsConst(latest)) {
        if (!profile[QStringLiteral("scheduled_for_deletion")].toBool())
            kept.append(profile);
    }
    return kept;
}
