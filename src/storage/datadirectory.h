#pragma once

#include <QString>

/// Name of the store's directory for an instrument: "<serial>_Data", where the serial number is
/// the third word of the identity, words being separated by single blanks. Slashes of both kinds
/// become "_", so that the name is one path component whatever the instrument says. An identity
/// without a third word gives "_Data".
QString dataDirectoryName(const QString& identity);

/// Removes a store directory with all it holds. Only a real directory (no link) that lies directly
/// below the application's directory is touched. Gives true if nothing of that name is left, false
/// if the name was refused or something in the directory could not be removed.
bool removeDataDirectory(const QString& directoryName);
