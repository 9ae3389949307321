#include "support/programuser.h"

#include <QtCore/qtestsupport_core.h>

namespace {

constexpr int kWaitMs = 60000;

constexpr int kCheckBoxX = 356;
constexpr int kFirstRowY = 129;
constexpr int kRowHeight = 33;
const QPoint kStartButton(46, 880);
const QPoint kExportButton(1455, 880);
/// In the dialog, which is centred on the window: a point of its background, and the button that
/// writes the file.
const QPoint kExportDialog(530, 600);
const QColor kExportDialogColour(0x44, 0x44, 0x44);
const QPoint kExportToFile(840, 585);
/// A point of the recovery button left of its text, and its colour without hover.
const QPoint kRecoveryButton(730, 463);
const QColor kRecoveryColour(0x33, 0x33, 0x33);
const QPoint kNowhere(1400, 20);

const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");

} // namespace

ProgramUser::ProgramUser(const VirtualDisplay& display, ProgramProcess& program)
    : m_display(display)
    , m_program(program)
{
}

bool ProgramUser::bringUp(const SimulatedInstrument& instrument)
{
    // The busy overlay goes two seconds after the read-back; polling continues.
    return open(instrument) && waitForPolls(instrument, 5);
}

bool ProgramUser::open(const SimulatedInstrument& instrument)
{
    m_program.start({instrument.resource()});
    if (m_program.waitForLines(QStringLiteral("WID:"), 1, kWaitMs).isEmpty()) {
        return false;
    }
    const QString handle = QString::number(m_program.windowHandle());
    m_display.xdotool({QStringLiteral("windowmove"), QStringLiteral("--sync"), handle,
                       QStringLiteral("0"), QStringLiteral("0")});
    m_display.xdotool({QStringLiteral("windowsize"), QStringLiteral("--sync"), handle,
                       QStringLiteral("1500"), QStringLiteral("900")});
    return true;
}

bool ProgramUser::waitForPolls(const SimulatedInstrument& instrument, int count)
{
    const int wanted = instrument.received().count(kPoll) + count;
    return QTest::qWaitFor(
        [&instrument, wanted] { return instrument.received().count(kPoll) >= wanted; }, kWaitMs);
}

void ProgramUser::tickChannel(int row) const
{
    m_display.click(kCheckBoxX, kFirstRowY + row * kRowHeight);
}

void ProgramUser::clickStart() const
{
    m_display.click(kStartButton.x(), kStartButton.y());
}

bool ProgramUser::chooseChannels(const SimulatedInstrument& instrument, int count) const
{
    for (int row = 0; row < count; ++row) {
        tickChannel(row);
    }
    const QString list = QStringLiteral("ROUT:SCAN (@101:10%1)").arg(count);
    const auto listIsSent = [&instrument, &list] { return instrument.received().contains(list); };
    return QTest::qWaitFor(listIsSent, kWaitMs);
}

bool ProgramUser::startScan(const SimulatedInstrument& instrument, int channels) const
{
    if (!chooseChannels(instrument, channels)) {
        return false;
    }
    clickStart();
    const auto readingsCome = [&instrument] {
        return instrument.received().filter(QStringLiteral("R? ")).size() >= 3;
    };
    return QTest::qWaitFor(readingsCome, kWaitMs);
}

bool ProgramUser::openExportDialog() const
{
    m_display.click(kExportButton.x(), kExportButton.y());
    const auto dialogIsThere = [this] {
        return m_display.colorAt(kExportDialog.x(), kExportDialog.y()) == kExportDialogColour;
    };
    return QTest::qWaitFor(dialogIsThere, kWaitMs);
}

void ProgramUser::clickExportToFile() const
{
    m_display.click(kExportToFile.x(), kExportToFile.y());
}

bool ProgramUser::seesRecoveryButton() const
{
    m_display.movePointer(kNowhere.x(), kNowhere.y());
    return m_display.colorAt(kRecoveryButton.x(), kRecoveryButton.y()) == kRecoveryColour;
}

void ProgramUser::clickRecovery() const
{
    m_display.click(kRecoveryButton.x(), kRecoveryButton.y());
}
