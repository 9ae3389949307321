#include "scriptedconnection.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlResult>
#include <QUuid>

#include <utility>

namespace {

using Answer = ScriptedConnection::Answer;

class ScriptedDriver : public QSqlDriver
{
public:
    explicit ScriptedDriver(ScriptedConnection::Script script)
        : m_script(std::move(script))
    {
        setOpen(true);
    }

    Answer answer(const QString& sql) const { return m_script(sql); }
    int nextId() { return ++m_lastId; }

    bool hasFeature(DriverFeature) const override { return false; }
    void close() override { setOpen(false); }
    QSqlResult* createResult() const override;

    bool open(const QString&, const QString&, const QString&, const QString&, int,
              const QString&) override
    {
        setOpen(true);
        return true;
    }

private:
    ScriptedConnection::Script m_script;
    int m_lastId = 0;
};

class ScriptedResult : public QSqlResult
{
public:
    explicit ScriptedResult(ScriptedDriver* driver)
        : QSqlResult(driver)
        , m_driver(driver)
    {
    }

    ~ScriptedResult() override
    {
        if (m_closes) {
            m_driver->close();
        }
    }

    QVariant data(int) override { return {}; }
    bool isNull(int) override { return true; }
    bool fetch(int) override { return false; }
    bool fetchFirst() override { return false; }
    bool fetchLast() override { return false; }
    int size() override { return -1; }
    int numRowsAffected() override { return 0; }
    QVariant lastInsertId() const override { return m_driver->nextId(); }

    bool reset(const QString& sql) override
    {
        const Answer answer = m_driver->answer(sql);
        m_closes = answer == Answer::DoneAndClosed;
        setSelect(sql.startsWith(QLatin1String("SELECT")));
        setActive(m_closes || answer == Answer::Done);
        if (!isActive()) {
            setLastError(answer == Answer::MissingTable
                             ? QSqlError(QStringLiteral("no such table"), QString(),
                                         QSqlError::StatementError, QStringLiteral("1"))
                             : QSqlError(QStringLiteral("attempt to write a readonly database"),
                                         QString(), QSqlError::StatementError,
                                         QStringLiteral("8")));
        }
        return isActive();
    }

private:
    ScriptedDriver* m_driver;
    bool m_closes = false;
};

QSqlResult* ScriptedDriver::createResult() const
{
    return new ScriptedResult(const_cast<ScriptedDriver*>(this));
}

} // namespace

ScriptedConnection::ScriptedConnection(Script script)
    : m_database(QSharedPointer<QSqlDatabase>::create(QSqlDatabase::addDatabase(
          new ScriptedDriver(std::move(script)), QUuid::createUuid().toString())))
{
}

ScriptedConnection::~ScriptedConnection()
{
    const QString name = m_database->connectionName();
    *m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}
