#pragma once

class AdvancedSetting;
class CustomComboBox;
class CustomLineEdit;
class QCheckBox;
class QPushButton;

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

/// The controls of one channel's row. Null pointers when there is no such row; a pointer may be
/// null alone when a cell holds no such control. GUI thread.
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
    AdvancedSetting* functionPanel = nullptr; ///< behind the "..." button of the measurement
    AdvancedSetting* scalePanel = nullptr;    ///< behind the "..." button of the scaling

    bool exists() const { return function != nullptr; }
};
