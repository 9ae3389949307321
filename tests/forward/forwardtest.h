#pragma once

#include "dayfilewriter.h"
#include "support/postgresserver.h"

#include <QObject>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

#include <memory>

/// What the tests of scn4070a-store forward have in common: a server for all of them, and for each a folder of
/// instruments and an empty database.
class ForwardTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

protected:
    /// The path of a day file in the instrument's data directory, which is created.
    QString file(const QString& instrument, const QString& name = QStringLiteral("20260112.db"));

    /// A file as the program has it while it writes, with a table for each curve.
    std::unique_ptr<DayFileWriter> writer(const QString& path, int curves = 2);

    /// The exit code of a follower that copies what there is; m_errors has what it said.
    int once(const QString& directory = {});

    /// Waits for these readings in the database.
    bool isForwarded(const QStringList& expected);

    std::unique_ptr<PostgresServer> m_server;
    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_errors;
};

inline constexpr int kForwardPatienceMs = 60000;

/// When the batches of the tests begin.
inline const char kMorning[] = "2026-01-12 06:00:00.000";

/// What lies in one table, a reading every 100 ms.
QVector<QPointF> points(int count, double firstValue, qint64 start);

/// The batch table of a curve.
QString table(int curve);

/// The statement that adds a reading to it.
QString insertion(int curve, qint64 time, const QString& value);
