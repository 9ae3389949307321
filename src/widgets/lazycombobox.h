#pragma once

#include <QComboBox>
#include <QSize>

namespace scn {

/// A combo box that creates its popup when it is first used. The popup is some ten widgets, which the base class
/// creates as soon as a style sheet or a font reaches the box: a table of many boxes pays for popups that nobody
/// opens. Otherwise it is a plain combo box, of the same size and look.
class LazyComboBox : public QComboBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LazyComboBox)

public:
    explicit LazyComboBox(QWidget* parent = nullptr);

    /// List of the popup. Hides the function of the base class, whose popup would lack the font.
    QAbstractItemView* view() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    void showPopup() override;

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

    bool hasPopup() const { return m_hasPopup; }

    /// Gives a new popup what a subclass wants in it: first of all steps.
    virtual void furnishPopup() {}

    /// Called once the popup has the style and the font of the box.
    virtual void popupMade() {}

private:
    void makePopup();
    QSize measured() const;

    bool m_hasPopup = false;
    bool m_hasBeenShown = false;

    // Invalid until measured.
    mutable QSize m_sizeHint;
    mutable QSize m_minimumSizeHint;
};

} // namespace scn
