#pragma once

#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

/// The commands that select a measurement function.
struct FuncCommand
{
    /// Argument of FUNC "%1",(@%2).
    QString function;

    /// Selects the sensor type after FUNC; two markers: type, channel. Empty for a function without
    /// sensor types.
    QString typeCommand;

    /// The sensor type; empty if typeCommand is.
    QString typeArgument;
};

/// The commands of each function index.
extern const QMap<int, FuncCommand> funcCommands;

/// The measurement catalogue: functions with their names on the wire and on screen, ranges, units and
/// option panels; modules; and the style sheets of the dark theme. The facts themselves are in
/// scn::MeasurementFunction and scn::ModuleRow. Functions are identified by their index; other
/// indices give the defaults stated.
///
/// Everything but functionIndex() depends on its arguments and on the slot registers alone. GUI thread,
/// or any thread with an object of its own.
class CommFunc : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CommFunc)

public:
    explicit CommFunc(QObject* parent = nullptr);

    /// Title of a module's row: type and number of channels.
    QString moduleName(int moduleType) const;

    /// Zero-based index of a module's last channel; -1 for type -1, 0 for an unknown type.
    int lastChannelIndex(int moduleType) const;

    /// Module type from a model name such as "SCN4001A": its first number modulo 1000. -1 if there is no
    /// number or it does not fit an int.
    int moduleTypeFromModel(const QString& model) const;

    /// Number of positions in the first half of a slot's module: position p pairs with p + bankSize. 0
    /// for an empty slot.
    int bankSize(uchar slot) const;

    /// Prefix of a function's option commands; "VOLT:DC" for an unknown index.
    QString scpiHeader(int functionIndex) const;

    /// Unit of unscaled readings; "Vdc" for an unknown index.
    QString baseUnit(int functionIndex) const;

    /// Number of the function's scn::PanelKind; 0 for an unknown index.
    uchar optionPanelKind(int functionIndex) const;

    /// Whether the function takes over a partner channel for sensing.
    bool isFourWire(int functionIndex) const;

    /// Row of unitList() that a function starts with; 0 for an unknown index.
    int defaultUnitIndex(int functionIndex) const;

    /// Value of a row of rangeList(), in base units. Row 0 is the automatic range, for which callers send
    /// another command. 0 for a function without ranges or a row that no list can have.
    double rangeValue(int functionIndex, int rangeRow) const;

    /// Row for a range in base units; -1 if none matches or the function has no ranges. The row is the
    /// decade's number, which may lie beyond the end of rangeList().
    int rangeRowForValue(int functionIndex, double value) const;

    /// Display names of the functions that a channel offers, depending on its module.
    QStringList functionList(int channel) const;

    /// Ranges of a function, the automatic one first; empty if it has none.
    QStringList rangeList(int functionIndex) const;

    /// Temperature units; empty for a function that does not measure temperature.
    QStringList temperatureUnitList(int functionIndex) const;

    /// Scale functions of a measurement function, as the instrument spells them.
    QStringList scaleFunctionList(int functionIndex) const;

    /// Display units, the same for every function; row 0 is "none".
    QStringList unitList() const;

    /// Function index of a display name or of a name that FUNC? reports. A name that several sensor types
    /// share stands for one of them. An unknown name is entered with index 0, DC voltage.
    int functionIndex(const QString& name);

    /// Style sheet of the configuration page's tab widget, `myTabWidget`.
    QString tabStyle() const;

    /// Style sheet of the outer page tabs, `myTabWidget1`.
    QString workspaceTabStyle() const;

    /// Style sheet of the channel tree and the controls in its rows.
    QString treeStyle() const;

    /// Style sheet of flat dark buttons.
    QString buttonStyle() const;

private:
    QMap<QString, int> m_functionIndices;
};
