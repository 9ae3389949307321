#include "mouseevents.h"
#include "plot/curvelabel.h"
#include "support/eventcounter.h"
#include "support/settle.h"
#include "support/testprogram.h"

#include <QPainter>
#include <QSignalSpy>
#include <QtTest>
#include <qwt_plot_curve.h>

namespace {
/// A parent that records the mouse events its child lets through.
class Parent : public QWidget
{
public:
    int presses = 0;
    int moves = 0;
    int releases = 0;

protected:
    void mousePressEvent(QMouseEvent*) override { ++presses; }
    void mouseMoveEvent(QMouseEvent*) override { ++moves; }
    void mouseReleaseEvent(QMouseEvent*) override { ++releases; }
};

struct Fixture
{
    Parent parent;
    QwtPlotCurve curve;
    CurveLabel label{QStringLiteral("101"), &curve, &parent};
    QSignalSpy pressed{&label, &CurveLabel::labelPressed};
    QSignalSpy started{&label, &CurveLabel::dragStarted};
    QSignalSpy dragged{&label, &CurveLabel::dragged};
    QSignalSpy ended{&label, &CurveLabel::dragEnded};
};

/// A transparent image with the same font resolution as `widget`.
QImage emptyImage(const QWidget& widget)
{
    constexpr double kMetresPerInch = 0.0254;
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.setDotsPerMeterX(qRound(widget.logicalDpiX() / kMetresPerInch));
    image.setDotsPerMeterY(qRound(widget.logicalDpiY() / kMetresPerInch));
    image.fill(Qt::transparent);
    return image;
}
} // namespace

class TestCurveLabel : public QObject
{
    Q_OBJECT

private slots:
    void newLabelStandsForNoOffset();
    void leftPressStartsADrag();
    void pressNamesTheLabelBeforeItsDragStarts();
    void otherButtonsStartNothing();
    void moveReportsTheStepSinceTheLastOne();
    void positionsAreRounded();
    void moveWithoutADragIsSwallowed();
    void releaseEndsTheDragOnce();
    void rightReleaseKeepsTheDrag();
    void hidingEndsTheDrag();
    void pressAndReleaseGoOnToTheParent();
    void paintsItsTextWithAnArrow();
    void newValueOrColorIsPainted();
};

void TestCurveLabel::newLabelStandsForNoOffset()
{
    Fixture f;
    QCOMPARE(f.label.size(), QSize(40, 20));
    QCOMPARE(f.label.minimumSize(), QSize(40, 20));
    QCOMPARE(f.label.maximumSize(), QSize(40, 20));
    QVERIFY(f.label.hasMouseTracking());
    QVERIFY(f.label.testAttribute(Qt::WA_TranslucentBackground));
    QVERIFY(!f.label.autoFillBackground());
    QCOMPARE(f.label.text(), QStringLiteral("101"));
    QCOMPARE(f.label.curve(), &f.curve);
    QCOMPARE(f.label.value(), 0.0);
    QCOMPARE(f.label.color(), QColor(Qt::lightGray));
}

void TestCurveLabel::leftPressStartsADrag()
{
    Fixture f;
    pressAt(&f.label, QPoint(100, 100));
    QCOMPARE(f.pressed.size(), 1);
    QCOMPARE(f.pressed.at(0).at(0).value<CurveLabel*>(), &f.label);
    QCOMPARE(f.started.size(), 1);
    QCOMPARE(f.dragged.size(), 0);
}

void TestCurveLabel::pressNamesTheLabelBeforeItsDragStarts()
{
    Fixture f;
    int namedBefore = 0;
    connect(&f.label, &CurveLabel::dragStarted, &f.parent, [&] { namedBefore = f.pressed.size(); });
    pressAt(&f.label, QPoint(100, 100));
    QCOMPARE(f.started.size(), 1);
    QCOMPARE(namedBefore, 1);
}

void TestCurveLabel::otherButtonsStartNothing()
{
    Fixture f;
    pressAt(&f.label, QPoint(100, 100), Qt::RightButton);
    dragTo(&f.label, QPoint(100, 120), Qt::RightButton);
    releaseAt(&f.label, QPoint(100, 120), Qt::RightButton);
    QCOMPARE(f.parent.moves, 0);
    QCOMPARE(f.pressed.size() + f.started.size() + f.dragged.size() + f.ended.size(), 0);
}

