#pragma once

#include <QString>

/// Name of the store's directory for an instrument: "<serial>_Data", where the serial number is
/// the third word of the identity, words being separated by single blanks. Slashes of both kinds
/// become "_", so that the name is one path component whatever the instrument says. A serial number
/// that is too long for the name of a file is cut to "<begin>-<hash>", where the hash is that of the
/// whole one. An identity without a third word gives "_Data".
QString dataDirectoryName(const QString& identity);

/// Removes a store directory with all it holds. Only a real directory (no link) that lies directly
/// below the application's directory is touched. Gives true if nothing of that name is left, false
/// if the name was refused or something in the directory could not be removed.
bool removeDataDirectory(const QString& directoryName);

/// Whether a store directory, given by its path, is a link to another place. What is there belongs to
/// somebody else: it is neither written to nor deleted.
bool isLinkedDirectory(const QString& path);
