#include "plot/colorselectbutton.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QColorDialog>
#include <QGridLayout>
#include <QMenu>
#include <QSignalSpy>
#include <QTimer>
#include <QWidgetAction>
#include <QtTest>

namespace {
const QStringList kPalette{
    QStringLiteral("#b793e6"), QStringLiteral("#cf8197"), QStringLiteral("#daae7b"),
    QStringLiteral("#95e1aa"), QStringLiteral("#e66f3f"), QStringLiteral("#834ddc"),
    QStringLiteral("#e425e4"), QStringLiteral("#25e4e4"), QStringLiteral("#e12267"),
    QStringLiteral("#5694ef"), QStringLiteral("#43dc1d"), QStringLiteral("#e2e627"),
    QStringLiteral("#2cebeb"), QStringLiteral("#84e425"), QStringLiteral("#d13b59"),
    QStringLiteral("#e42525"), QStringLiteral("#bc8651"), QStringLiteral("#2e2e8e"),
};

/// The grid of swatches in an open menu.
QGridLayout* swatchGrid(const QMenu* menu)
{
    const auto* action = qobject_cast<QWidgetAction*>(menu->actions().value(0));
    return action ? qobject_cast<QGridLayout*>(action->defaultWidget()->layout()) : nullptr;
}

/// Clicks the button and runs `whileOpen` on its menu; closes the menu if it is still open.
template <typename Check>
void clickAndInspect(ColorSelectButton* button, Check whileOpen)
{
    bool inspected = false;
    QTimer::singleShot(0, button, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        inspected = true;
        whileOpen(menu);
        if (QWidget* popup = QApplication::activePopupWidget()) {
            popup->close();
        }
    });
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(inspected);
}
} // namespace

class TestColorSelectButton : public QObject
{
    Q_OBJECT

private slots:
    void nineteenthButtonStartsThePaletteAgain();
    void showsItsColor();
    void menuOpensJustBelow();
    void menuShowsThePaletteInTwoRows();
    void menuIsBlackAllAround();
    void swatchSetsTheColorAndClosesTheMenu();
    void presentColorIsReportedToo();
    void buttonMayGoWhileItsMenuIsOpen();
    void dialogAppliesAValidColor();
    void rejectedDialogChangesNothing();
    void buttonMayGoWhileItsDialogIsOpen();
};

// Runs first: the first button of the process has the first colour.
void TestColorSelectButton::nineteenthButtonStartsThePaletteAgain()
{
    for (int i = 0; i < 19; ++i) {
        const ColorSelectButton button;
        QCOMPARE(button.color().name(), kPalette.at(i % 18));
    }
}

void TestColorSelectButton::showsItsColor()
{
    const ColorSelectButton button;
    QCOMPARE(button.size(), QSize(20, 20));
    QCOMPARE(button.minimumSize(), QSize(20, 20));
    QCOMPARE(button.maximumSize(), QSize(20, 20));
    QCOMPARE(button.styleSheet(), QStringLiteral("background-color: %1; border: 1px solid black;")
                                      .arg(button.color().name()));
}

void TestColorSelectButton::menuOpensJustBelow()
{
    ColorSelectButton button;
    button.move(50, 60);
    button.show();
    clickAndInspect(&button, [&](const QMenu* menu) {
        QCOMPARE(menu->pos(), button.mapToGlobal(QPoint(0, 20)));
    });
}

void TestColorSelectButton::menuShowsThePaletteInTwoRows()
{
    ColorSelectButton button;
    button.show();
    clickAndInspect(&button, [](const QMenu* menu) {
        const QGridLayout* grid = swatchGrid(menu);
        QVERIFY(grid);
        QCOMPARE(grid->parentWidget()->styleSheet(), QStringLiteral("background:black;"));
        QCOMPARE(grid->spacing(), 2);
        QCOMPARE(grid->count(), 18);
        for (int i = 0; i < 18; ++i) {
            const auto* swatch =
                qobject_cast<QPushButton*>(grid->itemAtPosition(i / 9, i % 9)->widget());
            QVERIFY(swatch);
            QCOMPARE(swatch->size(), QSize(20, 20));
            QCOMPARE(swatch->styleSheet(),
                     QStringLiteral("background-color: %1; border: none;").arg(kPalette.at(i)));
        }
    });
}

