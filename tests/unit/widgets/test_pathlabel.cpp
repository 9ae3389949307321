#include "support/testprogram.h"
#include "widgets/pathlabel.h"

#include <QHelpEvent>
#include <QTest>
#include <QToolTip>

using namespace scn;

namespace {

const QString kLong = QString(QStringLiteral("/a-folder-with-a-name")).repeated(20);

/// Rows of the picture that contain text.
int inkedRows(PathLabel& label)
{
    const QImage picture = label.grab().toImage();
    const QRgb ground = picture.pixel(picture.width() - 1, 0);
    int rows = 0;
    for (int y = 0; y < picture.height(); ++y) {
        bool hasInk = false;
        for (int x = 0; x < picture.width(); ++x) {
            hasInk = hasInk || picture.pixel(x, y) != ground;
        }
        rows += hasInk ? 1 : 0;
    }
    return rows;
}

} // namespace

/// Path labels, for paths of any length.
class TestPathLabel : public QObject
{
    Q_OBJECT

private slots:
    void shortTextTakesItsOwnSize();
    void textThatFitsStaysOnOneLine_data();
    void textThatFitsStaysOnOneLine();
    void oneLineLabelGivesWay();
    void longTextIsWrapped();
    void veryLongTextKeepsItsLines();
    void endsOfTheTextAreShown();
    void markUpIsShownAsItIs();
    void toolTipHasTheWholeText();
};

void TestPathLabel::shortTextTakesItsOwnSize()
{
    PathLabel label(8, 400);
    label.setText(QStringLiteral("/a/b"));
    QVERIFY(label.sizeHint().width() >= label.fontMetrics().horizontalAdvance(label.text()));
    QVERIFY(label.sizeHint().width() < 100);
    QCOMPARE(label.sizeHint().height(), label.fontMetrics().height());
}

void TestPathLabel::textThatFitsStaysOnOneLine_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"CSV文件无法打开（可能被占用）", "数据库读取失败，请检查数据文件",
                             "导出成功/数据/a b/Trace（1）.csv", "（）"}) {
        QTest::newRow(text) << QString::fromUtf8(text);
    }
}

/// Also where the text is in several fonts, and there is height for more lines.
void TestPathLabel::textThatFitsStaysOnOneLine()
{
    QFETCH(QString, text);
    PathLabel label(8, 400);
    for (int pixels = 10; pixels <= 20; ++pixels) {
        QFont font = label.font();
        font.setPixelSize(pixels);
        label.setFont(font);
        label.setText(text);
        QVERIFY(label.sizeHint().width() < 400);
        label.resize(label.sizeHint().width(), 100);
        QVERIFY(inkedRows(label) > 0);
        QVERIFY(inkedRows(label) <= label.fontMetrics().height());
    }
}

void TestPathLabel::oneLineLabelGivesWay()
{
    PathLabel label(1, 300);
    label.setText(kLong);
    QCOMPARE(label.text(), kLong);
    QCOMPARE(label.sizeHint().width(), 300);
    QCOMPARE(label.minimumSizeHint().width(), 0);
    label.resize(200, 60);
    QVERIFY(inkedRows(label) <= label.fontMetrics().height());
}

void TestPathLabel::longTextIsWrapped()
{
    PathLabel label(8, 400);
    label.setText(kLong.left(100));
    QCOMPARE(label.sizeHint().width(), 400);
    const int lines = label.fontMetrics().horizontalAdvance(label.text()) / 400 + 1;
    QVERIFY(lines > 1);
    QVERIFY(label.sizeHint().height() >= lines * label.fontMetrics().lineSpacing());
    QCOMPARE(label.minimumSizeHint(), label.sizeHint());
    label.resize(label.sizeHint());
    QVERIFY(inkedRows(label) > label.fontMetrics().height());
}

void TestPathLabel::veryLongTextKeepsItsLines()
{
    PathLabel label(3, 400);
    label.setText(kLong.repeated(20));
    QVERIFY(label.sizeHint().height() < 4 * label.fontMetrics().lineSpacing());
}

void TestPathLabel::endsOfTheTextAreShown()
{
    PathLabel label(1, 300);
    label.resize(200, 30);
    const auto pictureOf = [&label](const QString& text) {
        label.setText(text);
        return label.grab().toImage();
    };
    const QImage picture = pictureOf(kLong);
    QVERIFY(picture != pictureOf(QStringLiteral("XX") + kLong));
    QVERIFY(picture != pictureOf(kLong + QStringLiteral("XX")));
}

void TestPathLabel::markUpIsShownAsItIs()
{
    PathLabel label(1, 300);
    label.resize(200, 30);
    label.setText(QStringLiteral("<i></i>"));
    QVERIFY(inkedRows(label) > 0);
}

void TestPathLabel::toolTipHasTheWholeText()
{
    PathLabel label(1, 300);
    label.setText(QStringLiteral("/a&b/<c>"));
    label.show();
    QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), label.mapToGlobal(QPoint(1, 1)));
    QCoreApplication::sendEvent(&label, &event);
    QCOMPARE(QToolTip::text(), QStringLiteral("<p>/a&amp;b/&lt;c&gt;</p>"));
}

SCN_TEST(TestPathLabel, QApplication)
#include "test_pathlabel.moc"
