#include "plot/loadturns.h"

#include "common/threadassert.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace scn {

void LoadTurns::ask(QObject* chart, quint64 shown, std::function<void()> slice)
{
    assertGuiThread();
    withdraw(chart);
    requests().append({chart, shown, std::move(slice)});
    arm();
}

void LoadTurns::withdraw(QObject* chart)
{
    QVector<Request>& waiting = requests();
    waiting.erase(
        std::remove_if(waiting.begin(), waiting.end(),
                       [chart](const Request& request) { return request.chart == chart; }),
        waiting.end());
}

QVector<LoadTurns::Request>& LoadTurns::requests()
{
    static QVector<Request> waiting;
    return waiting;
}

bool& LoadTurns::isArmed()
{
    static bool armed = false;
    return armed;
}

/// A withdrawn request leaves its turn armed: the next one must not add another, or two slices would follow
/// each other without an event in between.
void LoadTurns::arm()
{
    if (isArmed()) {
        return;
    }
    isArmed() = true;
    QTimer::singleShot(0, QCoreApplication::instance(), &LoadTurns::serveOne);
}

void LoadTurns::serveOne()
{
    isArmed() = false;
    QVector<Request>& waiting = requests();
    const auto newest = std::max_element(
        waiting.begin(), waiting.end(),
        [](const Request& one, const Request& other) { return one.shown < other.shown; });
    if (newest == waiting.end()) {
        return;
    }
    const Request request = *newest;
    waiting.erase(newest);
    if (!waiting.isEmpty()) {
        arm();
    }
    request.slice();
}

} // namespace scn
