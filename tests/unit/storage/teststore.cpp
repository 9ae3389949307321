#include "teststore.h"

#include "storage/storeclock.h"

#include <atomic>
#include <ctime>

namespace {

constexpr qint64 kCloseBudgetMs = 2000;

std::atomic<qint64> g_present{0};

qint64 presentTime()
{
    return g_present.load();
}

} // namespace

void setPresent(qint64 timestamp)
{
    g_present = timestamp;
    scn::setStoreClock(&presentTime);
}

void advancePresent(qint64 milliseconds)
{
    g_present += milliseconds;
}

ZoneGuard::ZoneGuard(const char* zone)
    : m_previous(qgetenv("TZ"))
    , m_wasSet(qEnvironmentVariableIsSet("TZ"))
{
    qputenv("TZ", zone);
    tzset();
}

ZoneGuard::~ZoneGuard()
{
    if (m_wasSet) {
        qputenv("TZ", m_previous);
    } else {
        qunsetenv("TZ");
    }
    tzset();
}

TestStore::TestStore()
    : m_directory(m_parent.filePath(QStringLiteral("SN1_Data")))
    , m_store(std::make_unique<CurveDataDB>(m_directory))
{
}

TestStore::~TestStore()
{
    m_store->closeForExit(QDeadlineTimer(kCloseBudgetMs));
}

void TestStore::restart()
{
    m_store->closeForExit(QDeadlineTimer(kCloseBudgetMs));
    m_store = std::make_unique<CurveDataDB>(m_directory);
}

QString TestStore::path(const char* dateKey) const
{
    return m_directory + QLatin1Char('/') + QString::fromLatin1(dateKey) + QStringLiteral(".db");
}
