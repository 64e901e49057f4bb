#pragma once

#include <QMap>
#include <QObject>
#include <QString>

/// A `.velantor` file: a header of keys and values, then the members, which are text files of one
/// firmware release. Members are unpacked into the current directory byte by byte, so that their
/// characters survive in any locale; only the line ends become "\n".
class VelantorBundle : public QObject
{
    Q_OBJECT

public:
    /// The size in bytes beyond which a file is refused as a bundle, before memory and disk fill
    /// up. Real bundles have some hundred thousand; there is room for chargers with far more flash.
    static constexpr qint64 longestBundle = 16 * 1024 * 1024;

    /// Keeps the path, relative to the current directory or absolute; reads nothing.
    explicit VelantorBundle(QString path);

    /// The version that the header names, else the one in the file's name, else "0".
    static QString getBundleVersion(const QString &path);

    /// Whether the path is a plain file, or a link to one, of a size that a bundle can have.
    static bool canBeBundle(const QString &path);

    /// Reads the header. Without a readable file or a header no value changes.
    void parseKeyValuePairs();
    /// A value of the header, once it is read. An unknown key is entered with an empty value.
    QString valueFromKey(const QString &key);

    /// Reads the header and writes every member, over what stands there under its name. A member
    /// that MemberFile::mayWrite() refuses is left out. True when the bundle could be read and the
    /// device table that overwrites profiles is in place. What is larger than longestBundle, no
    /// plain file or made of hundreds of members is false with nothing written.
    bool parseBundle();
    /// The name of the firmware image among the members, empty until parseBundle() found one.
    QString getHexFileName() const { return hexFileName; }
    /// Whether parseBundle() came to the end line of the last firmware image and wrote all of it.
    /// If not, the file of that name may be half an image, or one of another bundle: not to be
    /// flashed.
    bool isFirmwareWhole() const { return firmwareIsWhole; }

    /// Puts the device table in place that lets the uploader erase the stored profiles, or the one
    /// that spares them. False, with no device table at all, where that member is missing.
    bool allowOverwriteProfiles(bool allow);

    /// Whether the line begins a member: the name between six slashes on either side.
    bool matchesStartLine(const QString &line) const;
    /// Whether the line ends a member; text around the marker does not matter.
    bool matchesEndLine(const QString &line) const;
    /// The name in a start line. The name of a firmware image is remembered.
    QString parseFileName(const QString &line);
    /// Stores a "key = value" line of the header; a line with other than two parts is ignored.
    void extractAndStoreKeyValuePair(const QString &line);
    /// Writes a member as UTF-8. False when its file cannot be opened.
    bool saveFile(const QString &content, const QString &fileName);

private:
    QString bundlePath;
    QString hexFileName;
    bool firmwareIsWhole = false;
    QMap<QString, QString> keyValuePairs;
};
