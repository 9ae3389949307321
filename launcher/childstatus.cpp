#include "launcher/childstatus.h"

#include "launcher/devicerights.h"
#include "launcher/logline.h"
#include "launcher/serialrate.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace scnlauncher {
namespace {

const QLatin1String kModel("SCN4070A");

// What the program writes of its link and its run.
const QString kOpened = QStringLiteral("仪器已连接: ");
const QString kNotOpened = QStringLiteral("仪器未打开: ");
const QString kSilent = QStringLiteral("仪器无应答");
const QString kLost = QStringLiteral("仪器连接已丢失");
const QString kScanBegins = QStringLiteral("扫描开始");
const QString kScanEnds = QStringLiteral("扫描结束");

struct StatusName
{
    const char* name;
    OpenFailure failure;
};

/// VISA's names of the statuses of an open; every library begins its texts with them.
constexpr StatusName kStatusNames[] = {
    {"VI_ERROR_RSRC_NFOUND", OpenFailure::NoSuchResource},
    {"VI_ERROR_INV_RSRC_NAME", OpenFailure::Malformed},
    {"VI_ERROR_NPERMISSION", OpenFailure::NoRights},
    {"VI_ERROR_TMO", OpenFailure::NoAnswer},
    {"VI_ERROR_RSRC_BUSY", OpenFailure::Busy},
    {"VI_ERROR_RSRC_LOCKED", OpenFailure::Busy},
};

OpenFailure failureNamedIn(const QString& text)
{
    for (const StatusName& row : kStatusNames) {
        if (text.contains(QLatin1String(row.name))) {
            return row.failure;
        }
    }
    return OpenFailure::Other;
}

/// Whether the resource is one that VISA knows, but not each library: the status of an open is the same
/// for it as for a wrong spelling.
bool isOfAnotherKind(const QString& resource)
{
    static const QRegularExpression form(
        QStringLiteral("^(GPIB\\d*::\\d+(::\\d+)?(::INSTR)?|GPIB\\d*::INTFC|"
                       "TCPIP\\d*::(\\[[0-9a-f:.%]+\\]|[^:]+)(::[^:]+)?::INSTR|"
                       "(GPIB-VXI|PXI|VXI)\\d*::.+::(INSTR|BACKPLANE|MEMACC)|"
                       "USB\\d*::[^:]+::[^:]+::[^:]+(::\\d+)?(::(INSTR|RAW))?)$"),
        QRegularExpression::CaseInsensitiveOption);
    return form.match(resource.trimmed()).hasMatch();
}

QString text(const char* source)
{
    return QCoreApplication::translate("ChildStatus", source);
}

} // namespace

bool ChildStatus::take(const QString& line)
{
    const LogLine entry = LogLine::parse(line);
    if (entry.level == LogLine::Level::Critical || entry.level == LogLine::Level::Fatal) {
        m_lastCritical = entry.text;
        m_lastCriticalTime = entry.time;
        return true;
    }
    if (entry.text == kScanBegins || entry.text == kScanEnds) {
        m_isScanning = entry.text == kScanBegins;
        return true;
    }
    return takeLink(entry.text);
}

void ChildStatus::noteCutLine()
{
    m_lastCritical = text("程序的一行输出没有结尾，已截断");
    m_lastCriticalTime.clear();
}

bool ChildStatus::takeLink(const QString& text)
{
    if (text.startsWith(kOpened)) {
        m_link = Link::Connected;
        m_identity = text.mid(kOpened.size());
        m_failure = OpenFailure::None;
        m_failureText.clear();
    } else if (text.startsWith(kNotOpened)) {
        fail(failureNamedIn(text), text.mid(kNotOpened.size()));
    } else if (text == kSilent) {
        fail(OpenFailure::NoAnswer, text);
    } else if (text == kLost && m_link == Link::Connected) {
        m_link = Link::Lost;
    } else {
        return false;
    }
    return true;
}

void ChildStatus::fail(OpenFailure failure, const QString& text)
{
    m_link = Link::Failed;
    m_failure = failure;
    m_failureText = text;
}

bool ChildStatus::isOtherKind() const
{
    return m_link == Link::Connected && !m_identity.contains(kModel, Qt::CaseInsensitive);
}

QString failureSentence(OpenFailure failure, const QString& resource)
{
    switch (failure) {
    case OpenFailure::None:
        return {};
    case OpenFailure::NoSuchResource:
        return text("没有这个仪器：设备不存在或无法到达。请检查电缆、电源和资源名。");
    case OpenFailure::Refused:
        return text("连接被拒绝：主机可以到达，但该端口没有仪器监听。请检查端口号。");
    case OpenFailure::NoRights: {
        const QString problem = rightsProblem(deviceOf(resource));
        return problem.isEmpty() ? text("没有打开该仪器的权限，请询问系统管理员。") : problem;
    }
    case OpenFailure::NoAnswer:
        return isSerial(resource) ? text("仪器没有应答。请检查仪器是否开机，串口波特率是否一致。")
                                  : text("仪器没有应答。请检查仪器是否开机，地址是否正确。");
    case OpenFailure::Busy:
        return text("仪器正被其他程序使用。请先关闭那个程序。");
    case OpenFailure::Malformed:
        if (isOfAnotherKind(resource)) {
            return text("所用的 VISA 库不能打开这种资源。请安装系统的 VISA 库。");
        }
        return text("资源名写法不正确，请写成 ASRL/dev/ttyUSB0::INSTR 或 "
                    "TCPIP0::192.168.1.5::5025::SOCKET。");
    case OpenFailure::Other:
        return text("仪器未能打开，请查看日志中的原因。");
    }
    return {};
}

} // namespace scnlauncher
