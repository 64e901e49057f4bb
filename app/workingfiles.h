#pragma once

#include <QString>

/// The user's data folder, which is the process's current directory from start-up on, and the files
/// that every start unpacks into it.
namespace WorkingFiles
{
/// Makes the user's data folder and makes it the current directory. False where it cannot be made
/// or entered.
bool enterWorkingDirectory();

/// Replaces the tools, the device table and the embedded bundle by the copies in this program.
void unpackTools();
/// Replaces the delivered profile sets in the folder of saved profiles, which is made if missing.
void unpackDefaultProfiles();
/// Makes the folder of saved profiles unless it is there.
void makeSavedProfilesDirectory();

/// Copies the files directly in folder source over those of the same name in the current directory.
/// A program (".bin", ".exe" or ".mac" anywhere in its name) may only be executed afterwards: mode
/// 0111. What cannot be copied is left out; the checks of the installation find what is missing.
void unpackToolsFrom(const QString &source);
} // namespace WorkingFiles
