#include "app/mainwidget.h"
#include "exportbench.h"
#include "exportdialoghand.h"
#include "overlay/loadingview.h"
#include "support/testprogram.h"
#include "userhand.h"
#include "widgets/customcombobox.h"
#include "widgets/customdialog.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using userhand::click;
using userhand::enterText;
using userhand::press;

/// The export dialog itself. Each test runs in a process of its own, since each needs its own store.
class TestExportDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ExportBench::wearTheProgramsStyle(); }
    void init() { ExportBench::removeLeftovers(); }
    void cleanup();

    void dialogHasTheseRows();
    void separatorsHaveTheirData();
    void nothingIsClipped();
    void textIsLegibleOnItsGround();
    void entriesStayFromOneUseToTheNext();
    void dialogIsLeftWithoutAnExport_data();
    void dialogIsLeftWithoutAnExport();
    void tabGoesFromTopToBottom();
    void returnPressesOnlyTheFocusedButton();
    void leavingTheChoiceKeepsTheDirectory();
    void longDirectoryIsShownShort();
};

void TestExportDialog::cleanup()
{
    ExportBench::closeStore();
    ExportBench::removeLeftovers();
}

void TestExportDialog::dialogHasTheseRows()
{
    ExportBench bench;
    bench.inDialog([](const ExportDialogHand& dialog) {
        QVERIFY(dialog.label(QStringLiteral("将数据导出到CSV")));
        QVERIFY(dialog.window->isModal());
        auto* group = dialog.window->findChild<QGroupBox*>();
        QVERIFY(group);
        QCOMPARE(group->title(), QStringLiteral("详情"));
        QCOMPARE(dialog.name()->text(), QStringLiteral("Trace"));
        QCOMPARE(dialog.directory()->text(),
                 QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
        // Line by line from the top, each from the left.
        const QList<QList<const QWidget*>> rows = {
            {dialog.label(QStringLiteral("列分隔符:")), dialog.separator()},
            {group},
            {dialog.label(QStringLiteral("文件名:")), dialog.name()},
            {dialog.label(QStringLiteral("导出路径:")), dialog.directory(), dialog.browse()},
            {dialog.toFile(), dialog.close()}};
        QCOMPARE(dialog.label(QStringLiteral("导出文件详细信息:"))->parentWidget(), group);
        int bottom = 0;
        for (const auto& row : rows) {
            int right = 0;
            int rowBottom = bottom;
            for (const QWidget* widget : row) {
                QVERIFY(widget);
                QVERIFY(widget->y() >= bottom);
                QVERIFY(widget->x() >= right);
                right = widget->geometry().right();
                rowBottom = qMax(rowBottom, widget->geometry().bottom());
            }
            bottom = rowBottom;
        }
        for (const char* text : {"列分隔符:", "导出文件详细信息:", "文件名:", "导出路径:"}) {
            QCOMPARE(dialog.label(QString::fromUtf8(text))->styleSheet(),
                     QStringLiteral("background-color:#444444;"));
        }
        QCOMPARE(dialog.directory()->styleSheet(), QStringLiteral("background-color:#444444;"));
        QCOMPARE(dialog.separator()->styleSheet(), QStringLiteral("background:#171717;"));
    });
}

void TestExportDialog::separatorsHaveTheirData()
{
    ExportBench bench;
    bench.inDialog([](const ExportDialogHand& dialog) {
        QCOMPARE(WindowBench::itemsOf(dialog.separator()),
                 (QStringList{QStringLiteral("逗号(,)"), QStringLiteral("分号(;)"),
                              QStringLiteral("制表符(\\t)")}));
        QCOMPARE(dialog.separator()->itemData(0), QVariant(QStringLiteral(",")));
        QCOMPARE(dialog.separator()->itemData(1), QVariant(QStringLiteral(";")));
        QCOMPARE(dialog.separator()->itemData(2), QVariant(QStringLiteral("\t")));
        QCOMPARE(dialog.separator()->currentIndex(), 0);
    });
}

void TestExportDialog::nothingIsClipped()
{
    ExportBench bench;
    bench.inDialog([](const ExportDialogHand& dialog) {
        QCOMPARE(dialog.window->minimumSize(), dialog.window->maximumSize());
        for (const QWidget* widget : dialog.window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget == dialog.directory()) {
                continue;
            }
            QVERIFY(widget->parentWidget()->rect().contains(widget->geometry()));
            const auto* label = qobject_cast<const QLabel*>(widget);
            const auto* button = qobject_cast<const QAbstractButton*>(widget);
            if (!label && !button) {
                continue;
            }
            const QString text = label ? label->text() : button->text();
            const QSize needed = widget->fontMetrics().size(Qt::TextSingleLine, text);
            QVERIFY2(widget->contentsRect().width() >= needed.width() &&
                         widget->contentsRect().height() >= needed.height(),
                     qPrintable(text));
        }
    });
}

