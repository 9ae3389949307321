#include "app/globals.h"
#include "app/helperthreads.h"
#include "app/mainwidget.h"
#include "app/startup.h"
#include "overlay/loadingview.h"
#include "resources/resources.h"
#include "storage/curvedatadb.h"
#include "widgets/customcombobox.h"
#include "widgets/customdialog.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"
#include "windowbench.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGroupBox>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScreen>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>
#include <QtTest>

#include <functional>

namespace {

constexpr int kEndWaitMs = 20000;
/// Rows of a scan whose export takes longer than the test needs to look at it.
constexpr int kLongScan = 50000;
const QString kRunTimeFormat = QStringLiteral("yyyy MM dd hh mm ss");

/// A click as a hand does it: the window finds who is under the pointer.
void click(const QWidget* widget)
{
    QTest::mouseClick(widget->window()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(widget->window(), widget->rect().center()));
}

/// A key, to whoever has the focus.
void press(const QWidget* window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(window->windowHandle(), key, modifiers);
}

/// Replaces what is in the edit; as an input method does, which takes any script.
void enterText(QLineEdit* edit, const QString& text)
{
    click(edit);
    press(edit->window(), Qt::Key_A, Qt::ControlModifier);
    press(edit->window(), Qt::Key_Delete);
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(edit, &event);
}

template <typename Widget>
Widget* withText(const QWidget& parent, const QString& text)
{
    for (Widget* widget : parent.findChildren<Widget*>()) {
        if (widget->text() == text)
            return widget;
    }
    return nullptr;
}

/// The export dialog as its user sees it.
struct Dialog
{
    explicit Dialog(CustomDialog* dialog)
        : window(dialog)
    {
    }
    QLabel* label(const QString& text) const { return withText<QLabel>(*window, text); }
    QAbstractButton* button(const QString& text) const
    {
        return withText<QAbstractButton>(*window, text);
    }
    QAbstractButton* browse() const { return button(QStringLiteral("  浏览...  ")); }
    QAbstractButton* toFile() const { return button(QStringLiteral("  导出到文件  ")); }
    QAbstractButton* close() const { return button(QStringLiteral("  关闭  ")); }
    CustomComboBox* separator() const { return window->findChild<CustomComboBox*>(); }
    QLineEdit* name() const { return window->findChild<QLineEdit*>(); }
    /// Beside its title.
    QLabel* directory() const
    {
        const QLabel* const title = label(QStringLiteral("导出路径:"));
        for (QLabel* candidate : window->findChildren<QLabel*>()) {
            if (candidate != title && candidate->parent() == title->parent() &&
                candidate->geometry().center().y() == title->geometry().center().y())
                return candidate;
        }
        return nullptr;
    }

    /// Chooses a directory with the button; an empty one leaves the choice by Escape.
    void chooseDirectory(const QString& path) const
    {
        QString title;
        QTimer::singleShot(0, window, [&path, &title] {
            auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(chooser);
            QVERIFY(QTest::qWaitForWindowExposed(chooser));
            title = chooser->windowTitle();
            if (!path.isEmpty()) {
                enterText(chooser->findChild<QLineEdit*>(), path);
                press(chooser, Qt::Key_Return);
            }
            if (chooser->isVisible())
                press(chooser, Qt::Key_Escape);
        });
        click(browse());
        QCOMPARE(title, QStringLiteral("Select Directory"));
    }

    CustomDialog* window;
};

/// A window with two channels in the scan list. The serial number is the test's own, so that tests
/// that run side by side keep apart stores.
struct Export : WindowBench
{
    Export()
    {
        instrument().putModule(2, QStringLiteral("SCN4005A"));
        instrument().setReply(QStringLiteral("*IDN?"),
                              QStringLiteral("MAKER,SCN4070A,%1,1.00").arg(serial()));
        instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#210(@201,202)"));
        open().show();
        startupView()->stopLoading();
    }
    ~Export() { g_scanRunning = false; }
    Export(const Export&) = delete;
    Export& operator=(const Export&) = delete;

    static QString serial()
    {
        const QString tag = QLatin1String(QTest::currentDataTag());
        return QLatin1String(QTest::currentTestFunction()) + QString(tag).remove(QLatin1Char(' '));
    }

