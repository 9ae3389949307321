#include "launcher/instrumenttab.h"

#include "launcher/childclaim.h"
#include "launcher/desktopfile.h"
#include "launcher/embeddedwindow.h"
#include "launcher/endedpage.h"
#include "launcher/nativewindows.h"
#include "launcher/scanquestion.h"
#include "launcher/simulatorprocess.h"
#include "launcher/startingpage.h"
#include "launcher/stateline.h"

#include <QDebug>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace scnlauncher {
namespace {

constexpr int kTickMs = 1000;
/// Read by the program's VISA provider.
const QString kSerialRateVariable = QStringLiteral("SCN4070A_SERIAL_RATE");

/// Each simulated instrument has a port of its own; their data shares a place.
const QString kSimulatedPlace = QStringLiteral("simulator");

} // namespace

InstrumentTab::InstrumentTab(const Workshop& workshop, QWidget* parent)
    : QWidget(parent)
    , m_workshop(workshop)
    , m_probe(this)
    , m_archive(workshop.settings, nullptr)
    , m_pages(new QStackedWidget(this))
    , m_startPage(new StartPage(workshop.sources, workshop.settings, this))
    , m_startingPage(new StartingPage(this))
    , m_endedPage(new EndedPage(this))
    , m_stateLine(new StateLine(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_pages);
    layout->addWidget(m_stateLine);
    m_stateLine->hide();
    for (QWidget* page : {static_cast<QWidget*>(m_startPage), static_cast<QWidget*>(m_startingPage),
                          static_cast<QWidget*>(m_endedPage)}) {
        m_pages->addWidget(page);
    }
    connect(m_startPage, &StartPage::chosen, this, &InstrumentTab::open);
    connect(m_startingPage, &StartingPage::cancelled, this, &InstrumentTab::chooseOther);
    connect(m_endedPage, &EndedPage::startAgain, this, [this] { open(m_choice); });
    connect(m_endedPage, &EndedPage::chooseOther, this, &InstrumentTab::chooseOther);
    connect(m_stateLine, &StateLine::chooseOther, this, &InstrumentTab::chooseOther);
    connect(m_stateLine, &StateLine::openLog, this, [this] { openOnDesktop(this, logPath()); });
    connect(m_stateLine, &StateLine::openFolder, this, [this] { openOnDesktop(this, m_folder); });
    connect(&m_probe, &RefusalProbe::refused, this, [this] {
        m_failure = OpenFailure::Refused;
        showStatus();
    });
    connect(&m_archive, &RunArchive::problemChanged, this,
            [this] { m_stateLine->showKeepingProblem(m_archive.problem()); });
    connect(&m_ticks, &QTimer::timeout, this, [this] {
        m_stateLine->showSilence(
            std::chrono::milliseconds(m_child ? m_child->msSinceLastLine() : -1));
    });
}

InstrumentTab::~InstrumentTab() = default;

void InstrumentTab::open(const InstrumentChoice& choice)
{
    m_choice = choice;
    m_resource.clear();
    m_returnsToChoice = false;
    m_startingPage->showStarting(choice.isSimulated ? tr("模拟仪器") : choice.resource);
    m_pages->setCurrentWidget(m_startingPage);
    if (choice.isSimulated) {
        startSimulator();
    } else {
        startChild(choice.resource);
    }
}

void InstrumentTab::startSimulator()
{
    m_simulator = std::make_unique<SimulatorProcess>(nullptr);
    connect(m_simulator.get(), &SimulatorProcess::ready, this, &InstrumentTab::startChild);
    // Queued, since it may come from the very start.
    connect(
        m_simulator.get(), &SimulatorProcess::failed, this,
        [this](const QString& reason) { report(reason, {m_workshop.simulator}); },
        Qt::QueuedConnection);
    m_simulator->start(m_workshop.simulator, m_workshop.simulatorArguments);
}

