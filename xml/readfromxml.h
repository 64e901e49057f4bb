#pragma once

#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QXmlStreamReader>

class QIODevice;

namespace ImportProfiles
{
class ParsedFSElement;
}

namespace XMLGeneratorParser
{
/// Reads a profile file into records. Lenient, since such files are edited by hand and some come
/// from earlier versions: whatever can be made out is taken, up to the place where the file is
/// broken, and values are checked only when a profile is made of them.
///
/// All records belong to the reader, also those that were dropped, and die with it. The memory that
/// they take grows with the size of the file and with nothing else.
class ReadFromXML : public QObject
{
    Q_OBJECT

public:
    explicit ReadFromXML(QObject *parent = nullptr);
    ~ReadFromXML() override;

    /// False only when there is no such file or when it cannot be opened. Whatever is not a plain
    /// file (a folder, a device, a pipe) counts as that.
    bool readProfiles(const QString &fileName);
    /// The same from a device that is open.
    void readProfiles(QIODevice *device);

    /// Whether the file was a list of profiles, even an empty one: not a file of which nothing
    /// could be made out.
    bool isProfileFile() const { return profileFile; }
    /// The charger's own settings; null where the file has none.
    ImportProfiles::ParsedFSElement *getUnitSettings() const { return unitSettings; }
    /// The profiles by their place in the file.
    QList<ImportProfiles::ParsedFSElement *> getProfiles() const { return profiles; }
    /// Not owned.
    void setProfiles(const QList<ImportProfiles::ParsedFSElement *> &elements);

    /// The steps of reading. Each of the parsers starts behind a start tag and ends at the end tag
    /// of its kind, at the end of the text or at an error in it. A profile's start tag may have any
    /// name, its end tag is </profile>.
    void readFirstElement(QXmlStreamReader *reader);
    QList<ImportProfiles::ParsedFSElement *> parseProfiles(QXmlStreamReader *reader);
    /// Null for a profile that is cut off.
    ImportProfiles::ParsedFSElement *parseProfile(QXmlStreamReader *reader);
    /// Null for settings that are cut off, and for hardly any settings.
    ImportProfiles::ParsedFSElement *parseUnitSettings(QXmlStreamReader *reader);
    /// Keeps the first record of each id from 0 to the number of records minus 1, in this order.
    void sortProfilesByID();

signals:
    /// Some more of the file has been read; both in bytes. Comes often.
    void progressed(qint64 done, qint64 size);

private:
    QXmlStreamReader::TokenType readNext(QXmlStreamReader *reader);
    void tellProgress();
    QString sharedCopy(const QStringRef &text);

    QList<ImportProfiles::ParsedFSElement *> profiles;
    ImportProfiles::ParsedFSElement *unitSettings = nullptr;
    bool profileFile = false;
    /// What is being read, or null.
    QIODevice *source = nullptr;
    /// How many elements are open.
    int depth = 0;
    int tokens = 0;
    /// Texts that many records have in common.
    QSet<QString> sharedTexts;
};

} // namespace XMLGeneratorParser
