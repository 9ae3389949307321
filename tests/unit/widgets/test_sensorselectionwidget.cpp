#include "support/testprogram.h"
#include "widgets/sensorselectionwidget.h"

#include <QComboBox>
#include <QMenu>
#include <QTest>
#include <QTimer>

class TestSensorSelectionWidget : public QObject
{
    Q_OBJECT

private slots:
    void offersTheSensorsInTheirOrder();
    void onlyTemperatureCarriesAMenu();
    void activatingASensorLogsItsText();
    void activatingTemperatureOpensItsMenuBelowTheBox();
};

namespace {

constexpr int kTemperature = 6;

QComboBox* comboOf(const SensorSelectionWidget& widget)
{
    return widget.findChild<QComboBox*>();
}

} // namespace

void TestSensorSelectionWidget::offersTheSensorsInTheirOrder()
{
    const SensorSelectionWidget widget;
    QStringList texts;
    for (int row = 0; row < comboOf(widget)->count(); ++row) {
        texts << comboOf(widget)->itemText(row);
    }
    const QStringList expected = {QStringLiteral("直流电压"),
                                  QStringLiteral("交流电压"),
                                  QStringLiteral("周期"),
                                  QStringLiteral("频率"),
                                  QStringLiteral("双线 Ohm"),
                                  QStringLiteral("四线 Ohm"),
                                  QStringLiteral("温度"),
                                  QStringLiteral("热电偶"),
                                  QStringLiteral("温度二线制 RTD"),
                                  QStringLiteral("温度四线制 RTD"),
                                  QStringLiteral("热敏电阻"),
                                  QStringLiteral("4线制热敏电阻"),
                                  QStringLiteral("电容"),
                                  QStringLiteral("二极管"),
                                  QStringLiteral("应变")};
    QCOMPARE(texts, expected);
}

void TestSensorSelectionWidget::onlyTemperatureCarriesAMenu()
{
    const SensorSelectionWidget widget;
    for (int row = 0; row < comboOf(widget)->count(); ++row) {
        const auto* menu = comboOf(widget)->itemData(row, Qt::UserRole).value<QMenu*>();
        QCOMPARE(menu != nullptr, row == kTemperature);
    }
    QStringList types;
    for (const QAction* action :
         comboOf(widget)->itemData(kTemperature, Qt::UserRole).value<QMenu*>()->actions()) {
        types << action->text();
    }
    const QStringList expected = {QStringLiteral("温度(类型 B)"), QStringLiteral("温度(类型 E)"),
                                  QStringLiteral("温度(类型 J)"), QStringLiteral("温度(类型 K)"),
                                  QStringLiteral("温度(类型 N)"), QStringLiteral("温度(类型 R)"),
                                  QStringLiteral("温度(类型 S)"), QStringLiteral("温度(类型 T)")};
    QCOMPARE(types, expected);
}

void TestSensorSelectionWidget::activatingASensorLogsItsText()
{
    SensorSelectionWidget widget;
    QTest::ignoreMessage(QtDebugMsg, "Selected: \"电容\"");
    emit comboOf(widget)->activated(12);
}

void TestSensorSelectionWidget::activatingTemperatureOpensItsMenuBelowTheBox()
{
    SensorSelectionWidget widget;
    widget.show();
    QPoint opened;
    int menus = 0;
    // The menu runs its own event loop until it is closed.
    QTimer poll;
    connect(&poll, &QTimer::timeout, this, [&] {
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
            ++menus;
            opened = menu->pos();
            menu->close();
        }
    });
    poll.start(10);
    widget.onMainComboActivated(kTemperature);
    poll.stop();
    QCOMPARE(menus, 1);
    QCOMPARE(opened, comboOf(widget)->mapToGlobal(QPoint(0, comboOf(widget)->height())));
}

SCN_TEST(TestSensorSelectionWidget, QApplication)
#include "test_sensorselectionwidget.moc"
