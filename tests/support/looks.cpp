#include "support/looks.h"

#include "overlay/loadingview.h"
#include "overlay/lockabledatacollectionview.h"
#include "plot/curvelabel.h"
#include "widgets/pathlabel.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QSizeGrip>
#include <QSplitterHandle>
#include <QStyleOptionComboBox>
#include <QTabBar>
#include <QTableView>
#include <QTextDocument>
#include <QTreeView>

namespace {

/// A square this wide that is light all over is no text and no icon.
constexpr int kLightSide = 24;
constexpr int kLight = 200;

QString describe(const QWidget* widget)
{
    QString text = widget->property("text").toString();
    if (text.isEmpty()) {
        text = widget->property("title").toString();
    }
    const QRect place(widget->mapToGlobal(QPoint()), widget->size());
    return QStringLiteral("%1 \"%2\" at %3,%4 %5x%6")
        .arg(QLatin1String(widget->metaObject()->className()), text, QString::number(place.x()),
             QString::number(place.y()), QString::number(place.width()),
             QString::number(place.height()));
}

/// The grip that Qt lays over the corner of a dialog.
bool isDialogGrip(const QWidget* widget)
{
    return qobject_cast<const QSizeGrip*>(widget) && qobject_cast<const QDialog*>(widget->parent());
}

/// Widgets whose purpose is to lie over others.
bool mayOverlap(const QWidget* widget)
{
    return qobject_cast<const LoadingView*>(widget) ||
           qobject_cast<const LockableDataCollectionView*>(widget) ||
           qobject_cast<const QMdiSubWindow*>(widget) || qobject_cast<const CurveLabel*>(widget) ||
           qobject_cast<const QSplitterHandle*>(widget) || isDialogGrip(widget) ||
           widget->testAttribute(Qt::WA_TransparentForMouseEvents) ||
           widget->inherits("QwtWidgetOverlay");
}

/// Whether the widget shows only a part of its children, to be scrolled.
bool scrolls(const QWidget* widget)
{
    const auto* area = qobject_cast<const QAbstractScrollArea*>(widget->parentWidget());
    return area && area->viewport() == widget;
}

/// Whether a part of the widget may be hidden: a view as low as its frame hides its header.
bool hidesParts(const QWidget* widget)
{
    return scrolls(widget) || qobject_cast<const QAbstractScrollArea*>(widget);
}

/// Whether one of two siblings is the ground of the other: the pane under its tabs, the viewport under the
/// controls of an overlay.
bool isGround(const QWidget* widget, const QWidget* sibling)
{
    return (qobject_cast<const QTabBar*>(sibling) && widget->inherits("QStackedWidget")) ||
           (scrolls(widget) && qobject_cast<const LoadingView*>(widget->parentWidget()));
}

class Inspection
{
public:
    QStringList problems() { return m_problems; }

    void inspect(const QWidget* widget)
    {
        if (!widget->isVisible()) {
            return;
        }
        checkChildren(widget);
        if (!widget->visibleRegion().isEmpty()) {
            checkText(widget);
        }
        for (const QWidget* child : childrenOf(widget)) {
            inspect(child);
        }
    }

private:
    void add(const QString& what, const QWidget* widget)
    {
        m_problems.append(what + QStringLiteral(": ") + describe(widget));
    }

    static QList<const QWidget*> childrenOf(const QWidget* widget)
    {
        QList<const QWidget*> shown;
        for (const QObject* child : widget->children()) {
            const auto* part = qobject_cast<const QWidget*>(child);
            if (part && part->isVisible() && !part->isWindow()) {
                shown.append(part);
            }
        }
        return shown;
    }

    void checkChildren(const QWidget* widget)
    {
        const QList<const QWidget*> children = childrenOf(widget);
        for (int i = 0; i < children.size(); ++i) {
            const QWidget* const child = children.at(i);
            if (!hidesParts(widget) && !mayOverlap(child) &&
                !widget->rect().contains(child->geometry())) {
                add(QStringLiteral("sticks out"), child);
            }
            for (int other = i + 1; other < children.size(); ++other) {
                const QWidget* const sibling = children.at(other);
                if (!mayOverlap(child) && !mayOverlap(sibling) && !isGround(child, sibling) &&
                    !isGround(sibling, child) &&
                    child->geometry().intersects(sibling->geometry())) {
                    add(QStringLiteral("under ") + describe(sibling), child);
                }
            }
        }
    }

