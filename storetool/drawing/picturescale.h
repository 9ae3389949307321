#pragma once

#include <QWidget>

class CCurvePlot;

namespace scnstore {

/// The values of a plot's horizontal grid lines, beside them: on the screen the pointer reads values out, on
/// a picture nothing does.
class PictureScale : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PictureScale)

public:
    PictureScale(const CCurvePlot& plot, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const CCurvePlot& m_plot;
};

} // namespace scnstore