void TestCurveLabel::moveReportsTheStepSinceTheLastOne()
{
    Fixture f;
    pressAt(&f.label, QPoint(100, 100));
    dragTo(&f.label, QPoint(103, 107));
    dragTo(&f.label, QPoint(90, 95));
    QCOMPARE(f.dragged.size(), 2);
    QCOMPARE(f.dragged.at(0).at(0).toInt(), 7);
    QCOMPARE(f.dragged.at(1).at(0).toInt(), -12);
}

void TestCurveLabel::positionsAreRounded()
{
    Fixture f;
    const auto send = [&f](QEvent::Type type, double y) {
        const QPointF pos(20.0, y);
        QMouseEvent event(type, pos, pos, pos, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&f.label, &event);
    };
    send(QEvent::MouseButtonPress, 9.6);
    send(QEvent::MouseMove, 13.4);
    send(QEvent::MouseMove, 14.6);
    QCOMPARE(f.dragged.size(), 2);
    QCOMPARE(f.dragged.at(0).at(0).toInt(), 3);
    QCOMPARE(f.dragged.at(1).at(0).toInt(), 2);
}

void TestCurveLabel::moveWithoutADragIsSwallowed()
{
    Fixture f;
    // Without this Qt keeps such moves from the parent.
    f.parent.setMouseTracking(true);
    dragTo(&f.label, QPoint(100, 120), Qt::NoButton);
    QCOMPARE(f.dragged.size(), 0);
    QCOMPARE(f.parent.moves, 0);
}

void TestCurveLabel::releaseEndsTheDragOnce()
{
    Fixture f;
    pressAt(&f.label, QPoint(100, 100));
    releaseAt(&f.label, QPoint(100, 110));
    releaseAt(&f.label, QPoint(100, 110));
    dragTo(&f.label, QPoint(100, 130), Qt::NoButton);
    QCOMPARE(f.ended.size(), 1);
    QCOMPARE(f.dragged.size(), 0);
}

void TestCurveLabel::rightReleaseKeepsTheDrag()
{
    Fixture f;
    pressAt(&f.label, QPoint(100, 100));
    releaseAt(&f.label, QPoint(100, 100), Qt::RightButton);
    QCOMPARE(f.ended.size(), 0);
    dragTo(&f.label, QPoint(100, 101));
    QCOMPARE(f.dragged.size(), 1);
}

void TestCurveLabel::hidingEndsTheDrag()
{
    Fixture f;
    f.parent.show();
    pressAt(&f.label, QPoint(100, 100));
    f.label.hide();
    QCOMPARE(f.ended.size(), 1);
    f.label.show();
    dragTo(&f.label, QPoint(100, 120), Qt::NoButton);
    QCOMPARE(f.dragged.size(), 0);
    f.label.hide();
    QCOMPARE(f.ended.size(), 1);
}

void TestCurveLabel::pressAndReleaseGoOnToTheParent()
{
    Fixture f;
    pressAt(&f.label, QPoint(100, 100));
    releaseAt(&f.label, QPoint(100, 100));
    pressAt(&f.label, QPoint(100, 100), Qt::RightButton);
    releaseAt(&f.label, QPoint(100, 100), Qt::RightButton);
    QCOMPARE(f.parent.presses, 2);
    QCOMPARE(f.parent.releases, 2);
}

void TestCurveLabel::paintsItsTextWithAnArrow()
{
    Fixture f;
    f.label.setColor(Qt::red);
    QImage painted = emptyImage(f.label);
    f.label.render(&painted, QPoint(), QRegion(), QWidget::DrawChildren);

    QImage expected = emptyImage(f.label);
    QFont font = f.label.font();
    font.setPointSize(10);
    font.setWeight(QFont::Bold);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font);
    painter.setPen(Qt::red);
    painter.drawText(QRect(0, 0, 40, 20), Qt::AlignCenter, QStringLiteral("101>"));
    painter.end();

    QVERIFY(expected != emptyImage(f.label));
    QCOMPARE(painted, expected);
}

void TestCurveLabel::newValueOrColorIsPainted()
{
    Fixture f;
    f.parent.resize(100, 100);
    f.parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&f.parent));
    settle();
    const EventCounter paints(&f.label, QEvent::Paint);
    f.label.setValue(2.0);
    QTRY_COMPARE(paints.count(), 1);
    f.label.setColor(Qt::red);
    QTRY_COMPARE(paints.count(), 2);
}

SCN_TEST(TestCurveLabel, QApplication)
#include "test_curvelabel.moc"