    void checkText(const QWidget* widget)
    {
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            checkLabel(label);
        } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            checkButton(button);
        } else if (const auto* box = qobject_cast<const QComboBox*>(widget)) {
            checkBox(box);
        } else if (const auto* edit = qobject_cast<const QLineEdit*>(widget)) {
            checkEdit(edit);
        } else if (const auto* header = qobject_cast<const QHeaderView*>(widget)) {
            checkHeader(header);
        } else if (const auto* list = qobject_cast<const QListView*>(widget)) {
            checkList(list);
        } else if (const auto* table = qobject_cast<const QTableView*>(widget)) {
            checkTable(table);
        } else if (const auto* menu = qobject_cast<const QMenu*>(widget)) {
            checkMenu(menu);
        } else if (widget->metaObject() == &QGroupBox::staticMetaObject ||
                   widget->metaObject() == &QTabBar::staticMetaObject) {
            checkWidth(widget, widget->minimumSizeHint().width());
        } else if (const auto* area = qobject_cast<const QScrollArea*>(widget)) {
            if (area->horizontalScrollBar()->isVisible()) {
                add(QStringLiteral("scrolls sideways"), area);
            }
        }
    }

    void checkWidth(const QWidget* widget, int needed)
    {
        if (needed > widget->width()) {
            add(QStringLiteral("needs %1 pixels").arg(needed), widget);
        }
    }

    void checkLabel(const QLabel* label)
    {
        if (label->text().isEmpty() || qobject_cast<const scn::PathLabel*>(label)) {
            return;
        }
        if (label->wordWrap()) {
            if (label->heightForWidth(label->width()) > label->height()) {
                add(QStringLiteral("too low"), label);
            }
            return;
        }
        const QSize needed = label->sizeHint();
        checkWidth(label, needed.width());
        if (label->fontMetrics().height() > label->height()) {
            add(QStringLiteral("too low"), label);
        }
    }

    void checkButton(const QAbstractButton* button)
    {
        if (button->text().isEmpty()) {
            return;
        }
        const QFontMetrics metrics = button->fontMetrics();
        if (qobject_cast<const QCheckBox*>(button) || qobject_cast<const QRadioButton*>(button)) {
            checkWidth(button, button->minimumSizeHint().width());
        } else {
            checkWidth(button, metrics.size(Qt::TextShowMnemonic, button->text()).width());
        }
        if (metrics.height() > button->height()) {
            add(QStringLiteral("too low"), button);
        }
        checkLanguage(button->text(), button);
    }

    void checkBox(const QComboBox* box)
    {
        QStyleOptionComboBox option;
        option.initFrom(box);
        option.editable = box->isEditable();
        const QRect field = box->style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                         QStyle::SC_ComboBoxEditField, box);
        if (box->fontMetrics().horizontalAdvance(box->currentText()) > field.width() ||
            box->fontMetrics().height() > box->height()) {
            add(QStringLiteral("text does not fit: ") + box->currentText(), box);
        }
    }

    void checkEdit(const QLineEdit* edit)
    {
        const bool isOfSpinBox = qobject_cast<const QAbstractSpinBox*>(edit->parentWidget());
        if (isOfSpinBox && edit->fontMetrics().horizontalAdvance(edit->text()) > edit->width()) {
            add(QStringLiteral("number does not fit"), edit);
        }
        if (edit->fontMetrics().height() > edit->height()) {
            add(QStringLiteral("too low"), edit);
        }
    }

    void checkHeader(const QHeaderView* header)
    {
        for (int section = 0; section < header->count(); ++section) {
            const QString title =
                header->model()->headerData(section, header->orientation()).toString();
            if (!header->isSectionHidden(section) &&
                header->fontMetrics().horizontalAdvance(title) > header->sectionSize(section)) {
                add(QStringLiteral("title does not fit: ") + title, header);
            }
        }
    }

    void checkList(const QListView* list)
    {
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            const QModelIndex index = list->model()->index(row, 0);
            const QString text = index.data().toString();
            if (list->fontMetrics().horizontalAdvance(text) > list->viewport()->width()) {
                add(QStringLiteral("entry does not fit: ") + text, list);
            }
        }
    }

    void checkTable(const QTableView* table)
    {
        for (int row = 0; row < table->model()->rowCount(); ++row) {
            for (int column = 0; column < table->model()->columnCount(); ++column) {
                const QString text = table->model()->index(row, column).data().toString();
                const QRect cell(0, 0, table->columnWidth(column), table->rowHeight(row));
                const QRect needed =
                    table->fontMetrics().boundingRect(cell, Qt::TextWordWrap, text);
                if (needed.width() > cell.width() || needed.height() > cell.height()) {
                    add(QStringLiteral("cell does not fit: ") + text, table);
                }
            }
        }
    }

    void checkMenu(const QMenu* menu)
    {
        for (const QAction* action : menu->actions()) {
            checkLanguage(action->text(), menu);
        }
    }

    /// Qt's own buttons and menus are Chinese in this program.
    void checkLanguage(const QString& text, const QWidget* widget)
    {
        static const QRegularExpression english(
            QStringLiteral("^&?[A-Z]&?[a-z]|Cancel|Open|Close|Select|Undo|Copy|Paste"));
        static const QRegularExpression specified(QStringLiteral("^Immediately with"));
        const QString label = text.section(QLatin1Char('\t'), 0, 0);
        if (english.match(label).hasMatch() && !specified.match(label).hasMatch()) {
            add(QStringLiteral("not Chinese: ") + label, widget);
        }
    }

    QStringList m_problems;
};

bool isLight(const QImage& picture, const QPoint& corner)
{
    for (int y = 0; y < kLightSide; y += 3) {
        for (int x = 0; x < kLightSide; x += 3) {
            if (qGray(picture.pixel(corner + QPoint(x, y))) < kLight) {
                return false;
            }
        }
    }
    return true;
}

QStringList lightAreas(const QImage& picture)
{
    for (int y = 0; y + kLightSide <= picture.height(); y += kLightSide / 2) {
        for (int x = 0; x + kLightSide <= picture.width(); x += kLightSide / 2) {
            if (isLight(picture, QPoint(x, y))) {
                return {QStringLiteral("light at %1,%2").arg(x).arg(y)};
            }
        }
    }
    return {};
}

} // namespace

QStringList looks::layoutProblems()
{
    Inspection inspection;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        inspection.inspect(window);
    }
    return inspection.problems();
}

QStringList looks::problems(const QImage& picture)
{
    return layoutProblems() + lightAreas(picture);
}
