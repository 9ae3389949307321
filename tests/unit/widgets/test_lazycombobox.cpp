#include "resources/resources.h"
#include "support/testprogram.h"
#include "widgets/lazycombobox.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QTest>

using scn::LazyComboBox;

namespace {

const QStringList kTexts{QStringLiteral("无"), QStringLiteral("101(VDC)"),
                         QStringLiteral("102(mA)")};

/// A box in a window whose font and sheet reach it as those of a page do.
template <typename Box>
struct Page
{
    Page()
    {
        page.setStyleSheet(QStringLiteral("background-color:black; font-size: 15px;"));
        page.resize(300, 100);
        box.addItems(kTexts);
        box.setGeometry(10, 10, 90, 24);
        page.show();
    }

    /// The open popup's pixels.
    QImage popup()
    {
        if (!QTest::qWaitForWindowActive(&page)) {
            return {};
        }
        QTest::mouseClick(&box, Qt::LeftButton);
        QWidget* const opened = QApplication::activePopupWidget();
        if (!opened) {
            return {};
        }
        const QImage image = opened->grab().toImage();
        opened->close();
        return image;
    }

    void turnWheel(int notches)
    {
        const QPoint middle = box.rect().center();
        for (; notches > 0; --notches) {
            QWheelEvent notch(middle, box.mapToGlobal(middle), QPoint(), QPoint(0, -120),
                              Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&box, &notch);
        }
    }

    QWidget page;
    Box box{&page};
};

} // namespace

class TestLazyComboBox : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void popupIsCreatedByItsFirstUse_data();
    void popupIsCreatedByItsFirstUse();
    void looksLikeAPlainBox();
    void popupLooksLikeThatOfAPlainBox_data();
    void popupLooksLikeThatOfAPlainBox();
    void popupFollowsALaterFont();
};

void TestLazyComboBox::initTestCase()
{
    initResources();
    QFile sheet(QStringLiteral(":/qss/styles.qss"));
    QVERIFY(sheet.open(QIODevice::ReadOnly));
    qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
    // It comes at once, so that pictures of it agree.
    QApplication::setEffectEnabled(Qt::UI_AnimateCombo, false);
}

void TestLazyComboBox::popupIsCreatedByItsFirstUse_data()
{
    QTest::addColumn<bool>("byMouse");
    QTest::newRow("mouse") << true;
    QTest::newRow("key") << false;
}

void TestLazyComboBox::popupIsCreatedByItsFirstUse()
{
    QFETCH(bool, byMouse);
    Page<LazyComboBox> lazy;
    QVERIFY(QTest::qWaitForWindowActive(&lazy.page));
    QVERIFY(lazy.box.findChildren<QWidget*>().isEmpty());
    if (byMouse) {
        QTest::mouseClick(&lazy.box, Qt::LeftButton);
    } else {
        lazy.box.setFocus();
        QTest::keyClick(&lazy.box, Qt::Key_F4);
    }
    QTRY_VERIFY(lazy.box.view()->isVisible());
    QTest::keyClick(lazy.box.view(), Qt::Key_Down);
    QTest::keyClick(lazy.box.view(), Qt::Key_Return);
    QCOMPARE(lazy.box.currentIndex(), 1);
}

void TestLazyComboBox::looksLikeAPlainBox()
{
    Page<LazyComboBox> lazy;
    QVERIFY(QTest::qWaitForWindowActive(&lazy.page));
    const QImage shown = lazy.box.grab().toImage();
    lazy.page.hide();
    Page<QComboBox> plain;
    QVERIFY(QTest::qWaitForWindowActive(&plain.page));
    QCOMPARE(lazy.box.sizeHint(), plain.box.sizeHint());
    QCOMPARE(shown, plain.box.grab().toImage());
}

void TestLazyComboBox::popupLooksLikeThatOfAPlainBox_data()
{
    QTest::addColumn<int>("notches");
    QTest::newRow("first use") << 0;
    QTest::newRow("after the wheel") << 1;
}

void TestLazyComboBox::popupLooksLikeThatOfAPlainBox()
{
    QFETCH(int, notches);
    Page<LazyComboBox> lazy;
    lazy.turnWheel(notches);
    QCOMPARE(lazy.box.currentIndex(), notches);
    const QImage shown = lazy.popup();
    QVERIFY(!shown.isNull());
    lazy.page.hide();
    Page<QComboBox> plain;
    plain.turnWheel(notches);
    QCOMPARE(shown, plain.popup());
}

void TestLazyComboBox::popupFollowsALaterFont()
{
    Page<LazyComboBox> lazy;
    lazy.page.setStyleSheet(QStringLiteral("font-size: 31px;"));
    QCOMPARE(lazy.box.view()->font().pixelSize(), 31);
    lazy.page.setStyleSheet(QStringLiteral("font-size: 17px;"));
    QCOMPARE(lazy.box.view()->font().pixelSize(), 17);
}

SCN_TEST(TestLazyComboBox, QApplication)
#include "test_lazycombobox.moc"
