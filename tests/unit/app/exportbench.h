#pragma once

#include "windowbench.h"

#include <QByteArray>
#include <QDateTime>

#include <functional>
#include <memory>

struct ExportDialogHand;

/// A window with two channels in the scan list, and its exports. Each test has its own serial
/// number unless one is given, so that tests running in parallel have separate stores.
struct ExportBench : WindowBench
{
    static constexpr int kEndWaitMs = 20000;

    explicit ExportBench(const QString& serialNumber = serial());
    ~ExportBench();
    ExportBench(const ExportBench&) = delete;
    ExportBench& operator=(const ExportBench&) = delete;

    static QString serial();

    /// Applies the program's style sheet, and makes dialogs usable.
    static void wearTheProgramsStyle();

    /// Closes the store for good, once nobody uses it.
    static void closeStore();

    /// Removes the store's files, also those of an aborted run.
    static void removeStore();

    /// The exported files beside the program, which is where the dialog writes at first.
    static QStringList filesBesideTheProgram();

    /// Removes the store's files and those, also those of an aborted run.
    static void removeLeftovers();

    /// A scan after which the store holds `rows` readings of the first channel and one fewer of the
    /// second, one second apart; the run's texts exclude the last row.
    void scan(int rows = 5);
    QDateTime timeOf(int row) const { return start.addSecs(row); }
    static double valueOf(int curve, int row) { return (curve + 1) * 1.1 + row / 3.0; }

    /// The expected file of scan(5), byte for byte.
    QByteArray csv(const QString& separator) const;

    /// Clicks the export button and works in the dialog that opens, closing it if it is left open.
    void inDialog(const std::function<void(const ExportDialogHand&)>& work);

    /// Starts an export into a directory.
    void startExport(const QString& directory, const QString& name = QStringLiteral("Trace"));

    /// Exports into a directory and waits for the end.
    void exportTo(const QString& directory, const QString& name = QStringLiteral("Trace"));
    void waitForEnd() const;

    /// The overlay of an export: the second busy one.
    LoadingView* exportView() const;

    /// The message after the last export, caught before its three seconds were over.
    const QString& outcome() const { return m_outcome; }

    /// Whether the last message was an information shown for three seconds.
    bool isInformation() const;

    QDateTime start;

private:
    /// Catches the message that follows the end of an export's overlay.
    class OutcomeWatch;

    std::unique_ptr<OutcomeWatch> m_watch;
    bool m_awaited = false;
    QString m_outcome;
};

/// A text without the times in file names. The reported name reads the clock again, so it can be a
/// second ahead of the file's own.
QString withoutStamps(QString text);

/// Export files in a directory.
QStringList csvFiles(const QString& directory);
