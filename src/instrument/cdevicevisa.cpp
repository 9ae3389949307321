#include "instrument/cdevicevisa.h"

#include "instrument/visabinding.h"

#include <QByteArray>
#include <QMutexLocker>

#include <algorithm>

using namespace scn;
using namespace scn::visa;

namespace {

constexpr ViUInt32 kReadBufferSize = 40960;
constexpr ViUInt32 kLongestReply = kReadBufferSize - 1;
constexpr ViAttrState kDefaultTimeoutMs = 2000;
constexpr ViAttrState kSerialTimeoutMs = 5000;
constexpr char kTerminator = '\n';

struct AttributeRow
{
    ViAttr attribute;
    ViAttrState value;
};

constexpr AttributeRow kSerialSettings[] = {
    {VI_ATTR_ASRL_BAUD, 57600},
    {VI_ATTR_ASRL_DATA_BITS, 8},
    {VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_NONE},
    {VI_ATTR_ASRL_STOP_BITS, VI_ASRL_STOP_ONE},
    {VI_ATTR_TMO_VALUE, kSerialTimeoutMs},
};

bool isReplyWhole(ViStatus status)
{
    return status == VI_SUCCESS || status == VI_SUCCESS_TERM_CHAR;
}

ExchangeResult resultOf(ViStatus failure)
{
    switch (failure) {
    case VI_SUCCESS_MAX_CNT:
        return ExchangeResult::Overflowed;
    case VI_ERROR_TMO:
        return ExchangeResult::TimedOut;
    case VI_ERROR_CONN_LOST:
    case VI_ERROR_ABORT:
    case VI_ERROR_INV_OBJECT:
        return ExchangeResult::Lost;
    default:
        return ExchangeResult::Failed;
    }
}

} // namespace

CDeviceVisa* CDeviceVisa::instance()
{
    static CDeviceVisa* const device = new CDeviceVisa(nullptr);
    return device;
}

CDeviceVisa::CDeviceVisa(QObject* parent)
    : QObject(parent)
{
    const ViStatus status = visabinding::table().viOpenDefaultRM(&m_resourceManager);
    if (status == VI_SUCCESS) {
        return;
    }
    // With a warning the resource manager works; with an error there is none.
    if (status < VI_SUCCESS) {
        m_resourceManager = 0;
    }
    const QByteArray text = statusText(0, status);
    fail(QStringLiteral("VISA 初始化失败: %1").arg(QString::fromLocal8Bit(text)));
}

CDeviceVisa::~CDeviceVisa()
{
    disconnectDevice();
    if (m_resourceManager != 0) {
        visabinding::table().viClose(m_resourceManager);
    }
}

bool CDeviceVisa::connectDevice(const QString& resource)
{
    const QMutexLocker locker(&m_mutex);
    if (m_connected) {
        disconnectDevice();
    }
    const VisaTable& visa = visabinding::table();
    ViSession session = 0;
    const ViStatus status =
        visa.viOpen(m_resourceManager, resource.toLocal8Bit().constData(), VI_NO_LOCK, 0, &session);
    if (status != VI_SUCCESS) {
        // A session opened with a warning is not used, so it must be closed.
        if (status > VI_SUCCESS && session != 0) {
            visa.viClose(session);
        }
        const QByteArray text = statusText(0, status);
        fail(QStringLiteral("连接失败: %1").arg(QString::fromLocal8Bit(text)));
        return false;
    }
    m_session = session;
    m_serial = resource.contains(QLatin1String("ASRL"), Qt::CaseInsensitive);
    configureSession();
    m_connected = true;
    return true;
}

void CDeviceVisa::disconnectDevice()
{
    const QMutexLocker locker(&m_mutex);
    if (!m_connected) {
        return;
    }
    interrupt();
    m_connected = false;
}

void CDeviceVisa::interrupt()
{
    if (const ViSession session = m_session.exchange(0); session != 0) {
        visabinding::table().viClose(session);
    }
}

bool CDeviceVisa::isConnected()
{
    const QMutexLocker locker(&m_mutex);
    return m_connected && m_session != 0;
}

bool CDeviceVisa::isSerial()
{
    const QMutexLocker locker(&m_mutex);
    return m_serial;
}

QString CDeviceVisa::sendCommand(const QString& command, int timeoutMs)
{
    ExchangeResult result{};
    return sendCommand(command, timeoutMs, result);
}

