#include "launcher/scanquestion.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace scnlauncher {
namespace {

QString text(const char* source)
{
    return QCoreApplication::translate("ScanQuestion", source);
}

} // namespace

void askToLeaveScan(QWidget* parent, AfterEnd afterEnd, const std::function<void()>& leave)
{
    const QString name = QStringLiteral("scanQuestion");
    if (parent->findChild<QMessageBox*>(name)) {
        return;
    }
    const bool goesOn = afterEnd == AfterEnd::ScanGoesOn;
    const QString question = goesOn
                                 ? text("扫描正在进行。关闭后仪器会继续扫描，但读数不再存入电脑；"
                                        "下次打开这台仪器时扫描会被停止。")
                                 : text("扫描正在进行。关闭后模拟仪器随之结束，扫描停止。");
    auto* box = new QMessageBox(QMessageBox::Warning, text("扫描正在进行"), question,
                                QMessageBox::NoButton, parent);
    box->setObjectName(name);
    box->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton* yes = box->addButton(
        goesOn ? text("关闭，仪器继续扫描") : text("关闭，停止扫描"), QMessageBox::AcceptRole);
    QPushButton* no = box->addButton(text("取消"), QMessageBox::RejectRole);
    box->setDefaultButton(no);
    box->setEscapeButton(no);
    QObject::connect(yes, &QPushButton::clicked, box, leave);
    box->open();
}

} // namespace scnlauncher
