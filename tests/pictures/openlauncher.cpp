#include "openlauncher.h"

#include "launcher/embeddedwindow.h"
#include "launcher/look.h"
#include "screen.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTreeWidget>
#include <QtTest>

using namespace scnlauncher;

namespace {

/// A path beside the pictures' program.
QString beside(const QString& name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

/// The program, where its data may lie.
QString copiedBeside(const QString& name)
{
    QFile::copy(QStringLiteral(SCN_BIN_DIR "/") + name, beside(name));
    return beside(name);
}

/// A tool that answers as avahi-browse does.
QString networkTool()
{
    QFile file(beside(QStringLiteral("browse")));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("#!/bin/sh\n"
                   "echo '=;eth0;IPv4;SCN4070A SN00000042;_scpi-raw._tcp;local;a.local;"
                   "192.168.1.20;5025;'\n");
    }
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return file.fileName();
}

FoundInstruments serialPorts()
{
    return {{QStringLiteral("/dev/ttyUSB0 (usb-SCN_SCN4070A_SN00000042-if00-port0)"),
             QStringLiteral("ASRL/dev/ttyUSB0::INSTR"),
             {}},
            {QStringLiteral("/dev/ttyS0"), QStringLiteral("ASRL/dev/ttyS0::INSTR"),
             QStringLiteral("没有打开 /dev/ttyS0 的权限：请加入用户组 dialout（sudo usermod -aG "
                            "dialout $USER），然后重新登录。")}};
}

FoundInstruments usbInstruments()
{
    return {{QStringLiteral("SCN4070A SN00000042"),
             QStringLiteral("USB0::0x049F::0x606E::SN00000042::INSTR"),
             {}}};
}

template <class Widget>
Widget* shown(const QWidget* window, const char* name)
{
    for (Widget* widget : window->findChildren<Widget*>(QString::fromLatin1(name))) {
        if (widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

} // namespace

OpenLauncher::OpenLauncher()
    : m_settings(beside(QStringLiteral("launcher.ini")))
{
    qputenv("XDG_DATA_HOME", QFile::encodeName(beside(QStringLiteral("data"))));
    qputenv("XDG_STATE_HOME", QFile::encodeName(beside(QStringLiteral("state"))));
    applyLook();
    QFile::remove(beside(QStringLiteral("launcher.ini")));
    m_settings.remember({QStringLiteral("TCPIP0::192.168.1.5::5025::SOCKET"), false, 0});
    m_workshop = std::make_unique<Workshop>(Workshop{copiedBeside(QStringLiteral("scn4070a")),
                                                     QStringLiteral(SCN_BIN_DIR "/scn4070a-sim"),
                                                     {QStringLiteral("--tcp"), QStringLiteral("0")},
                                                     {serialPorts, usbInstruments, networkTool()},
                                                     m_settings,
                                                     m_windows});
    m_window = std::make_unique<LauncherWindow>(*m_workshop);
    m_window->setGeometry(QRect(QPoint(0, 0), screen::size()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    screen::giveKeysTo(m_window.get());
    screen::movePointerAway();
}

OpenLauncher::~OpenLauncher() = default;

void OpenLauncher::openByHand(const QString& resource) const
{
    screen::click(shown<QLineEdit>(m_window.get(), "resource"));
    screen::press({QStringLiteral("ctrl+a")});
    screen::type(resource);
    clickOpen();
}

void OpenLauncher::clickOpen() const
{
    screen::click(shown<QPushButton>(m_window.get(), "open"));
    screen::movePointerAway();
}

void OpenLauncher::choose(const QString& resource) const
{
    const auto* list = shown<QTreeWidget>(m_window.get(), "instruments");
    const QList<QTreeWidgetItem*> items =
        list->findItems(resource, Qt::MatchExactly | Qt::MatchRecursive, 0);
    QCOMPARE(items.size(), 1);
    screen::click(list->viewport(), list->visualItemRect(items.at(0)).center());
    screen::movePointerAway();
}

void OpenLauncher::clickButton(const char* name) const
{
    screen::click(shown<QWidget>(m_window.get(), name));
    screen::movePointerAway();
}

void OpenLauncher::clickTab(int index) const
{
    const auto* bar = m_window->findChild<QTabBar*>();
    screen::click(bar, bar->tabRect(index).center());
    screen::movePointerAway();
}

void OpenLauncher::clickCloseOfTab(int index) const
{
    screen::click(m_window->findChild<QTabBar*>()->tabButton(index, QTabBar::RightSide));
    screen::movePointerAway();
}

qint64 OpenLauncher::programProcess()
{
    QFile all(
        QStringLiteral("/proc/self/task/%1/children").arg(QCoreApplication::applicationPid()));
    if (!all.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> children = all.readAll().simplified().split(' ');
    for (const QByteArray& child : children) {
        QFile name(QStringLiteral("/proc/%1/comm").arg(QString::fromLatin1(child)));
        if (name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "scn4070a") {
            return child.toLongLong();
        }
    }
    return 0;
}

QString OpenLauncher::label(const char* name) const
{
    const auto* label = shown<QLabel>(m_window.get(), name);
    return label ? label->text() : QString();
}

QWidget* OpenLauncher::program() const
{
    auto* part = m_window->findChild<EmbeddedWindow*>();
    return part && part->isVisible() ? part : nullptr;
}

void OpenLauncher::click(const QPoint& point) const
{
    const QWidget* part = program();
    const int y = point.y() < 0 ? part->height() + point.y() : point.y();
    screen::click(part, QPoint(point.x(), y));
}
