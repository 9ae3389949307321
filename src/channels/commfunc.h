#pragma once

#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

/// How the instrument is told to measure one function.
struct FuncCommand
{
    /// Argument of FUNC "%1",(@%2).
    QString function;

    /// Command with two markers (type, channel) that selects the sensor type after FUNC; empty for a
    /// function without sensor types.
    QString typeCommand;

    /// The sensor type; empty where typeCommand is.
    QString typeArgument;
};

/// The commands of each function index, 34 entries.
extern const QMap<int, FuncCommand> funcCommands;

/// The measurement catalogue: functions, their names on the link and on the screen, ranges, units,
/// option panels, modules; and the style sheets of the dark theme. Everything is keyed by the function
/// index, 0 to 33; other indices give the stated defaults.
///
/// All but functionIndex() depend on their arguments and on the slot registers alone. GUI thread, or
/// any thread with an object of its own.
class CommFunc : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CommFunc)

public:
    explicit CommFunc(QObject* parent = nullptr);

    /// Title of a module's row: its type and its channel count.
    QString moduleName(int moduleType) const;

    /// Index of a module's last channel, counted from 0; -1 for type -1, 0 for an unknown type.
    int lastChannelIndex(int moduleType) const;

    /// Module type from a model name such as "SCN4001A": its first number modulo 1000. -1 when there
    /// is no number or it does not fit an int.
    int moduleTypeFromModel(const QString& model) const;

    /// Number of positions in the first half of a slot's module: position p pairs with p + bankSize.
    /// 0 for a slot without a module.
    int bankSize(uchar slot) const;

    /// Prefix of every option command of a function; "VOLT:DC" for an unknown index.
    QString scpiHeader(int functionIndex) const;

    /// Unit of unscaled readings; "Vdc" for an unknown index.
    QString baseUnit(int functionIndex) const;

    /// Number of the function's scn::PanelKind; 0 for an unknown index.
    uchar optionPanelKind(int functionIndex) const;

    /// The function takes a partner channel over for sensing.
    bool isFourWire(int functionIndex) const;

    /// Row of unitList() that a function starts with; 0 for an unknown index.
    int defaultUnitIndex(int functionIndex) const;

    /// Value, in base units, of a row of rangeList(). Row 0 is the automatic range, for which callers
    /// send another command. 0 for a function without ranges or a row that no list can have.
    double rangeValue(int functionIndex, int rangeRow) const;

    /// Row of the decade table for a range in base units, -1 when none matches or the function has no
    /// ranges. The row is the decade's number, which may lie behind the end of rangeList().
    int rangeRowForValue(int functionIndex, double value) const;

    /// Display names of the functions that a channel offers, by the module in its slot.
    QStringList functionList(int channel) const;

    /// Ranges of a function, the automatic one first; empty for a function without ranges.
    QStringList rangeList(int functionIndex) const;

    /// Temperature units of a function; empty unless it measures a temperature.
    QStringList temperatureUnitList(int functionIndex) const;

    /// Scale functions of a function, as the instrument spells them.
    QStringList scaleFunctionList(int functionIndex) const;

    /// Display units, the same for every function; row 0 is "none".
    QStringList unitList() const;

    /// Function index of a display name or of a name that FUNC? returns. A bare family name gives one
    /// member of its family. An unknown name is entered with index 0 and reads as DC voltage.
    int functionIndex(const QString& name);

    /// Style of the configuration page's tab widget, `myTabWidget`.
    QString tabStyle() const;

    /// Style of the outer page tabs, `myTabWidget1`.
    QString workspaceTabStyle() const;

    /// Style of the channel tree and of the controls in its rows.
    QString treeStyle() const;

    /// Style of flat dark buttons.
    QString buttonStyle() const;

private:
    QMap<QString, int> m_functionIndices;
};
