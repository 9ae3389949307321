#pragma once

#include <QString>

/// The text as a file name that every file system takes: each of /\:*?"<>| becomes "_", and NUL
/// characters go. Any thread.
QString sanitizeFileName(QString text);
