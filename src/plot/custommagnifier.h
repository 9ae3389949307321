#pragma once

#include <qwt_plot_magnifier.h>

/// A plot magnifier that reports zooms. GUI thread.
class CustomMagnifier : public QwtPlotMagnifier
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomMagnifier)

public:
    explicit CustomMagnifier(QWidget* canvas);

signals:
    /// The plot has been rescaled by `factor`: below 1 zooms in, above 1 zooms out.
    void zoomed(double factor);

protected:
    void rescale(double factor) override;

private:
    bool canRescale(double factor) const;
};
