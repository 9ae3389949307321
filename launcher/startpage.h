#pragma once

#include "launcher/foundinstrument.h"
#include "launcher/instrumentchoice.h"
#include "launcher/launchersettings.h"
#include "launcher/networksearch.h"

#include <QWidget>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace scnlauncher {

/// Where the lists of the start page come from.
struct InstrumentSources
{
    std::function<FoundInstruments()> serialPorts;
    std::function<FoundInstruments()> usbInstruments;
    /// The program that lists what the service discovery knows.
    QString networkTool;

    static InstrumentSources ofThisMachine();
};

/// Lists what can be opened.
class StartPage : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StartPage)

public:
    StartPage(const InstrumentSources& sources, const LauncherSettings& settings, QWidget* parent);

    /// Looks again for everything. What is chosen or typed stays.
    void refresh();

signals:
    void chosen(const scnlauncher::InstrumentChoice& choice);

private:
    QTreeWidgetItem* addSection(const QString& title);
    void addInstruments(QTreeWidgetItem* section, const FoundInstruments& instruments,
                        const QString& textIfNone);
    QTreeWidgetItem* itemOf(const QVariant& resource) const;
    void addRecent();
    void removeCurrentRecent();
    void showRate(int rate);
    void addRemoval();
    QWidget* buildForm();
    void showCurrent();
    void updateForm();
    void openCurrent();

    const InstrumentSources m_sources;
    const LauncherSettings& m_settings;
    NetworkSearch m_network;
    QTreeWidget* m_list;
    QTreeWidgetItem* m_networkSection = nullptr;
    QAction* m_removal = nullptr;
    QLineEdit* m_resource = nullptr;
    QComboBox* m_rate = nullptr;
    QLabel* m_problem = nullptr;
    QPushButton* m_open = nullptr;
};

} // namespace scnlauncher
