#include "plot/groupedheaderview.h"
#include "support/testprogram.h"

#include <QHoverEvent>
#include <QScrollBar>
#include <QTableWidget>
#include <QtTest>

namespace {
constexpr int kSectionWidth = 80;
constexpr int kLineY = 37; // two thirds of the 56 pixels beside the gap
constexpr int kGap = 4;
const QColor kFill(0x5D, 0x5D, 0x5D);
const QColor kGroupFill(0x4A, 0x4A, 0x4A);
const QColor kLine(0x33, 0x33, 0x33);

/// A table of ten columns: two groups, of three and five columns, and two columns in no group.
class Table : public QTableWidget
{
public:
    Table()
        : QTableWidget(3, 10)
    {
        const QVector<HeaderGroup> groups{{QStringLiteral("WWWW"), 0, 3},
                                          {QStringLiteral("MMMM"), 3, 5}};
        header = new GroupedHeaderView(groups, this);
        setHorizontalHeader(header);
        header->setVisible(true);
        for (int column = 0; column < columnCount(); ++column) {
            setHorizontalHeaderItem(column, new QTableWidgetItem(QStringLiteral("HH")));
            setColumnWidth(column, kSectionWidth);
        }
        verticalHeader()->hide();
        setFrameShape(QFrame::NoFrame);
    }

    QImage headerImage() const { return header->viewport()->grab().toImage(); }

    GroupedHeaderView* header;
};

/// The area covered by bright pixels in `area`.
QRect textBounds(const QImage& image, const QRect& area)
{
    QRect bounds;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (qGray(image.pixel(x, y)) > 200) {
                bounds |= QRect(x, y, 1, 1);
            }
        }
    }
    return bounds;
}

bool hasTextPixel(const QImage& image, const QRect& area)
{
    return !textBounds(image, area).isEmpty();
}
} // namespace

class TestGroupedHeaderView : public QObject
{
    Q_OBJECT

private slots:
    void sectionsAreFixedAndPlain();
    void heightIsSixty();
    void hoverEventsAreSwallowed();
    void eachGroupIsOneMergedCell();
    void titleStandsInTheMiddleOfItsGroup();
    void columnInNoGroupKeepsThePlainFill();
    void lineRunsAcrossAllSections();
    void sectionTextStandsBelowTheGap();
    void sectionsFillTheLowerThird();
    void groupsMoveWithTheScrolledSections();
};

void TestGroupedHeaderView::sectionsAreFixedAndPlain()
{
    const GroupedHeaderView header({}, nullptr);
    QCOMPARE(header.orientation(), Qt::Horizontal);
    QCOMPARE(header.defaultSectionSize(), 60);
    QVERIFY(!header.sectionsClickable());
    QVERIFY(!header.highlightSections());
    QVERIFY(!header.sectionsMovable());
    QVERIFY(!header.testAttribute(Qt::WA_Hover));
    QCOMPARE(header.styleSheet(),
             QStringLiteral("QHeaderView::section { background:#5D5D5D; color:white; }"));
}

void TestGroupedHeaderView::heightIsSixty()
{
    Table table;
    QCOMPARE(table.header->sizeHint().height(), 60);
    QCOMPARE(table.header->sizeHint().width(),
             static_cast<QHeaderView*>(table.header)->QHeaderView::sizeHint().width());
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    QCOMPARE(table.header->height(), 60);
}

void TestGroupedHeaderView::hoverEventsAreSwallowed()
{
    Table table;
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    table.header->setStyleSheet(QStringLiteral("QHeaderView::section:hover { background:red; }"));
    const QImage before = table.headerImage();
    for (const QEvent::Type type : {QEvent::HoverEnter, QEvent::HoverMove, QEvent::HoverLeave}) {
        QHoverEvent event(type, QPointF(100, 50), QPointF(90, 50));
        QVERIFY(!QCoreApplication::sendEvent(table.header, &event));
        QCOMPARE(table.headerImage(), before);
    }
}

