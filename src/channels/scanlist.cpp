#include "channels/scanlist.h"

#include <QStringList>

namespace scn {

namespace {

QString runText(int first, int last)
{
    if (first == last) {
        return QString::number(first);
    }
    const QString form = last - first == 1 ? QStringLiteral("%1,%2") : QStringLiteral("%1:%2");
    return form.arg(first).arg(last);
}

} // namespace

QString compressScanList(const QList<int>& sortedChannels)
{
    QStringList runs;
    for (auto channel = sortedChannels.cbegin(); channel != sortedChannels.cend();) {
        const int first = *channel;
        int last = first;
        for (++channel; channel != sortedChannels.cend() && *channel == last + 1; ++channel) {
            last = *channel;
        }
        runs.append(runText(first, last));
    }
    return runs.join(QLatin1Char(','));
}

ScanListReply decodeScanListReply(const QString& reply)
{
    ScanListReply decoded;
    if (reply == QLatin1String("#13(@)")) {
        decoded.isEmptyList = true;
        return decoded;
    }
    QString text = reply;
    for (const char mark : {'(', ')', '#'}) {
        text.remove(QLatin1Char(mark));
    }
    const QStringList entries =
        text.section(QLatin1Char('@'), 1, 1).split(QLatin1Char(','), Qt::KeepEmptyParts);
    for (const QString& entry : entries) {
        decoded.channels.append(entry.toInt());
    }
    return decoded;
}

} // namespace scn
