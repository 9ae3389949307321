#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

/// The /dev and /sys of a machine, made up in a folder.
class MachineTree
{
public:
    QString root() const { return m_root.path(); }
    QString path(const QString& name) const { return m_root.filePath(name); }

    void write(const QString& name, const QByteArray& text = {}) const
    {
        QFile file(path(name));
        QDir().mkpath(QFileInfo(file).path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    void link(const QString& target, const QString& name) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QVERIFY(QFile::link(target, path(name)));
    }

    void addPort(const QString& name, const QByteArray& type = {}) const
    {
        write(QStringLiteral("dev/") + name);
        const QString folder = QStringLiteral("sys/class/tty/") + name;
        QDir(root()).mkpath(folder + QStringLiteral("/device"));
        if (!type.isEmpty()) {
            write(folder + QStringLiteral("/type"), type);
        }
    }

    struct UsbFacts
    {
        QByteArray vendor = "049f";
        QByteArray product = "606e";
        QByteArray serial = "MY42";
        QByteArray usbInterface = "00";
    };

    /// What the kernel shows of a USB instrument; `name` is that of its device file, which is not made.
    void addUsbInstrument(const QString& name, const UsbFacts& facts) const
    {
        const QString device = QStringLiteral("sys/devices/usb1/of-") + name;
        write(device + QStringLiteral("/idVendor"), facts.vendor + '\n');
        write(device + QStringLiteral("/idProduct"), facts.product + '\n');
        write(device + QStringLiteral("/product"), "SCN4070A\n");
        if (!facts.serial.isEmpty()) {
            write(device + QStringLiteral("/serial"), facts.serial + '\n');
        }
        const QString usbInterface = device + QStringLiteral("/1-1:1.0");
        write(usbInterface + QStringLiteral("/bInterfaceNumber"), facts.usbInterface + '\n');
        const QString entry = usbInterface + QStringLiteral("/usbmisc/") + name;
        QDir(root()).mkpath(entry);
        link(QStringLiteral("../.."), entry + QStringLiteral("/device"));
        link(path(entry), QStringLiteral("sys/class/usbmisc/") + name);
    }

private:
    const QTemporaryDir m_root;
};
