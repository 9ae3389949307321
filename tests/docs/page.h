#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// A heading with what follows it up to the next one. What stands ahead of the first heading has level 0.
struct PageSection
{
    int level = 0;
    QString title;
    /// The lines of code blocks, as they are but for the indentation of the block.
    QStringList codeLines;
    /// What stands between backticks.
    QStringList codeSpans;
    /// The first cell of each row of a table, headers included.
    QStringList firstCells;
    QStringList links;
    QStringList pictures;
};

/// A page of the documentation, in the subset of Markdown that the pages use.
class Page
{
public:
    explicit Page(const QString& text);

    const QVector<PageSection>& sections() const { return m_sections; }

    /// What a link says behind "#" to lead to each heading.
    QStringList anchors() const;

private:
    void takeLine(const QString& line);
    void takeText(const QString& line);

    QVector<PageSection> m_sections;
    bool m_isFenced = false;
    bool m_mayIndent = true; ///< an indented line is code: the line before was blank or code
};

/// The text of a file, by its path from the top folder; empty if it cannot be read.
QString textOf(const QString& path);

/// The code and the links in a line.
QStringList codeSpansIn(const QString& line);
QStringList linksIn(const QString& line);
