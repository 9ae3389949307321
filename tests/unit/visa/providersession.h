#pragma once

#include "visa/visaprovider.h"

#include <QByteArray>

namespace scn::visa {

struct ReadOutcome
{
    ViStatus status;
    QByteArray bytes;
};

/// A resource manager and one session of the provider, closed with the object.
class ProviderSession
{
public:
    explicit ProviderSession(const QByteArray& resource)
    {
        m_visa.viOpenDefaultRM(&m_resourceManager);
        m_openStatus =
            m_visa.viOpen(m_resourceManager, resource.constData(), VI_NO_LOCK, 0, &m_session);
        set(VI_ATTR_TERMCHAR_EN, 1);
    }
    ~ProviderSession() { m_visa.viClose(m_resourceManager); }
    ProviderSession(const ProviderSession&) = delete;
    ProviderSession& operator=(const ProviderSession&) = delete;

    ViStatus openStatus() const { return m_openStatus; }
    ViSession resourceManager() const { return m_resourceManager; }
    ViSession handle() const { return m_session; }

    ViStatus set(ViAttr attribute, ViAttrState value)
    {
        return m_visa.viSetAttribute(m_session, attribute, value);
    }

    ViStatus write(const QByteArray& bytes)
    {
        return m_visa.viWrite(m_session, reinterpret_cast<const ViByte*>(bytes.constData()),
                              static_cast<ViUInt32>(bytes.size()), &m_sent);
    }

    /// Count returned by the last write.
    ViUInt32 sent() const { return m_sent; }

    ReadOutcome read(int count = 40959)
    {
        QByteArray buffer(count, '\0');
        ViUInt32 received = 0;
        const ViStatus status = m_visa.viRead(m_session, reinterpret_cast<ViByte*>(buffer.data()),
                                              static_cast<ViUInt32>(count), &received);
        return {status, buffer.left(static_cast<int>(received))};
    }

    ViStatus close() { return m_visa.viClose(m_session); }

private:
    const VisaTable& m_visa = providerVisaTable();
    ViSession m_resourceManager = 0;
    ViSession m_session = 0;
    ViStatus m_openStatus = VI_SUCCESS;
    ViUInt32 m_sent = 0;
};

} // namespace scn::visa
