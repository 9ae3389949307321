#include "storetool/forward/serverconnection.h"

#include <QList>

#include <libpq-fe.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace scnstore {

namespace {

using namespace std::chrono_literals;

constexpr auto kConnectPatience = 10s;
constexpr int kLookIntervalMs = 250;

/// What the user's address does not say. A server that is cut off is noticed within half a minute.
constexpr const char* kKeywords[] = {"application_name",
                                     "client_encoding",
                                     "keepalives_idle",
                                     "keepalives_count",
                                     "keepalives_interval",
                                     "tcp_user_timeout",
                                     "connect_timeout",
                                     "dbname",
                                     nullptr};
constexpr const char* kValues[] = {"scn4070a-store", "UTF8", "10",    "3",    "5",
                                   "20000",          "10",   nullptr, nullptr};
constexpr int kAddressAt = 7;

struct ResultEnd
{
    void operator()(PGresult* result) const { PQclear(result); }
};

/// The first line, without the mark at its end: the others repeat the statement, or guess.
QString firstLine(const char* text)
{
    const QString line = QString::fromUtf8(text).trimmed().section(QLatin1Char('\n'), 0, 0);
    return (line.endsWith(QLatin1Char('.')) ? line.chopped(1) : line).simplified();
}

/// The library reads the ports, one for each host, only when it connects.
QString complaintAboutPort(const PQconninfoOption* options)
{
    for (const PQconninfoOption* option = options; option->keyword; ++option) {
        if (qstrcmp(option->keyword, "port") != 0 || !option->val) {
            continue;
        }
        for (const QByteArray& port : QByteArray(option->val).split(',')) {
            if (!port.isEmpty() && port.toUShort() == 0) {
                return QStringLiteral("'%1' is no port").arg(QString::fromUtf8(port));
            }
        }
    }
    return {};
}

void ignoreNotice(void*, const PGresult*) {}

/// The keywords with the values, the address among them.
std::vector<const char*> valuesWith(const QByteArray& target)
{
    std::vector<const char*> values(std::begin(kValues), std::end(kValues));
    values[kAddressAt] = target.constData();
    return values;
}

} // namespace

void ServerConnection::ConnectionEnd::operator()(pg_conn* connection) const
{
    PQfinish(connection);
}

ServerConnection::ServerConnection(const QString& target, WhileWaiting whileWaiting)
    : m_target(target.toUtf8())
    , m_whileWaiting(std::move(whileWaiting))
{
}

ServerConnection::~ServerConnection() = default;

QString ServerConnection::complaintAbout(const QString& target)
{
    if (!target.startsWith(QLatin1String("postgresql://")) &&
        !target.startsWith(QLatin1String("postgres://"))) {
        return QStringLiteral("it does not begin with postgresql://");
    }
    char* error = nullptr;
    PQconninfoOption* const options = PQconninfoParse(target.toUtf8().constData(), &error);
    const QString complaint =
        options ? complaintAboutPort(options) : firstLine(error ? error : "out of memory");
    PQconninfoFree(options);
    PQfreemem(error);
    return complaint;
}

bool ServerConnection::connect()
{
    const QDeadlineTimer patience(kConnectPatience);
    m_errorCode.clear();
    m_connection.reset(PQconnectStartParams(kKeywords, valuesWith(m_target).data(), 1));
    PQsetNoticeReceiver(m_connection.get(), ignoreNotice, nullptr);
    PostgresPollingStatusType state = PGRES_POLLING_WRITING;
    if (PQstatus(m_connection.get()) == CONNECTION_BAD) {
        return failed();
    }
    while (state != PGRES_POLLING_OK) {
        if (!waitForSocket(state == PGRES_POLLING_WRITING, patience)) {
            return false;
        }
        state = PQconnectPoll(m_connection.get());
        if (state == PGRES_POLLING_FAILED) {
            return failed();
        }
    }
    PQsetnonblocking(m_connection.get(), 1);
    return true;
}

void ServerConnection::close()
{
    m_connection.reset();
}

bool ServerConnection::isRefusal() const
{
    return PQpingParams(kKeywords, valuesWith(m_target).data(), 1) == PQPING_OK;
}

bool ServerConnection::isRejection() const
{
    // Wrong data, a broken rule, a missing right or name.
    const QByteArray kind = m_errorCode.left(2);
    return kind == "22" || kind == "23" || kind == "42";
}

