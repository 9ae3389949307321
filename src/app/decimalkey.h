#pragma once

#include <QObject>

namespace scn {

/// Installed on the application: the comma types the decimal point in number boxes. For systems whose
/// numbers have a comma, as the numeric keypads there have.
class DecimalKey : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DecimalKey)

public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace scn
