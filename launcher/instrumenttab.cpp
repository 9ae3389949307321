#include "launcher/instrumenttab.h"

#include "launcher/childcall.h"
#include "launcher/childclaim.h"
#include "launcher/desktopfile.h"
#include "launcher/embeddedwindow.h"
#include "launcher/endsentence.h"
#include "launcher/nativewindows.h"
#include "launcher/scanquestion.h"
#include "launcher/simulatorprocess.h"
#include "launcher/startingpage.h"
#include "launcher/stateline.h"

#include <QApplication>
#include <QDebug>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace scnlauncher {

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
    for (QWidget* page : QWidgetList{m_startPage, m_startingPage, m_endedPage}) {
        m_pages->addWidget(page);
    }
    connect(m_startPage, &StartPage::chosen, this, &InstrumentTab::open);
    connect(m_startingPage, &StartingPage::cancelled, this, &InstrumentTab::chooseOther);
    connect(m_endedPage, &EndedPage::startAgain, this, [this] { open(m_choice); });
    connect(m_endedPage, &EndedPage::chooseOther, this, &InstrumentTab::chooseOther);
    const auto openLog = [this] { openOnDesktop(this, logPathOf(m_choice, m_folder)); };
    connect(m_endedPage, &EndedPage::openLog, this, openLog);
    connect(m_stateLine, &StateLine::chooseOther, this, &InstrumentTab::chooseOther);
    connect(m_stateLine, &StateLine::openLog, this, openLog);
    const auto openFolder = [this] { openOnDesktop(this, m_folder); };
    connect(m_endedPage, &EndedPage::openFolder, this, openFolder);
    connect(m_stateLine, &StateLine::openFolder, this, openFolder);
    connect(&m_probe, &RefusalProbe::refused, this, [this] {
        m_failure = OpenFailure::Refused;
        showStatus();
    });
    connect(&m_archive, &RunArchive::problemChanged, this,
            [this] { m_stateLine->showKeepingProblem(m_archive.problem()); });
    connect(&m_ticks, &QTimer::timeout, this, [this] {
        using std::chrono::milliseconds;
        m_stateLine->showSilence(milliseconds(m_child ? m_child->msSinceLastLine() : -1));
    });
}

InstrumentTab::~InstrumentTab() = default;

void InstrumentTab::open(const InstrumentChoice& choice)
{
    m_choice = choice;
    m_title = choice.isSimulated ? tr("模拟仪器") : choice.resource;
    m_resource.clear();
    m_returnsToChoice = false;
    m_simulatorEnd.reset();
    m_seenCritical.clear();
    m_startingPage->showStarting(m_title);
    m_pages->setCurrentWidget(m_startingPage);
    tellNews();
    if (choice.isSimulated) {
        startSimulator();
    } else {
        m_workshop.settings.remember(choice);
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
        [this](const QString& reason) {
            report({subject(), reason, m_simulator ? m_simulator->lastWords() : QStringList(), {}});
        },
        Qt::QueuedConnection);
    connect(m_simulator.get(), &SimulatorProcess::ended, this, [this](const QString& reason) {
        m_simulatorEnd = EndReport{subject(), reason, m_simulator->lastWords(), m_folder};
        end();
    });
    m_simulator->start(m_workshop.simulator, m_workshop.simulatorArguments);
}

void InstrumentTab::startChild(const QString& resource)
{
    m_resource = resource;
    m_failure = OpenFailure::None;
    const auto claim = std::make_shared<ChildClaim>();
    if (!claim->take(m_workshop.program, resource, placeNameOf(m_choice))) {
        report({subject(), claim->errorText(), {}, {}});
        return;
    }
    m_folder = claim->folder();
    if (!claim->isBesideProgram()) {
        m_startingPage->notePlace(m_folder);
    }
    m_child =
        std::make_unique<InstrumentChild>(nullptr, [this](qulonglong handle, qint64 processId) {
            return m_workshop.windows.objection(handle, processId);
        });
    connect(m_child.get(), &InstrumentChild::windowShown, this, &InstrumentTab::embed);
    connect(m_child.get(), &InstrumentChild::windowRefused, m_startingPage,
            &StartingPage::noteRefusedWindow);
    connect(m_child.get(), &InstrumentChild::lineCut, m_startingPage, &StartingPage::noteCutLine);
    connect(m_child.get(), &InstrumentChild::statusChanged, this, &InstrumentTab::showStatus);
    // Queued, since a program that is not there ends at its start.
    connect(m_child.get(), &InstrumentChild::ended, this, &InstrumentTab::finish,
            Qt::QueuedConnection);
    m_archive.watch(claim->folder(), resource);
    m_child->start(callFor(m_choice, resource, claim));
    m_ticks.start(kTickMs);
    m_stateLine->showSilence(std::chrono::milliseconds(-1));
    m_stateLine->showFolder(m_folder);
    m_stateLine->showSerialRate(m_choice.serialRate);
    m_stateLine->show();
    showStatus();
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

QString InstrumentTab::trouble() const
{
    if (m_pages->currentWidget() == m_endedPage) {
        return m_hasRun ? tr("已终止") : tr("未打开");
    }
    if (m_child && m_child->status().link() == ChildStatus::Link::Lost) {
        return tr("连接已丢失");
    }
    return m_child && m_child->status().lastCritical() != m_seenCritical ? tr("严重错误")
                                                                         : QString();
}

/// Tells the window, and one who looks at another.
void InstrumentTab::tellNews()
{
    if (isVisible() && m_child) {
        m_seenCritical = m_child->status().lastCritical();
    }
    const QString now = trouble();
    if (!now.isEmpty() && now != m_toldTrouble) {
        QApplication::alert(window());
    }
    m_toldTrouble = now;
    emit titleChanged();
}

void InstrumentTab::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    tellNews();
}

/// The resource, and the identity as far as it is known.
QString InstrumentTab::subject() const
{
    const QString chosen = m_choice.isSimulated ? tr("模拟仪器") : m_choice.resource;
    return m_title == chosen ? chosen : chosen + QStringLiteral(" - ") + m_title;
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
    if (!identity().isEmpty()) {
        m_title = identity();
    }
    tellNews();
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
        m_title.clear();
        m_startPage->refresh();
        m_pages->setCurrentWidget(m_startPage);
        tellNews();
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
        const AfterEnd afterEnd = m_choice.isSimulated ? AfterEnd::ScanEnds : AfterEnd::ScanGoesOn;
        report({subject(), endSentence(end, m_workshop.program, afterEnd), lastWords,
                end.hasStarted ? m_folder : QString()});
    } else if (m_simulatorEnd) {
        report(*m_simulatorEnd);
    }
    tellNews();
    emit idle();
}

void InstrumentTab::report(const EndReport& report)
{
    qWarning().noquote() << report.sentence;
    dropSimulator();
    m_hasRun = !report.folder.isEmpty();
    m_endedPage->showEnd(report);
    m_pages->setCurrentWidget(m_endedPage);
    tellNews();
}

void InstrumentTab::chooseOther()
{
    if (isScanning()) {
        askToLeaveScan(this, m_choice.isSimulated ? AfterEnd::ScanEnds : AfterEnd::ScanGoesOn,
                       [this] { leaveForChoice(); });
    } else {
        leaveForChoice();
    }
}

/// Back to the start page, once the child has ended.
void InstrumentTab::leaveForChoice()
{
    m_returnsToChoice = true;
    m_simulatorEnd.reset();
    end();
}

} // namespace scnlauncher
