#include "app/instrumentpagebuilder.h"

#include "common/threadassert.h"
#include "widgets/flatbuttonstyle.h"
#include "widgets/wheelguard.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace scn {

namespace {

constexpr int kPanelSlots = 3;

} // namespace

InstrumentPage InstrumentPageBuilder::build(QWidget* parent)
{
    assertGuiThread();
    InstrumentPage page;
    page.page = new QScrollArea(parent);
    page.page->setWidgetResizable(true);
    page.content = new QWidget(page.page);
    page.content->setStyleSheet(QStringLiteral("background:rgb(63,63,63);"));
    auto* layout = new QVBoxLayout(page.content);
    for (int slot = 1; slot <= kPanelSlots; ++slot) {
        layout->addWidget(buildSlotPanel(slot, page.content));
    }
    auto* setupButton = new QPushButton(tr("更多设置..."), page.content);
    setupButton->setObjectName(QStringLiteral("setupButton"));
    // On the page's ground a button without a face would look like a label.
    setupButton->setStyleSheet(flatButtonStyle());
    layout->addWidget(setupButton);
    layout->addStretch();
    page.page->setWidget(page.content);
    return page;
}

QWidget* InstrumentPageBuilder::buildSlotPanel(int slot, QWidget* parent)
{
    auto* panel = new QWidget(parent);
    auto* layout = new QVBoxLayout(panel);
    auto* header = new QHBoxLayout;
    header->addWidget(new QLabel(tr("时隙 %1:").arg(slot), panel));
    auto* box = new QComboBox(panel);
    box->addItem(tr("无"));
    WheelGuard::install(box);
    header->addWidget(box, 1);
    layout->addLayout(header);
    auto* modes = new QHBoxLayout;
    auto* scanMode = new QRadioButton(tr("扫描模式"), panel);
    scanMode->setChecked(true);
    modes->addWidget(scanMode);
    modes->addWidget(new QRadioButton(tr("开关模式"), panel));
    layout->addLayout(modes);
    layout->addWidget(
        new QLabel(QStringLiteral("20-Channel Armature Multiplexer...\n版本: 01.02"), panel));
    return panel;
}

} // namespace scn
