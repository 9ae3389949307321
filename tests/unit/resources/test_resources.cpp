#include "resources/resources.h"
#include "resources/windowicon.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QFile>
#include <QImage>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void bundleIsKnownAfterItsInitialisation();
    void picturesAreThere_data();
    void picturesAreThere();
    void windowIconHasItsSizes_data();
    void windowIconHasItsSizes();
    void titleBarIconsAreThere_data();
    void titleBarIconsAreThere();
    void everyUrlOfTheStyleSheetResolves();
    void rulesThatNoWidgetNeedsAreLeftOut();
    void styleSheetIsPlainText();
    void styleSheetsAreUnderstood_data();
    void styleSheetsAreUnderstood();
    void darkStyleSheetColoursAButton();
    void buttonStylesChooseByName();
};

namespace {

QString textOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(file.readAll())
                                                            : QString();
}

} // namespace

void TestResources::bundleIsKnownAfterItsInitialisation()
{
    initResources();
    initResources();
    QVERIFY(QFile::exists(QStringLiteral(":/qss/styles.qss")));
    QVERIFY(QFile::exists(QStringLiteral(":/qss/buttonStyles.qss")));
}

void TestResources::picturesAreThere_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"start", "stop", "derive", "add", "confChannel", "graphicsetting", "DataNetwork"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void TestResources::picturesAreThere()
{
    QFETCH(QString, name);
    const QString folder = QStringLiteral(":/image/");
    const QImage picture(folder + name + QStringLiteral(".png"));
    QCOMPARE(picture.size(), QSize(60, 60));
    QVERIFY(picture.hasAlphaChannel());
    QCOMPARE(picture.pixelColor(0, 0).alpha(), 0);
    int opaque = 0;
    int bright = 0;
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 60; ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            opaque += pixel.alpha() > 200 ? 1 : 0;
            bright += pixel.alpha() > 200 && pixel.lightness() > 90 ? 1 : 0;
        }
    }
    QVERIFY2(opaque > 300, qPrintable(QString::number(opaque)));
    QVERIFY2(bright > 300, "too dark for a dark ground");
    const QImage fine(folder + name + QStringLiteral("@2x.png"));
    QCOMPARE(fine.size(), QSize(120, 120));
}

void TestResources::windowIconHasItsSizes_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        QTest::addRow("%d", size) << size;
    }
}

void TestResources::windowIconHasItsSizes()
{
    QFETCH(int, size);
    QVERIFY(windowIcon().availableSizes().contains(QSize(size, size)));
    const QImage picture = windowIcon().pixmap(size).toImage();
    QCOMPARE(picture.size(), QSize(size, size));
    // Round corners on a dark ground.
    QVERIFY(picture.pixelColor(0, 0).alpha() < 64);
    QCOMPARE(picture.pixelColor(size / 2, size * 7 / 8).name(), QStringLiteral("#2b2b2b"));
}

void TestResources::titleBarIconsAreThere_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"window_minimize", "window_undock", "window_close", "arrow_left",
                             "arrow_right", "arrow_down", "arrow_up"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void TestResources::titleBarIconsAreThere()
{
    QFETCH(QString, name);
    const QString file = QStringLiteral(":/dark/") + name + QStringLiteral(".png");
    QVERIFY2(!QImage(file).isNull(), qPrintable(file));
}

void TestResources::everyUrlOfTheStyleSheetResolves()
{
    const QString sheet = textOf(QStringLiteral(":/qss/styles.qss"));
    static const QRegularExpression url(QStringLiteral("url\\(\\s*\"?([^\")]+)\"?\\s*\\)"));
    int count = 0;
    QRegularExpressionMatchIterator matches = url.globalMatch(sheet);
    while (matches.hasNext()) {
        const QString file = matches.next().captured(1);
        QVERIFY2(file.startsWith(QLatin1String(":/dark/")), qPrintable(file));
        QVERIFY2(!QImage(file).isNull(), qPrintable(file));
        ++count;
    }
    QVERIFY2(count > 50, qPrintable(QString::number(count)));
}

/// They would be tried on every widget there is.
void TestResources::rulesThatNoWidgetNeedsAreLeftOut()
{
    const QString sheet = textOf(QStringLiteral(":/qss/styles.qss"));
    for (const char* selector :
         {"QToolBar * {", "QCheckBox QWidget", "QRadioButton QWidget", "QToolBox QScrollArea"}) {
        QVERIFY2(!sheet.contains(QLatin1String(selector)), selector);
    }
    for (const char* selector :
         {"QToolBar {", "QCheckBox {", "QRadioButton {", "QTabWidget QWidget {",
          "QScrollArea QWidget QWidget:disabled {"}) {
        QVERIFY2(sheet.contains(QLatin1String(selector)), selector);
    }
}

void TestResources::styleSheetIsPlainText()
{
    QFile file(QStringLiteral(":/qss/styles.qss"));
    QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
    const QByteArray bytes = file.readAll();
    QVERIFY(bytes.size() > 10000);
    // Text after a NUL byte would not be part of the sheet.
    QVERIFY(!bytes.contains('\0'));
    QCOMPARE(QString::fromUtf8(bytes).toUtf8(), bytes);
}

void TestResources::styleSheetsAreUnderstood_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("styles") << ":/qss/styles.qss";
    QTest::newRow("buttonStyles") << ":/qss/buttonStyles.qss";
}

void TestResources::styleSheetsAreUnderstood()
{
    QFETCH(QString, name);
    const QString sheet = textOf(name);
    QVERIFY(!sheet.isEmpty());
    const LogCapture log;
    QPushButton button;
    button.setStyleSheet(sheet);
    button.ensurePolished();
    QCOMPARE(log.lines(), QStringList());
}

void TestResources::darkStyleSheetColoursAButton()
{
    QPushButton button;
    button.setStyleSheet(textOf(QStringLiteral(":/qss/styles.qss")));
    button.resize(80, 30);
    QVERIFY(button.grab().toImage().pixelColor(40, 5).lightness() < 128);
}

void TestResources::buttonStylesChooseByName()
{
    QWidget bar;
    bar.setStyleSheet(QStringLiteral("background: rgb(43, 43, 43);"));
    QPushButton named(&bar);
    named.setObjectName(QStringLiteral("imageButton"));
    named.setStyleSheet(textOf(QStringLiteral(":/qss/buttonStyles.qss")));
    named.setGeometry(0, 0, 100, 40);
    bar.resize(100, 40);
    bar.show();
    // Flat: the bar's background shows through.
    QCOMPARE(bar.grab().toImage().pixelColor(50, 20), QColor(43, 43, 43));
    named.setDown(true);
    QCOMPARE(bar.grab().toImage().pixelColor(50, 20), QColor(23, 23, 23));
    named.setDown(false);
    QCOMPARE(named.palette().color(QPalette::Active, QPalette::ButtonText),
             QColor(QStringLiteral("#E0E1E3")));
    named.setEnabled(false);
    QCOMPARE(named.palette().color(QPalette::Disabled, QPalette::ButtonText),
             QColor(120, 120, 120));
}

SCN_TEST(TestResources, QApplication)
#include "test_resources.moc"
