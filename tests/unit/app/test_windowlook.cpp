#include "app/mainwidget.h"
#include "app/startup.h"
#include "overlay/loadingview.h"
#include "resources/resources.h"
#include "windowbench.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QtTest>

/// The window with the program's fonts and style sheet, at the size that it starts with.
class TestWindowLook : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formsFitWithoutScrollingSideways();
};

void TestWindowLook::initTestCase()
{
    initResources();
    // The default font of an X display; this platform has a larger one.
    QFont font(QStringLiteral("Sans Serif"));
    font.setPixelSize(12);
    QApplication::setFont(font);
    Startup::substituteFonts();
    QFile styleFile(QStringLiteral(":/qss/styles.qss"));
    Startup::applyStyleSheet(styleFile);
}

void TestWindowLook::formsFitWithoutScrollingSideways()
{
    WindowBench bench;
    MainWidget& window = bench.open();
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.size(), QSize(600, 400));
    auto* forms = window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    for (int page = 0; page < forms->count(); ++page) {
        forms->setCurrentIndex(page);
        QCoreApplication::processEvents();
        const auto* area = qobject_cast<QScrollArea*>(forms->widget(page));
        QVERIFY2(area->horizontalScrollBar()->maximum() == 0,
                 qPrintable(QStringLiteral("%1 wide in %2")
                                .arg(QString::number(area->widget()->width()),
                                     QString::number(area->viewport()->width()))));
    }
}

QTEST_MAIN(TestWindowLook)
#include "test_windowlook.moc"
