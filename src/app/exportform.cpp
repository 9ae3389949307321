#include "app/exportform.h"

#include "common/threadassert.h"
#include "export/exportrequest.h"
#include "widgets/customcombobox.h"
#include "widgets/pathlabel.h"

#include <QCoreApplication>
#include <QDir>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QSpacerItem>
#include <QVBoxLayout>

#include <array>

namespace scn {
namespace {

constexpr int kRowSpacing = 12;
constexpr int kControlHeight = 28;
/// Leaves room in the row for the title and the button.
constexpr int kPathWidth = 300;

/// Names of the separators, in the order of exportSeparator().
constexpr std::array<const char*, 3> kSeparatorTitles = {
    QT_TRANSLATE_NOOP("scn::ExportForm", "逗号(,)"),
    QT_TRANSLATE_NOOP("scn::ExportForm", "分号(;)"),
    QT_TRANSLATE_NOOP("scn::ExportForm", "制表符(\\t)"),
};

/// Adds a row to the form.
QHBoxLayout* addRow(QBoxLayout* rows)
{
    auto* row = new QHBoxLayout;
    rows->addLayout(row);
    return row;
}

/// Gives a label the background of the form.
QLabel* withGround(QLabel* label)
{
    label->setStyleSheet(QStringLiteral("background-color:#444444;"));
    return label;
}

QPushButton* makeButton(const QString& text)
{
    auto* button = new QPushButton(text);
    button->setMinimumHeight(kControlHeight);
    // Otherwise Return in another control would press it and close the dialog by accident.
    button->setAutoDefault(false);
    return button;
}

} // namespace

ExportForm::ExportForm(QWidget* parent)
    : QWidget(parent)
{
    assertGuiThread();
    auto* rows = new QVBoxLayout(this);
    rows->setSpacing(kRowSpacing);
    addSeparatorRow(rows);
    addDetailsGroup(rows);
    addNameRow(rows);
    addDirectoryRow(rows);
    rows->addStretch();
    addButtonRow(rows);
}

void ExportForm::addSeparatorRow(QBoxLayout* rows)
{
    QHBoxLayout* row = addRow(rows);
    row->addWidget(withGround(new QLabel(tr("列分隔符:"))));
    m_separatorBox = new CustomComboBox;
    m_separatorBox->setStyleSheet(QStringLiteral("background:#171717;"));
    m_separatorBox->setMinimumHeight(kControlHeight);
    for (const char* title : kSeparatorTitles) {
        m_separatorBox->addItem(tr(title), exportSeparator(m_separatorBox->count()));
    }
    row->addWidget(m_separatorBox);
    row->addItem(new QSpacerItem(20, 20, QSizePolicy::Expanding, QSizePolicy::Minimum));
}

void ExportForm::addDetailsGroup(QBoxLayout* rows)
{
    auto* group = new QGroupBox(tr("详情"));
    auto* inside = new QVBoxLayout(group);
    inside->addWidget(withGround(new QLabel(tr("导出文件详细信息:"))));
    rows->addWidget(group);
}

void ExportForm::addNameRow(QBoxLayout* rows)
{
    QHBoxLayout* row = addRow(rows);
    row->addWidget(withGround(new QLabel(tr("文件名:"))));
    m_nameEdit = new QLineEdit(QStringLiteral("Trace"));
    m_nameEdit->setMinimumHeight(kControlHeight);
    row->addWidget(m_nameEdit);
}

void ExportForm::addDirectoryRow(QBoxLayout* rows)
{
    QHBoxLayout* row = addRow(rows);
    row->addWidget(withGround(new QLabel(tr("导出路径:"))));
    m_directoryLabel = withGround(new PathLabel(1, kPathWidth));
    m_directoryLabel->setText(QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
    row->addWidget(m_directoryLabel, 1);
    QPushButton* browse = makeButton(tr("  浏览...  "));
    connect(browse, &QPushButton::clicked, this, &ExportForm::browseRequested);
    row->addWidget(browse);
}

void ExportForm::addButtonRow(QBoxLayout* rows)
{
    QHBoxLayout* row = addRow(rows);
    row->addStretch();
    QPushButton* exportButton = makeButton(tr("  导出到文件  "));
    connect(exportButton, &QPushButton::clicked, this, &ExportForm::exportRequested);
    row->addWidget(exportButton);
    QPushButton* closeButton = makeButton(tr("  关闭  "));
    connect(closeButton, &QPushButton::clicked, this, &ExportForm::closeRequested);
    row->addWidget(closeButton);
}

void ExportForm::keyPressEvent(QKeyEvent* event)
{
    assertGuiThread();
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (auto* button = qobject_cast<QPushButton*>(focusWidget())) {
        button->click();
    }
}

} // namespace scn
