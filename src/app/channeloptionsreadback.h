#pragma once

#include "channels/commfunc.h"

#include <QString>
#include <QVariant>

namespace scn {

class InstrumentDisplay;
class LinkWatch;
enum class ChannelOption;
enum class PanelKind : uchar;
struct ChannelQuestion;

/// Reads back everything about one channel except its function. An unanswered query reads as 0 or as no
/// match.
///
/// Any thread: queries run on it, and the link shows their replies on the GUI thread.
class ChannelOptionsReadBack
{
public:
    /// `function` is the function index that decides the header and the options.
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