    /// A scan whose store then holds `rows` readings of the first channel and one less of the
    /// second, a second apart; the texts of the run leave out the last row.
    void scan(int rows = 5)
    {
        click(startButton());
        QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, kEndWaitMs);
        click(startButton());
        g_scanRunning = false;
        QVERIFY(exportButton()->isEnabled());
        const QDateTime now = QDateTime::currentDateTime();
        start = now.addMSecs(-now.time().msec());
        CurveDataDB* const store = CurveDataDB::instance(QString());
        const QList<int> ids = store->curveNames().keys();
        QCOMPARE(ids.size(), 2);
        for (int curve = 0; curve < 2; ++curve) {
            QVector<QPointF> points;
            for (int row = 0; row < rows - curve; ++row)
                points.append({double(timeOf(row).toMSecsSinceEpoch()), valueOf(curve, row)});
            store->appendPoints(ids.at(curve), points);
        }
        store->flushPending();
        g_scanStartText = start.toString(kRunTimeFormat);
        g_scanEndText = timeOf(rows - 2).toString(kRunTimeFormat);
    }
    QDateTime timeOf(int row) const { return start.addSecs(row); }
    static double valueOf(int curve, int row) { return (curve + 1) * 1.1 + row / 3.0; }

    /// What the file of scan(5) must be, byte for byte.
    QByteArray csv(const QString& separator) const
    {
        const auto line = [&separator](const QStringList& cells) -> QString {
            return cells.join(separator) + QLatin1Char('\n');
        };
        const auto names = CurveDataDB::instance(QString())->curveNames().values();
        QString text =
            QString(QChar(QChar::ByteOrderMark)) + line({QStringLiteral("地址"), g_resourceName}) +
            line({QStringLiteral("型号"), QStringLiteral("SCN4070A")}) +
            line({QStringLiteral("序列号："), serial()}) +
            line({QStringLiteral("开始时间"), g_scanStartText}) +
            line({QStringLiteral("结束时间"), g_scanEndText}) +
            line({QStringLiteral("编号"), QStringLiteral("时间"), names.at(0), names.at(1), {}});
        for (int row = 0; row < 4; ++row)
            text += line({QString::number(row + 1),
                          timeOf(row).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")),
                          QString::asprintf("%.15E", valueOf(0, row)),
                          QString::asprintf("%.15E", valueOf(1, row))});
        return text.toUtf8();
    }

    /// Clicks the export button, and works in the dialog that it opens. What the work leaves open is
    /// closed.
    void inDialog(const std::function<void(const Dialog&)>& work)
    {
        bool hasWorked = false;
        QTimer::singleShot(0, &window(), [this, &work, &hasWorked] {
            auto* dialog = window().findChild<CustomDialog*>();
            QVERIFY(dialog);
            QVERIFY(QTest::qWaitForWindowExposed(dialog));
            work(Dialog(dialog));
            hasWorked = true;
            dialog->close();
        });
        click(exportButton());
        QVERIFY(hasWorked);
    }

    /// Exports into a directory and waits for the end.
    void exportTo(const QString& directory, const QString& name = QStringLiteral("Trace"))
    {
        inDialog([&directory, &name](const Dialog& dialog) {
            dialog.chooseDirectory(directory);
            enterText(dialog.name(), name);
            click(dialog.toFile());
        });
        waitForEnd();
    }
    void waitForEnd() const
    {
        QTRY_VERIFY_WITH_TIMEOUT(exportView() && exportView()->isHidden(), kEndWaitMs);
    }

    /// The overlay of an export: the second busy one.
    LoadingView* exportView() const
    {
        QList<LoadingView*> busy;
        for (LoadingView* view :
             window().findChildren<LoadingView*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (view != reconnectView())
                busy.append(view);
        }
        return busy.value(1);
    }

    /// The message on show is an information for three seconds.
    bool isInformation() const
    {
        return messageDialog()->windowTitle() == QStringLiteral("信息") &&
               messageDialog()->findChild<QTimer*>()->interval() == 3000;
    }

    QDateTime start;
};

/// The files of a directory that an export may have left; all of its name's beginning.
QStringList files(const QString& directory)
{
    return QDir(directory).entryList({QStringLiteral("*.csv")}, QDir::Files);
}

QStringList filesBesideTheProgram()
{
    return QDir(QCoreApplication::applicationDirPath())
        .entryList({Export::serial() + QStringLiteral("_*.csv")}, QDir::Files);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A file's name without the part number and the time.
QString base(const QString& name)
{
    QString text = name;
    return text.remove(QRegularExpression(QStringLiteral("_1_\\d{14}\\.csv$")));
}

} // namespace

