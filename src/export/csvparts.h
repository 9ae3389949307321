#pragma once

#include <QFile>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTextStream>

class CurveDataDB;
class QByteArray;

namespace scn {

/// The files of one CSV export, written one after another, or one open device that is given to it.
/// Unless keep() is called, the destructor removes the files. One thread at a time.
class CsvParts
{
public:
    /// @param curves names by id: the titles of every part
    CsvParts(CurveDataDB& store, const QString& path, const QString& separator,
             const QMap<QString, QString>& header, const QMap<int, QString>& curves);

    /// One part, on a device that stays open and whose fate is its owner's.
    CsvParts(CurveDataDB& store, QFileDevice& device, const QString& separator,
             const QMap<QString, QString>& header, const QMap<int, QString>& curves);
    ~CsvParts();
    Q_DISABLE_COPY_MOVE(CsvParts)

    /// Starts the next part with its header. False if its file cannot be created.
    bool openNext();

    /// Appends to the part. The data reaches the file at the next flush() at the latest.
    void write(const QByteArray& text);
    void flush();
    void close();

    /// Whether everything written, flushed and closed so far has reached its file.
    bool isWhole() const { return m_whole; }

    /// Keeps the parts.
    void keep() { m_kept = true; }

    /// The parts, by their reported names. Each name reads the clock again after the file was
    /// created, so it can be a second ahead of the file's own.
    QStringList listedFiles() const { return m_listedFiles; }

private:
    void noteError();
    void removeFiles();

    CurveDataDB& m_store;
    QFileDevice* m_device; ///< The open part: our file, or what was given.
    QString m_path;
    QString m_separator;
    QMap<QString, QString> m_header;
    QMap<int, QString> m_curves;
    QFile m_file;
    QTextStream m_stream;
    int m_index = 0;
    bool m_whole = true;
    bool m_kept = false;
    QStringList m_listedFiles;
    QStringList m_createdFiles; ///< The actual file names.
};

} // namespace scn
