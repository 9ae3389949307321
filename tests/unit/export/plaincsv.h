#pragma once

#include <QByteArray>
#include <QMap>
#include <QPointF>
#include <QString>
#include <QVector>

// An export written in the plainest way, by the C library, as the reference for the engine's.

/// A curve as exported: its name and its samples, x the time in milliseconds.
struct PlainCurve
{
    QString name;
    QVector<QPointF> samples;
};

/// "yyyy-MM-dd hh:mm:ss" of the local time.
QByteArray plainTime(qint64 timestamp);

/// The value with fifteen decimals and an exponent.
QByteArray plainValue(double value);

/// The lines of a part above its data, with the byte order mark.
QByteArray plainHeader(const QVector<PlainCurve>& curves, const QString& separator,
                       const QMap<QString, QString>& header);

/// The data lines of an export.
QVector<QByteArray> plainRows(const QVector<PlainCurve>& curves, const QString& separator);

/// All parts of an export.
QVector<QByteArray> plainParts(const QVector<PlainCurve>& curves, const QString& separator,
                               const QMap<QString, QString>& header, int rowsPerPart);
