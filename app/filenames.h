#pragma once

#include <QString>

/// The names of the files in the working directory, which is the process's current directory.
/// Every module that touches a file takes its name from here.

/// The user's preferences.
inline const QString CONFIG_FILE = QStringLiteral("config.txt");
/// The one key of CONFIG_FILE.
inline const QString AUTO_UPDATES_KEY = QStringLiteral("automatic_updates");
/// Flash-stack image read from the charger.
inline const QString DOWNLOADED_PROFILES_FILE_NAME = QStringLiteral("fs_to_read.hex");
/// Flash-stack image to be written to the charger.
inline const QString UPLOADED_PROFILES_FILE_NAME = QStringLiteral("fs_to_write.hex");
/// Schema in force while no charger is connected.
inline const QString MASTER_SS_FILE_NAME = QStringLiteral("master.ss");
/// Strict schema: first flash-stack generation, 48 V.
inline const QString REV6_48V_SS_FILE_NAME = QStringLiteral("48V_FSv1.ss");
/// Strict schema: 48 V.
inline const QString REV7_48V_SS_FILE_NAME = QStringLiteral("48V_FSv2.ss");
/// Strict schema: 24 V.
inline const QString REV7_24V_SS_FILE_NAME = QStringLiteral("24V_rev7.ss");
/// Strict schema: 72 V.
inline const QString REV7_72V_SS_FILE_NAME = QStringLiteral("72V_rev7.ss");
/// Help texts of the settings.
inline const QString TOOLTIP_FILE_NAME = QStringLiteral("setting_tooltips.txt");
/// Oldest bundle that this application accepts.
inline const QString MIN_BUNDLE_VERSION_FOR_SOFTWARE = QStringLiteral("1.006");
/// Reserved name; no file of this name is written or read.
inline const QString BACKUP_XML_FILE_NAME = QStringLiteral("backup_fw_update.xml");
/// Device table that lets a firmware update erase the stored profiles (bundle member).
inline const QString FILE_FOR_VEXA_OVERWRITE_PROFILES =
    QStringLiteral("device_overwrite_profiles.txt");
/// Device table that spares the stored profiles (bundle member).
inline const QString FILE_FOR_VEXA_KEEP_PROFILES = QStringLiteral("device_keep_profiles.txt");
/// Device table that the uploader reads.
inline const QString FILE_FOR_VEXA_NAME = QStringLiteral("device.txt");
/// Header key of a bundle's version.
inline const QString VELANTOR_BUNDLE_VERSION_KEY = QStringLiteral("VERSION");
/// The uploader, a program of its own beside the other working files.
inline const QString VEXA_FILE_NAME = QStringLiteral("vexa.bin");
/// The folder of the profile files, in which file dialogs begin.
inline const QString SAVED_PROFILES_DIRECTORY = QStringLiteral("saved_profiles");
/// The end of the name of every bundle.
inline const QString BUNDLE_EXTENSION = QStringLiteral(".velantor");
/// What the uploader said in runs on profiles, one after the other.
inline const QString UPLOADER_LOG_FILE_NAME = QStringLiteral("vexaLog.txt");
/// The folder of the logs of firmware updates.
inline const QString LOG_DIRECTORY = QStringLiteral("logs");

/// Whether a file of this name is made executable when it is unpacked at the start.
inline bool isProgramName(const QString &name)
{
    return name.contains(QLatin1String(".bin")) || name.contains(QLatin1String(".exe")) ||
           name.contains(QLatin1String(".mac"));
}
