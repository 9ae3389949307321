#include "support/testprogram.h"
#include "widgets/rotatedlabel.h"

#include <QTest>

class TestRotatedLabel : public QObject
{
    Q_OBJECT

private slots:
    void startsHorizontalAndCentred();
    void verticalExchangesTheHints();
    void horizontalTextIsCentred();
    void verticalTextRunsDownwards();
};

namespace {

/// Bounding rectangle of all pixels coloured by the text.
QRect inkOf(QWidget& label)
{
    const QImage image = label.grab().toImage();
    const QRgb ground = image.pixel(0, 0);
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != ground) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

} // namespace

void TestRotatedLabel::startsHorizontalAndCentred()
{
    const RotatedLabel label;
    QVERIFY(!label.isVertical());
    QVERIFY(label.hasMouseTracking());
    QCOMPARE(label.alignment(), Qt::Alignment(Qt::AlignCenter));
}

void TestRotatedLabel::verticalExchangesTheHints()
{
    RotatedLabel label;
    label.setText(QStringLiteral("a long title"));
    const QSize hint = label.sizeHint();
    const QSize smallest = label.minimumSizeHint();
    QVERIFY(hint.width() > hint.height());
    label.setVertical(true);
    QCOMPARE(label.sizeHint(), hint.transposed());
    QCOMPARE(label.minimumSizeHint(), smallest.transposed());
    label.setVertical(false);
    QCOMPARE(label.sizeHint(), hint);
}

void TestRotatedLabel::horizontalTextIsCentred()
{
    RotatedLabel label;
    label.setText(QStringLiteral("HHHH"));
    label.resize(200, 60);
    const QRect ink = inkOf(label);
    QVERIFY(ink.width() > ink.height());
    QVERIFY2(qAbs(ink.center().x() - 100) <= 2, qPrintable(QString::number(ink.center().x())));
    QVERIFY2(qAbs(ink.center().y() - 30) <= 5, qPrintable(QString::number(ink.center().y())));
}

void TestRotatedLabel::verticalTextRunsDownwards()
{
    RotatedLabel label;
    label.setText(QStringLiteral("____"));
    label.resize(200, 60);
    const QRect horizontal = inkOf(label);
    QVERIFY(horizontal.top() > 30);

    label.setVertical(true);
    label.resize(60, 200);
    const QRect vertical = inkOf(label);
    QVERIFY(vertical.height() > vertical.width());
    QVERIFY(qAbs(vertical.height() - horizontal.width()) <= 2);
    QVERIFY(qAbs(vertical.center().y() - 100) <= 2);
    // Rotated 90 degrees to the right, the letters' feet are on the left.
    QVERIFY(vertical.right() < 30);
}

SCN_TEST(TestRotatedLabel, QApplication)
#include "test_rotatedlabel.moc"
