#pragma once

#include <QString>

/// The text as a file name valid on every file system: each of /\:*?"<>| becomes "_", and NUL
/// characters are removed. Any thread.
QString sanitizeFileName(QString text);
