#pragma once

#include <QList>
#include <QObject>
#include <QString>

class ProfileName;
class QIODevice;
class QTextStream;

namespace HParser
{
class StructSetting;
class StructSettings;
} // namespace HParser

namespace XMLGeneratorParser
{
/// Writes profiles, and the charger's own settings with them where wanted, as the text of a profile
/// file. The layout is exact to the byte and stands in docs/formats.md. The text is UTF-8 whatever
/// the locale.
///
/// Rows and settings are not owned.
class WriteToXML : public QObject
{
    Q_OBJECT

public:
    explicit WriteToXML(QObject *parent = nullptr);

    /// Replaces the file as a whole, or leaves it as it was and returns false. globalSettings may
    /// be null.
    bool write(const QString &fileName, const QList<ProfileName *> &rows,
               const HParser::StructSettings *globalSettings);
    /// The same to a device that is open. False when it did not take everything.
    bool write(QIODevice *device, const QList<ProfileName *> &rows,
               const HParser::StructSettings *globalSettings);

    /// A line for each setting.
    void xmlOutputSettings(QTextStream *out, const QList<HParser::StructSetting *> &settings);
    QString boolToString(bool value) const;

signals:
    /// So many of count profiles have been written, though not yet put in place.
    void progressed(int done, int count);

private:
    void writeProfile(QTextStream *out, int id, const ProfileName *row);
};

} // namespace XMLGeneratorParser
