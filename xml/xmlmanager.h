#pragma once

#include <QObject>
#include <QString>

class QListWidget;
class QWidget;

namespace HParser
{
class Generator;
}
namespace ImportProfiles
{
class ImportProfilesMain;
}

namespace XMLGeneratorParser
{
class BusyDialog;
class ReadFromXML;
class WriteToXML;

/// Takes profiles, and the charger's own settings with them, from the list to files and back. Asks
/// the user for files, and whether what is loaded joins the list or replaces it.
class XMLManager : public QObject
{
    Q_OBJECT

public:
    /// parent, which may be null, is that of dialogs. Nothing is owned; all must outlive this.
    XMLManager(QWidget *parent, QListWidget *profileList,
               ImportProfiles::ImportProfilesMain *importProfiles, HParser::Generator *generator,
               QObject *qparent = nullptr);

    /// Adds the profiles of a file to the list and takes over its settings. No question is asked.
    /// False when the file cannot be read.
    bool importFromXML(const QString &fileName);
    /// False, and the file as it was, when it cannot be written.
    bool exportToXML(const QString &fileName, bool withGlobalSettings);

    /// File dialogs begin in the folder of this file from now on.
    void setLastUsedDirectory(const QString &fileName);

public slots:
    void on_importFromXMLButtonClicked();
    void on_exportAsXMLButtonClicked(bool withGlobalSettings);

signals:
    void deleteAllProfiles();
    void unitSettingsRead_xml(bool success);

private:
    bool save(WriteToXML *writer, const QString &fileName, bool withGlobalSettings) const;
    bool mayLoad(const ReadFromXML &reader, BusyDialog *busy);
    void load(const ReadFromXML &reader, BusyDialog *busy);

    QWidget *parent;
    QString exportFileName;
    QString importFileName;
    QListWidget *profileList;
    ImportProfiles::ImportProfilesMain *importProfiles;
    HParser::Generator *generator;
    QString lastUsedDirectory;
};

} // namespace XMLGeneratorParser