/// Keeps what the library says, and the session unless it is gone.
bool ServerConnection::failed()
{
    m_errorText = firstLine(PQerrorMessage(m_connection.get()));
    if (PQstatus(m_connection.get()) != CONNECTION_OK) {
        m_connection.reset();
    }
    return false;
}

/// False if the wait took too long or was ended from outside, and the session with it.
bool ServerConnection::waitForSocket(bool toWrite, QDeadlineTimer patience)
{
    for (;;) {
        const auto events = static_cast<short>(toWrite ? POLLIN | POLLOUT : POLLIN);
        pollfd socket = {PQsocket(m_connection.get()), events, 0};
        if (::poll(&socket, 1, kLookIntervalMs) > 0) {
            return true;
        }
        if (!m_whileWaiting() || patience.hasExpired()) {
            m_connection.reset();
            m_errorText = QStringLiteral("the server does not answer");
            return false;
        }
    }
}

bool ServerConnection::flush()
{
    int left = PQflush(m_connection.get());
    while (left > 0) {
        if (!waitForSocket(true)) {
            return false;
        }
        // The server may have to say something before it reads on.
        if (PQconsumeInput(m_connection.get()) == 0) {
            return failed();
        }
        left = PQflush(m_connection.get());
    }
    return left == 0 || failed();
}

bool ServerConnection::run(const QByteArray& sql, const QVector<QByteArray>& parameters)
{
    m_rows.clear();
    m_changedRows = 0;
    m_errorCode.clear();
    if (!m_connection) {
        return false;
    }
    std::vector<const char*> values;
    for (const QByteArray& parameter : parameters) {
        values.push_back(parameter.constData());
    }
    const int sent = parameters.isEmpty()
                         ? PQsendQuery(m_connection.get(), sql.constData())
                         : PQsendQueryParams(m_connection.get(), sql.constData(),
                                             static_cast<int>(values.size()), nullptr,
                                             values.data(), nullptr, nullptr, 0);
    return sent == 1 ? flush() && takeResults() : failed();
}

/// Takes what the server answers, to the end: only then it takes another statement.
bool ServerConnection::takeResults()
{
    bool isFine = true;
    for (;;) {
        while (PQisBusy(m_connection.get()) != 0) {
            if (!waitForSocket(false)) {
                return false;
            }
            if (PQconsumeInput(m_connection.get()) == 0) {
                return failed();
            }
        }
        const std::unique_ptr<PGresult, ResultEnd> result(PQgetResult(m_connection.get()));
        if (!result) {
            break;
        }
        if (PQresultStatus(result.get()) == PGRES_COPY_IN) {
            return isFine;
        }
        isFine = takeResult(result.get()) && isFine;
    }
    if (PQstatus(m_connection.get()) != CONNECTION_OK) {
        m_connection.reset();
    }
    return isFine;
}

bool ServerConnection::takeResult(pg_result* result)
{
    const ExecStatusType status = PQresultStatus(result);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        m_errorText = firstLine(PQresultErrorMessage(result));
        m_errorCode = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        return false;
    }
    m_changedRows = QByteArray(PQcmdTuples(result)).toLongLong();
    for (int row = 0; row < PQntuples(result); ++row) {
        Row values;
        for (int column = 0; column < PQnfields(result); ++column) {
            values.append(PQgetvalue(result, row, column));
        }
        m_rows.append(values);
    }
    return true;
}

bool ServerConnection::copy(const QByteArray& sql, const QByteArray& bytes)
{
    constexpr int kPieceBytes = 1 << 18;
    if (!run(sql)) {
        return false;
    }
    for (int at = 0; at < bytes.size();) {
        const int size = std::min(kPieceBytes, bytes.size() - at);
        const int sent = PQputCopyData(m_connection.get(), bytes.constData() + at, size);
        if (sent < 0) {
            return failed();
        }
        if (sent > 0) {
            at += size;
        }
        if (!flush()) {
            return false;
        }
    }
    int ended = 0;
    while ((ended = PQputCopyEnd(m_connection.get(), nullptr)) == 0) {
        if (!flush()) {
            return false;
        }
    }
    return ended == 1 ? flush() && takeResults() : failed();
}

} // namespace scnstore
