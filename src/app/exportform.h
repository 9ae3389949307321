#pragma once

#include <QWidget>

class CustomComboBox;
class QBoxLayout;
class QLabel;
class QLineEdit;

namespace scn {

/// The content of the export dialog: separator, file name, directory and buttons. Keeps what was entered for as
/// long as it lives. Return presses the focused button and does nothing elsewhere. GUI thread.
class ExportForm : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ExportForm)

public:
    explicit ExportForm(QWidget* parent = nullptr);

    /// The separators; each item's data is the separator itself.
    CustomComboBox* separatorBox() const { return m_separatorBox; }

    /// Its text is the whole path, even if the label shows it shortened.
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

} // namespace scn
