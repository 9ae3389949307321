#include "export/filename.h"
#include "support/testprogram.h"

#include <QTest>

/// External texts become file names.
class TestFileName : public QObject
{
    Q_OBJECT

private slots:
    void reservedCharactersBecomeUnderscores_data();
    void reservedCharactersBecomeUnderscores();
};

void TestFileName::reservedCharactersBecomeUnderscores_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("plain") << QStringLiteral("SN0001_Data Log 1.csv")
                           << QStringLiteral("SN0001_Data Log 1.csv");
    QTest::newRow("each reserved one")
        << QStringLiteral("a/b\\c:d*e?f\"g<h>i|j") << QStringLiteral("a_b_c_d_e_f_g_h_i_j");
    QTest::newRow("one for each") << QStringLiteral("//") << QStringLiteral("__");
    QTest::newRow("NUL")
        << QString(QStringLiteral("a%1b%1")).replace(QStringLiteral("%1"), QString(QChar::Null))
        << QStringLiteral("ab");
    QTest::newRow("other scripts") << QStringLiteral("数据：记录") << QStringLiteral("数据：记录");
}

void TestFileName::reservedCharactersBecomeUnderscores()
{
    QFETCH(QString, text);
    QFETCH(QString, name);
    QCOMPARE(sanitizeFileName(text), name);
}

SCN_TEST(TestFileName, testprogram::NoApplication)
#include "test_filename.moc"
