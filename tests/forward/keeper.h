#pragma once

#include <QDir>
#include <QMap>
#include <QString>

/// Gives each file of a data directory a second name, so that a run outlives its deletion: what the
/// launcher does.
class Keeper
{
public:
    /// `runs` is the folder of the kept runs.
    Keeper(const QString& dataDirectory, const QString& runs);

    /// Keeps what is in the data directory now. Where a file has a log, that gets a second name beside the
    /// file's.
    void keep();

    /// The kept day files.
    QStringList files() const;

private:
    const QDir m_data;
    const QDir m_runs;
    QMap<quint64, QString> m_folders;
};
