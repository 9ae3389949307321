#pragma once

#include "app/channelform.h"
#include "channels/commfunc.h"

#include <QCoreApplication>
#include <QStringList>

class CustomComboBox;
class CustomLineEdit;

namespace scn {

/// Builds the channel table: a row for each module found, and below it a row for each of its channels. Connects
/// nothing, so nothing is sent meanwhile. GUI thread.
class ChannelTableBuilder
{
    Q_DECLARE_TR_FUNCTIONS(MainWidget)

public:
    /// Returns a new table, a child of `parent`.
    ChannelForm build(QWidget* parent);

private:
    void buildHeader();
    void addModuleRow(int slot);
    void addChannelRow(QTreeWidgetItem* module, int channel);
    void place(QTreeWidgetItem* item, int column, int channel, QWidget* control);
    CustomLineEdit* makeEdit(const QString& text) const;
    CustomComboBox* makeBox(const QStringList& items) const;

    ChannelForm m_form;
    CommFunc m_catalogue;
};

} // namespace scn
