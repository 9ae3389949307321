#include "pictures.h"

#include "app/mainwidget.h"
#include "export/exportoutcome.h"
#include "exportbench.h"
#include "exportdialoghand.h"
#include "overlay/loadingview.h"
#include "screen.h"
#include "state/globals.h"
#include "storage/connectionlock.h"
#include "storage/curvedatadb.h"
#include "userhand.h"
#include "widgets/customcombobox.h"
#include "widgets/custommessagedialog.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QRegularExpression>
#include <QtTest>

#include <sys/resource.h>

#include <csignal>

using userhand::click;
using userhand::press;

namespace {

/// Rows whose export takes long enough to be seen.
constexpr int kLongScan = 300000;

/// The window in the program's style, alone on the screen.
struct Scene : ExportBench
{
    Scene()
        : ExportBench(QStringLiteral("SN40700042"))
    {
        // As the program does: after creating the window.
        wearTheProgramsStyle();
        window().setGeometry(QRect(QPoint(0, 0), screen::size()));
        QVERIFY(QTest::qWaitForWindowExposed(&window()));
        screen::movePointerAway();
        QVERIFY(QDir().mkpath(target()));
    }

    /// The export directory.
    static QString target()
    {
        return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("export"));
    }

    static QString longTarget()
    {
        const QString path = target() + QStringLiteral("/二号温控箱/长期稳定性测量") +
                             QStringLiteral("/channels-of-the-second-module").repeated(3);
        QDir().mkpath(path);
        return path;
    }

    /// Takes the picture that is named after the running function.
    static void take()
    {
        QString name = QLatin1String(QTest::currentTestFunction());
        name.replace(QRegularExpression(QStringLiteral("([A-Z])")), QStringLiteral("-\\1"));
        screen::take(name.toLower());
    }

    /// Takes the visible message.
    void takeToast(const QString& beginning) const
    {
        QVERIFY2(message().startsWith(beginning), qPrintable(message()));
        QVERIFY(exportView()->isHidden());
        take();
        QVERIFY(messageDialog()->isVisible());
    }

    /// Waits until the export writes its file.
    static void waitForFile()
    {
        QTRY_VERIFY_WITH_TIMEOUT(!csvFiles(target()).isEmpty(), kEndWaitMs);
    }
};

/// While this exists, no file can grow beyond what an export needs.
class SmallFiles
{
public:
    SmallFiles()
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit small = m_before;
        small.rlim_cur = kSmallFile;
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles() { setrlimit(RLIMIT_FSIZE, &m_before); }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;

private:
    static constexpr rlim_t kSmallFile = 65536;
    rlimit m_before{};
};

} // namespace

void Pictures::exportDialogAsOpened()
{
    Scene scene;
    scene.inDialog([](const ExportDialogHand&) { Scene::take(); });
}

void Pictures::exportDialogWithItsListOpen()
{
    Scene scene;
    scene.inDialog([](const ExportDialogHand& dialog) {
        click(dialog.separator());
        QTRY_VERIFY(dialog.separator()->view()->isVisible());
        Scene::take();
        press(QApplication::activePopupWidget(), Qt::Key_Escape);
    });
}

void Pictures::exportDialogWithALongDirectory()
{
    Scene scene;
    const QString path = Scene::longTarget();
    scene.inDialog([&path](const ExportDialogHand& dialog) {
        dialog.chooseDirectory(path);
        QCOMPARE(dialog.directory()->text(), path);
        Scene::take();
    });
}

void Pictures::exportDirectoryChooser()
{
    Scene scene;
    scene.inDialog([](const ExportDialogHand& dialog) {
        screen::inLoopOf([&dialog] { click(dialog.browse()); },
                         [] {
                             auto* const chooser =
                                 qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                             QVERIFY(chooser);
                             Scene::take();
                             press(chooser, Qt::Key_Escape);
                         });
    });
}

void Pictures::overlayDuringAnExport()
{
    Scene scene;
    scene.scan();
    CurveDataDB* const store = CurveDataDB::instance(QString());
    const auto connection = store->openDb(store->todayDbPath());
    {
        const scn::ConnectionLocker busy(*connection); // the export waits for the picture
        scene.startExport(Scene::target());
        Scene::take();
        QVERIFY(scene.exportView()->isVisible());
    }
    scene.waitForEnd();
}

void Pictures::toastWithoutAStore()
{
    Scene scene;
    scene.inDialog([&scene](const ExportDialogHand& dialog) {
        click(dialog.toFile());
        QCOMPARE(scene.message(), QStringLiteral("没有相关轨迹数据"));
        Scene::take();
    });
}

void Pictures::toastAfterASuccess()
{
    Scene scene;
    scene.scan();
    scene.exportTo(Scene::target());
    scene.takeToast(QStringLiteral("导出成功"));
}

void Pictures::toastAfterASuccessInALongDirectory()
{
    Scene scene;
    scene.scan();
    const QString path = Scene::longTarget();
    scene.exportTo(path);
    scene.takeToast(QStringLiteral("导出成功"));
}

void Pictures::toastAfterAFileError()
{
    Scene scene;
    scene.scan();
    scene.exportTo(Scene::target(), QString(300, QLatin1Char('n')));
    scene.takeToast(QStringLiteral("CSV文件无法打开（可能被占用）"));
}

void Pictures::toastWithoutData()
{
    Scene scene;
    scene.scan();
    g_scanStartText.clear();
    g_scanEndText.clear();
    scene.exportTo(Scene::target());
    scene.takeToast(QStringLiteral("没有可以保存的数据"));
}

void Pictures::toastAfterAStoreError()
{
    Scene scene;
    scene.scan(kLongScan);
    scene.startExport(Scene::target());
    Scene::waitForFile();
    const QDir data(CurveDataDB::instance(QString())->dataDirectory());
    for (const QString& name : data.entryList({QStringLiteral("*.db")}, QDir::Files)) {
        QVERIFY(QFile::remove(data.filePath(name)));
    }
    scene.waitForEnd();
    scene.takeToast(QStringLiteral("数据库读取失败，请检查数据文件"));
}

/// No control of the window stops an export, so the message is shown directly.
void Pictures::toastAfterAStop()
{
    Scene scene;
    scene.messageDialog()->showMessage(exportOutcomeText(ExportCancelled, {}), 2, 3000);
    Scene::take();
    QCOMPARE(scene.message(), QStringLiteral("导出已取消"));
}

void Pictures::toastAfterAWriteError()
{
    Scene scene;
    scene.scan(kLongScan);
    {
        const SmallFiles smallFiles;
        scene.exportTo(Scene::target());
    }
    scene.takeToast(QStringLiteral("导出失败"));
}

void Pictures::cleanup()
{
    ExportBench::closeStore();
}
