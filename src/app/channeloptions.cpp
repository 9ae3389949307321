#include "app/channeloptions.h"

#include "app/linkwatch.h"
#include "channels/advancedsetting.h"
#include "channels/commfunc.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"

#include <QCheckBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStringList>

#include <algorithm>
#include <iterator>

namespace {

/// Shows one reply in a row; null where the reply is not used.
using Show = void (*)(const ChannelRow& row, const QString& reply);

bool isOn(const QString& reply)
{
    return reply.toInt() != 0;
}

/// Selects the first row of equal text, else `fallback`; -1 leaves the selection alone.
void selectText(CustomComboBox* box, const QString& text, int fallback)
{
    const QSignalBlocker blocker(box);
    const int row = box->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row >= 0 || fallback >= 0) {
        box->setCurrentIndex(row >= 0 ? row : fallback);
    }
}

void refill(CustomComboBox* box, const QStringList& items)
{
    const QSignalBlocker blocker(box);
    box->clear();
    box->addFunctionItems(items);
}

void showNplc(const ChannelRow& row, const QString& reply)
{
    row.functionPanel->setNplc(reply.toDouble());
}

void showLowFrequency(const ChannelRow& row, const QString& reply)
{
    row.functionPanel->setLowFrequency(reply.toDouble());
}

void showTemperatureUnit(const ChannelRow& row, const QString& reply)
{
    selectText(row.resolution, reply, -1);
}

void showGaugeFactor(const ChannelRow& row, const QString& reply)
{
    row.functionPanel->setGaugeFactor(reply.toDouble());
}

void showDriveVoltage(const ChannelRow& row, const QString& reply)
{
    row.functionPanel->setDriveVoltage(reply.toDouble());
}

/// One question of the read-back. {H} is the function's header, {H0} and {H1} its part before and
/// behind the first colon, {ch} the channel number.
struct Question
{
    const char* query;
    Show show;
};

/// A question that the functions of one option panel kind have.
struct OptionQuestion
{
    int panelKind;
    Question question;
};

constexpr OptionQuestion kOptionQuestions[] = {
    {0, {"{H}:NPLC? (@{ch})", showNplc}},
    {0,
     {"INP:IMP:AUTO? (@{ch})",
      [](const ChannelRow& row, const QString& reply) {
          row.functionPanel->setInputImpedanceAuto(isOn(reply));
      }}},
    {0, {"VOLT:REF? (@{ch})", nullptr}},
    {1, {"{H}:BAND? (@{ch})", showLowFrequency}},
    {2, {"{H0}:RANG:LOW? (@{ch})", showLowFrequency}},
    {3, {"{H}:NPLC? (@{ch})", showNplc}},
    {3,
     {"{H}:OCOM? (@{ch})",
      [](const ChannelRow& row, const QString& reply) {
          row.functionPanel->setOffsetCompensation(isOn(reply));
      }}},
    {4, {"{H0}:NPLC? (@{ch})", showNplc}},
    {4, {"UNIT:TEMP? (@{ch})", showTemperatureUnit}},
    {4,
     {"{H0}:TRAN:{H1}:RJUN:TYPE? (@{ch})",
      [](const ChannelRow& row, const QString& reply) {
          row.functionPanel->setRefJunctionFixed(reply != QLatin1String("INT"));
      }}},
    {4,
     {"{H0}:TRAN:{H1}:RJUN? (@{ch})",
      [](const ChannelRow& row, const QString& reply) {
          row.functionPanel->setFixedJunctionTemp(reply.toDouble());
      }}},
    {5, {"{H0}:NPLC? (@{ch})", showNplc}},
    {5, {"UNIT:TEMP? (@{ch})", showTemperatureUnit}},
    {5, {"{H0}:TRAN:{H1}:REF? (@{ch})", nullptr}},
    {5,
     {"{H0}:TRAN:{H1}:RES? (@{ch})",
      [](const ChannelRow& row, const QString& reply) {
          row.functionPanel->setRtdR0(reply.toDouble());
      }}},
    {5, {"TEMP:TRAN:RTD:TYPE? (@{ch})", nullptr}},
    {6, {"{H0}:NPLC? (@{ch})", showNplc}},
    {6, {"UNIT:TEMP? (@{ch})", showTemperatureUnit}},
    {7, {"{H0}:NPLC? (@{ch})", showNplc}},
    {7, {"{H0}:GFAC? (@{ch})", showGaugeFactor}},
    {7,
     {"{H0}:RES? (@{ch})",
      [](const ChannelRow& row, const QString& reply) {
          row.functionPanel->setStrainResistance(reply.toDouble());
      }}},
    {10, {"{H0}:NPLC? (@{ch})", showNplc}},
    {10, {"{H0}:GFAC? (@{ch})", showGaugeFactor}},
    {10, {"{H0}:EXC? (@{ch})", showDriveVoltage}},
    {11, {"{H0}:NPLC? (@{ch})", showNplc}},
    {11, {"{H0}:GFAC? (@{ch})", showGaugeFactor}},
    {11, {"{H0}:EXC? (@{ch})", showDriveVoltage}},
    {11,
     {"{H0}:POIS? (@{ch})",
      [](const ChannelRow& row, const QString& reply) {
          row.functionPanel->setPoissonRatio(reply.toDouble());
      }}},
    {12, {"{H}:NPLC? (@{ch})", showNplc}},
};

