#pragma once

#include <QCoreApplication>
#include <QString>
#include <QTest>

/// One program holds the test classes of a folder, each under the name of its source file. The program
/// runs the one named by its first argument and hands it the others:
///
///     storage_tests test_connectionpool waitsForAFreeConnection -v2
///
/// With --list it prints the names; with --check and the entries of ctest it fails if they miss a test,
/// a function or a row.
namespace testprogram {

using Run = int (*)(int argc, char** argv);

/// Puts a test under the name of its source file; two tests in one file end the program at its start.
struct Registration
{
    Registration(const char* file, Run run);
};

/// The name of the running test. A test that starts its own program as a child passes it on as the
/// first argument.
QString runningTest();

/// Prints what was not tested and why. Its result is the one that ctest shows as skipped.
int skip(const QString& untested, const QString& obstacle);

/// Notes that something is missing for the running function; see SCN_SKIP.
void noteMissing(const QString& obstacle);

/// The result of a test: that of Qt Test, or, where nothing failed but a function was skipped, the one
/// that ctest shows as skipped.
int result(int failures);

/// What every such program does; see above.
int main(int argc, char** argv);

/// For tests that make their applications themselves, or need none.
struct NoApplication
{
    NoApplication(int&, char**) {}
};

/// Runs the functions of a class under an application made for it.
template <class Test, class Application>
int run(int argc, char** argv)
{
    [[maybe_unused]] const Application application(argc, argv);
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    Test test;
    return result(QTest::qExec(&test, argc, argv));
}

} // namespace testprogram

/// Adds a function that runs this file's test.
#define SCN_TEST_RUN(...)                                                                          \
    namespace {                                                                                    \
    const testprogram::Registration g_registration(__FILE__, __VA_ARGS__);                         \
    }

/// Adds this file's test class; Application is QApplication, QCoreApplication or NoApplication.
#define SCN_TEST(Test, Application) SCN_TEST_RUN(&testprogram::run<Test, Application>)

/// Leaves a test function for want of something, a package for instance. ctest shows the test as
/// skipped, unless another of its functions fails.
#define SCN_SKIP(obstacle)                                                                         \
    do {                                                                                           \
        testprogram::noteMissing(obstacle);                                                        \
        QSKIP(qPrintable(obstacle));                                                               \
    } while (false)
