#include "storage/dbclearworker.h"

#include "storage/datadirectory.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QThread>

DBClearWorker::DBClearWorker(CurveDataDB* store, int curveId, const QString& dataDirectory)
    : m_store(store)
    , m_curveId(curveId)
    , m_dataDirectory(dataDirectory)
{
}

void DBClearWorker::doClear()
{
    const QDir directory(m_dataDirectory);
    if (isLinkedDirectory(m_dataDirectory)) {
        qCritical() << "数据目录是链接，不清理其内容：" << m_dataDirectory;
        emit clearFinished();
        return;
    }
    if (!directory.exists()) {
        emit clearFinished();
        return;
    }
    QFileInfoList files;
    for (const QString& filter :
         {QStringLiteral("*.db-wal"), QStringLiteral("*.db-shm"), QStringLiteral("*.db")}) {
        files +=
            directory.entryInfoList({filter}, QDir::Files | QDir::NoDotAndDotDot, QDir::Unsorted);
    }
    for (const QFileInfo& file : qAsConst(files)) {
        if (QThread::currentThread()->isInterruptionRequested()) {
            return; // the program ends: nobody waits for the answer
        }
        removeFile(file.absoluteFilePath());
    }
    emit clearFinished();
}

void DBClearWorker::removeFile(const QString& path)
{
    for (int attempt = 0; attempt < scn::storewaits::kDeleteAttempts; ++attempt) {
        if (QFile::remove(path)) {
            return;
        }
        scn::storeSleep(scn::storewaits::kDeleteRetry);
        if (QThread::currentThread()->isInterruptionRequested()) {
            return;
        }
    }
    qCritical() << "多次重试后仍无法删除文件（可能被其他进程占用）:" << path;
}