/// Whatever the button's colour.
void TestColorSelectButton::menuIsBlackAllAround()
{
    QWidget window;
    // As the application's style sheet does.
    window.setStyleSheet(QStringLiteral("QMenu { border-radius: 4px; }"));
    ColorSelectButton button(&window);
    window.show();
    clickAndInspect(&button, [](QMenu* menu) {
        const QImage picture = menu->grab().toImage();
        for (int x = 0; x < picture.width(); ++x) {
            QCOMPARE(picture.pixelColor(x, 0), QColor(Qt::black));
            QCOMPARE(picture.pixelColor(x, picture.height() - 1), QColor(Qt::black));
        }
    });
}

void TestColorSelectButton::swatchSetsTheColorAndClosesTheMenu()
{
    ColorSelectButton button;
    button.show();
    QSignalSpy changed(&button, &ColorSelectButton::colorChanged);
    clickAndInspect(&button, [&](QMenu* menu) {
        QTest::mouseClick(swatchGrid(menu)->itemAtPosition(1, 2)->widget(), Qt::LeftButton);
        QVERIFY(!menu->isVisible());
    });
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.at(0).at(0).value<QColor>().name(), kPalette.at(11));
    QCOMPARE(button.color().name(), kPalette.at(11));
    QCOMPARE(button.styleSheet(),
             QStringLiteral("background-color: #e2e627; border: 1px solid black;"));
}

void TestColorSelectButton::presentColorIsReportedToo()
{
    ColorSelectButton button;
    button.show();
    QSignalSpy changed(&button, &ColorSelectButton::colorChanged);
    for (int i = 0; i < 2; ++i) {
        clickAndInspect(&button, [&](QMenu* menu) {
            QTest::mouseClick(swatchGrid(menu)->itemAtPosition(0, 0)->widget(), Qt::LeftButton);
        });
    }
    QCOMPARE(changed.size(), 2);
}

void TestColorSelectButton::buttonMayGoWhileItsMenuIsOpen()
{
    auto* button = new ColorSelectButton;
    const QPointer<ColorSelectButton> alive(button);
    button->show();
    QTimer::singleShot(0, qApp, [button] { delete button; });
    QMetaObject::invokeMethod(button, "click");
    QVERIFY(!alive);
    QVERIFY(!QApplication::activePopupWidget());
}

void TestColorSelectButton::dialogAppliesAValidColor()
{
    ColorSelectButton button;
    QSignalSpy changed(&button, &ColorSelectButton::colorChanged);
    QString title;
    QColor offered;
    QTimer::singleShot(0, &button, [&] {
        auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        title = dialog->windowTitle();
        offered = dialog->currentColor();
        dialog->setCurrentColor(QColor(1, 2, 3));
        dialog->accept();
    });
    const QColor before = button.color();
    QVERIFY(QMetaObject::invokeMethod(&button, "showColorDialog"));
    QCOMPARE(title, QStringLiteral("选择颜色"));
    QCOMPARE(offered, before);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(button.color(), QColor(1, 2, 3));
}

void TestColorSelectButton::rejectedDialogChangesNothing()
{
    ColorSelectButton button;
    QSignalSpy changed(&button, &ColorSelectButton::colorChanged);
    const QColor before = button.color();
    bool seen = false;
    QTimer::singleShot(0, &button, [&] {
        auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        seen = true;
        dialog->setCurrentColor(QColor(1, 2, 3));
        dialog->reject();
    });
    QVERIFY(QMetaObject::invokeMethod(&button, "showColorDialog"));
    QVERIFY(seen);
    QCOMPARE(changed.size(), 0);
    QCOMPARE(button.color(), before);
}

void TestColorSelectButton::buttonMayGoWhileItsDialogIsOpen()
{
    auto* button = new ColorSelectButton;
    const QPointer<ColorSelectButton> alive(button);
    QTimer::singleShot(0, qApp, [button] { delete button; });
    QMetaObject::invokeMethod(button, "showColorDialog");
    QVERIFY(!alive);
}

SCN_TEST(TestColorSelectButton, QApplication)
#include "test_colorselectbutton.moc"
