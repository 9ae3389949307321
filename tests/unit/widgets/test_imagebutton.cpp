#include "support/eventcounter.h"
#include "support/testprogram.h"
#include "widgets/imagebutton.h"

#include <QMetaEnum>
#include <QTest>

#include <cmath>

class TestImageButton : public QObject
{
    Q_OBJECT

private slots:
    void enumHasItsKeysAndNumbers();
    void constructorsSetTheirDefaults();
    void textIsKeptApartFromTheBaseClass();
    void partsStandWhereThePositionSays_data();
    void partsStandWhereThePositionSays();
    void blockWiderThanTheButtonIsCentredRoundingDown();
    void nullIconLeavesTheTextAlone_data();
    void nullIconLeavesTheTextAlone();
    void nullIconBesideAnotherTakesNoRoom();
    void emptyTextPaintsOnlyTheIcon();
    void disabledButtonShowsItsIconUnchanged();
    void checkedButtonShowsTheIconOfTheOffState();
    void settersRepaintAndKeepTheSize();
};

namespace {

constexpr int kWidth = 201;
constexpr int kHeight = 91;
constexpr QSize kIcon(24, 18);

const QColor kLeft(255, 0, 0);
const QColor kRight(0, 0, 255);

QIcon solidIcon(const QColor& colour)
{
    QPixmap pixmap(kIcon * 2);
    pixmap.fill(colour);
    return QIcon(pixmap);
}

/// Bounding rectangle of the pixels that satisfy the predicate.
template <typename Test>
QRect areaOf(const QImage& image, const Test& test)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (test(image.pixelColor(x, y))) {
                area |= QRect(x, y, 1, 1);
            }
        }
    }
    return area;
}

QRect colourArea(const QImage& image, const QColor& colour)
{
    return areaOf(image, [&colour](const QColor& pixel) { return pixel == colour; });
}

/// The text is pure green; its edges blend with the button's face.
QRect textArea(const QImage& image)
{
    return areaOf(image, [](const QColor& pixel) {
        return pixel.green() > pixel.red() + 60 && pixel.green() > pixel.blue() + 60;
    });
}

void prepare(ImageButton& button)
{
    QPalette palette = button.palette();
    palette.setColor(QPalette::ButtonText, QColor(0, 255, 0));
    button.setPalette(palette);
    button.setIconSize(kIcon);
    button.resize(kWidth, kHeight);
}

int floorHalf(int length)
{
    return static_cast<int>(std::floor(length / 2.0));
}

int textWidthOf(const ImageButton& button)
{
    return button.fontMetrics().boundingRect(QRect(), Qt::TextSingleLine, button.text()).width();
}

} // namespace

void TestImageButton::enumHasItsKeysAndNumbers()
{
    const QMetaEnum positions = QMetaEnum::fromType<ImageButton::IconPosition>();
    QCOMPARE(positions.keyCount(), 5);
    const QStringList keys = {QStringLiteral("Left"), QStringLiteral("Right"),
                              QStringLiteral("Top"), QStringLiteral("Bottom"),
                              QStringLiteral("LeftAndRight")};
    for (int i = 0; i < keys.size(); ++i) {
        QCOMPARE(QString::fromLatin1(positions.key(i)), keys.at(i));
        QCOMPARE(positions.value(i), i);
    }
}

void TestImageButton::constructorsSetTheirDefaults()
{
    QWidget parent;
    const ImageButton plain(&parent);
    QCOMPARE(plain.parentWidget(), &parent);
    QVERIFY(plain.leftIcon().isNull());
    QVERIFY(plain.rightIcon().isNull());
    QVERIFY(plain.text().isEmpty());
    QCOMPARE(plain.iconSize(), QSize(16, 16));
    QCOMPARE(plain.iconPosition(), ImageButton::Left);
    QCOMPARE(plain.spacing(), 0);

    const ImageButton titled(QStringLiteral("开始"), &parent);
    QCOMPARE(titled.text(), QStringLiteral("开始"));
    QCOMPARE(titled.iconPosition(), ImageButton::Left);

    const ImageButton both(solidIcon(kLeft), QStringLiteral("t"), solidIcon(kRight), &parent);
    QVERIFY(!both.leftIcon().isNull());
    QVERIFY(!both.rightIcon().isNull());
    QCOMPARE(both.iconPosition(), ImageButton::LeftAndRight);
}

