#include "pictures.h"

#include "app/mainwidget.h"
#include "overlay/loadingview.h"
#include "overlay/lockabledatacollectionview.h"
#include "programscene.h"
#include "screen.h"
#include "state/globals.h"
#include "widgets/customlineedit.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>
#include <QtTest>

#include <algorithm>

using namespace scn;

namespace {

constexpr int kWaitMs = 60000;
/// The hold that unlocks, and half of the fade that follows.
constexpr int kHoldMs = 1000;
constexpr int kHalfFadeMs = 250;

} // namespace

void Pictures::runAndLock()
{
    ProgramScene scene;
    scene.showReady();
    scene.tick(101);
    scene.tick(102);
    screen::click(scene.startButton());
    screen::takeAtOnce(QStringLiteral("run-starting"));
    screen::movePointerAway();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, kWaitMs);
    QTest::qWait(2500);
    screen::take(QStringLiteral("run-running"));
    screen::movePointer(scene.tree()->viewport(), QPoint(200, 100));
    QTRY_VERIFY(scene.lock() && scene.lock()->isVisible());
    screen::take(QStringLiteral("lock-channel-table"));
    screen::movePointer(scene.form()->viewport(), QPoint(100, 60));
    screen::take(QStringLiteral("lock-logging-page"));
    scene.chooseForm(0);
    screen::movePointer(scene.form()->viewport(), QPoint(100, 60));
    screen::take(QStringLiteral("lock-instrument-page"));
    screen::movePointer(scene.tree()->viewport(), scene.tree()->viewport()->rect().center());
    QTRY_VERIFY(scene.lock() && scene.lock()->isVisible());
    screen::movePointer(scene.lock());
    screen::take(QStringLiteral("lock-bar-hover"));
    QElapsedTimer held;
    held.start();
    screen::pressButton();
    screen::takeAtOnce(QStringLiteral("lock-bar-held"));
    QTest::qWait(static_cast<int>(std::max<qint64>(0, kHoldMs + kHalfFadeMs - held.elapsed())));
    screen::takeAtOnce(QStringLiteral("lock-fading"));
    screen::releaseButton();
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, kWaitMs);
    screen::movePointerAway();
    screen::take(QStringLiteral("lock-gone"));
}

void Pictures::recovery()
{
    ProgramScene scene;
    scene.showReady();
    scene.instrument().order(QStringLiteral("fault refuse"));
    scene.instrument().order(QStringLiteral("fault drop"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.recovery() && scene.recovery()->isVisible(), kWaitMs);
    screen::take(QStringLiteral("recovery-form"));
    auto* const resume = scene.recovery()->findChild<QPushButton*>();
    screen::movePointer(resume);
    screen::take(QStringLiteral("recovery-hover"));
    scene.instrument().freeze();
    screen::click(resume);
    screen::take(QStringLiteral("recovery-ring"));
    scene.instrument().thaw();
}

void Pictures::messages()
{
    ProgramScene scene;
    scene.showReady();
    screen::click(scene.startButton());
    QTRY_VERIFY(scene.message()->isVisible());
    screen::take(QStringLiteral("message-nothing-chosen"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.message()->isHidden(), kWaitMs);
    screen::click(scene.cell<CustomLineEdit>(101, GainColumn));
    screen::press({QStringLiteral("ctrl+a")});
    screen::type(QStringLiteral("abc"));
    screen::press({QStringLiteral("Return")});
    QTRY_VERIFY(scene.message()->isVisible());
    screen::take(QStringLiteral("message-not-a-number"));
    screen::movePointer(scene.message()->findChild<QPushButton*>());
    screen::take(QStringLiteral("message-hover"));
}
