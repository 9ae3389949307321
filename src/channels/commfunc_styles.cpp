// The style sheets of the channel pages, dark theme.
#include "channels/commfunc.h"

#include "widgets/flatbuttonstyle.h"

QString CommFunc::tabStyle() const
{
    return QStringLiteral(R"(
QTabWidget#myTabWidget { background: rgb(23,23,23); }
QTabWidget#myTabWidget::pane { top: -5px; border: none; background: rgb(23,23,23); }
QTabWidget#myTabWidget > QTabBar::tab {
    background: rgb(37,37,37);
    color: white;
    padding: 8px 16px;
    min-width: 80px;
}
QTabWidget#myTabWidget > QTabBar::tab:selected { background: rgb(51,51,51); font-weight: bold; }
)");
}

QString CommFunc::workspaceTabStyle() const
{
    return QStringLiteral(R"(
QTabWidget#myTabWidget1 { background: #000000; }
QTabWidget#myTabWidget1::pane { top: -1px; border: none; background: #171717; }
QTabWidget#myTabWidget1 > QTabBar { background: #000000; qproperty-drawBase: false; }
QTabWidget#myTabWidget1 > QTabBar::tab {
    background: #000000;
    color: white;
    min-width: 80px;
    min-height: 20px;
}
QTabWidget#myTabWidget1 > QTabBar::tab:selected { background: #13C4FF; font-weight: bold; }
)");
}

QString CommFunc::treeStyle() const
{
    return QStringLiteral(R"(
QTreeWidget { background: #171717; alternate-background-color: #2B2B2B; }
QTreeWidget::item { height: 20px; }
QTreeWidget::item:selected { background: rgb(60, 120, 216); }
QTreeWidget::item:hover {
    border-top: 1px solid rgb(19,196,255);
    border-bottom: 1px solid rgb(19,196,255);
}
QTreeWidget QPushButton, QTreeWidget QComboBox, QTreeWidget QLineEdit, QTreeWidget QCheckBox {
    margin-top: 1px;
    margin-bottom: 1px;
    height: 21px;
    background: transparent;
    border: 1px solid rgb(60, 60, 60);
    border-radius: 3px;
}
QTreeWidget QPushButton:focus, QTreeWidget QComboBox:focus, QTreeWidget QLineEdit:focus,
QTreeWidget QCheckBox:focus { border: 1px solid rgb(19, 196, 255); }
QTreeWidget QComboBox { combobox-popup: 0; }
QTreeWidget QComboBox::down-arrow { image: url(:/dark/arrow_down.png); }
)");
}

QString CommFunc::buttonStyle() const
{
    return scn::flatButtonStyle();
}