void TestImageButton::textIsKeptApartFromTheBaseClass()
{
    ImageButton button(QStringLiteral("开始"));
    button.setText(QStringLiteral("停止"));
    QCOMPARE(button.text(), QStringLiteral("停止"));
    QVERIFY(button.QPushButton::text().isEmpty());
}

void TestImageButton::partsStandWhereThePositionSays_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("spacing");
    for (const int spacing : {0, 7}) {
        for (int position = ImageButton::Left; position <= ImageButton::LeftAndRight; ++position) {
            const QMetaEnum positions = QMetaEnum::fromType<ImageButton::IconPosition>();
            QTest::addRow("%s, spacing %d", positions.valueToKey(position), spacing)
                << position << spacing;
        }
    }
}

void TestImageButton::partsStandWhereThePositionSays()
{
    QFETCH(int, position);
    QFETCH(int, spacing);
    ImageButton button(solidIcon(kLeft), QStringLiteral("HxH"), solidIcon(kRight));
    prepare(button);
    button.setIconPosition(static_cast<ImageButton::IconPosition>(position));
    button.setSpacing(spacing);
    const int textWidth = textWidthOf(button);
    const int fontHeight = button.fontMetrics().height();
    const int iconWidth = kIcon.width();
    const int rowHeight = qMax(fontHeight, kIcon.height());
    const int rowTop = floorHalf(kHeight - rowHeight);
    const int iconInRow = rowTop + floorHalf(rowHeight - kIcon.height());

    QRect left;
    QRect right;
    QRect text;
    if (position == ImageButton::Left || position == ImageButton::Right) {
        const int x = floorHalf(kWidth - (iconWidth + textWidth + 1 + spacing));
        if (position == ImageButton::Left) {
            left = QRect(QPoint(x, iconInRow), kIcon);
            text = QRect(x + iconWidth + spacing, rowTop, textWidth + 1, rowHeight);
        } else {
            text = QRect(x, rowTop, textWidth + 1, rowHeight);
            right = QRect(QPoint(x + textWidth + 1 + spacing, iconInRow), kIcon);
        }
    } else if (position == ImageButton::LeftAndRight) {
        const int x = floorHalf(kWidth - (textWidth + 2 * (iconWidth + spacing)));
        left = QRect(QPoint(x, iconInRow), kIcon);
        text = QRect(x + iconWidth + spacing, rowTop, textWidth, rowHeight);
        right = QRect(QPoint(x + iconWidth + spacing + textWidth + spacing, iconInRow), kIcon);
    } else {
        const int width = qMax(iconWidth, textWidth);
        const int x = floorHalf(kWidth - width);
        const int y = floorHalf(kHeight - (kIcon.height() + fontHeight + spacing));
        const bool top = position == ImageButton::Top;
        left = QRect(QPoint(x + floorHalf(width - iconWidth), top ? y : y + fontHeight + spacing),
                     kIcon);
        text = QRect(x, top ? y + kIcon.height() + spacing : y, width, fontHeight);
    }

    const QImage image = button.grab().toImage();
    QCOMPARE(colourArea(image, kLeft), left);
    QCOMPARE(colourArea(image, kRight), right);
    const QRect ink = textArea(image);
    QVERIFY(!ink.isEmpty());
    QVERIFY(text.contains(ink));
    QVERIFY(qAbs(ink.center().x() - text.center().x()) <= 2);
    QVERIFY(qAbs(ink.center().y() - text.center().y()) <= 4);
}

void TestImageButton::blockWiderThanTheButtonIsCentredRoundingDown()
{
    ImageButton button;
    prepare(button);
    button.setLeftIcon(solidIcon(kLeft));
    button.setIconSize(24, 18);
    button.resize(20, 40);
    const auto columns = [&button] {
        const QRect area = colourArea(button.grab().toImage(), kLeft);
        return QPair<int, int>(area.left(), area.right());
    };
    // The block is 24 + 0 + 1 wide. Half of -5, rounded down, is -3: columns -3 to 20 of 20.
    QCOMPARE(columns(), qMakePair(0, 19));
    button.resize(22, 40);
    // Half of -3 is -2: columns -2 to 21 of 22.
    QCOMPARE(columns(), qMakePair(0, 21));
    button.resize(24, 40);
    // Half of -1 is -1: columns -1 to 22 of 24, so that the last one is free.
    QCOMPARE(columns(), qMakePair(0, 22));
}

