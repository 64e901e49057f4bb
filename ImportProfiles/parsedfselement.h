#pragma once

#include <QMap>
#include <QObject>
#include <QString>

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

namespace ImportProfiles
{
/// One record on its way in, as texts by tag, wherever it was read: a page of flash or a profile
/// file. It stays text until the schema is known that its values go into.
///
/// The property "name" is the display name of the record's struct, "type" the type number, and
/// every other key a schema key in tag form. Numbers are decimal text in display units, flags
/// "true" or "false". Empty text means that nothing is known.
class ParsedFSElement : public QObject
{
    Q_OBJECT

public:
    explicit ParsedFSElement(QObject *parent = nullptr);

    /// The place of a profile in its file; only profile files have one.
    int getID() const { return id; }
    void setID(int newID) { id = newID; }

    bool getActiveStatus() const { return isActive; }
    void setActiveStatus(bool active) { isActive = active; }
    bool getDefaultStatus() const { return isDefault; }
    void setDefaultStatus(bool isDefaultProfile) { isDefault = isDefaultProfile; }
    bool getModifiableStatus() const { return isModifiable; }
    void setModifiableStatus(bool modifiable) { isModifiable = modifiable; }

    QMap<QString, QString> getProperties() const { return properties; }
    /// Replaces all properties.
    void setProperties(const QMap<QString, QString> &newProperties) { properties = newProperties; }

    /// A copy of the generator's struct for this record, with the record's values in it, or null
    /// where the schema has no struct of the name. The caller owns it.
    HParser::StructSettings *toStructSettings(const HParser::Generator *generator) const;

    /// Dumps the record to standard output.
    void print() const;

private:
    int id = 0;
    bool isActive = false;
    bool isDefault = false;
    bool isModifiable = false;
    QMap<QString, QString> properties;
};

} // namespace ImportProfiles
