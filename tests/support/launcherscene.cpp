#include "support/launcherscene.h"

#include "launcher/embeddedwindow.h"
#include "launcher/look.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

using namespace scnlauncher;

namespace {

/// Long enough for a start under a sanitizer on a busy machine.
constexpr int kStartWaitMs = 60000;

const VirtualDisplay* g_display = nullptr;

QString contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The first visible child of that kind and name.
template <class Widget>
Widget* shown(const QWidget* parent, const char* name)
{
    for (Widget* widget : parent->findChildren<Widget*>(QString::fromLatin1(name))) {
        if (widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

} // namespace

DisplayApplication::DisplayApplication(int& argc, char** argv)
{
    g_display = &m_display;
    qputenv("DISPLAY", m_display.name().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    m_application = std::make_unique<QApplication>(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    applyLook();
}

const VirtualDisplay& DisplayApplication::display()
{
    return *g_display;
}

LauncherScene::LauncherScene(const QString& program, const QStringList& simulatorOptions)
    : m_settings(m_home.filePath(QStringLiteral("launcher.ini")))
{
    for (const char* variable : {"XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        qputenv(variable, m_home.path().toLocal8Bit());
    }
    InstrumentSources sources = InstrumentSources::ofThisMachine();
    sources.serialPorts = [] {
        return FoundInstruments{{QStringLiteral("port"), QStringLiteral("ASRL/dev/null::INSTR"),
                                 QStringLiteral("a group is missing")}};
    };
    sources.networkTool = QStringLiteral("/no/such/tool");
    const QStringList simulatorArguments =
        QStringList{QStringLiteral("--tcp"), QStringLiteral("0"), QStringLiteral("--slots"),
                    QStringLiteral("1:13")} +
        simulatorOptions;
    m_workshop =
        std::make_unique<Workshop>(Workshop{program, QStringLiteral(SCN_BIN_DIR "/scn4070a-sim"),
                                            simulatorArguments, sources, m_settings, m_windows});
    m_window = std::make_unique<LauncherWindow>(*m_workshop);
    m_window->show();
    const bool isExposed = QTest::qWaitForWindowExposed(m_window.get(), kStartWaitMs);
    Q_ASSERT(isExposed);
    Q_UNUSED(isExposed)
    // Without a window manager nobody gives it the keyboard.
    DisplayApplication::display().xdotool(
        {QStringLiteral("windowfocus"), QString::number(m_window->winId())});
}

LauncherScene::~LauncherScene() = default;

InstrumentTab* LauncherScene::currentTab() const
{
    return static_cast<InstrumentTab*>(m_window->findChild<QTabWidget*>()->currentWidget());
}

void LauncherScene::click(const QWidget* widget) const
{
    QVERIFY(widget);
    const QPoint point = widget->mapToGlobal(widget->rect().center());
    DisplayApplication::display().click(point.x(), point.y());
    QTest::qWait(0);
}

void LauncherScene::clickButton(const char* name) const
{
    const QWidget* button = shown<QWidget>(currentTab(), name);
    click(button ? button : shown<QWidget>(m_window.get(), name));
}

void LauncherScene::clickTab(int index) const
{
    const auto* bar = m_window->findChild<QTabBar*>();
    const QPoint point = bar->mapToGlobal(bar->tabRect(index).center());
    DisplayApplication::display().click(point.x(), point.y());
}

QString LauncherScene::own(const char* kind)
{
    return QStringLiteral("%1=%2").arg(QLatin1String(kind)).arg(QCoreApplication::applicationPid());
}

QString LauncherScene::label(const char* name) const
{
    const auto* label = shown<QLabel>(currentTab(), name);
    return label ? label->text() : QString();
}

void LauncherScene::openByHand(const QString& resource) const
{
    const auto* field = shown<QLineEdit>(currentTab(), "resource");
    click(field);
    const VirtualDisplay& display = DisplayApplication::display();
    display.xdotool({QStringLiteral("key"), QStringLiteral("ctrl+a")});
    display.xdotool(
        {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("5"), resource});
    QTRY_COMPARE(field->text(), resource);
    clickButton("open");
}

QWidget* LauncherScene::embedded() const
{
    auto* part = currentTab()->findChild<EmbeddedWindow*>();
    return part && part->isVisible() ? part : nullptr;
}

bool LauncherScene::waitForEmbedding() const
{
    return QTest::qWaitFor([this] { return embedded() != nullptr; }, kStartWaitMs);
}

QList<qint64> LauncherScene::children(const QString& name)
{
    const qint64 own = QCoreApplication::applicationPid();
    QList<qint64> found;
    const QString all = contentOf(QStringLiteral("/proc/%1/task/%1/children").arg(own)).trimmed();
    for (const QString& child : all.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString folder = QStringLiteral("/proc/") + child;
        if (contentOf(folder + QStringLiteral("/comm")).trimmed() == name) {
            found.append(child.toLongLong());
        }
    }
    return found;
}
