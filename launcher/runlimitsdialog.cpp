#include "launcher/runlimitsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace scnlauncher {
namespace {

constexpr int kLargest = 9999999;
// What a limit begins with that is switched on for the first time.
constexpr int kUsualDays = 90;
constexpr int kUsualRuns = 100;
constexpr int kUsualMegabytes = 10240;
constexpr int kTextWidth = 460;

} // namespace

RunLimitsDialog::RunLimitsDialog(const LauncherSettings& settings, QWidget* parent)
    : QDialog(parent)
    , m_settings(settings)
{
    setObjectName(QStringLiteral("runLimits"));
    setWindowTitle(tr("已保留的测量数据"));
    auto* layout = new QVBoxLayout(this);
    auto* explanation = new QLabel(tr("每次开始测量时，上一次的数据保留在数据目录旁的 runs "
                                      "文件夹中。超出以下限制时，最早的数据被删除："),
                                   this);
    explanation->setWordWrap(true);
    explanation->setMinimumWidth(kTextWidth);
    layout->addWidget(explanation);
    const RunLimits limits = settings.runLimits();
    m_days = addLimit(layout, QStringLiteral("days"), tr("保留时间"), tr(" 天"), limits.days,
                      kUsualDays);
    m_runs = addLimit(layout, QStringLiteral("runs"), tr("测量次数"), tr(" 次"), limits.runs,
                      kUsualRuns);
    m_megabytes = addLimit(layout, QStringLiteral("megabytes"), tr("占用空间"), tr(" MB"),
                           limits.megabytes, kUsualMegabytes);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(tr("确定"), QDialogButtonBox::AcceptRole)
        ->setObjectName(QStringLiteral("accept"));
    buttons->addButton(tr("取消"), QDialogButtonBox::RejectRole)
        ->setObjectName(QStringLiteral("cancel"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &RunLimitsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &RunLimitsDialog::reject);
}

RunLimitsDialog::Limit RunLimitsDialog::addLimit(QVBoxLayout* layout, const QString& name,
                                                 const QString& text, const QString& unit,
                                                 int value, int usual)
{
    const Limit limit{new QCheckBox(text, this), new QSpinBox(this)};
    limit.isOn->setObjectName(name);
    limit.isOn->setChecked(value > 0);
    limit.value->setObjectName(name + QStringLiteral("Value"));
    limit.value->setRange(1, kLargest);
    limit.value->setSuffix(unit);
    limit.value->setValue(value > 0 ? value : usual);
    limit.value->setEnabled(value > 0);
    connect(limit.isOn, &QCheckBox::toggled, limit.value, &QWidget::setEnabled);
    auto* row = new QHBoxLayout;
    row->addWidget(limit.isOn, 1);
    row->addWidget(limit.value, 1);
    layout->addLayout(row);
    return limit;
}

void RunLimitsDialog::accept()
{
    const auto valueOf = [](const Limit& limit) {
        return limit.isOn->isChecked() ? limit.value->value() : 0;
    };
    m_settings.setRunLimits({valueOf(m_days), valueOf(m_runs), valueOf(m_megabytes)});
    QDialog::accept();
}

} // namespace scnlauncher
