#pragma once

#include <QWidget>

class CustomComboBox;
class QBoxLayout;
class QLabel;
class QLineEdit;

/// What the export dialog holds: the choice of the separator, the file's name and its directory, and
/// the buttons. It keeps what was entered for as long as it lives. The key Return presses the button
/// that has the focus and does nothing elsewhere. GUI thread.
class ExportForm : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ExportForm)

public:
    explicit ExportForm(QWidget* parent = nullptr);

    /// The separators; the data of each item is the separator itself.
    CustomComboBox* separatorBox() const { return m_separatorBox; }

    /// Its text is the whole path, also where less of it is shown.
    QLabel* directoryLabel() const { return m_directoryLabel; }

    QLineEdit* nameEdit() const { return m_nameEdit; }

signals:
    void browseRequested();
    void exportRequested();
    void closeRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addSeparatorRow(QBoxLayout* rows);
    void addDetailsGroup(QBoxLayout* rows);
    void addNameRow(QBoxLayout* rows);
    void addDirectoryRow(QBoxLayout* rows);
    void addButtonRow(QBoxLayout* rows);

    CustomComboBox* m_separatorBox = nullptr;
    QLabel* m_directoryLabel = nullptr;
    QLineEdit* m_nameEdit = nullptr;
};
