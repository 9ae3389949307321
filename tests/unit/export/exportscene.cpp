#include "exportscene.h"

#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "support/logcapture.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace {

constexpr const char* kPresent = "2026-03-10 12:00:00.000";

qint64 timeOf(const QPointF& sample)
{
    return static_cast<qint64>(sample.x());
}

/// Where two texts start to differ, in words.
QString firstDifference(const QByteArray& written, const QByteArray& expected)
{
    const auto sizes = std::min(written.size(), expected.size());
    const auto place = std::mismatch(written.cbegin(), written.cbegin() + sizes, expected.cbegin());
    const auto from = std::max<int>(0, static_cast<int>(place.first - written.cbegin()) - 60);
    return QStringLiteral("%1 bytes, expected %2; written: ...%3 expected: ...%4")
        .arg(QString::number(written.size()), QString::number(expected.size()),
             QString::fromUtf8(written.mid(from, 160)), QString::fromUtf8(expected.mid(from, 160)));
}

} // namespace

ExportOutcome runExport(const ExportOrder& order,
                        const std::function<void(CsvExportFromDBThread&)>& atProgress)
{
    const LogCapture log;
    ExportOutcome outcome;
    {
        CsvExportFromDBThread thread(order.store, order.ids, order.path, order.separator,
                                     order.header, order.start, order.end);
        if (order.rowsPerPart > 0) {
            thread.setRowsPerPart(order.rowsPerPart);
        }
        if (order.rowsPerBlock > 0) {
            thread.setRowsPerBlock(order.rowsPerBlock);
        }
        QObject::connect(
            &thread, &CsvExportFromDBThread::exportProgress, &thread,
            [&](qlonglong processed, qlonglong total) {
                outcome.progress.append(processed);
                outcome.totals.append(total);
                if (atProgress) {
                    atProgress(thread);
                }
            },
            Qt::DirectConnection);
        QObject::connect(
            &thread, &CsvExportFromDBThread::exportFinished, &thread,
            [&](ExportResult result, const QStringList& files) {
                outcome.result = result;
                outcome.files = files;
                ++outcome.finished;
            },
            Qt::DirectConnection);
        thread.startExport();
        thread.wait();
    }
    outcome.log = log.lines();
    return outcome;
}

QMap<int, QByteArray> partsIn(const QString& directory)
{
    static const QRegularExpression format(QStringLiteral("_(\\d+)_\\d{14}\\.[^.]*$"));
    QMap<int, QByteArray> parts;
    const QStringList names = QDir(directory).entryList(QDir::Files);
    for (const QString& name : names) {
        QFile file(directory + QLatin1Char('/') + name);
        if (!file.open(QIODevice::ReadOnly)) {
            qFatal("%s cannot be read", qPrintable(name));
        }
        parts.insert(format.match(name).captured(1).toInt(), file.readAll());
    }
    return parts;
}

QVector<QPointF> samplesFrom(qint64 first, int count, qint64 step)
{
    QVector<QPointF> samples;
    for (int i = 0; i < count; ++i) {
        samples.append(QPointF(static_cast<double>(first + i * step), (i - 5) * 0.5));
    }
    return samples;
}

ExportScene::ExportScene()
{
    setPresent(localTime(kPresent));
    m_store = std::make_unique<TestStore>();
}

void ExportScene::know(const QMap<int, QString>& curves)
{
    {
        DayFileWriter today(store()->todayDbPath());
        for (auto curve = curves.cbegin(); curve != curves.cend(); ++curve) {
            today.addCurve(curve.key(), *curve);
        }
    }
    m_store->restart();
}

void ExportScene::addDay(const char* key, const QVector<DayCurve>& curves)
{
    const QDate date = QDate::fromString(QString::fromLatin1(key), QStringLiteral("yyyyMMdd"));
    const qint64 midnight = date.startOfDay().toMSecsSinceEpoch();
    DayFileWriter day(m_store->path(key));
    day.execute(QStringLiteral("PRAGMA synchronous = OFF"));
    for (const DayCurve& curve : curves) {
        day.addCurve(curve.id, curve.name);
        QMap<qint64, QVector<QPointF>> batches;
        for (const QPointF& sample : curve.samples) {
            batches[(timeOf(sample) - midnight) / kBatchMs].append(sample);
        }
        for (auto batch = batches.cbegin(); batch != batches.cend(); ++batch) {
            const qint64 start = midnight + batch.key() * kBatchMs;
            day.addBatch(curve.id, start, DayFileWriter::tableName(curve.id, start), *batch);
        }
        m_samples[curve.name] += curve.samples;
    }
}

void ExportScene::append(int curveId, qint64 timestamp, double value)
{
    store()->appendPoint(curveId, timestamp, value);
    m_samples[store()->curveNames().value(curveId)].append(
        QPointF(static_cast<double>(timestamp), value));
}

void ExportScene::forget(const QString& name, qint64 start, qint64 end)
{
    QVector<QPointF>& samples = m_samples[name];
    const auto gone = [start, end](const QPointF& sample) {
        return timeOf(sample) >= start && timeOf(sample) <= end;
    };
    samples.erase(std::remove_if(samples.begin(), samples.end(), gone), samples.end());
}

ExportOrder ExportScene::order(const QList<int>& ids, qint64 start, qint64 end)
{
    ExportOrder order;
    order.store = store().get();
    order.ids = ids;
    order.path = m_output.filePath(QStringLiteral("curves.csv"));
    order.start = start;
    order.end = end;
    return order;
}

QVector<QByteArray> ExportScene::expectedParts(const ExportOrder& order)
{
    QVector<PlainCurve> curves;
    const QMap<int, QString> names = store()->curveNames();
    for (auto name = names.cbegin(); name != names.cend(); ++name) {
        if (!order.ids.contains(name.key())) {
            continue;
        }
        PlainCurve curve{*name, {}};
        const QVector<QPointF> samples = m_samples.value(*name);
        for (const QPointF& sample : samples) {
            if (timeOf(sample) >= order.start && timeOf(sample) <= order.end) {
                curve.samples.append(sample);
            }
        }
        std::stable_sort(curve.samples.begin(), curve.samples.end(),
                         [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); });
        curves.append(curve);
    }
    const int perPart = order.rowsPerPart > 0 ? order.rowsPerPart : std::numeric_limits<int>::max();
    return plainParts(curves, order.separator, order.header, perPart);
}

QString ExportScene::difference(const ExportOrder& order)
{
    const ExportOutcome outcome = runExport(order);
    const QMap<int, QByteArray> written = partsIn(m_output.path());
    for (const QString& name : QDir(m_output.path()).entryList(QDir::Files)) {
        QFile::remove(m_output.filePath(name));
    }
    const QVector<QByteArray> expected = expectedParts(order);
    if (outcome.result != ExportSuccess || outcome.finished != 1) {
        return QStringLiteral("result %1, told %2 times: %3")
            .arg(QString::number(outcome.result), QString::number(outcome.finished),
                 outcome.log.join(QLatin1Char('\n')));
    }
    if (written.size() != expected.size() || outcome.files.size() != expected.size()) {
        return QStringLiteral("%1 parts, %2 listed, expected %3")
            .arg(written.size())
            .arg(outcome.files.size())
            .arg(expected.size());
    }
    for (int part = 1; part <= expected.size(); ++part) {
        if (written.value(part) != expected.at(part - 1)) {
            return QStringLiteral("part %1: ").arg(part) +
                   firstDifference(written.value(part), expected.at(part - 1));
        }
    }
    return {};
}