void InstrumentTab::startChild(const QString& resource)
{
    m_resource = resource;
    m_failure = OpenFailure::None;
    const auto claim = std::make_shared<ChildClaim>();
    if (!claim->take(m_workshop.program, resource,
                     m_choice.isSimulated ? kSimulatedPlace : resource)) {
        report(claim->errorText(), {});
        return;
    }
    m_folder = claim->folder();
    if (!claim->isBesideProgram()) {
        m_startingPage->setPlace(
            tr("程序所在的目录不能存放数据，或正被使用。这台仪器的数据存放在 %1。").arg(m_folder));
    }
    m_child =
        std::make_unique<InstrumentChild>(nullptr, [this](qulonglong handle, qint64 processId) {
            return m_workshop.windows.objection(handle, processId);
        });
    connect(m_child.get(), &InstrumentChild::windowShown, this, &InstrumentTab::embed);
    connect(m_child.get(), &InstrumentChild::windowRefused, this, [this](const QString& reason) {
        m_startingPage->setNote(reason + tr("窗口未被嵌入；请取消，并检查所启动的程序。"));
    });
    connect(m_child.get(), &InstrumentChild::statusChanged, this, &InstrumentTab::showStatus);
    // Queued, since a program that is not there ends at its start.
    connect(m_child.get(), &InstrumentChild::ended, this, &InstrumentTab::finish,
            Qt::QueuedConnection);
    InstrumentChild::Call call;
    call.program = claim->program();
    call.claim = claim;
    call.resource = resource;
    call.environment = QProcessEnvironment::systemEnvironment();
    if (m_choice.serialRate > 0) {
        call.environment.insert(kSerialRateVariable, QString::number(m_choice.serialRate));
    }
    call.logPath = logPath();
    m_archive.watch(claim->folder(), resource);
    m_child->start(call);
    m_ticks.start(kTickMs);
    m_stateLine->showSilence(std::chrono::milliseconds(-1));
    m_stateLine->showFolder(m_folder);
    m_stateLine->show();
    showStatus();
}

/// All simulated instruments share a log: their resources differ at each start.
QString InstrumentTab::logPath() const
{
    return logPathFor(m_choice.isSimulated ? kSimulatedPlace : m_choice.resource);
}

void InstrumentTab::embed(qulonglong handle, const QColor& color)
{
    // The child reports its handle at each show; usually it is the one already embedded.
    if (m_child->isEnding() || (m_embedded && m_embedded->handle() == handle)) {
        return;
    }
    delete m_embedded;
    m_embedded = new EmbeddedWindow(m_workshop.windows, handle, color, m_pages);
    m_pages->addWidget(m_embedded);
    m_pages->setCurrentWidget(m_embedded);
}

bool InstrumentTab::isScanning() const
{
    return m_child && m_child->status().isScanning();
}

QString InstrumentTab::identity() const
{
    return m_child ? m_child->status().identity() : QString();
}

QString InstrumentTab::title() const
{
    if (!identity().isEmpty()) {
        return identity();
    }
    return m_choice.isSimulated && m_child ? tr("模拟仪器") : m_child ? m_resource : QString();
}

void InstrumentTab::showStatus()
{
    if (!m_child) {
        return;
    }
    const ChildStatus& status = m_child->status();
    if (status.failure() == OpenFailure::None) {
        m_failure = OpenFailure::None;
    } else if (m_failure == OpenFailure::None) {
        m_failure = status.failure();
        if (m_failure == OpenFailure::NoSuchResource) {
            m_probe.start(m_resource);
        }
    }
    m_stateLine->showStatus(m_resource, status, m_failure);
    emit titleChanged();
}

void InstrumentTab::end()
{
    if (!m_child) {
        leaveSimulator();
        return;
    }
    m_startingPage->showEnding();
    m_pages->setCurrentWidget(m_startingPage);
    m_child->end();
}

/// Later, since it may be calling.
void InstrumentTab::dropSimulator()
{
    if (m_simulator) {
        m_simulator->disconnect(this);
        m_simulator.release()->deleteLater();
    }
}

/// The simulator alone, which has not got as far as a child.
void InstrumentTab::leaveSimulator()
{
    dropSimulator();
    if (m_returnsToChoice) {
        m_returnsToChoice = false;
        m_startPage->refresh();
        m_pages->setCurrentWidget(m_startPage);
    }
}

void InstrumentTab::finish(const ChildEnd& end)
{
    const QStringList lastWords = m_child->lastWords();
    m_child.release()->deleteLater();
    m_archive.leave();
    delete m_embedded;
    m_ticks.stop();
    m_stateLine->hide();
    leaveSimulator();
    if (!end.isWanted) {
        report(endSentence(end), lastWords);
    }
    emit titleChanged();
    emit idle();
}

/// How a child ended that nobody asked to.
QString InstrumentTab::endSentence(const ChildEnd& end) const
{
    if (!end.hasStarted) {
        return tr("程序没有启动：%1").arg(m_workshop.program);
    }
    if (end.hasCrashed) {
        return tr("程序意外终止（信号 %1）。仪器如在扫描，会继续扫描。").arg(end.exitCode);
    }
    return tr("程序已退出（返回值 %1）。").arg(end.exitCode);
}

void InstrumentTab::report(const QString& sentence, const QStringList& lastWords)
{
    qWarning().noquote() << sentence;
    dropSimulator();
    m_endedPage->showEnd(sentence, lastWords);
    m_pages->setCurrentWidget(m_endedPage);
}

void InstrumentTab::chooseOther()
{
    if (isScanning()) {
        askToLeaveScan(this, [this] { leaveForChoice(); });
    } else {
        leaveForChoice();
    }
}

/// Back to the start page, once the child has ended.
void InstrumentTab::leaveForChoice()
{
    m_returnsToChoice = true;
    end();
}

} // namespace scnlauncher
