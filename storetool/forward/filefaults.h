#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <chrono>

namespace scnstore {

/// What cannot be read among the followed files, and since when. What lasts is news, and so is its end.
class FileFaults
{
public:
    using Clock = std::chrono::steady_clock;

    /// The calls for one look at all files: what is neither noted nor kept in between is no fault any more.
    void beginLook();
    void endLook();

    /// Something could not be read.
    void note(const QString& path, const QString& reason);

    /// Something was not tried: a fault that it had, it still has.
    void keep(const QString& path);

    /// Why something that is not damaged cannot be read: a folder, or a day file.
    static QString reasonFor(const QString& path);

    /// Sentences that nobody was told yet.
    QStringList takeNews();

private:
    struct Fault
    {
        QString reason;
        Clock::time_point since;
        bool isSeen = true; ///< In the look under way.
        bool isTold = false;
    };

    QMap<QString, Fault> m_faults;
    QStringList m_news;
};

} // namespace scnstore