void TestExportDialog::textIsLegibleOnItsGround()
{
    ExportBench bench;
    bench.inDialog([](const ExportDialogHand& dialog) {
        const QImage picture = dialog.window->grab().toImage();
        const auto lightest = [&](const QWidget* widget) {
            int lightness = 0;
            const QRect area(widget->mapTo(dialog.window, QPoint(0, 0)), widget->size());
            for (int y = area.top(); y <= area.bottom(); ++y) {
                for (int x = area.left(); x <= area.right(); ++x) {
                    lightness = qMax(lightness, picture.pixelColor(x, y).lightness());
                }
            }
            return lightness;
        };
        const auto ground = [&](const QWidget* widget) {
            return picture.pixelColor(widget->mapTo(dialog.window, QPoint(3, 3))).lightness();
        };
        const QList<const QWidget*> texts = {dialog.label(QStringLiteral("列分隔符:")),
                                             dialog.label(QStringLiteral("文件名:")),
                                             dialog.label(QStringLiteral("导出文件详细信息:")),
                                             dialog.directory(),
                                             dialog.separator(),
                                             dialog.browse(),
                                             dialog.toFile(),
                                             dialog.close()};
        QCOMPARE(picture.pixelColor(20, dialog.window->height() - 20), QColor(0x44, 0x44, 0x44));
        for (const QWidget* widget : texts) {
            QVERIFY(ground(widget) < 110);
            QVERIFY(lightest(widget) - ground(widget) > 100);
        }
    });
}

void TestExportDialog::entriesStayFromOneUseToTheNext()
{
    ExportBench bench;
    const QTemporaryDir directory;
    bench.inDialog([&directory](const ExportDialogHand& dialog) {
        enterText(dialog.name(), QStringLiteral("第二次"));
        dialog.separator()->setFocus(Qt::TabFocusReason);
        press(dialog.window, Qt::Key_Down);
        dialog.chooseDirectory(directory.path());
        click(dialog.close());
        QVERIFY(!dialog.window->isVisible());
    });
    bench.inDialog([&directory](const ExportDialogHand& dialog) {
        QCOMPARE(dialog.name()->text(), QStringLiteral("第二次"));
        QCOMPARE(dialog.separator()->currentText(), QStringLiteral("分号(;)"));
        QCOMPARE(dialog.directory()->text(), directory.path());
    });
    QCOMPARE(bench.window().findChildren<CustomDialog*>().size(), 1);
}

void TestExportDialog::dialogIsLeftWithoutAnExport_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("button") << QStringLiteral("  关闭  ");
    QTest::newRow("cross") << QStringLiteral("×");
    QTest::newRow("Escape") << QString();
}

void TestExportDialog::dialogIsLeftWithoutAnExport()
{
    QFETCH(QString, way);
    ExportBench bench;
    bench.inDialog([&way](const ExportDialogHand& dialog) {
        if (way.isEmpty()) {
            press(dialog.window, Qt::Key_Escape);
        } else {
            click(dialog.button(way));
        }
        QVERIFY(!dialog.window->isVisible());
    });
    QCOMPARE(bench.message(), QString());
    QVERIFY(!bench.exportView());
}

