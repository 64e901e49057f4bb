#pragma once

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

namespace HParser
{
class StructSettings;

/// Reads a schema file and holds its structs, one for each record type of the charger. What a
/// profile holds is known nowhere else.
///
/// Schemas are trusted data shipped with the application: a malformed one ends the process.
class Generator : public QObject
{
    Q_OBJECT

public:
    explicit Generator(QObject *parent = nullptr);

    void setHFileLocation(const QString &file) { hFileLocation = file; }
    QString getHFileLocation() const { return hFileLocation; }
    void setTooltipFileLoc(const QString &file) { tooltipFileLoc = file; }

    bool parseSSAndTooltips();
    /// Parses the current schema file, replacing all structs. False only without a file name.
    bool parseSSFile();
    void parseSSFile(const QString &file);
    /// The strict schema that fits the version and hardware elements last read; empty for none.
    QString ssFileMatchingCurrentState() const;

    /// A master schema spans all hardware; a strict one describes one generation of chargers.
    bool isMaster() const { return masterFile; }
    /// Word address at which the flash stack begins.
    int getProfileStartWordAddress() const { return profileStartWordAddress; }
    /// Whether the image last read held lifetime statistics.
    bool getUnitStatsExists() const { return unitStatsExists; }
    void setUnitStatsExists(bool exists) { unitStatsExists = exists; }
    /// Help texts: type number of a struct, variable name, text.
    QMap<int, QMap<QString, QString>> getTooltips() const { return tooltips; }

    /// The generator's own structs. Null where the schema has none; stale after the next parse.
    StructSettings *getUnitSettingsStruct() const { return globalSettings; }
    StructSettings *getUnitStatsStruct() const { return globalStats; }
    StructSettings *getProfileStatsStruct() const { return profileStats; }
    StructSettings *getPageCounterStruct() const { return pageCounter; }
    StructSettings *getVersionInfoStruct() const { return versionInfo; }
    StructSettings *getHardwareVersionStruct() const { return hardwareVersion; }
    StructSettings *getBarcodeStruct() const { return barcodeStruct; }
    QList<StructSettings *> getChemistrySettings() const { return chemistrySettings; }
    StructSettings *getChemistrySettingsByName(const QString &name) const;
    StructSettings *getFSElementByName(const QString &name) const;
    /// The same among the elements that tell one charger from another: version, hardware, barcode.
    StructSettings *getVeficationFSElementByName(const QString &name) const;
    /// A new copy without trees and values, or null. The caller owns it.
    StructSettings *copyFlashstackElementSettings(const QString &name) const;

    /// Nominal voltage class of the limits in force: 24, 48, 72, or 0 for none of them.
    int hwVersion() const;

signals:
    void finished();
    void strictSSFileLoaded();
    void masterSSFileLoaded();

public slots:
    void chooseNewSSFile();
    void loadMasterSSFile();

private:
    void clearCurrentStructs();
    QStringList splitHeaderFile(const QString &file) const;
    StructSettings *processStruct(int headIndex);
    void fileStruct(StructSettings *element);
    void checkCompleteness() const;
    QMap<int, QMap<QString, QString>> parseTooltips() const;

    QString hFileLocation;
    QString tooltipFileLoc;
    StructSettings *globalSettings = nullptr;
    QList<StructSettings *> chemistrySettings;
    StructSettings *globalStats = nullptr;
    StructSettings *profileStats = nullptr;
    StructSettings *pageCounter = nullptr;
    StructSettings *versionInfo = nullptr;
    StructSettings *hardwareVersion = nullptr;
    StructSettings *barcodeStruct = nullptr;
    QMap<int, QMap<QString, QString>> tooltips;
    bool unitStatsExists = false;
    int profileStartWordAddress = 0;
    bool masterFile = false;
    QStringList fileContentsList;
};

} // namespace HParser
