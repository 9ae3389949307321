#pragma once

#include <QString>
#include <QStringList>

/// Name of the store's directory for an instrument: "<serial>_Data", where the serial number is the
/// third word of the identity, words being separated by single blanks. Slashes of both kinds become
/// "_", so the name is one path component whatever the instrument sends. A serial number too long
/// for a file name is cut to "<begin>-<hash>", with the hash of the whole. An identity without a
/// third word gives "_Data".
QString dataDirectoryName(const QString& identity);

/// Deletes a store directory and its contents, but only a real directory (not a link) directly
/// below the application's. True if nothing of that name is left, false if the name was refused or
/// something could not be deleted.
bool removeDataDirectory(const QString& directoryName);

/// Whether a store directory, given by its path, is a link. Its target belongs to someone else: it
/// is neither written nor deleted.
bool isLinkedDirectory(const QString& path);

/// Paths of the day files in a directory, oldest first.
QStringList dayFilesIn(const QString& directory);

/// Those of them that may hold readings from start to end, ms since the epoch, whatever the time zone
/// of who named them.
QStringList dayFilesBetween(const QString& directory, qint64 start, qint64 end);
