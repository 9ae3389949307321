#include "export/filename.h"

QString sanitizeFileName(QString text)
{
    text.remove(QChar::Null);
    for (const char reserved : {'/', '\\', ':', '*', '?', '"', '<', '>', '|'}) {
        text.replace(QLatin1Char(reserved), QLatin1Char('_'));
    }
    return text;
}
