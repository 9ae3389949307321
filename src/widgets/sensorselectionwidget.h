#pragma once

#include <QWidget>

class QComboBox;
class QMenu;

/// Chooses a kind of sensor from one list, in which an entry can open a menu of its types.
class SensorSelectionWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SensorSelectionWidget)

public:
    explicit SensorSelectionWidget(QWidget* parent = nullptr);

public slots:
    /// Opens the menu of the row, if it has one, and returns when it is closed; otherwise logs
    /// the row's text.
    void onMainComboActivated(int index);

private:
    QMenu* buildThermocoupleMenu();

    QComboBox* m_mainCombo;
};
