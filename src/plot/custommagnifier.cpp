#include "plot/custommagnifier.h"

#include "common/threadassert.h"

CustomMagnifier::CustomMagnifier(QWidget* canvas)
    : QwtPlotMagnifier(canvas)
{
    assertGuiThread();
}

void CustomMagnifier::rescale(double factor)
{
    assertGuiThread();
    QwtPlotMagnifier::rescale(factor);
    emit zoomed(factor);
}
