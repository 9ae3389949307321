#include "storage/curveread.h"

#include "storage/connectionpool.h"
#include "storage/datadirectory.h"
#include "storage/dayfiles.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/storedchanges.h"

#include <QDate>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace scn {

namespace {

/// Files that one load of a chart keeps open: a process has a thousand or so.
constexpr int kMostHeldFiles = 400;

/// Ten years: within such a range every day is looked up, and a missing file gets its log line.
constexpr quint64 kLongestCountMs = Q_UINT64_C(315576000000);

/// First moment of the oldest day with a file; now if there is none.
qint64 startOfOldestDay(const QString& directory)
{
    const QStringList files =
        QDir(directory).entryList({QStringLiteral("????????.db")}, QDir::Files, QDir::Name);
    for (const QString& file : files) {
        const QDate day = QDate::fromString(file.left(8), QStringLiteral("yyyyMMdd"));
        if (day.isValid()) {
            return day.startOfDay().toMSecsSinceEpoch();
        }
    }
    return storeNow();
}

/// Where counting days starts: at the start of the range or, for more than ten years, as many whole
/// days later as have no file. Otherwise a chart zoomed out further and further would block
/// everyone who needs the store.
qint64 firstTimeToLookAt(qint64 start, qint64 end, const QString& directory)
{
    const auto distance = [](qint64 from, qint64 to) {
        return static_cast<quint64>(to) - static_cast<quint64>(from);
    };
    const qint64 last = std::min(end, storeNow());
    if (start > last || distance(start, last) <= kLongestCountMs) {
        return start;
    }
    const qint64 first = std::min(last, startOfOldestDay(directory));
    if (first <= start) {
        return start;
    }
    return first - static_cast<qint64>(distance(start, first) % static_cast<quint64>(kDayLengthMs));
}

/// The files that a read opens, oldest first. Days are counted from the start of the
/// range, so a range shorter than a day that crosses midnight has only the first day. All future
/// times have today's key, so the count ends with the first of them.
QStringList filesOfRange(qint64 start, qint64 end, const DayFiles& files)
{
    if (files.isReadOnly()) {
        return dayFilesBetween(files.directory(), start, end);
    }
    const qint64 now = storeNow();
    QStringList paths;
    QString lastKey;
    qint64 time = firstTimeToLookAt(start, end, files.directory());
    while (time <= end) {
        const QString key = dateKeyForTime(time);
        if (key != lastKey) {
            paths.append(files.path(key));
            lastKey = key;
        }
        const quint64 left = static_cast<quint64>(end) - static_cast<quint64>(time);
        if (time > now || left < static_cast<quint64>(kDayLengthMs)) {
            break;
        }
        time += kDayLengthMs;
    }
    return paths;
}

} // namespace

CurveRead::CurveRead(const ReadRange& range, HeldFiles* files)
    : m_window(range, nullptr)
    , m_heldFiles(files)
{
}

bool CurveRead::proceed(const Store& store, ReadSlice& slice)
{
    if (!m_hasBegun) {
        m_hasBegun = true;
        m_window = WindowRead(range(), &store.orders);
        m_paths = filesOfRange(range().start, range().end, store.files);
    }
    for (; m_nextPath < m_paths.size(); ++m_nextPath) {
        if (slice.isOver() || !readFile(store, m_paths.at(m_nextPath), slice)) {
            return false;
        }
        if (m_hasFailed) {
            store.changes.noteDoubt();
        }
    }
    const ReadStep step = m_window.finish(slice);
    if (step != ReadStep::Failed) {
        return step == ReadStep::Done;
    }
    // Rows are not where they were: read them one by one.
    m_window = WindowRead(range(), nullptr);
    m_nextPath = 0;
    return proceed(store, slice);
}

/// Adds the points of one day file. False if that takes another slice.
bool CurveRead::readFile(const Store& store, const QString& path, ReadSlice& slice)
{
    if (!m_db && !openFile(store, path)) {
        return true;
    }
    slice.noteFile();
    for (; m_nextBatch < m_batches.size(); ++m_nextBatch) {
        // Someone may have closed it since the last slice.
        const ReadStep step =
            m_db->isOpen()
                ? m_window.addTable(path, m_db, m_batches.at(m_nextBatch).tableName, slice)
                : ReadStep::Failed;
        if (step == ReadStep::Unfinished) {
            return false;
        }
        m_hasFailed = m_hasFailed || step == ReadStep::Failed;
    }
    m_db.reset();
    ConnectionPool::instance().releaseConnection(path);
    return true;
}

/// Opens a day file and asks it for the batches. False if it cannot be opened.
bool CurveRead::openFile(const Store& store, const QString& path)
{
    m_hasFailed = false;
    m_nextBatch = 0;
    if (!QFileInfo::exists(path)) {
        qDebug() << "数据库文件不存在:" << path;
        return false;
    }
    m_db = store.files.open(path);
    if (!m_db || !m_db->isOpen()) {
        qWarning() << "无法打开数据库:" << path;
        m_hasFailed = true;
        m_db.reset();
        return false;
    }
    if (m_heldFiles && m_heldFiles->size() < kMostHeldFiles) {
        m_heldFiles->insert(path, m_db);
    }
    m_batches = store.batchesOf(range(), m_db, &m_hasFailed);
    if (m_batches.isEmpty()) {
        qDebug() << "在数据库" << path << "中未找到匹配的分片";
    }
    return true;
}

} // namespace scn