void TestGroupedHeaderView::eachGroupIsOneMergedCell()
{
    Table table;
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    const QImage image = table.headerImage();
    // The top row has no text: the groups' fill continues over the borders between their sections.
    for (int x = 0; x < 8 * kSectionWidth; ++x) {
        QCOMPARE(image.pixelColor(x, 1), kGroupFill);
        QCOMPARE(image.pixelColor(x, kLineY - 2), kGroupFill);
    }
}

void TestGroupedHeaderView::titleStandsInTheMiddleOfItsGroup()
{
    Table table;
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    const QImage image = table.headerImage();
    // The first group spans 0 to 239, the second 240 to 639: their middles are in sections other
    // than their first.
    QVERIFY(hasTextPixel(image, QRect(100, 0, 40, kLineY - 1)));
    QVERIFY(!hasTextPixel(image, QRect(0, 0, 70, kLineY - 1)));
    QVERIFY(hasTextPixel(image, QRect(420, 0, 40, kLineY - 1)));
    QVERIFY(!hasTextPixel(image, QRect(240, 0, 120, kLineY - 1)));
}

void TestGroupedHeaderView::columnInNoGroupKeepsThePlainFill()
{
    Table table;
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    const QImage image = table.headerImage();
    for (int y = 0; y < kLineY - 1; ++y) {
        for (int x = 8 * kSectionWidth; x < 10 * kSectionWidth; ++x) {
            QCOMPARE(image.pixelColor(x, y), kFill);
        }
    }
}

void TestGroupedHeaderView::lineRunsAcrossAllSections()
{
    Table table;
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    const QImage image = table.headerImage();
    for (int x = 0; x < 10 * kSectionWidth; ++x) {
        QCOMPARE(image.pixelColor(x, kLineY), kLine);
    }
    // Two pixels wide. Within a group the next section's cell covers the upper one again.
    for (int x = 8 * kSectionWidth; x < 10 * kSectionWidth; ++x) {
        QCOMPARE(image.pixelColor(x, kLineY - 1), kLine);
    }
}

void TestGroupedHeaderView::sectionTextStandsBelowTheGap()
{
    Table table;
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    const QImage image = table.headerImage();
    for (int column = 0; column < 10; ++column) {
        const int left = column * kSectionWidth;
        QVERIFY(hasTextPixel(image, QRect(left, kLineY + kGap, kSectionWidth, 18)));
        QVERIFY(!hasTextPixel(image, QRect(left, kLineY, kSectionWidth, kGap)));
        // In the middle of the lower third of the 56 pixels beside the gap.
        const QRect text = textBounds(image, QRect(left, kLineY + kGap, kSectionWidth, 18));
        QVERIFY(qAbs(text.center().y() - (kLineY + kGap + 9)) <= 2);
    }
}

void TestGroupedHeaderView::sectionsFillTheLowerThird()
{
    Table table;
    table.resize(900, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    table.header->setStyleSheet(
        QStringLiteral("QHeaderView::section { background:#0000FF; color:white; border:none; }"));
    const QImage image = table.headerImage();
    const int first = kLineY + kGap;
    const int end = first + 18; // a third of the 56 pixels beside the gap
    for (int y = kLineY + 1; y < image.height(); ++y) {
        QCOMPARE(image.pixelColor(5, y), y >= first && y < end ? QColor(Qt::blue) : kFill);
    }
}

void TestGroupedHeaderView::groupsMoveWithTheScrolledSections()
{
    Table table;
    table.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table.resize(400, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    table.horizontalScrollBar()->setValue(table.horizontalScrollBar()->maximum());
    QTRY_COMPARE(table.header->offset(), 10 * kSectionWidth - table.viewport()->width());
    const QImage image = table.headerImage();
    const int groupEnd = 8 * kSectionWidth - table.header->offset();
    for (int x = 0; x < image.width(); ++x) {
        QCOMPARE(image.pixelColor(x, 1), x < groupEnd ? kGroupFill : kFill);
    }
}

SCN_TEST(TestGroupedHeaderView, QApplication)
#include "test_groupedheaderview.moc"
