#include "storage/curvedatadb.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace {

struct HeaderLine
{
    const char* label;
    const char* key;
};

/// The lines above the titles. The instrument's version is passed in but not written.
constexpr HeaderLine kHeaderLines[] = {
    {QT_TRANSLATE_NOOP("CurveDataDB", "地址"), "address"},
    {QT_TRANSLATE_NOOP("CurveDataDB", "型号"), "instrumentModel"},
    {QT_TRANSLATE_NOOP("CurveDataDB", "序列号："), "instrumentNum"},
    {QT_TRANSLATE_NOOP("CurveDataDB", "开始时间"), "startTime"},
    {QT_TRANSLATE_NOOP("CurveDataDB", "结束时间"), "endTime"},
};

} // namespace

QString CurveDataDB::partFilePath(const QString& path, int index)
{
    const QFileInfo info(path);
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss"));
    const QString name =
        QStringLiteral("%1_%2_%3.%4")
            .arg(info.completeBaseName(), QString::number(index), now, info.suffix());
    return info.absoluteDir().absoluteFilePath(name);
}

bool CurveDataDB::openCsvPart(const QString& path, int index, const QString& separator,
                              const QMap<QString, QString>& header,
                              const QMap<int, QString>& curves, QFile& file, QTextStream& stream)
{
    if (file.isOpen()) {
        stream.flush();
        file.close();
    }
    const QString name = partFilePath(path, index);
    const QDir directory = QFileInfo(name).absoluteDir();
    if (!directory.exists() && !directory.mkpath(QStringLiteral("."))) {
        qWarning() << "无法创建目标目录:" << directory.absolutePath();
        return false;
    }
    file.setFileName(name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        qWarning() << "无法创建CSV文件:" << name << file.errorString();
        return false;
    }
    writeCsvHead(separator, header, curves, file, stream);
    return true;
}

void CurveDataDB::writeCsvHead(const QString& separator, const QMap<QString, QString>& header,
                               const QMap<int, QString>& curves, QIODevice& device,
                               QTextStream& stream)
{
    stream.setDevice(&device);
    stream.setGenerateByteOrderMark(true);
    stream.setCodec("UTF-8");

    for (const HeaderLine& line : kHeaderLines) {
        stream << tr(line.label) << separator << header.value(QLatin1String(line.key)) << '\n';
    }
    stream << tr("编号") << separator << tr("时间") << separator;
    for (const QString& curve :
         curves) { // this line ends with a separator, those of the data do not
        stream << curve << separator;
    }
    stream << '\n';
    stream.flush();
}
