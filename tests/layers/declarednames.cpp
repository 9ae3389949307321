#include "declarednames.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace {

/// The names and signs of a source, without comments, literals, preprocessor lines and what Qt's macros declare.
QStringList tokensOf(QString source)
{
    static const QRegularExpression noise(
        QStringLiteral(
            R"(//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])'|)"
            R"(^[ \t]*#(?:[^\n]*\\\n)*[^\n]*|^Q_[A-Z_]+\([^)\n]*\))"),
        QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression token(QStringLiteral(R"(\w+|::|[^\w\s])"));

    QStringList tokens;
    QRegularExpressionMatchIterator matches = token.globalMatch(source.remove(noise));
    while (matches.hasNext()) {
        tokens.append(matches.next().captured());
    }
    return tokens;
}

bool isName(const QString& token)
{
    return token.at(0).isLetter() || token.at(0) == QLatin1Char('_');
}

/// Reads the tokens one by one and keeps what the braces around them opened.
class Reader
{
public:
    QVector<DeclaredName> read(const QStringList& tokens)
    {
        for (const QString& token : tokens) {
            if (token == QLatin1String("{")) {
                open();
            } else if (token == QLatin1String("}")) {
                endEnumerator();
                m_blocks.removeLast();
                m_statement.clear();
            } else if (token == QLatin1String(";")) {
                endStatement();
            } else if (token == QLatin1String(",") && isInEnum()) {
                endEnumerator();
            } else {
                m_statement.append(token);
            }
        }
        return m_names;
    }

private:
    struct Block
    {
        enum Kind { Namespace, Enum, Other } kind;
        QString name;
    };

    bool isInEnum() const { return !m_blocks.isEmpty() && m_blocks.last().kind == Block::Enum; }

    /// True where a name could be used from another file without a class before it.
    bool isShared() const
    {
        return std::all_of(m_blocks.cbegin(), m_blocks.cend(), [](const Block& block) {
            return block.kind == Block::Namespace && !block.name.isEmpty();
        });
    }

    void add(const QString& name)
    {
        QStringList scope;
        for (const Block& block : m_blocks) {
            if (block.kind == Block::Namespace) {
                scope.append(block.name);
            }
        }
        m_names.append({name, scope.join(QLatin1String("::"))});
    }

    void open()
    {
        Block block{Block::Other, QString()};
        if (m_statement.value(0) == QLatin1String("namespace")) {
            block = {Block::Namespace, m_statement.mid(1).join(QString())};
        } else if (!m_statement.contains(QLatin1String("("))) {
            block.kind = openType();
        }
        m_blocks.append(block);
        m_statement.clear();
    }

    /// The statement begins a type if it has one of their words, and begins its values otherwise.
    Block::Kind openType()
    {
        static const QStringList words{QStringLiteral("class"), QStringLiteral("struct"),
                                       QStringLiteral("union"), QStringLiteral("enum")};
        const auto first = std::find_if(m_statement.cbegin(), m_statement.cend(),
                                        [](const QString& token) { return words.contains(token); });
        if (first == m_statement.cend() || m_statement.contains(QLatin1String("="))) {
            return Block::Other;
        }
        // A base or the type of an enum follows the colon.
        const auto end = std::find(first, m_statement.cend(), QLatin1String(":"));
        const auto name = std::find_if(first, end, [](const QString& token) {
            return isName(token) && !words.contains(token);
        });
        if (!isShared()) {
            return Block::Other;
        }
        // What follows "::" has been declared in a class.
        if (name != end && (name + 1 == end || *(name + 1) != QLatin1String("::"))) {
            add(*name);
        }
        const bool isPlainEnum =
            *first == QLatin1String("enum") && (first + 1 == end || !words.contains(*(first + 1)));
        return isPlainEnum ? Block::Enum : Block::Other;
    }

    void endEnumerator()
    {
        if (isInEnum() && !m_statement.isEmpty()) {
            add(m_statement.constFirst());
        }
        m_statement.clear();
    }

    void endStatement()
    {
        if (isShared() && m_statement.value(0) == QLatin1String("using") &&
            m_statement.value(2) == QLatin1String("=")) {
            add(m_statement.at(1));
        }
        m_statement.clear();
    }

    QVector<Block> m_blocks;
    QStringList m_statement;
    QVector<DeclaredName> m_names;
};

} // namespace

QVector<DeclaredName> declaredNames(const QString& source)
{
    return Reader().read(tokensOf(source));
}
