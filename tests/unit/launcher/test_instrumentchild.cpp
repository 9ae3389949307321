#include "launcher/instrumentchild.h"
#include "support/testprogram.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>

using namespace scnlauncher;
using namespace std::chrono_literals;

namespace {

constexpr int kWaitMs = 30000;

/// Waits that tests can stand.
const EndTiming kShort{300ms, 100ms, 200ms};

/// A fake child and what the launcher hears of it.
class Scene
{
public:
    explicit Scene(const EndTiming& timing = kShort)
        : m_child(
              nullptr, [this](qulonglong, qint64) { return m_objection; }, timing)
        , m_ended(&m_child, &InstrumentChild::ended)
        , m_shown(&m_child, &InstrumentChild::windowShown)
        , m_refused(&m_child, &InstrumentChild::windowRefused)
    {
        // Where the child runs while another test has its folder.
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_directory.path()));
    }

    void start(const QString& kind, const QString& program = QStringLiteral(SCN_FAKE_CHILD))
    {
        m_child.start({program, kind, environment, logPath()});
    }
    bool waitForEnd()
    {
        return QTest::qWaitFor([this] { return m_ended.count() > 0; }, kWaitMs);
    }
    bool waitForIdentity()
    {
        return QTest::qWaitFor([this] { return !m_child.status().identity().isEmpty(); }, kWaitMs);
    }
    bool waitForWords(const QString& words)
    {
        return QTest::qWaitFor(
            [&] { return m_child.lastWords().join(QLatin1Char('\n')).contains(words); }, kWaitMs);
    }
    ChildEnd result() const { return m_ended.at(0).at(0).value<ChildEnd>(); }
    QString logPath() const { return m_directory.filePath(QStringLiteral("child.log")); }
    QByteArray log() const
    {
        QFile file(logPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    InstrumentChild& child() { return m_child; }
    const QSignalSpy& ended() const { return m_ended; }
    const QSignalSpy& shown() const { return m_shown; }
    const QSignalSpy& refused() const { return m_refused; }
    void object(const QString& reason) { m_objection = reason; }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();

private:
    const QTemporaryDir m_directory;
    QString m_objection;
    InstrumentChild m_child;
    QSignalSpy m_ended;
    QSignalSpy m_shown;
    QSignalSpy m_refused;
};

} // namespace

/// One child from its start to its end, good or bad.
class TestInstrumentChild : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<ChildEnd>(); }
    void goodChildEndsWhenAsked();
    void deafChildIsTerminated();
    void stubbornChildIsKilled();
    void childThatHearsGetsTheLongWait();
    void endDoesNotWait();
    void crashIsReportedWithTheLastWords();
    void missingProgramIsReported();
    void windowIsShown();
    void windowOfAnotherIsRefused();
    void floodOfALineIsCutAndTheChildGoesOn();
    void errorsGoToTheLog();
    void environmentReachesTheChild();
    void destructionLeavesNoProcess();
};

void TestInstrumentChild::goodChildEndsWhenAsked()
{
    Scene scene;
    scene.start(QStringLiteral("good"));
    QVERIFY(scene.waitForIdentity());
    scene.child().end();
    QVERIFY(scene.child().isEnding());
    QVERIFY(scene.waitForEnd());
    QVERIFY(scene.result().isWanted);
    QVERIFY(!scene.result().hasCrashed);
    QCOMPARE(scene.result().exitCode, 0);
    QVERIFY(!scene.child().isRunning());
    QCOMPARE(scene.ended().count(), 1);
}

