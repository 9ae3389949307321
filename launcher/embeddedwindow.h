#pragma once

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace scnlauncher {

class NativeWindows;

/// Shows the child's frameless window in the launcher's.
class EmbeddedWindow : public QWidget, private QAbstractNativeEventFilter
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EmbeddedWindow)

public:
    EmbeddedWindow(const NativeWindows& windows, qulonglong handle, const QColor& color,
                   QWidget* parent);
    ~EmbeddedWindow() override;

    qulonglong handle() const { return m_handle; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, long* result) override;

    void keepInside();
    void tellPlace();
    void giveKeyboard();

    const NativeWindows& m_windows;
    const qulonglong m_handle;
    QPointer<QWidget> m_watched; ///< the window that this one is in
    QPointer<QWindow> m_child;
    QTimer m_retry;
    QTimer m_looks;
    int m_looksLeft;
};

} // namespace scnlauncher
