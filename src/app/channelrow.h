#pragma once

class AdvancedSetting;
class CustomComboBox;
class CustomLineEdit;
class QCheckBox;
class QPushButton;

namespace scn {

/// Columns of the channel table.
enum ChannelColumn {
    ScanColumn,
    NumberColumn,
    NameColumn,
    FunctionColumn,
    RangeColumn,
    ResolutionColumn,
    MoreColumn,
    ScaleColumn,
    ScaleFunctionColumn,
    GainColumn,
    OffsetColumn,
    UnitColumn,
    ScaleMoreColumn,
    StretchColumn,
    ChannelColumnCount
};

/// The controls of a channel's row. All null if the channel has no row; one is null if its cell holds another
/// control. GUI thread.
struct ChannelRow
{
    QPushButton* number = nullptr;
    CustomLineEdit* name = nullptr;
    CustomComboBox* function = nullptr;
    CustomComboBox* range = nullptr;
    CustomComboBox* resolution = nullptr;
    QPushButton* more = nullptr;
    QCheckBox* scale = nullptr;
    CustomComboBox* scaleFunction = nullptr;
    CustomLineEdit* gain = nullptr;
    CustomLineEdit* offset = nullptr;
    CustomComboBox* unit = nullptr;
    QPushButton* scaleMore = nullptr;
    AdvancedSetting* functionPanel = nullptr; ///< of the "..." button of the measurement
    AdvancedSetting* scalePanel = nullptr;    ///< of the "..." button of the scaling

    bool exists() const { return function != nullptr; }
};

} // namespace scn