/// The option panel kinds of the functions that have ranges.
constexpr int kRangedKinds[] = {0, 1, 2, 3, 8, 10, 11, 12};

QString unitOnScreen(QString reply)
{
    reply.remove(QLatin1Char('"'));
    if (reply == QLatin1String("#C")) {
        return QStringLiteral("°C");
    }
    if (reply == QLatin1String("#F")) {
        return QStringLiteral("°F");
    }
    return reply;
}

void showNumber(CustomLineEdit* edit, const QString& reply)
{
    const QSignalBlocker blocker(edit);
    edit->setText(QString::number(reply.toDouble(), 'g', 6));
}

/// The scale functions by their row.
constexpr const char* kScaleFunctions[] = {"SCAL", "PCT", "DBM", "DB"};

void showScaleFunction(const ChannelRow& row, const QString& reply)
{
    int index = 0;
    for (int known = 0; known < static_cast<int>(std::size(kScaleFunctions)); ++known) {
        if (reply == QLatin1String(kScaleFunctions[known])) {
            index = known;
        }
    }
    // A scale function that the row does not offer leaves the first one selected.
    const QSignalBlocker blocker(row.scaleFunction);
    row.scaleFunction->setCurrentIndex(index < row.scaleFunction->count() ? index : 0);
    enableScaleControls(row);
}

constexpr Question kScalingQuestions[] = {
    {"CALC:SCAL:GAIN? (@{ch})",
     [](const ChannelRow& row, const QString& reply) { showNumber(row.gain, reply); }},
    {"CALC:SCAL:OFFS? (@{ch})",
     [](const ChannelRow& row, const QString& reply) { showNumber(row.offset, reply); }},
    {"CALC:SCAL:STAT? (@{ch})",
     [](const ChannelRow& row, const QString& reply) {
         const QSignalBlocker blocker(row.scale);
         row.scale->setChecked(reply.toInt() == 1);
     }},
    {"CALC:SCAL:UNIT? (@{ch})",
     [](const ChannelRow& row, const QString& reply) {
         if (row.unit) {
             selectText(row.unit, unitOnScreen(reply), 0);
         }
     }},
    {"CALC:SCAL:FUNC? (@{ch})", showScaleFunction},
    {"CALC:SCAL:REF:AUTO? (@{ch})", nullptr},
    {"CALC:SCAL:REF? (@{ch})",
     [](const ChannelRow& row, const QString& reply) {
         row.scalePanel->setPercentReference(reply.toDouble());
     }},
    {"CALC:SCAL:DBM:REF? (@{ch})",
     [](const ChannelRow& row, const QString& reply) {
         row.scalePanel->setDbmReferenceResistance(reply.toDouble());
     }},
    {"CALC:SCAL:DB:REF? (@{ch})",
     [](const ChannelRow& row, const QString& reply) {
         row.scalePanel->setDbReference(reply.toDouble());
     }},
};