void TestImageButton::nullIconLeavesTheTextAlone_data()
{
    QTest::addColumn<int>("position");
    for (int position = ImageButton::Left; position <= ImageButton::LeftAndRight; ++position) {
        const QMetaEnum positions = QMetaEnum::fromType<ImageButton::IconPosition>();
        QTest::newRow(positions.valueToKey(position)) << position;
    }
}

void TestImageButton::nullIconLeavesTheTextAlone()
{
    QFETCH(int, position);
    ImageButton button(QStringLiteral("HxH"));
    prepare(button);
    button.setIconPosition(static_cast<ImageButton::IconPosition>(position));
    const QImage without = button.grab().toImage();
    const QRect ink = textArea(without);
    QVERIFY(qAbs(ink.center().x() - kWidth / 2) <= 2);
    QVERIFY(qAbs(ink.center().y() - kHeight / 2) <= 4);
    // The spacing belongs to the icon: without one it moves nothing.
    button.setSpacing(40);
    QCOMPARE(button.grab().toImage(), without);
}

void TestImageButton::nullIconBesideAnotherTakesNoRoom()
{
    ImageButton button(QIcon(), QStringLiteral("HxH"), solidIcon(kRight));
    prepare(button);
    button.setSpacing(9);
    const int textWidth = textWidthOf(button);
    const int x = floorHalf(kWidth - (textWidth + kIcon.width() + 9));
    const QImage image = button.grab().toImage();
    QCOMPARE(colourArea(image, kRight).left(), x + textWidth + 9);
    QVERIFY(textArea(image).left() >= x);
    QVERIFY(colourArea(image, kLeft).isNull());
}

void TestImageButton::emptyTextPaintsOnlyTheIcon()
{
    ImageButton button;
    prepare(button);
    button.setLeftIcon(solidIcon(kLeft));
    const QImage image = button.grab().toImage();
    QVERIFY(textArea(image).isNull());
    const QPoint corner(
        floorHalf(kWidth - (kIcon.width() + 1)),
        floorHalf(kHeight - qMax(button.fontMetrics().height(), kIcon.height())) +
            floorHalf(qMax(button.fontMetrics().height(), kIcon.height()) - kIcon.height()));
    QCOMPARE(colourArea(image, kLeft), QRect(corner, kIcon));
}

void TestImageButton::disabledButtonShowsItsIconUnchanged()
{
    ImageButton button(solidIcon(kLeft), QString(), solidIcon(kRight));
    prepare(button);
    const QRect left = colourArea(button.grab().toImage(), kLeft);
    const QRect right = colourArea(button.grab().toImage(), kRight);
    button.setEnabled(false);
    QCOMPARE(colourArea(button.grab().toImage(), kLeft), left);
    QCOMPARE(colourArea(button.grab().toImage(), kRight), right);
}

void TestImageButton::checkedButtonShowsTheIconOfTheOffState()
{
    QPixmap on(kIcon);
    on.fill(kRight);
    QIcon icon = solidIcon(kLeft);
    icon.addPixmap(on, QIcon::Normal, QIcon::On);
    ImageButton button;
    prepare(button);
    button.setLeftIcon(icon);
    button.setCheckable(true);
    button.setChecked(true);
    const QImage image = button.grab().toImage();
    QCOMPARE(colourArea(image, kLeft).size(), kIcon);
    QVERIFY(colourArea(image, kRight).isNull());
}

void TestImageButton::settersRepaintAndKeepTheSize()
{
    ImageButton button;
    button.show();
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    const EventCounter counter(&button, QEvent::Paint);
    const QSize size = button.size();
    const QSize hint = button.sizeHint();
    const std::vector<std::function<void()>> setters = {
        [&] { button.setLeftIcon(solidIcon(kLeft)); },
        [&] { button.setRightIcon(solidIcon(kRight)); },
        [&] { button.setText(QStringLiteral("a much longer text than before")); },
        [&] { button.setIconSize(QSize(80, 80)); },
        [&] { button.setIconSize(90, 70); },
        [&] { button.setIconPosition(ImageButton::Top); },
        [&] { button.setSpacing(33); },
    };
    for (const auto& set : setters) {
        QCoreApplication::processEvents();
        const int before = counter.count();
        set();
        QCOMPARE(counter.count(), before);
        QTRY_VERIFY(counter.count() > before);
        QCOMPARE(button.size(), size);
        QCOMPARE(button.sizeHint(), hint);
    }
    QCOMPARE(button.iconSize(), QSize(90, 70));
}

SCN_TEST(TestImageButton, QApplication)
#include "test_imagebutton.moc"
