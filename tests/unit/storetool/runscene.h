#pragma once

#include <QByteArray>
#include <QMap>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

/// A folder with a data directory "SN1_Data", whose day files the test writes as the program would, and
/// from which runs can be kept as the launcher does.
class RunScene
{
public:
    RunScene();

    QString folder() const { return m_folder.path(); }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString dataDirectory() const { return path(QStringLiteral("SN1_Data")); }
    QString dayFile(const char* key) const;

    /// Writes the file of a day, "yyyyMMdd": the curves 101(Vdc) and 102(Vdc), one reading of each every
    /// `stepMs` milliseconds from six to twelve o'clock and on to `end`, "hh:mm".
    void addDay(const char* key, int stepMs = 60000, const char* end = "14:00") const;

    /// Runs a statement on a day file.
    void change(const char* key, const QString& sql) const;

    /// Keeps the run in "runs/SN1/2026-01-12_06-00-00", by hard links and a file of facts; the path.
    QString keep() const;

    /// Deletes the data directory, as the next start of a scan does.
    void clear() const;

    /// Name, size and modification of every file in a directory.
    static QStringList listing(const QString& directory);

private:
    QTemporaryDir m_folder;
};

/// Overwrites part of a file; with nothing, cuts it off there.
void spoil(const QString& path, qint64 place, const QByteArray& bytes);
