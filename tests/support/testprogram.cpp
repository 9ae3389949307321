#include "support/testprogram.h"

#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace testprogram {

namespace {

constexpr int kSkipped = 77; // the return code that the ctest entries know as "skipped"
constexpr int kListTimeoutMs = 30000;

QMap<QString, Run>& tests()
{
    static QMap<QString, Run> registered;
    return registered;
}

QString& runningName()
{
    static QString name;
    return name;
}

QStringList& obstacles()
{
    static QStringList noted;
    return noted;
}

/// What "test -datatags" prints: "Class function tag" or "Class function".
QStringList rowsOf(const QString& test)
{
    QProcess lister;
    lister.start(QCoreApplication::applicationFilePath(), {test, QStringLiteral("-datatags")});
    lister.waitForFinished(kListTimeoutMs);
    QStringList rows;
    for (const QString& line : QString::fromUtf8(lister.readAllStandardOutput()).split(u'\n')) {
        const QString function = line.section(u' ', 1, 1);
        const QString tag = line.section(u' ', 2);
        if (!function.isEmpty()) {
            rows.append(tag.isEmpty() ? function : function + u':' + tag);
        }
    }
    return rows;
}

/// Whether one of the entries runs the row: it names the row, or its whole function.
bool isCovered(const QString& row, const QStringList& entries)
{
    return entries.contains(row) || entries.contains(row.section(u':', 0, 0));
}

/// What is wrong with the entries of one test; an empty entry runs all of it.
QStringList faultsIn(const QString& test, const QStringList& entries)
{
    if (!tests().contains(test)) {
        return {test + QStringLiteral(": no such test in this program")};
    }
    if (entries.isEmpty()) {
        return {test + QStringLiteral(": not in the list of tests")};
    }
    if (entries.contains(QString())) {
        return {};
    }
    QStringList faults;
    for (const QString& row : rowsOf(test)) {
        if (!isCovered(row, entries)) {
            faults.append(test + u' ' + row + QStringLiteral(": not in the list of tests"));
        }
    }
    return faults;
}

/// Compares the program with the entries that ctest has for it, each "test" or "test function:row".
int check(const QStringList& entries)
{
    QMap<QString, QStringList> listed;
    for (const QString& test : tests().keys()) {
        listed.insert(test, {});
    }
    for (const QString& entry : entries) {
        listed[entry.section(u' ', 0, 0)].append(entry.section(u' ', 1));
    }
    QStringList faults;
    for (auto test = listed.cbegin(); test != listed.cend(); ++test) {
        faults.append(faultsIn(test.key(), test.value()));
    }
    for (const QString& fault : faults) {
        std::fprintf(stderr, "%s\n", qPrintable(fault));
    }
    return faults.isEmpty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

Registration::Registration(const char* file, Run run)
{
    const QString name = QFileInfo(QString::fromUtf8(file)).completeBaseName();
    if (tests().contains(name)) {
        qFatal("%s has two tests", file);
    }
    tests().insert(name, run);
}

QString runningTest()
{
    return runningName();
}

int skip(const QString& untested, const QString& obstacle)
{
    std::printf("SKIPPED: NOT tested: %s: %s\n", qPrintable(untested), qPrintable(obstacle));
    return kSkipped;
}

void noteMissing(const QString& obstacle)
{
    obstacles().append(QString::fromUtf8(QTest::currentTestFunction()) + QStringLiteral(": ") +
                       obstacle);
}

int result(int failures)
{
    if (failures != 0 || obstacles().isEmpty()) {
        return failures;
    }
    return skip(runningName(), obstacles().join(QStringLiteral("; ")));
}

int main(int argc, char** argv)
{
    const QString first = QString::fromLocal8Bit(argc > 1 ? argv[1] : "");
    if (first == QLatin1String("--check")) {
        const QCoreApplication application(argc, argv);
        return check(QCoreApplication::arguments().mid(2));
    }
    const Run run = tests().value(first);
    if (run) {
        runningName() = first;
        argv[1] = argv[0];
        return run(argc - 1, argv + 1);
    }
    for (const QString& name : tests().keys()) {
        std::printf("%s\n", qPrintable(name));
    }
    const bool asked = first == QLatin1String("--list");
    if (!asked) {
        std::fprintf(stderr, "The first argument is one of these tests, or --list.\n");
    }
    return asked ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace testprogram
