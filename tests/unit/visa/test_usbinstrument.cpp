#include "support/machinetree.h"
#include "support/testprogram.h"
#include "visa/usbinstrument_posix.h"

#include <QTest>

using namespace scn::visa;

/// The USB instruments that the kernel shows.
class TestUsbInstrument : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void machineWithoutTheDriverHasNone();
    void eachIsListedByItsNumber();
    void whatIsNoInstrumentIsLeftOut();
    void resourceNamesOne_data();
    void resourceNamesOne();
    void sameCaseGoesFirst();
    void resourceIsWrittenAsTheStandardDoes_data();
    void resourceIsWrittenAsTheStandardDoes();

private:
    std::unique_ptr<MachineTree> m_machine;
};

void TestUsbInstrument::init()
{
    m_machine = std::make_unique<MachineTree>();
}

void TestUsbInstrument::machineWithoutTheDriverHasNone()
{
    QVERIFY(usbInstruments(m_machine->root().toStdString()).empty());
}

void TestUsbInstrument::eachIsListedByItsNumber()
{
    m_machine->addUsbInstrument(QStringLiteral("usbtmc10"), {"ffff", "0001", "B", "00"});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc9"), {"049f", "606e", "A", "1f"});
    const auto found = usbInstruments(m_machine->root().toStdString());
    QCOMPARE(found.size(), std::size_t(2));
    QCOMPARE(int(found[0].vendor), 0x049F);
    QCOMPARE(int(found[0].product), 0x606E);
    QCOMPARE(found[0].serialNumber, std::string("A"));
    QCOMPARE(int(found[0].usbInterface), 0x1F);
    QCOMPARE(found[0].productName, std::string("SCN4070A"));
    QCOMPARE(found[0].deviceFile.string(),
             m_machine->path(QStringLiteral("dev/usbtmc9")).toStdString());
    QCOMPARE(int(found[1].vendor), 0xFFFF);
    QCOMPARE(found[1].serialNumber, std::string("B"));
}

void TestUsbInstrument::whatIsNoInstrumentIsLeftOut()
{
    m_machine->addUsbInstrument(QStringLiteral("hiddev0"), {});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc0"), {"049f", "606e", "", "00"});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc1"), {"no id", "606e", "A", "00"});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc2"), {"049f", "606x", "A", "00"});
    QDir(m_machine->root()).mkpath(QStringLiteral("sys/class/usbmisc/usbtmc3"));
    QVERIFY(usbInstruments(m_machine->root().toStdString()).empty());
}

void TestUsbInstrument::resourceNamesOne_data()
{
    QTest::addColumn<QByteArray>("resource");
    QTest::addColumn<QString>("file");
    const auto row = [](const char* resource, const char* file) {
        QTest::newRow(resource) << QByteArray(resource) << QString::fromLatin1(file);
    };
    row("USB0::0x049F::0x606E::MY42::INSTR", "usbtmc0");
    row("usb::1183::24686::my42::0", "usbtmc0");
    row("USB0::0x049F::0x606E::MY42::1::INSTR", "usbtmc1");
    row("USB0::0x049F::0x606E::MY43::INSTR", "usbtmc2");
    row("USB0::0x049F::0x606E::MY4::INSTR", "");
    row("USB0::0x049F::0x606F::MY42::INSTR", "");
    row("USB0::0x049E::0x606E::MY42::INSTR", "");
    row("USB0::0x049F::0x606E::MY42::2::INSTR", "");
}

void TestUsbInstrument::resourceNamesOne()
{
    QFETCH(QByteArray, resource);
    QFETCH(QString, file);
    m_machine->addUsbInstrument(QStringLiteral("usbtmc0"), {"049f", "606e", "MY42", "00"});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc1"), {"049f", "606e", "MY42", "01"});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc2"), {"049f", "606e", "MY43", "00"});
    const auto found = findUsbInstrument(*parseResourceName(resource.constData()),
                                         m_machine->root().toStdString());
    QCOMPARE(found ? QString::fromStdString(found->deviceFile.filename()) : QString(), file);
}

void TestUsbInstrument::sameCaseGoesFirst()
{
    m_machine->addUsbInstrument(QStringLiteral("usbtmc0"), {"0001", "0002", "ab", "00"});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc1"), {"0001", "0002", "Ab", "00"});
    m_machine->addUsbInstrument(QStringLiteral("usbtmc2"), {"0001", "0002", "AB", "00"});
    const auto fileOf = [this](const char* resource) {
        return findUsbInstrument(*parseResourceName(resource), m_machine->root().toStdString())
            ->deviceFile.filename()
            .string();
    };
    QCOMPARE(fileOf("USB0::1::2::AB::INSTR"), std::string("usbtmc2"));
    QCOMPARE(fileOf("USB0::1::2::Ab::INSTR"), std::string("usbtmc1"));
    QCOMPARE(fileOf("USB0::1::2::aB::INSTR"), std::string("usbtmc0"));
}

void TestUsbInstrument::resourceIsWrittenAsTheStandardDoes_data()
{
    QTest::addColumn<int>("usbInterface");
    QTest::addColumn<QString>("resource");
    QTest::newRow("first interface") << 0 << QStringLiteral("USB0::0x049F::0x006E::My 42::INSTR");
    QTest::newRow("another") << 12 << QStringLiteral("USB0::0x049F::0x006E::My 42::12::INSTR");
}

void TestUsbInstrument::resourceIsWrittenAsTheStandardDoes()
{
    QFETCH(int, usbInterface);
    const UsbInstrument instrument = {0x049F, 0x006E, "My 42", std::uint8_t(usbInterface), {}, {}};
    QTEST(QString::fromStdString(usbResource(instrument)), "resource");
}

SCN_TEST(TestUsbInstrument, testprogram::NoApplication)
#include "test_usbinstrument.moc"