void TestInstrumentChild::deafChildIsTerminated()
{
    Scene scene({1h, 100ms, 1h});
    scene.start(QStringLiteral("deaf"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.child().processId() > 0, kWaitMs);
    scene.child().end();
    QVERIFY(scene.waitForEnd());
    QVERIFY(scene.result().isWanted);
    QVERIFY(scene.result().hasCrashed);
}

void TestInstrumentChild::stubbornChildIsKilled()
{
    Scene scene;
    scene.start(QStringLiteral("stubborn"));
    QVERIFY(scene.waitForWords(QStringLiteral("ignores SIGTERM")));
    scene.child().end();
    QVERIFY(scene.waitForEnd());
    QVERIFY(scene.result().isWanted);
}

void TestInstrumentChild::childThatHearsGetsTheLongWait()
{
    // Its log names no instrument, but its echo shows that it listens: it is not terminated.
    Scene scene({1h, 0ms, 1h});
    scene.start(QStringLiteral("good"));
    QVERIFY(scene.waitForIdentity());
    scene.child().end();
    QVERIFY(scene.waitForEnd());
    QVERIFY(!scene.result().hasCrashed);
}

void TestInstrumentChild::endDoesNotWait()
{
    Scene scene({1h, 1h, 1h});
    scene.start(QStringLiteral("deaf"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.child().processId() > 0, kWaitMs);
    scene.child().end();
    QVERIFY(scene.child().isRunning());
    QCOMPARE(scene.ended().count(), 0);
}

void TestInstrumentChild::crashIsReportedWithTheLastWords()
{
    Scene scene;
    scene.start(QStringLiteral("crash"));
    QVERIFY(scene.waitForEnd());
    QVERIFY(!scene.result().isWanted);
    QVERIFY(scene.result().hasCrashed);
    QCOMPARE(scene.child().lastWords(),
             (QStringList{QStringLiteral("the last words"), QStringLiteral("without an end")}));
}

void TestInstrumentChild::missingProgramIsReported()
{
    Scene scene;
    scene.start(QStringLiteral("good"), QStringLiteral("/no/such/program"));
    QVERIFY(scene.waitForEnd());
    QVERIFY(!scene.result().hasStarted);
    QVERIFY(!scene.child().lastWords().isEmpty());
}

void TestInstrumentChild::windowIsShown()
{
    Scene scene;
    scene.start(QStringLiteral("window=4711"));
    QTRY_COMPARE_WITH_TIMEOUT(scene.shown().count(), 1, kWaitMs);
    QCOMPARE(scene.shown().at(0).at(0).toULongLong(), 4711ULL);
    QCOMPARE(scene.shown().at(0).at(1).value<QColor>(), QColor(43, 43, 43));
    QVERIFY(scene.child().msSinceLastLine() >= 0);
}

void TestInstrumentChild::windowOfAnotherIsRefused()
{
    Scene scene;
    scene.object(QStringLiteral("of another process"));
    scene.start(QStringLiteral("window=4711"));
    QTRY_COMPARE_WITH_TIMEOUT(scene.refused().count(), 1, kWaitMs);
    QCOMPARE(scene.refused().at(0).at(0).toString(), QStringLiteral("of another process"));
    QCOMPARE(scene.shown().count(), 0);
}

void TestInstrumentChild::floodOfALineIsCutAndTheChildGoesOn()
{
    Scene scene;
    // 1 GB on each stream.
    const QSignalSpy cut(&scene.child(), &InstrumentChild::lineCut);
    scene.start(QStringLiteral("flood=1024"));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.child().status().identity().isEmpty(), 4 * kWaitMs);
    // One of each stream, and it shows.
    QCOMPARE(cut.size(), 2);
    QVERIFY(scene.child().status().lastCritical().contains(QStringLiteral("没有结尾")));
    QVERIFY(scene.log().size() < 2 * LineCutter::kLongestLine);
    QVERIFY(scene.log().contains(LineCutter::cutMark()));
}

void TestInstrumentChild::errorsGoToTheLog()
{
    Scene scene;
    scene.start(QStringLiteral("good"));
    QVERIFY(scene.waitForIdentity());
    const QList<QByteArray> lines = scene.log().split('\n');
    QVERIFY(lines.at(0).startsWith("---- "));
    QVERIFY(lines.at(0).endsWith(" good"));
    QVERIFY(lines.at(1).contains("仪器已连接"));
}

void TestInstrumentChild::environmentReachesTheChild()
{
    Scene scene;
    scene.environment.insert(QStringLiteral("SCN4070A_SERIAL_RATE"), QStringLiteral("9600"));
    scene.start(QStringLiteral("environment=SCN4070A_SERIAL_RATE"));
    QVERIFY(scene.waitForEnd());
    QCOMPARE(scene.child().lastWords(),
             QStringList{QStringLiteral("SCN4070A_SERIAL_RATE is 9600")});
}

void TestInstrumentChild::destructionLeavesNoProcess()
{
    auto scene = std::make_unique<Scene>();
    scene->start(QStringLiteral("stubborn"));
    QVERIFY(scene->waitForWords(QStringLiteral("ignores SIGTERM")));
    const auto process = static_cast<pid_t>(scene->child().processId());
    scene.reset();
    QCOMPARE(::kill(process, 0), -1);
}

SCN_TEST(TestInstrumentChild, QCoreApplication)
#include "test_instrumentchild.moc"