/// The dialog of the export, and what comes of it. Each test runs in a process of its own: there is
/// one store for each.
class TestExportDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { removeLeftovers(); }
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

    void withoutAStoreThereIsAMessageAndNoFile();
    void withoutCurvesThereIsAMessageAndNoFile();
    void fileHoldsTheScan_data();
    void fileHoldsTheScan();
    void fileIsNamedAfterSerialAndName_data();
    void fileIsNamedAfterSerialAndName();
    void anyDirectoryWillDo_data();
    void anyDirectoryWillDo();
    void outcomeIsToldAfterTheOverlay_data();
    void outcomeIsToldAfterTheOverlay();
    void outcomeFitsTheScreen();
    void secondExportCannotBeStartedByKeys();
    void exportsFollowOneAnother();
    void endOfTheWindowEndsAnExport();
    void exitLeavesTheDialog_data();
    void exitLeavesTheDialog();

private:
    static void removeLeftovers();
};

void TestExportDialog::initTestCase()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    initResources();
    QFile sheet(QStringLiteral(":/qss/styles.qss"));
    Startup::applyStyleSheet(sheet);
}

void TestExportDialog::cleanup()
{
    QVERIFY(HelperThreads::waitForAll(10000));
    CurveDataDB::shutdown();
    removeLeftovers();
}

/// What this test writes below the program's directory, also in a run that was cut off.
void TestExportDialog::removeLeftovers()
{
    const QDir programs(QCoreApplication::applicationDirPath());
    for (const QString& name : filesBesideTheProgram())
        QFile::remove(programs.filePath(name));
    QDir(programs.filePath(Export::serial() + QStringLiteral("_Data"))).removeRecursively();
}

void TestExportDialog::dialogHasTheseRows()
{
    Export bench;
    bench.inDialog([](const Dialog& dialog) {
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
        for (const char* text : {"列分隔符:", "导出文件详细信息:", "文件名:", "导出路径:"})
            QCOMPARE(dialog.label(QString::fromUtf8(text))->styleSheet(),
                     QStringLiteral("background-color:#444444;"));
        QCOMPARE(dialog.directory()->styleSheet(), QStringLiteral("background-color:#444444;"));
        QCOMPARE(dialog.separator()->styleSheet(), QStringLiteral("background:#171717;"));
    });
}

