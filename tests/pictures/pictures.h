#pragma once

#include <QObject>

/// The states of the window that the pictures show: one function and one process for each scene, in the
/// order of docs/pictures.md. Each state is reached as a user reaches it, with pointer, wheel and keys, and
/// the picture is taken from the screen. Store and files are beside the program and stay there.
class Pictures : public QObject
{
    Q_OBJECT

private slots:
    void launcher();
    void launcherWithoutInstrument();
    void launcherRefusal();
    void launcherTabs();
    void launcherScanQuestion();
    void liveRun();

    void start();
    void startWithoutInstrument();
    void buttonBar();
    void instrumentPage();
    void loggingPage();
    void loggingPickers();

    void channelTable();
    void channelTableLists();
    void channelTableEdits();
    void channelTableStates();
    void functionPanels();
    void currentPanels();
    void scalePanels();
    void panelStates();

    void workspace();
    void emptyViews();
    void liveViews();
    void chartControls();
    void chartReadOut();
    void manyCurves();

    void runAndLock();
    void recovery();
    void messages();

    void exportDialogAsOpened();
    void exportDialogWithItsListOpen();
    void exportDialogWithALongDirectory();
    void exportDirectoryChooser();
    void overlayDuringAnExport();
    void toastWithoutAStore();
    void toastAfterASuccess();
    void toastAfterASuccessInALongDirectory();
    void toastAfterAFileError();
    void toastWithoutData();
    void toastAfterAStoreError();
    void toastAfterAStop();
    void toastAfterAWriteError();

    void cleanup();
};
