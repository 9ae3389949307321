#pragma once

#include "instrument/cdevicevisa.h"
#include "support/fakevisa.h"

#include <QString>
#include <QTest>
#include <QTextCodec>

#include <memory>

inline const QString kTcpResource = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");

/// The text that the scripted library has for a status without one of its own.
inline QString statusName(scn::visa::ViStatus status)
{
    return QLatin1String("status 0x") + QString::number(static_cast<quint32>(status), 16)
                                            .toUpper()
                                            .rightJustified(8, QLatin1Char('0'));
}

/// Rows with statuses that an operation may fail with, beyond those that have tests of their own.
inline void addFailures()
{
    using namespace scn::visa;
    QTest::addColumn<ViStatus>("status");
    QTest::newRow("system error") << ViStatus(VI_ERROR_SYSTEM_ERROR);
    QTest::newRow("invalid session") << ViStatus(VI_ERROR_INV_OBJECT);
    QTest::newRow("locked") << ViStatus(VI_ERROR_RSRC_LOCKED);
    QTest::newRow("time-out") << ViStatus(VI_ERROR_TMO);
    QTest::newRow("aborted") << ViStatus(VI_ERROR_ABORT);
    QTest::newRow("allocation") << ViStatus(VI_ERROR_ALLOC);
    QTest::newRow("input or output") << ViStatus(VI_ERROR_IO);
    QTest::newRow("no such operation") << ViStatus(VI_ERROR_NSUP_OPER);
    QTest::newRow("parity") << ViStatus(VI_ERROR_ASRL_PARITY);
    QTest::newRow("framing") << ViStatus(VI_ERROR_ASRL_FRAMING);
    QTest::newRow("overrun") << ViStatus(VI_ERROR_ASRL_OVERRUN);
    QTest::newRow("invalid parameter") << ViStatus(VI_ERROR_INV_PARAMETER);
    QTest::newRow("connection lost") << ViStatus(VI_ERROR_CONN_LOST);
    QTest::newRow("buffer filled") << ViStatus(VI_SUCCESS_MAX_CNT);
    QTest::newRow("unknown warning") << ViStatus(VI_WARN_UNKNOWN_STATUS);
    QTest::newRow("unknown positive") << ViStatus(1);
    QTest::newRow("unknown negative") << ViStatus(-1);
}

/// Changes the locale's encoding for the lifetime of the object.
class LocaleCodec
{
public:
    explicit LocaleCodec(const char* name)
        : m_before(QTextCodec::codecForLocale())
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(name));
    }
    ~LocaleCodec() { QTextCodec::setCodecForLocale(m_before); }
    LocaleCodec(const LocaleCodec&) = delete;
    LocaleCodec& operator=(const LocaleCodec&) = delete;

private:
    QTextCodec* const m_before;
};

/// A device on a scripted VISA library, for a test class to inherit; each test function has new ones.
class DeviceFixture
{
protected:
    void makeDevice()
    {
        m_fake = std::make_unique<FakeVisa>();
        m_device = std::make_unique<CDeviceVisa>(nullptr);
    }

    void removeDevice()
    {
        m_device.reset();
        m_fake.reset();
    }

    /// An open session, with the calls of its opening removed from the record.
    void connectDevice()
    {
        QVERIFY(m_device->connectDevice(kTcpResource));
        m_fake->clearCalls();
    }

    std::unique_ptr<FakeVisa> m_fake;
    std::unique_ptr<CDeviceVisa> m_device;
};
