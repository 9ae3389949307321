#pragma once

#include <QObject>
#include <QVector>

#include <functional>

namespace scn {

/// Lets the loads of several charts go on in turns, one slice each time the event loop comes round. The
/// chart shown last goes first, until it has all it needs. GUI thread.
class LoadTurns
{
public:
    /// Asks for a turn; a chart waits for one at a time. `shown` is higher the later the chart was
    /// shown.
    static void ask(QObject* chart, quint64 shown, std::function<void()> slice);

    /// Withdraws the request of a chart. A chart that is deleted withdraws it first.
    static void withdraw(QObject* chart);

private:
    struct Request
    {
        QObject* chart;
        quint64 shown;
        std::function<void()> slice;
    };

    static QVector<Request>& requests();
    static bool& isArmed();
    static void arm();
    static void serveOne();
};

} // namespace scn
