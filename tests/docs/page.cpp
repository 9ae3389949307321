#include "page.h"

#include <QFile>
#include <QRegularExpression>

namespace {

const QString kIndent = QStringLiteral("    ");

QStringList capturesIn(const QRegularExpression& form, const QString& text)
{
    QStringList captures;
    QRegularExpressionMatchIterator matches = form.globalMatch(text);
    while (matches.hasNext()) {
        captures.append(matches.next().captured(1));
    }
    return captures;
}

const QRegularExpression& codeForm()
{
    static const QRegularExpression form(QStringLiteral("`([^`]+)`"));
    return form;
}

QStringList targetsIn(QString line, const char* opening)
{
    const QRegularExpression form(QLatin1String(opening) +
                                  QStringLiteral("\\[[^\\]]*\\]\\(([^)]+)\\)"));
    return capturesIn(form, line.remove(codeForm()));
}

bool isTableRule(const QString& line)
{
    static const QRegularExpression form(QStringLiteral("^\\|[-|: ]+\\|$"));
    return form.match(line).hasMatch();
}

/// The spelling of a heading in a link to it.
QString anchorOf(const QString& title)
{
    static const QRegularExpression others(QStringLiteral("[^\\w -]"),
                                           QRegularExpression::UseUnicodePropertiesOption);
    return title.toLower().remove(others).replace(QLatin1Char(' '), QLatin1Char('-'));
}

} // namespace

QString textOf(const QString& path)
{
    QFile file(QStringLiteral(SCN_SOURCE_DIR "/") + path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList codeSpansIn(const QString& line)
{
    return capturesIn(codeForm(), line);
}

QStringList linksIn(const QString& line)
{
    return targetsIn(line, "(?<!!)");
}

Page::Page(const QString& text)
{
    m_sections.append(PageSection());
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        takeLine(line);
    }
}

void Page::takeLine(const QString& line)
{
    if (line.startsWith(QLatin1String("```"))) {
        m_isFenced = !m_isFenced;
    } else if (m_isFenced) {
        m_sections.last().codeLines.append(line);
    } else if (m_mayIndent && line.startsWith(kIndent)) {
        m_sections.last().codeLines.append(line.mid(kIndent.size()));
        return;
    } else {
        takeText(line);
    }
    m_mayIndent = line.trimmed().isEmpty();
}

void Page::takeText(const QString& line)
{
    static const QRegularExpression heading(QStringLiteral("^(#+) (.*)$"));
    const QRegularExpressionMatch match = heading.match(line);
    if (match.hasMatch()) {
        PageSection section;
        section.level = match.capturedLength(1);
        section.title = match.captured(2);
        m_sections.append(section);
    }
    PageSection& section = m_sections.last();
    section.codeSpans += codeSpansIn(line);
    section.links += linksIn(line);
    section.pictures += targetsIn(line, "!");
    if (line.startsWith(QLatin1Char('|')) && !isTableRule(line)) {
        section.firstCells.append(line.section(QLatin1Char('|'), 1, 1).trimmed());
    }
}

QStringList Page::anchors() const
{
    QStringList anchors;
    for (const PageSection& section : m_sections) {
        anchors.append(anchorOf(section.title));
    }
    return anchors;
}
