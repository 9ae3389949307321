#pragma once

#include "windowbench.h"

#include <QByteArray>
#include <QDateTime>

#include <functional>
#include <memory>

struct ExportDialogHand;

/// A window with two channels in the scan list, and its exports. The serial number is the test's own
/// unless one is given, so that tests that run side by side keep apart stores.
struct ExportBench : WindowBench
{
    static constexpr int kEndWaitMs = 20000;

    explicit ExportBench(const QString& serialNumber = serial());
    ~ExportBench();
    ExportBench(const ExportBench&) = delete;
    ExportBench& operator=(const ExportBench&) = delete;

    static QString serial();

    /// Gives the test the program's style sheet, and dialogs that can be worked.
    static void wearTheProgramsStyle();

    /// Closes the store for good, once nobody uses it.
    static void closeStore();

    /// Removes what the store has written, also in a run that was cut off.
    static void removeStore();

    /// A scan whose store then holds `rows` readings of the first channel and one less of the
    /// second, a second apart; the texts of the run leave out the last row.
    void scan(int rows = 5);
    QDateTime timeOf(int row) const { return start.addSecs(row); }
    static double valueOf(int curve, int row) { return (curve + 1) * 1.1 + row / 3.0; }

    /// What the file of scan(5) must be, byte for byte.
    QByteArray csv(const QString& separator) const;

    /// Clicks the export button, and works in the dialog that it opens. What the work leaves open is
    /// closed.
    void inDialog(const std::function<void(const ExportDialogHand&)>& work);

    /// Starts an export into a directory.
    void startExport(const QString& directory, const QString& name = QStringLiteral("Trace"));

    /// Exports into a directory and waits for the end.
    void exportTo(const QString& directory, const QString& name = QStringLiteral("Trace"));
    void waitForEnd() const;

    /// The overlay of an export: the second busy one.
    LoadingView* exportView() const;

    /// The message that followed the last export, caught before its three seconds were over.
    const QString& outcome() const { return m_outcome; }

    /// The last message was an information for three seconds.
    bool isInformation() const;

    QDateTime start;

private:
    /// Catches the message that follows the end of an export's overlay.
    class OutcomeWatch;

    std::unique_ptr<OutcomeWatch> m_watch;
    bool m_awaited = false;
    QString m_outcome;
};

/// A text without the times in the names of files. The name that an export tells is read from the
/// clock once more, so that it can be a second ahead of the file's own.
QString withoutStamps(QString text);

/// The files of a directory that an export may have left.
QStringList csvFiles(const QString& directory);
