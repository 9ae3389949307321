#include "acquisition/measurementdata.h"
#include "app/deletionfilter.h"
#include "app/startup.h"
#include "export/exportresult.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QDateTime>
#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetrics>
#include <QImage>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QVector>
#include <QWidget>
#include <qwt_legend_data.h>

#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <memory>

using namespace scn;

namespace {

/// Counts its show events.
class CountingWindow : public QWidget
{
public:
    int shows = 0;

protected:
    void showEvent(QShowEvent*) override { ++shows; }
};

long pageFaults()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

/// Sets the time zone variable, or unsets it if the zone is empty, until the end of the scope.
class TimeZoneVariable
{
public:
    explicit TimeZoneVariable(const QByteArray& zone) { set(zone); }
    ~TimeZoneVariable() { set(m_before); }
    TimeZoneVariable(const TimeZoneVariable&) = delete;
    TimeZoneVariable& operator=(const TimeZoneVariable&) = delete;

private:
    static void set(const QByteArray& zone)
    {
        if (zone.isEmpty()) {
            qunsetenv("TZ");
        } else {
            qputenv("TZ", zone);
        }
        ::tzset();
    }

    QByteArray m_before = qgetenv("TZ");
};

} // namespace

/// The steps of main().
class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void metaTypesAreRegisteredInOrder();
    void styleSheetOfTheBundleIsApplied();
    void styleSheetIsUtf8UpToTheFirstZeroByte_data();
    void styleSheetIsUtf8UpToTheFirstZeroByte();
    void missingStyleSheetIsOneDebugLine();
    void windowWithAnInstrumentIsShownAtOnce();
    void windowWithoutInstrumentIsShownByTheEventLoop();
    void windowThatHasGoneIsNotShown();
    void closeInsideTheEventLoopDeletesNothing();
    void writeToABrokenPipeFailsWithoutASignal();
    void systemTimeZoneIsKept();
    void givenTimeZoneStays();
    void memoryOfImagesServesTheNext();
    void missingFontsAreDrawnInTheChineseOne();
    void menusOfTheLibraryAreChinese();
    void missingTranslationIsOneLogLine();
};

void TestStartup::cleanup()
{
    qApp->setStyleSheet(QString());
    g_instrumentConnected = false;
}

void TestStartup::metaTypesAreRegisteredInOrder()
{
    const char* const names[] = {"QList<QwtLegendData>", "MeasurementData",
                                 "QList<MeasurementData>", "QVector<int>", "ExportResult"};
    for (const char* const name : names) {
        QCOMPARE(QMetaType::type(name), static_cast<int>(QMetaType::UnknownType));
    }
    startup::registerMetaTypes();
    // Qt numbers the types in the order they come.
    int last = 0;
    for (const char* const name : names) {
        const int type = QMetaType::type(name);
        QVERIFY2(type > last, name);
        last = type;
    }
    QCOMPARE(QMetaType::type("MeasurementData"), qMetaTypeId<MeasurementData>());
    QCOMPARE(QMetaType::type("QList<MeasurementData>"), qMetaTypeId<QList<MeasurementData>>());
    QCOMPARE(QMetaType::type("QVector<int>"), qMetaTypeId<QVector<int>>());
    QCOMPARE(QMetaType::type("ExportResult"), qMetaTypeId<ExportResult>());
}

void TestStartup::styleSheetOfTheBundleIsApplied()
{
    initResources();
    QFile file(QStringLiteral(":/qss/styles.qss"));
    startup::applyStyleSheet(file);
    QVERIFY(!file.isOpen());
    QVERIFY(qApp->styleSheet().contains(QLatin1String("QTabWidget")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(qApp->styleSheet(), QString::fromUtf8(file.readAll()));
}

void TestStartup::styleSheetIsUtf8UpToTheFirstZeroByte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("whole") << QByteArray("/* a */ QWidget{}\n")
                           << QStringLiteral("/* a */ QWidget{}\n");
    QTest::newRow("UTF-8") << QByteArray("/* \xE6\xB8\xA9 */") << QStringLiteral("/* 温 */");
    QTest::newRow("zero byte") << QByteArray("/* a */\0/* b */", 15) << QStringLiteral("/* a */");
    QTest::newRow("text mode") << QByteArray("/* a\r\nb */\r\n") << QStringLiteral("/* a\nb */\n");
    QTest::newRow("empty") << QByteArray() << QString();
}

void TestStartup::styleSheetIsUtf8UpToTheFirstZeroByte()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("sheet")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    qApp->setStyleSheet(QStringLiteral("QLabel{}"));
    startup::applyStyleSheet(file);
    QCOMPARE(qApp->styleSheet(), text);
    QVERIFY(!file.isOpen());
}

void TestStartup::missingStyleSheetIsOneDebugLine()
{
    qApp->setStyleSheet(QStringLiteral("QLabel{}"));
    QFile file(QStringLiteral(":/qss/no-such.qss"));
    QTest::ignoreMessage(QtDebugMsg, "Failed to open style.qss: \"No such file or directory\"");
    startup::applyStyleSheet(file);
    QCOMPARE(qApp->styleSheet(), QStringLiteral("QLabel{}"));
}

