// SPDX-License-Identifier: BSD-3-Clause
// The selector's aids to reading and handling the table: cell tool tips,
// the options menu placed for the keyboard, a minimum size from the layout,
// the tab order, names for assistive tools, copying.
#include "deviceselector.h"

#include "chipinfotablemodel.h"
#include "deviceselector_p.h"
#include "searchlineedit.h"
#include "ui_deviceselector.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QStyledItemDelegate>
#include <QToolTip>

#include <algorithm>
#include <iterator>
#include <tuple>

namespace DEV {

namespace {

/*
 * Cells too narrow for their text are elided by the view; the full text
 * then comes as a tool tip. Whether a cell is cut depends on the column
 * width and the font, which only the view knows, so the delegate decides
 * and the model stays free of tool tips.
 */
class ElidedCellTips : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override
    {
        // The view wraps a long text at a hyphen and cuts the second line;
        // styles differ in whether the size hint shows that as width or height.
        const QSize needed = event->type() == QEvent::ToolTip && index.isValid() ? sizeHint(option, index) : QSize();
        if (needed.width() > option.rect.width() || needed.height() > option.rect.height()) {
            QToolTip::showText(event->globalPos(), index.data().toString(), view->viewport(), option.rect);
            return true;
        }
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
};

/*
 * The options menu opens at the mouse pointer, which is right for a click.
 * Opened from the keyboard, the pointer may be anywhere on the screen, so the
 * menu is moved next to its button as it is shown: below it, or above it when
 * the screen ends first.
 */
class KeyboardMenuPlacement : public QObject
{
public:
    KeyboardMenuPlacement(QWidget* button, QWidget* menuParent)
        : QObject(button)
        , m_button(button)
        , m_menuParent(menuParent)
    {
        button->installEventFilter(this);
        menuParent->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == m_button && event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            m_fromKeyboard = key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Select;
        } else if (watched == m_button && event->type() == QEvent::MouseButtonPress) {
            m_fromKeyboard = false;
        } else if (watched == m_menuParent && event->type() == QEvent::ChildPolished && m_fromKeyboard) {
            // A menu is polished before it computes its place, and fully built by then.
            if (auto* menu = qobject_cast<QMenu*>(static_cast<QChildEvent*>(event)->child())) {
                menu->installEventFilter(this);
                m_fromKeyboard = false;
            }
        } else if (event->type() == QEvent::Show && qobject_cast<QMenu*>(watched)) {
            watched->removeEventFilter(this);
            placeAtButton(static_cast<QWidget*>(watched));
        }
        return false;
    }

private:
    void placeAtButton(QWidget* menu) const
    {
        const QRect button(m_button->mapToGlobal(QPoint(0, 0)), m_button->size());
        const QRect screen = m_button->screen()->availableGeometry();
        QPoint at(button.left(), button.bottom() + 1);
        if (at.y() + menu->height() > screen.bottom() + 1)
            at.setY(std::max(screen.top(), button.top() - menu->height()));
        at.setX(std::max(screen.left(), std::min(at.x(), screen.right() + 1 - menu->width())));
        menu->move(at);
    }

    QWidget* m_button;
    QWidget* m_menuParent;
    bool m_fromKeyboard = false;
};

/*
 * Below its layout's minimum the filter box collapses into overlapping
 * captions. A window gets that minimum from its layout, an embedded widget
 * does not, so the selector claims it itself (a larger one set by the host
 * stays), again whenever the font or the style changes what it is.
 */
class MinimumFromLayout : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        auto* widget = static_cast<QWidget*>(watched);
        if ((type == QEvent::Polish || type == QEvent::FontChange || type == QEvent::StyleChange) && widget->layout())
            widget->setMinimumSize(widget->minimumSize().expandedTo(widget->layout()->totalMinimumSize()));
        return false;
    }
};

/*
 * After a rebuild a view has a current item (the first, once it has the
 * focus) but nothing selected, so the first arrow key would move on from it
 * and select the next. That key selects the current item instead: its row,
 * or its column where the view selects columns.
 */
class FirstArrowSelects : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* view = static_cast<QAbstractItemView*>(watched);
        if (event->type() != QEvent::KeyPress || view->selectionModel()->hasSelection())
            return false;
        const int key = static_cast<QKeyEvent*>(event)->key();
        const QModelIndex current = view->currentIndex().isValid() ? view->currentIndex() : view->model()->index(0, 0);
        if ((key != Qt::Key_Up && key != Qt::Key_Down && key != Qt::Key_Left && key != Qt::Key_Right) || !current.isValid())
            return false;
        const auto whole = view->selectionBehavior() == QAbstractItemView::SelectColumns ? QItemSelectionModel::Columns
                                                                                         : QItemSelectionModel::Rows;
        view->selectionModel()->setCurrentIndex(current, QItemSelectionModel::ClearAndSelect | whole);
        return true;
    }
};

} // namespace

