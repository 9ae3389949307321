#pragma once

#include "channels/commfunc.h"

#include <QString>
#include <QVariant>

class LinkWatch;

namespace scn {

class InstrumentDisplay;
enum class ChannelOption;
enum class PanelKind : uchar;
struct ChannelQuestion;

/// Asks the instrument for everything but the function of one channel and shows it. An unanswered
/// question reads as 0 or as no match.
///
/// Runs on any thread: it asks there, in the order of the read-back, and shows through the link.
class ChannelOptionsReadBack
{
public:
    /// `function` is the function index whose header and options apply.
    ChannelOptionsReadBack(LinkWatch& link, InstrumentDisplay& display, int function, int channel);

    void run();

private:
    QString ask(const char* query);
    void show(ChannelOption option, const QVariant& value);
    void askAndShow(const ChannelQuestion& question);
    void readRange();
    void readDelay();
    void readScaling();

    LinkWatch& m_link;
    InstrumentDisplay& m_display;
    const CommFunc m_catalogue;
    const int m_function;
    const int m_channel;
    const QString m_header;
    const PanelKind m_kind;
};

} // namespace scn
