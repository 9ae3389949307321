#include "pictures.h"

#include "app/mainwidget.h"
#include "overlay/loadingview.h"
#include "programscene.h"
#include "screen.h"
#include "state/globals.h"
#include "widgets/imagebutton.h"
#include "widgets/timepicker.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>
#include <QScrollArea>
#include <QTextEdit>
#include <QtTest>

namespace {

/// The button of the form with this text.
template <typename Button>
Button* button(const ProgramScene& scene, const QString& text)
{
    for (Button* candidate : scene.form()->findChildren<Button*>()) {
        if (candidate->text() == text) {
            screen::scrollTo(scene.form()->viewport(), candidate);
            return candidate;
        }
    }
    qFatal("no button %s", qPrintable(text));
}

} // namespace

void Pictures::start()
{
    ProgramScene scene;
    scene.window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&scene.window()));
    screen::takeAtOnce(QStringLiteral("start-at-its-own-size"));
    scene.show();
    screen::takeAtOnce(QStringLiteral("start-overlay"));
    scene.showReady();
    screen::take(QStringLiteral("start"));
}

void Pictures::startWithoutInstrument()
{
    g_resourceName = QStringLiteral("TCPIP0::127.0.0.1::1::SOCKET");
    MainWidget alone(nullptr);
    ProgramScene::wearTheProgramsStyle();
    QVERIFY(!g_instrumentConnected);
    alone.setGeometry(QRect(QPoint(0, 0), screen::size()));
    alone.show();
    QVERIFY(QTest::qWaitForWindowExposed(&alone));
    screen::movePointerAway();
    screen::take(QStringLiteral("start-without-instrument"));
}

void Pictures::buttonBar()
{
    ProgramScene scene;
    scene.showReady();
    screen::movePointer(scene.startButton());
    screen::take(QStringLiteral("button-bar-start-hover"), scene.startButton()->parentWidget());
    screen::movePointer(scene.exportButton());
    screen::take(QStringLiteral("button-bar-export-hover"), scene.startButton()->parentWidget());
    screen::pressButton();
    screen::take(QStringLiteral("button-bar-export-pressed"), scene.startButton()->parentWidget());
    screen::movePointerAway();
    screen::releaseButton();
}

void Pictures::instrumentPage()
{
    ProgramScene scene;
    scene.showReady();
    scene.chooseForm(0);
    screen::take(QStringLiteral("instrument-page"));
    screen::click(scene.form()->findChild<QComboBox*>());
    screen::take(QStringLiteral("instrument-page-list"), scene.form());
    screen::press({QStringLiteral("Escape")});
    screen::movePointer(scene.form()->findChildren<QRadioButton*>().at(1));
    screen::take(QStringLiteral("instrument-page-hover"), scene.form());
}

void Pictures::loggingPage()
{
    ProgramScene scene;
    scene.showReady();
    screen::take(QStringLiteral("logging-page"));
    QLineEdit* const name = scene.form()->findChildren<QLineEdit*>().constFirst();
    screen::click(name);
    screen::press({QStringLiteral("ctrl+a")});
    screen::take(QStringLiteral("logging-page-selection"), scene.form());
    screen::rightClick(name);
    screen::take(QStringLiteral("logging-page-menu"), scene.form());
    screen::press({QStringLiteral("Escape")});
    screen::click(button<QCheckBox>(scene, QStringLiteral("记录到 USB")));
    screen::movePointer(button<QCheckBox>(scene, QStringLiteral("行限制")));
    screen::take(QStringLiteral("logging-page-row-limit"), scene.form());
    auto* const comment = scene.form()->findChild<QTextEdit*>();
    screen::scrollTo(scene.form()->viewport(), comment);
    screen::click(comment);
    for (int line = 0; line < 6; ++line) {
        screen::type(QStringLiteral("line %1 of a comment").arg(line + 1));
        screen::press({QStringLiteral("Return")});
    }
    screen::take(QStringLiteral("logging-page-comment"), scene.form());
    screen::click(button<QRadioButton>(scene, QStringLiteral("警报时:")));
    const auto boxes = scene.form()->findChildren<QComboBox*>();
    QTRY_VERIFY(boxes.constFirst()->isEnabled());
    screen::click(boxes.constFirst());
    screen::take(QStringLiteral("logging-page-alarm"), scene.form());
    screen::press({QStringLiteral("Escape")});
    button<QRadioButton>(scene, QStringLiteral("Immediately with Digitizer Start Button"));
    screen::scrollTo(scene.form()->viewport(),
                     scene.form()->findChildren<QDateTimeEdit*>().constLast());
    screen::movePointerAway();
    screen::take(QStringLiteral("logging-page-end"), scene.form());
}

void Pictures::loggingPickers()
{
    ProgramScene scene;
    scene.showReady();
    button<QRadioButton>(scene, QStringLiteral("N次扫描后:"));
    screen::movePointerAway();
    screen::take(QStringLiteral("pickers-disabled"), scene.form());
    screen::click(button<QRadioButton>(scene, QStringLiteral("自定义:")));
    screen::click(button<QRadioButton>(scene, QStringLiteral("已用时间之后:")));
    const auto pickers = scene.form()->findChildren<TimePicker*>();
    QTRY_VERIFY(pickers.at(0)->isEnabled() && pickers.at(1)->isEnabled());
    const auto digits = pickers.at(0)->findChildren<QLineEdit*>();
    screen::click(digits.at(2));
    screen::press({QStringLiteral("Home")});
    screen::type(QStringLiteral("15"));
    screen::take(QStringLiteral("pickers-in-use"), scene.form());
    screen::rightClick(pickers.at(1)->findChildren<QLineEdit*>().at(0));
    screen::take(QStringLiteral("pickers-menu"), scene.form());
    screen::press({QStringLiteral("Escape")});
}