void TestStartup::windowWithAnInstrumentIsShownAtOnce()
{
    g_instrumentConnected = true;
    CountingWindow window;
    startup::presentWindow(window);
    QCOMPARE(window.pos(), QPoint(200, 200));
    QVERIFY(window.isVisible());
    QCOMPARE(window.shows, 1);
    // Someone hides it before the event loop runs: the queued show still comes.
    window.hide();
    QTRY_COMPARE(window.shows, 2);
}

void TestStartup::windowWithoutInstrumentIsShownByTheEventLoop()
{
    CountingWindow window;
    startup::presentWindow(window);
    QCOMPARE(window.pos(), QPoint(200, 200));
    QVERIFY(!window.isVisible());
    QTRY_VERIFY(window.isVisible());
    QCOMPARE(window.shows, 1);
}

void TestStartup::windowThatHasGoneIsNotShown()
{
    auto window = std::make_unique<CountingWindow>();
    const QPointer<QWidget> alive(window.get());
    startup::presentWindow(*window);
    window.reset();
    QCoreApplication::processEvents();
    QVERIFY(!alive);
}

void TestStartup::closeInsideTheEventLoopDeletesNothing()
{
    DeletionFilter filter;
    QWidget window;
    window.setAttribute(Qt::WA_DeleteOnClose);
    window.installEventFilter(&filter);
    const QSignalSpy destroyed(&window, &QObject::destroyed);
    window.show();
    QTimer::singleShot(0, &window, &QWidget::close);
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(!window.isVisible());
    QCOMPARE(destroyed.count(), 0);
}

void TestStartup::writeToABrokenPipeFailsWithoutASignal()
{
    std::signal(SIGPIPE, SIG_DFL);
    startup::ignoreBrokenPipes();
    int ends[2];
    QCOMPARE(::pipe(ends), 0);
    ::close(ends[0]);
    errno = 0;
    QCOMPARE(static_cast<int>(::write(ends[1], "x", 1)), -1);
    QCOMPARE(errno, EPIPE);
    ::close(ends[1]);
}

void TestStartup::systemTimeZoneIsKept()
{
    const bool hasZone = QFile::exists(QStringLiteral("/etc/localtime"));
    const TimeZoneVariable variable({});
    const QDateTime local = QDateTime::fromSecsSinceEpoch(1784000000);
    startup::keepTimeZone();
    QCOMPARE(qgetenv("TZ"), hasZone ? QByteArrayLiteral(":/etc/localtime") : QByteArray());
    QCOMPARE(QDateTime(local.date(), local.time()).toSecsSinceEpoch(), 1784000000);
}

void TestStartup::givenTimeZoneStays()
{
    const TimeZoneVariable variable("Asia/Shanghai");
    startup::keepTimeZone();
    QCOMPARE(qgetenv("TZ"), QByteArrayLiteral("Asia/Shanghai"));
}

void TestStartup::memoryOfImagesServesTheNext()
{
#if !defined(__GLIBC__) || defined(__SANITIZE_ADDRESS__)
    SCN_SKIP(QStringLiteral("the memory is not the C library's own"));
#endif
    constexpr int kRounds = 20;
    startup::keepFreedMemory();
    const auto paintThree = [] {
        std::array<QImage, 3> images;
        for (QImage& image : images) {
            image = QImage(1500, 900, QImage::Format_RGB32);
            image.fill(Qt::black);
        }
    };
    paintThree();
    const long before = pageFaults();
    for (int round = 0; round < kRounds; ++round) {
        paintThree();
    }
    // Anew, each image would take 1300.
    const long faults = pageFaults() - before;
    QVERIFY2(faults < 1300 * kRounds, qPrintable(QString::number(faults)));
}

void TestStartup::missingFontsAreDrawnInTheChineseOne()
{
    const QFontDatabase fonts;
    const QStringList chinese = fonts.families(QFontDatabase::SimplifiedChinese);
    QVERIFY(!chinese.isEmpty());
    startup::substituteFonts();
    for (const QString& family :
         {QStringLiteral("Microsoft YaHei"), QStringLiteral("微软雅黑"), QStringLiteral("Arial")}) {
        const QString drawn = QFontInfo(QFont(family)).family();
        QVERIFY2(drawn == family || chinese.contains(drawn), qPrintable(drawn));
    }
    // As the window's style sheet asks.
    QWidget window;
    window.setStyleSheet(QStringLiteral("font-family:'Microsoft YaHei',Arial;"));
    window.ensurePolished();
    const QString drawn = QFontInfo(window.font()).family();
    QVERIFY2(drawn == QStringLiteral("Microsoft YaHei") || chinese.contains(drawn),
             qPrintable(drawn));
}

void TestStartup::menusOfTheLibraryAreChinese()
{
    startup::loadTranslations(QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    QLineEdit edit;
    const std::unique_ptr<QMenu> menu(edit.createStandardContextMenu());
    QVERIFY(!menu->actions().isEmpty());
    for (const QAction* action : menu->actions()) {
        if (!action->isSeparator()) {
            QVERIFY2(action->text().contains(QRegularExpression(QStringLiteral("\\p{Han}"))),
                     qPrintable(action->text()));
        }
    }
}

void TestStartup::missingTranslationIsOneLogLine()
{
    const QTemporaryDir directory;
    QTest::ignoreMessage(
        QtWarningMsg, qPrintable(QStringLiteral("未找到Qt中文翻译文件: %1").arg(directory.path())));
    startup::loadTranslations(directory.path());
}

SCN_TEST(TestStartup, QApplication)
#include "test_startup.moc"
