#include "xml/readfromxml.h"

#include "ImportProfiles/parsedfselement.h"
#include "xml/lenientutf8.h"

#include <QFile>
#include <QFileInfo>

#include <memory>
#include <vector>

using ImportProfiles::ParsedFSElement;
using Properties = QMap<QString, QString>;

namespace XMLGeneratorParser
{
namespace
{
const QString globalSettingsTag = QStringLiteral("GlobalSettings");
const QString profileTag = QStringLiteral("profile");
const QString nameKey = QStringLiteral("name");

/// Below this a block of global settings is a stub.
constexpr int fewestUnitSettings = 5;
/// A profile file is three deep. The parser would keep every element that is open.
constexpr int greatestDepth = 1000;
constexpr int tokensPerProgress = 4096;

/// The type number of a chemistry's record; empty for an unknown name.
QString typeOfChemistry(const QString &name)
{
    static const QMap<QString, QString> types = {
        {QStringLiteral("Lithium"), QStringLiteral("8")},
        {QStringLiteral("Nickel"), QStringLiteral("9")},
        {QStringLiteral("Lead"), QStringLiteral("10")},
    };
    return types.value(name);
}

/// Whether no further token comes. A device that fails looks as if there were more to read.
bool isDone(const QXmlStreamReader *reader)
{
    return reader->atEnd() || reader->hasError() || reader->isEndDocument();
}
} // namespace

ReadFromXML::ReadFromXML(QObject *parent) : QObject(parent) {}

ReadFromXML::~ReadFromXML() = default;

void ReadFromXML::setProfiles(const QList<ParsedFSElement *> &elements)
{
    profiles = elements;
}

bool ReadFromXML::readProfiles(const QString &fileName)
{
    // Opening a pipe waits for its other end, and a device may have no end at all.
    if (!QFileInfo(fileName).isFile())
        return false;
    QFile file(fileName);
    // Line ends are left to the parser: in UTF-16 they are no single bytes.
    if (!file.open(QIODevice::ReadOnly))
        return false;
    readProfiles(&file);
    return true;
}

void ReadFromXML::readProfiles(QIODevice *device)
{
    source = device;
    depth = 0;
    tokens = 0;
    unitSettings = nullptr;

    LenientUtf8 text(device);
    connect(&text, &LenientUtf8::converted, this, &ReadFromXML::tellProgress);
    QXmlStreamReader reader(LenientUtf8::isMeantFor(device) ? &text : device);
    readFirstElement(&reader);
    const bool rootFound = reader.isStartElement();
    profiles = parseProfiles(&reader);
    sortProfilesByID();
    profileFile = rootFound && (!profiles.isEmpty() || unitSettings || !reader.hasError());

    tellProgress();
    source = nullptr;
    sharedTexts.clear();
}

/// The next token. What is nested too deeply ends the text.
QXmlStreamReader::TokenType ReadFromXML::readNext(QXmlStreamReader *reader)
{
    if (++tokens % tokensPerProgress == 0)
        tellProgress();
    const QXmlStreamReader::TokenType token = reader->readNext();
    if (token == QXmlStreamReader::StartElement && ++depth > greatestDepth)
        reader->raiseError(QStringLiteral("nested too deeply"));
    else if (token == QXmlStreamReader::EndElement)
        --depth;
    return reader->tokenType();
}

void ReadFromXML::tellProgress()
{
    if (source)
        emit progressed(source->pos(), source->size());
}

/// text, held in memory once for all records that have the same one.
QString ReadFromXML::sharedCopy(const QStringRef &text)
{
    constexpr int shortText = 64;
    constexpr int manyTexts = 10000;
    const QString copy = text.toString();
    if (copy.size() > shortText)
        return copy;
    const auto known = sharedTexts.constFind(copy);
    if (known != sharedTexts.constEnd())
        return *known;
    if (sharedTexts.size() < manyTexts)
        sharedTexts.insert(copy);
    return copy;
}

void ReadFromXML::readFirstElement(QXmlStreamReader *reader)
{
    while (!isDone(reader)) {
        if (readNext(reader) == QXmlStreamReader::StartElement &&
            reader->name() == QLatin1String("VelantorProfiles"))
            return;
    }
}

QList<ParsedFSElement *> ReadFromXML::parseProfiles(QXmlStreamReader *reader)
{
    QList<ParsedFSElement *> found;
    while (!isDone(reader)) {
        if (readNext(reader) != QXmlStreamReader::StartElement)
            continue;
        if (reader->name() == globalSettingsTag) {
            readNext(reader);
            if (ParsedFSElement *settings = parseUnitSettings(reader))
                unitSettings = settings;
        } else if (ParsedFSElement *profile = parseProfile(reader)) {
            found.append(profile);
        }
    }
    return found;
}

ParsedFSElement *ReadFromXML::parseUnitSettings(QXmlStreamReader *reader)
{
    Properties properties;
    // The token at hand counts as well: without white space in between it is the first setting.
    for (; !isDone(reader); readNext(reader)) {
        if (reader->isEndElement() && reader->name() == globalSettingsTag)
            break;
        if (!reader->isStartElement() || reader->name() == globalSettingsTag)
            continue;
        const QString key = sharedCopy(reader->name());
        readNext(reader);
        properties.insert(key, sharedCopy(reader->text()));
    }
    if (isDone(reader) || properties.size() < fewestUnitSettings)
        return nullptr;
    auto *element = new ParsedFSElement(this);
    element->setProperties(properties);
    return element;
}

ParsedFSElement *ReadFromXML::parseProfile(QXmlStreamReader *reader)
{
    const QXmlStreamAttributes attributes = reader->attributes();
    const auto attribute = [&](const char *name) {
        return sharedCopy(attributes.value(QLatin1String(name)));
    };
    Properties properties;
    properties.insert(QStringLiteral("active"), attribute("active"));
    properties.insert(QStringLiteral("modifiable"), attribute("modifiable"));
    // Under the name of the schema's member and, for those who look for that, under its key.
    properties.insert(QStringLiteral("defaultprofile"), attribute("default"));
    properties.insert(QStringLiteral("default"), attribute("default"));

    for (;;) {
        readNext(reader);
        if (isDone(reader))
            return nullptr;
        if (reader->isEndElement() && reader->name() == profileTag)
            break;
        if (!reader->isStartElement())
            continue;
        QString key = sharedCopy(reader->name());
        readNext(reader);
        const QString value = sharedCopy(reader->text());
        // Files of earlier versions name the chemistry in an element of that name.
        if (key == nameKey || key == QLatin1String("chemistry")) {
            key = nameKey;
            const QString type = typeOfChemistry(value);
            if (!type.isEmpty())
                properties.insert(QStringLiteral("type"), type);
        }
        properties.insert(key, value);
    }

    // Places in a file are none on a charger: whoever imports the profile gives it a free id.
    properties.insert(QStringLiteral("profile_id"), QStringLiteral("255"));
    auto *element = new ParsedFSElement(this);
    element->setID(attributes.value(QLatin1String("id")).toInt());
    element->setProperties(properties);
    return element;
}

void ReadFromXML::sortProfilesByID()
{
    std::vector<ParsedFSElement *> firstWithID(static_cast<std::size_t>(profiles.size()), nullptr);
    for (ParsedFSElement *profile : qAsConst(profiles)) {
        const int id = profile->getID();
        if (id < 0 || id >= profiles.size())
            continue;
        ParsedFSElement *&first = firstWithID[static_cast<std::size_t>(id)];
        if (!first)
            first = profile;
    }
    profiles.clear();
    for (ParsedFSElement *profile : firstWithID) {
        if (profile)
            profiles.append(profile);
    }
}

} // namespace XMLGeneratorParser
