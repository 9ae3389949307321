#include "launcher/desktopfile.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMessageBox>
#include <QUrl>

namespace scnlauncher {
namespace {

QString text(const char* source)
{
    return QCoreApplication::translate("DesktopFile", source);
}

} // namespace

void openOnDesktop(QWidget* parent, const QString& path)
{
    const bool isThere = QFileInfo::exists(path);
    if (isThere && QDesktopServices::openUrl(QUrl::fromLocalFile(path))) {
        return;
    }
    const QString sentence = isThere ? text("没有找到能打开它的程序（xdg-utils）。请自行打开 %1。")
                                     : text("%1 不存在，可能无法写入。");
    auto* box = new QMessageBox(QMessageBox::Information, text("无法打开"), sentence.arg(path),
                                QMessageBox::NoButton, parent);
    box->addButton(text("确定"), QMessageBox::AcceptRole);
    box->setObjectName(QStringLiteral("pathMessage"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->open();
}

} // namespace scnlauncher
