#pragma once

#include <QString>

namespace scnlauncher {

/// Why there is no instrument, or not the right one.
enum class OpenFailure {
    None,
    NoSuchResource,
    Refused,
    NoRights,
    NoAnswer,
    Busy,
    Malformed,
    Other
};

/// What is known of a child from its log.
class ChildStatus
{
public:
    enum class Link { Connecting, Connected, Failed, Lost };

    /// True if the line changed something.
    bool take(const QString& line);
    /// A line was too long to be read; it counts as critical.
    void noteCutLine();

    Link link() const { return m_link; }
    QString identity() const { return m_identity; }
    bool isScanning() const { return m_isScanning; }
    OpenFailure failure() const { return m_failure; }
    /// What the log says of the failure.
    QString failureText() const { return m_failureText; }
    /// The last critical line; empty if there was none.
    QString lastCritical() const { return m_lastCritical; }
    /// When it was written, as the log says; empty if it does not.
    QString lastCriticalTime() const { return m_lastCriticalTime; }

    /// Something answers, but it is no SCN4070A.
    bool isOtherKind() const;

private:
    bool takeLink(const QString& text);
    void fail(OpenFailure failure, const QString& text);

    Link m_link = Link::Connecting;
    bool m_isScanning = false;
    OpenFailure m_failure = OpenFailure::None;
    QString m_identity;
    QString m_failureText;
    QString m_lastCritical;
    QString m_lastCriticalTime;
};

/// A failure in the user's words, with what to do. The resource tells which device's rights are missing.
QString failureSentence(OpenFailure failure, const QString& resource);

} // namespace scnlauncher
