#pragma once

#include <QGraphicsView>

#include <memory>

/// Covers its parent while the program waits for the instrument: a turning ring with a text or,
/// after the link was lost, a text with a button that starts the recovery. While it is up, no key
/// or wheel turn reaches what it covers: it has the focus and gives it back when it goes; of
/// several views, the last one does. GUI thread.
class LoadingView : public QGraphicsView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LoadingView)

public:
    enum Mode { Busy, Recovery };

    /// @param mode one of Mode
    explicit LoadingView(int mode, QWidget* parent = nullptr);
    ~LoadingView() override;

    /// Covers the parent. The busy form turns at once, the recovery form waits for the user.
    void showLoading();

    /// Text beside the ring.
    void setLoadingText(const QString& text);

    void startSpinning();

    /// Hides the view; next time, the recovery form starts in its initial state.
    void stopLoading();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The user asked for the recovery; the ring is already turning.
    void confirmRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    struct State;

    void buildControls();
    void placeControls();
    void placeLoadingLabel();
    void showRecoveryForm();
    void onRecoveryClicked();
    bool covers(const QWidget& widget) const;
    void takeFocus();
    QWidget* focusBelow() const;
    LoadingView* nextHolder() const;
    void giveFocusBack();

    std::unique_ptr<State> m_state;
};
