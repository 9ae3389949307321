#pragma once

#include "app/channelform.h"
#include "channels/commfunc.h"

#include <QCoreApplication>
#include <QStringList>

#include <functional>

class CustomComboBox;
class CustomLineEdit;

namespace scn {

/// Builds the channel table: a row for each module found, and below it a row for each of its channels. Connects
/// nothing, so nothing is sent meanwhile. GUI thread.
class ChannelTableBuilder
{
    Q_DECLARE_TR_FUNCTIONS(MainWidget)

public:
    using Place = std::function<void(QTreeWidget*)>;

    /// Returns a new table, a child of `parent`. `place` gets it while it is empty: to move a table full of
    /// controls costs as much as to build it.
    ChannelForm build(QWidget* parent, const Place& place = {});

private:
    void buildHeader();
    void addModuleRow(int slot);
    void addChannelRows(int slot, QTreeWidgetItem* module);
    void addChannelRow(QTreeWidgetItem* module, int channel);
    void place(QTreeWidgetItem* item, int column, int channel, QWidget* control);
    CustomLineEdit* makeEdit(const QString& text) const;
    CustomComboBox* makeBox(const QStringList& items) const;

    ChannelForm m_form;
    CommFunc m_catalogue;
};

} // namespace scn
