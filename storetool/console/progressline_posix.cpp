#include "storetool/console/progressline.h"

#include <QLocale>

#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace scnstore {
namespace {

constexpr std::chrono::milliseconds kShowInterval{200};
/// Goes to the begin of the line and clears it.
constexpr char kClearLine[] = "\r\x1b[K";

} // namespace

ProgressLine::ProgressLine(const QString& unit, int target)
    : m_unit(unit)
    , m_isTerminal(::isatty(STDERR_FILENO) == 1 && ::isatty(target) == 0)
{
    m_sinceShown.start();
}

ProgressLine::~ProgressLine()
{
    if (m_isShown) {
        std::fputs(kClearLine, stderr);
    }
}

void ProgressLine::show(qint64 count)
{
    if (!m_isTerminal || !m_sinceShown.hasExpired(kShowInterval.count())) {
        return;
    }
    m_isShown = true;
    m_sinceShown.start();
    const QString number = QLocale(QLocale::English).toString(count);
    std::fprintf(stderr, "%s%s %s", kClearLine, qUtf8Printable(number), qUtf8Printable(m_unit));
}

} // namespace scnstore
