#pragma once

#include <QWidget>

class QComboBox;
class QMenu;

/// Lets the user choose a kind of sensor from a list; an entry can open a menu of its types.
class SensorSelectionWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SensorSelectionWidget)

public:
    explicit SensorSelectionWidget(QWidget* parent = nullptr);

public slots:
    /// Opens the row's menu, if it has one, and returns once it is closed; otherwise logs the row's
    /// text.
    void onMainComboActivated(int index);

private:
    QMenu* buildThermocoupleMenu();

    QComboBox* m_mainCombo;
};
