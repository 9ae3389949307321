#include "instrument/cdevicevisa.h"
#include "instrument/visabinding.h"
#include "support/testprogram.h"
#include "visa/visaprovider.h"

#include <QProcess>
#include <QTest>

namespace {

/// Output of the probe when the dynamic linker searches that folder first.
QStringList probeWithLibrariesIn(const QString& folder)
{
    QProcess probe;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), folder);
    probe.setProcessEnvironment(environment);
    probe.setProcessChannelMode(QProcess::MergedChannels);
    probe.start(QStringLiteral(SCN_PROBE), QStringList());
    if (!probe.waitForFinished(20000) || probe.exitStatus() != QProcess::NormalExit) {
        return {QStringLiteral("the probe failed")};
    }
    return QString::fromUtf8(probe.readAllStandardOutput())
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

const QStringList& providerAnswers()
{
    static const QStringList answers = {
        QStringLiteral("probe: main, last error \"\""),
        QStringLiteral("probe: 连接失败: VI_ERROR_INV_RSRC_NAME: the resource string is malformed"),
    };
    return answers;
}

scn::visa::ViStatus SCN_VISA_CALL refuse(scn::visa::ViSession*)
{
    return scn::visa::VI_ERROR_SYSTEM_ERROR;
}

} // namespace

class TestVisaBinding : public QObject
{
    Q_OBJECT

private slots:
    void platformLibraryIsUsedWhereThereIsOne();
    void libraryThatLacksAnOperationIsLeftAlone();
    void providerServesWhereThereIsNone();
    void anotherTableCanBePutThere();
};

void TestVisaBinding::platformLibraryIsUsedWhereThereIsOne()
{
    const QStringList expected = {
        QStringLiteral("library: viOpenDefaultRM"),
        QStringLiteral("probe: main, last error \"\""),
        QStringLiteral("library: viOpen 77 PLATFORM0::ONLY::INSTR"),
        QStringLiteral("library: viSetAttribute 78 2000"),
        QStringLiteral("library: viSetAttribute 78 10"),
        QStringLiteral("library: viSetAttribute 78 1"),
        QStringLiteral("library: viSetAttribute 78 4321"),
        QStringLiteral("library: viWrite 78 6"),
        QStringLiteral("probe: platform library"),
        QStringLiteral("library: viClose 78"),
    };
    QCOMPARE(probeWithLibrariesIn(QStringLiteral(SCN_WHOLE_LIBRARY_DIR)), expected);
}

void TestVisaBinding::libraryThatLacksAnOperationIsLeftAlone()
{
    QCOMPARE(probeWithLibrariesIn(QStringLiteral(SCN_PARTIAL_LIBRARY_DIR)), providerAnswers());
}

void TestVisaBinding::providerServesWhereThereIsNone()
{
    QCOMPARE(probeWithLibrariesIn(QStringLiteral(SCN_NO_LIBRARY_DIR)), providerAnswers());
}

void TestVisaBinding::anotherTableCanBePutThere()
{
    const scn::visa::VisaTable& found = scn::visabinding::table();
    QCOMPARE(&scn::visabinding::table(), &found);
    scn::visa::VisaTable other = scn::visa::providerVisaTable();
    other.viOpenDefaultRM = refuse;
    scn::visabinding::setTable(&other);
    QCOMPARE(&scn::visabinding::table(), &std::as_const(other));
    CDeviceVisa device(nullptr);
    QCOMPARE(device.lastError(),
             QStringLiteral("VISA 初始化失败: "
                            "VI_ERROR_SYSTEM_ERROR: the operating system reported a failure"));
    scn::visabinding::setTable(nullptr);
    QCOMPARE(&scn::visabinding::table(), &found);
}

SCN_TEST(TestVisaBinding, QCoreApplication)
#include "test_visabinding.moc"