QString CDeviceVisa::sendCommand(const QString& command, int timeoutMs, ExchangeResult& result)
{
    const QMutexLocker locker(&m_mutex);
    if (!m_connected || m_session == 0) {
        result = ExchangeResult::Lost;
        fail(QStringLiteral("仪器未连接"));
        return {};
    }
    visabinding::table().viSetAttribute(m_session, VI_ATTR_TMO_VALUE,
                                        static_cast<ViAttrState>(std::max(timeoutMs, 0)));
    result = writeCommand(command);
    QString response;
    if (result == ExchangeResult::Done && command.contains(QLatin1Char('?'))) {
        result = readResponse(response);
    }
    if (result != ExchangeResult::Done) {
        return {};
    }
    emit commandCompleted(command, response);
    return response;
}

QVector<QString> CDeviceVisa::sendCommands(const QStringList& commands, int timeoutMs)
{
    return sendCommands(commands, timeoutMs, [](ExchangeResult) { return true; });
}

QVector<QString> CDeviceVisa::sendCommands(const QStringList& commands, int timeoutMs,
                                           const std::function<bool(ExchangeResult)>& goesOn)
{
    QVector<QString> responses;
    responses.reserve(commands.size());
    for (const QString& command : commands) {
        ExchangeResult result{};
        responses.append(sendCommand(command, timeoutMs, result));
        if (!goesOn(result)) {
            break;
        }
    }
    responses.resize(commands.size());
    emit commandsCompleted(commands, responses);
    return responses;
}

QString CDeviceVisa::lastError()
{
    const QMutexLocker locker(&m_mutex);
    return m_lastError;
}

/// Configures a new session. Settings that the resource does not support do not matter.
void CDeviceVisa::configureSession()
{
    const VisaTable& visa = visabinding::table();
    if (m_serial) {
        for (const AttributeRow& row : kSerialSettings) {
            visa.viSetAttribute(m_session, row.attribute, row.value);
        }
    } else {
        visa.viSetAttribute(m_session, VI_ATTR_TMO_VALUE, kDefaultTimeoutMs);
    }
    visa.viSetAttribute(m_session, VI_ATTR_TERMCHAR, static_cast<ViAttrState>(kTerminator));
    visa.viSetAttribute(m_session, VI_ATTR_TERMCHAR_EN, 1);
}

ExchangeResult CDeviceVisa::writeCommand(const QString& command)
{
    const QByteArray line = command.toUtf8() + kTerminator;
    ViUInt32 sent = 0;
    const ViStatus status =
        visabinding::table().viWrite(m_session, reinterpret_cast<const ViByte*>(line.constData()),
                                     static_cast<ViUInt32>(line.size()), &sent);
    if (status == VI_SUCCESS) {
        return ExchangeResult::Done;
    }
    // Status texts of exchanges are UTF-8, those of opening are in the local encoding.
    const QByteArray text = statusText(m_session, status);
    fail(QStringLiteral("发送命令失败: %1").arg(QString::fromUtf8(text)));
    return resultOf(status);
}

/// Reads once into a buffer on the stack. A reply that fills it is a failure, and the instrument keeps
/// the rest.
ExchangeResult CDeviceVisa::readResponse(QString& response)
{
    char buffer[kReadBufferSize];
    ViUInt32 received = 0;
    const ViStatus status = visabinding::table().viRead(
        m_session, reinterpret_cast<ViByte*>(buffer), kLongestReply, &received);
    if (!isReplyWhole(status)) {
        const QByteArray text = statusText(m_session, status);
        fail(QStringLiteral("读取响应失败: %1").arg(QString::fromUtf8(text)));
        return resultOf(status);
    }
    buffer[std::min(received, kLongestReply)] = '\0';
    response = QString::fromUtf8(buffer).trimmed();
    return ExchangeResult::Done;
}

/// VISA's text for a status, as bytes; empty if there is none.
QByteArray CDeviceVisa::statusText(ViObject object, ViStatus status) const
{
    char text[kViStatusTextSize] = {};
    visabinding::table().viStatusDesc(object, status, text);
    text[kViStatusTextSize - 1] = '\0';
    return QByteArray(text);
}

void CDeviceVisa::fail(const QString& message)
{
    m_lastError = message;
    emit errorOccurred(m_lastError);
}