void TestExportDialog::tabGoesFromTopToBottom()
{
    ExportBench bench;
    bench.inDialog([](const ExportDialogHand& dialog) {
        // A name can be typed at once.
        QTRY_COMPARE(QApplication::focusWidget(), dialog.name());
        QCOMPARE(dialog.name()->selectedText(), QStringLiteral("Trace"));
        const QList<QWidget*> order = {dialog.browse(),    dialog.toFile(),
                                       dialog.close(),     dialog.button(QStringLiteral("×")),
                                       dialog.separator(), dialog.name()};
        for (QWidget* next : order) {
            press(dialog.window, Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }
    });
}

void TestExportDialog::returnPressesOnlyTheFocusedButton()
{
    ExportBench bench;
    bench.inDialog([&bench](const ExportDialogHand& dialog) {
        for (QWidget* control : QList<QWidget*>{dialog.name(), dialog.separator()}) {
            control->setFocus(Qt::TabFocusReason);
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
                press(dialog.window, key);
                QVERIFY(dialog.window->isVisible());
                QCOMPARE(bench.message(), QString());
            }
        }
        // The X is not part of the form.
        bool hasChooser = false;
        QTimer::singleShot(0, dialog.window, [&hasChooser] {
            auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            hasChooser = chooser != nullptr;
            if (chooser) {
                chooser->close();
            }
        });
        dialog.button(QStringLiteral("×"))->setFocus(Qt::TabFocusReason);
        press(dialog.window, Qt::Key_Return);
        QCoreApplication::processEvents();
        QVERIFY(!hasChooser && dialog.window->isVisible());
        // Without a store the export only shows a message.
        dialog.toFile()->setFocus(Qt::TabFocusReason);
        press(dialog.window, Qt::Key_Return);
        QCOMPARE(bench.message(), QStringLiteral("没有相关轨迹数据"));
        QVERIFY(dialog.window->isVisible());
        dialog.close()->setFocus(Qt::TabFocusReason);
        press(dialog.window, Qt::Key_Enter);
        QVERIFY(!dialog.window->isVisible());
    });
}

void TestExportDialog::leavingTheChoiceKeepsTheDirectory()
{
    ExportBench bench;
    bench.inDialog([](const ExportDialogHand& dialog) {
        const QString before = dialog.directory()->text();
        dialog.chooseDirectory(QString());
        QCOMPARE(dialog.directory()->text(), before);
        QVERIFY(dialog.window->isVisible());
    });
}

void TestExportDialog::longDirectoryIsShownShort()
{
    ExportBench bench;
    const QTemporaryDir directory;
    QString path = directory.path();
    while (path.size() < 300) {
        path += QLatin1Char('/') + QString(30, QLatin1Char('w'));
    }
    QVERIFY(QDir().mkpath(path));
    bench.inDialog([&path](const ExportDialogHand& dialog) {
        const QSize size = dialog.window->size();
        dialog.chooseDirectory(path);
        QCOMPARE(dialog.directory()->text(), path);
        QCoreApplication::processEvents();
        QCOMPARE(dialog.window->size(), size);
        // It asks for no more than it has.
        QVERIFY(dialog.directory()->minimumSizeHint().width() <= dialog.directory()->width());
        const QWidget* const browse = dialog.browse();
        QVERIFY(dialog.window->rect().contains(
            QRect(browse->mapTo(dialog.window, QPoint(0, 0)), browse->size())));
        QVERIFY(dialog.directory()->geometry().right() < dialog.browse()->x());
        QVERIFY(dialog.browse()->width() >= dialog.browse()->sizeHint().width());
    });
}

SCN_TEST(TestExportDialog, QApplication)
#include "test_exportdialog.moc"
