#include "dayfilewriter.h"
#include "page.h"
#include "skippedwaits.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QProcess>
#include <QTest>

#include <algorithm>

namespace {

const QString kTitle = QStringLiteral("Reading it with sqlite3");
constexpr int kWaitMs = 60000;

QStringList sqliteLines()
{
    const Page page(textOf(QStringLiteral("docs/store.md")));
    const auto section = std::find_if(page.sections().cbegin(), page.sections().cend(),
                                      [](const PageSection& one) { return one.title == kTitle; });
    return section == page.sections().cend() ? QStringList() : section->codeLines;
}

/// The commands of the page by the comments above them; the function that they use has none.
class StoreCommands
{
public:
    StoreCommands()
    {
        for (const QString& line : sqliteLines()) {
            if (line.startsWith(QLatin1String("# "))) {
                m_titles.append(line.mid(2));
                m_commands.append(QString());
            } else if (m_titles.isEmpty()) {
                m_function += line + QLatin1Char('\n');
            } else {
                m_commands.last() += line + QLatin1Char('\n');
            }
        }
    }

    QStringList titles() const { return m_titles; }

    /// A script of the function and of the command with that title.
    QString script(const QString& title) const
    {
        return m_function + m_commands.value(m_titles.indexOf(title));
    }

private:
    QString m_function;
    QStringList m_titles;
    QStringList m_commands;
};

/// What a shell prints that runs the script in the folder. The test fails if a command fails or complains.
QString outputOf(const QString& script, const QString& folder)
{
    QProcess shell;
    shell.setWorkingDirectory(folder);
    shell.start(QStringLiteral("bash"), {QStringLiteral("-e"), QStringLiteral("-o"),
                                         QStringLiteral("pipefail"), QStringLiteral("-c"), script});
    if (!shell.waitForFinished(kWaitMs) || shell.exitCode() != 0) {
        return QStringLiteral("failed: ") + QString::fromUtf8(shell.readAllStandardError());
    }
    return QString::fromUtf8(shell.readAllStandardOutput() + shell.readAllStandardError());
}

/// Two curves, one of them on two days and in two batches of the second.
void fill(CurveDataDB* store)
{
    setPresent(localTime("2026-01-11 23:00:00.000"));
    store->registerCurve(QStringLiteral("101(Vdc)"));
    store->registerCurve(QStringLiteral("1010(Vdc)"));
    store->appendPoint(1, localTime("2026-01-11 22:00:00.000"), 0.5);
    setPresent(localTime("2026-01-12 09:30:00.000"));
    store->appendPoint(1, localTime("2026-01-12 05:59:59.500"), 1.25);
    store->appendPoint(1, localTime("2026-01-12 06:00:00.250"), -2.0);
    store->appendPoint(1, localTime("2026-01-12 06:00:01.000"), 1.5);
    store->appendPoint(2, localTime("2026-01-12 07:00:00.000"), 42.0);
    store->saveMetadata();
}

struct Expectation
{
    const char* title;
    const char* output;
};

constexpr Expectation kExpectations[] = {
    {"the curves", "101(Vdc)\n1010(Vdc)\n"},
    {"how many readings each has", "101(Vdc)|3\n1010(Vdc)|1\n"},
    {"the last reading of each", "101(Vdc)|2026-01-12 06:00:01|1.5\n"
                                 "1010(Vdc)|2026-01-12 07:00:00|42.0\n"},
    {"smallest and largest value of each on that day", "101(Vdc)|-2.0|1.5\n"
                                                       "1010(Vdc)|42.0|42.0\n"},
    {"channel 101 as CSV", "\"2026-01-12 05:59:59.500\",1.25\n"
                           "\"2026-01-12 06:00:00.250\",-2.0\n"
                           "\"2026-01-12 06:00:01.000\",1.5\n"},
    {"channel 101 as CSV, over all days", "\"2026-01-11 22:00:00.000\",0.5\n"
                                          "\"2026-01-12 05:59:59.500\",1.25\n"
                                          "\"2026-01-12 06:00:00.250\",-2.0\n"
                                          "\"2026-01-12 06:00:01.000\",1.5\n"},
};

} // namespace

/// The commands that the page of the store gives for the sqlite3 program.
class TestStorePage : public QObject
{
    Q_OBJECT

private slots:
    void commandsTellWhatIsStored_data();
    void commandsTellWhatIsStored();
    void everyCommandIsTried();

private:
    const SkippedWaits m_waits;
};

void TestStorePage::commandsTellWhatIsStored_data()
{
    QTest::addColumn<QString>("output");
    for (const Expectation& row : kExpectations) {
        QTest::newRow(row.title) << QString::fromUtf8(row.output);
    }
}

/// While the store has the files open.
void TestStorePage::commandsTellWhatIsStored()
{
    QFETCH(QString, output);
    TestStore store;
    fill(store.get());
    QString script = StoreCommands().script(QString::fromLatin1(QTest::currentDataTag()));
    // What goes to a file is printed.
    script.replace(QLatin1String("> 101.csv"), QLatin1String("> /dev/stdout"));
    QCOMPARE(outputOf(script, store.directory()), output);
}

void TestStorePage::everyCommandIsTried()
{
    QStringList tried;
    for (const Expectation& row : kExpectations) {
        tried.append(QString::fromUtf8(row.title));
    }
    QCOMPARE(StoreCommands().titles(), tried);
}

SCN_TEST(TestStorePage, QCoreApplication)
#include "test_storepage.moc"
