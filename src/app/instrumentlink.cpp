#include "app/instrumentlink.h"

#include "app/instrumentreadback.h"
#include "app/linkwatch.h"
#include "common/guigate.h"
#include "common/helperthreads.h"
#include "common/threadassert.h"
#include "instrument/exchange.h"
#include "state/globals.h"

#include <QDebug>

#include <utility>

namespace scn {

namespace {

/// Runs on a helper. Touches the window only in steps on the GUI thread, which are dropped once it is gone.
void recoverHere(const std::shared_ptr<GuiGate>& gate, InstrumentDisplay& display,
                 const RecoverySteps& steps)
{
    LinkWatch link(gate);
    InstrumentReadBack readBack(link, display);
    if (!readBack.discover()) {
        gate->run(steps.fail);
        return;
    }
    bool isDone = true;
    gate->run([&steps, &isDone] { isDone = steps.buildPages(); });
    if (isDone) {
        return;
    }
    readBack.readAll();
    if (link.isLost()) {
        gate->run(steps.fail);
    } else {
        gate->post(steps.finish);
    }
}

} // namespace

InstrumentLink::InstrumentLink(std::shared_ptr<GuiGate> gate, InstrumentDisplay& display,
                               std::function<void()> onLost)
    : m_gate(std::move(gate))
    , m_display(display)
    , m_onLost(std::move(onLost))
{
}

InstrumentLink::~InstrumentLink() = default;

bool InstrumentLink::discover()
{
    assertGuiThread();
    LinkWatch link(m_gate);
    return InstrumentReadBack(link, m_display).discover();
}

void InstrumentLink::readAll()
{
    readBack([](InstrumentReadBack& instrument) { instrument.readAll(); });
}

void InstrumentLink::readChannel(int channel)
{
    readBack([channel](InstrumentReadBack& instrument) { instrument.readChannel(channel); });
}

void InstrumentLink::readOptions(int function, int channel)
{
    readBack([function, channel](InstrumentReadBack& instrument) {
        instrument.readOptions(function, channel);
    });
}

/// After a loss the rest of a gesture asks nothing more. One watch serves all read-backs: a single one is too
/// short for its missed replies to add up to the minute that counts as a loss.
void InstrumentLink::readBack(const std::function<void(InstrumentReadBack&)>& questions)
{
    assertGuiThread();
    if (!g_instrumentConnected) {
        return;
    }
    if (!m_watch) {
        m_watch = std::make_shared<LinkWatch>(m_gate);
    }
    const std::shared_ptr<LinkWatch> watch = m_watch;
    InstrumentReadBack instrument(*watch, m_display);
    questions(instrument);
    if (watch->isLost()) {
        giveUp();
    }
}

void InstrumentLink::giveUp()
{
    assertGuiThread();
    qWarning() << "仪器连接已丢失";
    g_instrumentConnected = false;
    m_watch.reset();
    m_onLost();
}

void InstrumentLink::recover(const RecoverySteps& steps)
{
    helperthreads::start(
        [gate = m_gate, display = &m_display, steps] { recoverHere(gate, *display, steps); });
}

void InstrumentLink::send(const QString& command)
{
    if (g_instrumentConnected) {
        exchange(command);
    }
}

} // namespace scn