void TestExportDialog::separatorsHaveTheirData()
{
    Export bench;
    bench.inDialog([](const Dialog& dialog) {
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
    Export bench;
    bench.inDialog([](const Dialog& dialog) {
        QCOMPARE(dialog.window->minimumSize(), dialog.window->maximumSize());
        for (const QWidget* widget : dialog.window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget == dialog.directory())
                continue;
            QVERIFY(widget->parentWidget()->rect().contains(widget->geometry()));
            const auto* label = qobject_cast<const QLabel*>(widget);
            const auto* button = qobject_cast<const QAbstractButton*>(widget);
            if (!label && !button)
                continue;
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
    Export bench;
    bench.inDialog([](const Dialog& dialog) {
        const QImage picture = dialog.window->grab().toImage();
        const auto lightest = [&](const QWidget* widget) {
            int lightness = 0;
            const QRect area(widget->mapTo(dialog.window, QPoint(0, 0)), widget->size());
            for (int y = area.top(); y <= area.bottom(); ++y) {
                for (int x = area.left(); x <= area.right(); ++x)
                    lightness = qMax(lightness, picture.pixelColor(x, y).lightness());
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
    Export bench;
    const QTemporaryDir directory;
    bench.inDialog([&directory](const Dialog& dialog) {
        enterText(dialog.name(), QStringLiteral("第二次"));
        dialog.separator()->setFocus(Qt::TabFocusReason);
        press(dialog.window, Qt::Key_Down);
        dialog.chooseDirectory(directory.path());
        click(dialog.close());
        QVERIFY(!dialog.window->isVisible());
    });
    bench.inDialog([&directory](const Dialog& dialog) {
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
    Export bench;
    bench.inDialog([&way](const Dialog& dialog) {
        if (way.isEmpty())
            press(dialog.window, Qt::Key_Escape);
        else
            click(dialog.button(way));
        QVERIFY(!dialog.window->isVisible());
    });
    QCOMPARE(bench.message(), QString());
    QVERIFY(!bench.exportView());
}

void TestExportDialog::tabGoesFromTopToBottom()
{
    Export bench;
    bench.inDialog([](const Dialog& dialog) {
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
    Export bench;
    bench.inDialog([&bench](const Dialog& dialog) {
        for (QWidget* control : QList<QWidget*>{dialog.name(), dialog.separator()}) {
            control->setFocus(Qt::TabFocusReason);
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
                press(dialog.window, key);
                QVERIFY(dialog.window->isVisible());
                QCOMPARE(bench.message(), QString());
            }
        }
        // The cross is no part of the form.
        bool hasChooser = false;
        QTimer::singleShot(0, dialog.window, [&hasChooser] {
            auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            hasChooser = chooser != nullptr;
            if (chooser)
                chooser->close();
        });
        dialog.button(QStringLiteral("×"))->setFocus(Qt::TabFocusReason);
        press(dialog.window, Qt::Key_Return);
        QCoreApplication::processEvents();
        QVERIFY(!hasChooser && dialog.window->isVisible());
        // Without a store the export is a message only.
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
    Export bench;
    bench.inDialog([](const Dialog& dialog) {
        const QString before = dialog.directory()->text();
        dialog.chooseDirectory(QString());
        QCOMPARE(dialog.directory()->text(), before);
        QVERIFY(dialog.window->isVisible());
    });
}

void TestExportDialog::longDirectoryIsShownShort()
{
    Export bench;
    const QTemporaryDir directory;
    QString path = directory.path();
    while (path.size() < 300)
        path += QLatin1Char('/') + QString(30, QLatin1Char('w'));
    QVERIFY(QDir().mkpath(path));
    bench.inDialog([&path](const Dialog& dialog) {
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

void TestExportDialog::withoutAStoreThereIsAMessageAndNoFile()
{
    Export bench;
    bench.inDialog([&bench](const Dialog& dialog) {
        click(dialog.toFile());
        QCOMPARE(bench.message(), QStringLiteral("没有相关轨迹数据"));
        QVERIFY(bench.isInformation());
        QVERIFY(dialog.window->isVisible());
    });
    QVERIFY(!bench.exportView());
    QCOMPARE(filesBesideTheProgram(), QStringList());
}

void TestExportDialog::withoutCurvesThereIsAMessageAndNoFile()
{
    Export bench;
    bench.scan();
    CurveDataDB* const store = CurveDataDB::instance(QString());
    // The window would begin a new scan.
    disconnect(store, nullptr, &bench.window(), nullptr);
    const QSignalSpy cleared(store, &CurveDataDB::sigClearFinished);
    store->clearAll();
    QTRY_COMPARE_WITH_TIMEOUT(cleared.count(), 1, kEndWaitMs);
    QVERIFY(store->curveNames().isEmpty());
    bench.inDialog([&bench](const Dialog& dialog) {
        click(dialog.toFile());
        QCOMPARE(bench.message(), QStringLiteral("没有相关轨迹数据"));
        QVERIFY(bench.isInformation());
    });
    QVERIFY(!bench.exportView());
    QCOMPARE(filesBesideTheProgram(), QStringList());
}

void TestExportDialog::fileHoldsTheScan_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("separator");
    QTest::newRow("comma") << 0 << QStringLiteral(",");
    QTest::newRow("semicolon") << 1 << QStringLiteral(";");
    QTest::newRow("tab") << 2 << QStringLiteral("\t");
}

void TestExportDialog::fileHoldsTheScan()
{
    QFETCH(int, row);
    QFETCH(QString, separator);
    Export bench;
    bench.scan();
    bench.inDialog([row](const Dialog& dialog) {
        dialog.separator()->setFocus(Qt::TabFocusReason);
        for (int step = 0; step < row; ++step)
            press(dialog.window, Qt::Key_Down);
        click(dialog.toFile());
        QVERIFY(!dialog.window->isVisible());
    });
    bench.waitForEnd();
    const QStringList names = filesBesideTheProgram();
    QCOMPARE(names.size(), 1);
    const QString path = QDir(QCoreApplication::applicationDirPath()).filePath(names.constFirst());
    QCOMPARE(base(names.constFirst()), Export::serial() + QStringLiteral("_Trace"));
    QCOMPARE(bench.message(), QStringLiteral("导出成功") + path);
    QCOMPARE(contentOf(path), bench.csv(separator));
}

void TestExportDialog::fileIsNamedAfterSerialAndName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("written");
    QTest::newRow("empty") << QString() << QStringLiteral("顺序对齐曲线数据");
    QTest::newRow("reserved") << QStringLiteral("a/b\\c:d*e?f\"g<h>i|j")
                              << QStringLiteral("a_b_c_d_e_f_g_h_i_j");
    QTest::newRow("markers") << QStringLiteral("%1 %2") << QStringLiteral("%1 %2");
    QTest::newRow("upwards") << QStringLiteral("../../x") << QStringLiteral(".._.._x");
}

void TestExportDialog::fileIsNamedAfterSerialAndName()
{
    QFETCH(QString, name);
    QFETCH(QString, written);
    Export bench;
    bench.scan();
    const QTemporaryDir directory;
    bench.exportTo(directory.path(), name);
    const QStringList names = QDir(directory.path()).entryList(QDir::Files);
    QCOMPARE(names.size(), 1);
    QCOMPARE(base(names.constFirst()), Export::serial() + QLatin1Char('_') + written);
}

void TestExportDialog::anyDirectoryWillDo_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<bool>("vanishes");
    QTest::newRow("blanks") << QStringLiteral("/a b/ c") << false;
    QTest::newRow("markers") << QStringLiteral("/%1/%2") << false;
    QTest::newRow("Chinese") << QStringLiteral("/数据/目录") << false;
    QTest::newRow("separator") << QStringLiteral("/a/") << false;
    QTest::newRow("long") << QString(QLatin1Char('/') + QString(148, QLatin1Char('w'))).repeated(2)
                          << false;
    // It is made again.
    QTest::newRow("vanished") << QStringLiteral("/a/b") << true;
}

void TestExportDialog::anyDirectoryWillDo()
{
    QFETCH(QString, directory);
    QFETCH(bool, vanishes);
    Export bench;
    bench.scan();
    const QTemporaryDir root;
    const QString path = root.path() + directory;
    QVERIFY(QDir().mkpath(path));
    bench.inDialog([&](const Dialog& dialog) {
        dialog.chooseDirectory(path);
        if (vanishes)
            QVERIFY(QDir().rmdir(path));
        click(dialog.toFile());
    });
    bench.waitForEnd();
    QCOMPARE(files(path).size(), 1);
    const QString file = QDir(path).filePath(files(path).constFirst());
    QCOMPARE(bench.message(), QStringLiteral("导出成功") + QDir::cleanPath(file));
    QCOMPARE(contentOf(file), bench.csv(QStringLiteral(",")));
}

void TestExportDialog::outcomeIsToldAfterTheOverlay_data()
{
    QTest::addColumn<QString>("cause");
    QTest::addColumn<QString>("text");
    QTest::newRow("success") << QString() << QStringLiteral("导出成功");
    QTest::newRow("name") << QStringLiteral("name")
                          << QStringLiteral("CSV文件无法打开（可能被占用）");
    QTest::newRow("blocked") << QStringLiteral("blocked")
                             << QStringLiteral("CSV文件无法打开（可能被占用）");
    QTest::newRow("texts") << QStringLiteral("texts") << QStringLiteral("没有可以保存的数据");
}

void TestExportDialog::outcomeIsToldAfterTheOverlay()
{
    /// Whether the overlay was still there when the message came.
    class Watch : public QObject
    {
    public:
        explicit Watch(Export& bench)
            : m_bench(bench)
        {
            bench.messageDialog()->installEventFilter(this);
        }
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::Show) {
                ++shows;
                wasCovered = m_bench.exportView()->isVisible();
            }
            return false;
        }
        int shows = 0;
        bool wasCovered = true;

    private:
        Export& m_bench;
    };

    QFETCH(QString, cause);
    QFETCH(QString, text);
    Export bench;
    bench.scan();
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("target"));
    QVERIFY(QDir().mkpath(path));
    if (cause == QLatin1String("texts")) {
        g_scanStartText.clear();
        g_scanEndText.clear();
    }
    Watch watch(bench);
    bench.inDialog([&](const Dialog& dialog) {
        dialog.chooseDirectory(path);
        if (cause == QLatin1String("name"))
            enterText(dialog.name(), QString(300, QLatin1Char('n')));
        if (cause == QLatin1String("blocked")) {
            // A file stands where the directory was.
            QVERIFY(QDir().rmdir(path));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        // Sent to the button alone: nothing else happens until the overlay is looked at.
        QTest::mouseClick(dialog.toFile(), Qt::LeftButton);
        QVERIFY(!dialog.window->isVisible());
        QVERIFY(bench.exportView()->isVisible());
        QCOMPARE(bench.exportView()->geometry(), bench.window().rect());
        QCOMPARE(watch.shows, 0);
    });
    bench.waitForEnd();
    QCOMPARE(watch.shows, 1);
    QVERIFY(!watch.wasCovered);
    QVERIFY(bench.isInformation());
    const QStringList left = QDir(path).entryList(QDir::Files);
    if (!cause.isEmpty()) {
        QCOMPARE(bench.message(), text);
        QCOMPARE(left, QStringList());
    } else {
        QCOMPARE(left.size(), 1);
        QCOMPARE(bench.message(), text + QDir(path).filePath(left.constFirst()));
    }
}

void TestExportDialog::outcomeFitsTheScreen()
{
    Export bench;
    bench.scan();
    const QTemporaryDir root;
    const QString path =
        root.path() + QString(QLatin1Char('/') + QString(140, QLatin1Char('w'))).repeated(6);
    QVERIFY(QDir().mkpath(path));
    bench.exportTo(path);
    QCOMPARE(files(path).size(), 1);
    QVERIFY(bench.message().contains(path));
    const QSize screen = QApplication::primaryScreen()->availableSize();
    QVERIFY(bench.messageDialog()->width() <= screen.width());
    QVERIFY(bench.messageDialog()->height() <= screen.height());
    // Several lines of it.
    QVERIFY(bench.messageDialog()->height() > 4 * bench.messageDialog()->fontMetrics().height());
}

void TestExportDialog::secondExportCannotBeStartedByKeys()
{
    Export bench;
    bench.scan(kLongScan);
    const QTemporaryDir directory;
    bench.inDialog([&](const Dialog& dialog) {
        dialog.chooseDirectory(directory.path());
        click(dialog.toFile());
    });
    QVERIFY(bench.exportView()->isVisible());
    auto* dialog = bench.window().findChild<CustomDialog*>();
    // A dialog that opened would keep the test in its loop.
    bool hasOpened = false;
    QTimer::singleShot(0, dialog, [&] {
        hasOpened = dialog->isVisible();
        dialog->close();
    });
    // Sent to the buttons alone: the export's end is not taken in before them.
    QTest::keyClick(bench.exportButton(), Qt::Key_Space);
    QTest::mouseClick(Dialog(dialog).toFile(), Qt::LeftButton);
    bench.waitForEnd();
    QVERIFY(!hasOpened);
    QCOMPARE(files(directory.path()).size(), 1);
}

void TestExportDialog::exportsFollowOneAnother()
{
    Export bench;
    bench.scan();
    const QTemporaryDir directory;
    bench.exportTo(directory.path(), QStringLiteral("one"));
    const LoadingView* overlay = bench.exportView();
    bench.exportTo(directory.path(), QStringLiteral("two"));
    QCOMPARE(files(directory.path()).size(), 2);
    QCOMPARE(bench.exportView(), overlay);
}

void TestExportDialog::endOfTheWindowEndsAnExport()
{
    Export bench;
    // Long enough for the end to come in its midst.
    bench.scan(kLongScan);
    const QTemporaryDir directory;
    bench.inDialog([&](const Dialog& dialog) {
        dialog.chooseDirectory(directory.path());
        click(dialog.toFile());
    });
    QVERIFY(bench.exportView()->isVisible());
    WindowBench::endAcquisition();
    bench.close();
    QCOMPARE(files(directory.path()), QStringList());
    QCoreApplication::processEvents();
}

void TestExportDialog::exitLeavesTheDialog_data()
{
    QTest::addColumn<bool>("byLauncher");
    QTest::newRow("exit") << true;
    QTest::newRow("close") << false;
}

void TestExportDialog::exitLeavesTheDialog()
{
    QFETCH(bool, byLauncher);
    Export bench;
    bench.window().setAttribute(Qt::WA_DeleteOnClose, false);
    bool isOpen = true;
    QTimer::singleShot(0, &bench.window(), [&] {
        QTimer::singleShot(0, &bench.window(), [&] {
            isOpen = bench.window().findChild<CustomDialog*>()->isVisible();
            if (byLauncher)
                QMetaObject::invokeMethod(&bench.window(), "handleInput",
                                          Q_ARG(QString, QStringLiteral("exit")));
            else
                bench.window().close();
        });
        click(bench.exportButton());
    });
    // Comes back from the dialog's loop and from the program's.
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(isOpen);
    bench.close();
}

QTEST_MAIN(TestExportDialog)
#include "test_exportdialog.moc"
