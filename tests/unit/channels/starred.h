#pragma once

#include <QCoreApplication>
#include <QString>
#include <QTranslator>

/// Installs a language that puts a star in front of each text of one class.
class Starred : public QTranslator
{
public:
    explicit Starred(const char* context)
        : m_context(context)
    {
        QCoreApplication::installTranslator(this);
    }

    ~Starred() override { QCoreApplication::removeTranslator(this); }

    Q_DISABLE_COPY_MOVE(Starred)

    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return qstrcmp(context, m_context) == 0 ? QStringLiteral("*") + QString::fromUtf8(text)
                                                : QString();
    }

private:
    const char* m_context;
};
