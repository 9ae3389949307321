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
    if (requests().isEmpty()) {
        arm();
    }
    requests().append({chart, shown, std::move(slice)});
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

void LoadTurns::arm()
{
    QTimer::singleShot(0, QCoreApplication::instance(), &LoadTurns::serveOne);
}

void LoadTurns::serveOne()
{
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