/// The read-back of one channel under way.
class OptionsReadBack
{
public:
    OptionsReadBack(LinkWatch& link, const std::function<ChannelRow(int)>& rowOf, int function,
                    int channel)
        : m_link(link)
        , m_rowOf(rowOf)
        , m_function(function)
        , m_channel(channel)
        , m_header(m_catalogue.scpiHeader(function))
        , m_kind(m_catalogue.optionPanelKind(function))
    {
    }

    void run()
    {
        readRange();
        readDelay();
        show([this](const ChannelRow& row) {
            refill(row.resolution, m_catalogue.temperatureUnitList(m_function));
        });
        for (const OptionQuestion& option : kOptionQuestions) {
            if (option.panelKind == m_kind) {
                askAndShow(option.question);
            }
        }
        readScaling();
    }

private:
    QString ask(const char* query) const
    {
        QString text = QLatin1String(query);
        text.replace(QLatin1String("{H}"), m_header);
        text.replace(QLatin1String("{H0}"), m_header.section(QLatin1Char(':'), 0, 0));
        text.replace(QLatin1String("{H1}"), m_header.section(QLatin1Char(':'), 1));
        text.replace(QLatin1String("{ch}"), QString::number(m_channel));
        return m_link.ask(text);
    }

    void show(const std::function<void(const ChannelRow&)>& step) const
    {
        m_link.show([this, &step] {
            const ChannelRow row = m_rowOf(m_channel);
            if (row.exists()) {
                step(row);
            }
        });
    }

    void askAndShow(const Question& question) const
    {
        const QString reply = ask(question.query);
        if (question.show) {
            show([&](const ChannelRow& row) { question.show(row, reply); });
        }
    }

    void readRange() const
    {
        show([this](const ChannelRow& row) {
            refill(row.range, m_catalogue.rangeList(m_function));
        });
        const auto* end = std::end(kRangedKinds);
        if (std::find(std::begin(kRangedKinds), end, m_kind) == end) {
            return;
        }
        int rangeRow = 0;
        if (!isOn(ask("{H}:RANG:AUTO? (@{ch})"))) {
            const double range = ask("{H}:RANG? (@{ch})").toDouble();
            rangeRow = std::max(0, m_catalogue.rangeRowForValue(m_function, range));
        }
        show([rangeRow](const ChannelRow& row) {
            // A decade behind the end of the list leaves the automatic range selected.
            const QSignalBlocker blocker(row.range);
            row.range->setCurrentIndex(rangeRow < row.range->count() ? rangeRow : 0);
        });
    }

    void readDelay() const
    {
        if (isOn(ask("ROUT:CHAN:DEL:AUTO? (@{ch})"))) {
            show([](const ChannelRow& row) { row.functionPanel->setDelayMode(0); });
            return;
        }
        // The mode's box stays as it was.
        const double delay = ask("ROUT:CHAN:DEL? (@{ch})").toDouble();
        show([delay](const ChannelRow& row) { row.functionPanel->setDelayValue(delay); });
    }

    void readScaling() const
    {
        for (const Question& question : kScalingQuestions) {
            if (question.show == showScaleFunction) {
                show([this](const ChannelRow& row) {
                    refill(row.scaleFunction, m_catalogue.scaleFunctionList(m_function));
                });
            }
            askAndShow(question);
        }
    }

    LinkWatch& m_link;
    const std::function<ChannelRow(int)>& m_rowOf;
    const CommFunc m_catalogue;
    int m_function;
    int m_channel;
    QString m_header;
    int m_kind;
};

} // namespace

void enableScaleControls(const ChannelRow& row)
{
    if (!row.function->isEnabledTo(row.function->parentWidget())) {
        return;
    }
    const bool isLinear = row.scaleFunction->currentIndex() == 0;
    for (CustomLineEdit* edit : {row.gain, row.offset}) {
        if (edit) {
            edit->setEnabled(isLinear);
        }
    }
    row.scaleMore->setEnabled(!isLinear);
}

void readBackChannelOptions(LinkWatch& link, const std::function<ChannelRow(int channel)>& rowOf,
                            int function, int channel)
{
    OptionsReadBack(link, rowOf, function, channel).run();
}