void pimpl::selectFirstOnArrow(QAbstractItemView* view)
{
    view->installEventFilter(new FirstArrowSelects(view));
}

void DeviceSelector::setUpUsability()
{
    QTableView* table = ui->tableView;
    table->setItemDelegate(new ElidedCellTips(table));
    installEventFilter(new MinimumFromLayout(this));
    // The field's one button; the field keeps no pointer to it.
    d->searchOptions = searchEdit->findChild<QPushButton*>();
    connect(this, &DeviceSelector::selectedDeviceChanged, this, [this](const DeviceArg& chip) { d->chosen = chip; });
    // Connected after the view's own sorting, so this runs once the sort has
    // dropped the selection.
    connect(table->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this, [this] { reselectAfterSort(); });
    setUpKeyboard();
    setUpAccessibility();
    setUpRequirements();
    setUpComparison();
}

void DeviceSelector::makeCurrent(const QModelIndex& index)
{
    // The keyboard starts where the highlight is, so Enter, the arrow keys
    // and copying act on that chip. The view would scroll to a new current
    // index at once (or as it is shown); the caller scrolls when it is time.
    QTableView* table = ui->tableView;
    const bool autoScroll = table->hasAutoScroll();
    table->setAutoScroll(false);
    table->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    table->setAutoScroll(autoScroll);
}

void DeviceSelector::setUpKeyboard()
{
    QTableView* table = ui->tableView;
    // Tab leaves the table instead of walking its cells.
    table->setTabKeyNavigation(false);
    pimpl::selectFirstOnArrow(table);
    // The order of the screen, whatever order the form made them in: the left
    // column of boxes, the right one, the search row, the table.
    QWidget* const order[] = {ui->cbSeries,    ui->cbDevice, ui->cbDeviceVersion, ui->cbPackage,
                              ui->cbCondition, searchEdit,   d->searchOptions,    table};
    for (size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);
    new KeyboardMenuPlacement(d->searchOptions, searchEdit);

    auto* copyPartNumber = new QAction(tr("Copy part number"), table);
    copyPartNumber->setShortcut(QKeySequence::Copy);
    copyPartNumber->setShortcutContext(Qt::WidgetShortcut);
    connect(copyPartNumber, &QAction::triggered, this, [this] { copySelection(false); });
    auto* copyRow = new QAction(tr("Copy row"), table);
    connect(copyRow, &QAction::triggered, this, [this] { copySelection(true); });
    table->addActions({copyPartNumber, copyRow});
    table->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void DeviceSelector::setUpAccessibility()
{
    const std::pair<QLabel*, QWidget*> buddies[] = {
        {ui->label, ui->cbSeries},     {ui->label_2, ui->cbDevice},    {ui->labelDeviceVersion, ui->cbDeviceVersion},
        {ui->label_3, ui->cbPackage},  {ui->label_5, ui->cbCondition}, {ui->label_4, searchEdit},
    };
    for (const auto& [label, widget] : buddies)
        label->setBuddy(widget);

    const std::tuple<QWidget*, QString, QString> described[] = {
        {ui->cbSeries, tr("Series"), tr("Limits the table to one series")},
        {ui->cbDevice, tr("Device"), tr("Limits the table to one device")},
        {ui->cbDeviceVersion, tr("Device version"),
         tr("Limits the table to one device version; the blank entry is the initial version")},
        {ui->cbPackage, tr("Package"), tr("Limits the table to one package")},
        {ui->cbCondition, tr("Speed grade"), tr("Limits the table to one speed grade")},
        {searchEdit, tr("Search"), tr("Limits the table to the chips in which the typed text is found")},
        {d->searchOptions, tr("Search options"), tr("Chooses the columns searched and how the text is matched")},
        {ui->tableView, tr("Matching chips"), tr("The chips that pass the filters; the selected row is the chosen chip")},
    };
    for (const auto& [widget, name, description] : described) {
        widget->setAccessibleName(name);
        widget->setAccessibleDescription(description);
    }
}

void DeviceSelector::copySelection(bool wholeRow) const
{
    const QModelIndexList rows = ui->tableView->selectionModel()->selectedRows(0);
    if (rows.isEmpty())
        return;
    QString text = model->index2chipInfo(rows.first()).partNumber;
    if (wholeRow) {
        // The cells as the user sees them: visible columns, in screen order.
        QStringList cells;
        const QHeaderView* header = ui->tableView->horizontalHeader();
        for (int visual = 0; visual < header->count(); ++visual) {
            const int column = header->logicalIndex(visual);
            if (!header->isSectionHidden(column))
                cells << model->index(rows.first().row(), column).data().toString();
        }
        text = cells.join(QLatin1Char('\t'));
    }
    QGuiApplication::clipboard()->setText(text);
}

} // namespace DEV
