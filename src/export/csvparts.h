#pragma once

#include <QFile>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTextStream>

class CurveDataDB;
class QByteArray;

/// The files of one CSV export, written one after the other. Unless keep() is called, none of them
/// is left behind when this goes. One thread at a time.
class CsvParts
{
public:
    /// @param curves names by id: the titles of every part
    CsvParts(CurveDataDB& store, const QString& path, const QString& separator,
             const QMap<QString, QString>& header, const QMap<int, QString>& curves);
    ~CsvParts();
    Q_DISABLE_COPY_MOVE(CsvParts)

    /// Begins the next part with its header. False if its file cannot be created.
    bool openNext();

    /// Appends to the part. What it takes reaches the file with the next flush() at the latest.
    void write(const QByteArray& text);
    void flush();
    void close();

    /// Whether all that was written, flushed and closed so far has reached its file.
    bool isWhole() const { return m_whole; }

    /// The parts stay when this goes.
    void keep() { m_kept = true; }

    /// The parts, by the names that the export tells. Each is read from the clock once more after
    /// the file was created, so it can be a second ahead of the file's own name.
    QStringList listedFiles() const { return m_listedFiles; }

private:
    void noteError();
    void removeFiles();

    CurveDataDB& m_store;
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
    QStringList m_createdFiles; ///< The names under which the files were really created.
};
