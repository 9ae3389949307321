#pragma once

#include "skippedwaits.h"
#include "storage/curvedatadb.h"

#include <QPointF>
#include <QString>
#include <QTemporaryDir>
#include <QVector>

#include <memory>

/// The present of the store that is read from: late on a winter day, so that the day files of the
/// tests are past.
qint64 presentTime();

/// "101(V)" for the first curve.
QString curveName(int curveId);

/// Points that rise, so many milliseconds apart.
QVector<QPointF> ramp(qint64 start, int size, qint64 step);

/// A store that knows twenty curves, and whose day files the tests write.
class ReadScene
{
public:
    ReadScene();
    ~ReadScene();
    ReadScene(const ReadScene&) = delete;
    ReadScene& operator=(const ReadScene&) = delete;

    CurveDataDB& store() { return *m_store; }

    /// Path of a day file by its key.
    QString pathOf(const QString& day) const;

    /// Closes every file, without the waits of a running program.
    void letGo();

private:
    const SkippedWaits m_waits;
    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
};
