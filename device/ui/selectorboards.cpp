// SPDX-License-Identifier: BSD-3-Clause
// Boards beside the chips: a tab of a board catalogue's boards, there only
// while the host has set a catalogue. Choosing a board chooses its chip.
#include "deviceselector.h"

#include "boardtablemodel.h"
#include "searchlineedit.h"
#include "ui_deviceselector.h"

#include <QHeaderView>
#include <QTabWidget>
#include <QTableView>

namespace DEV {
namespace pimpl {

// The "Boards" tab's table, which keeps what the tab needs to know.
class BoardsView : public QTableView
{
    Q_OBJECT

public:
    // The page after the chip table's in @p tabs, its rows as high as the table's.
    BoardsView(QTabWidget* tabs, int rowHeight)
        : QTableView(tabs)
        , tabs(tabs)
        , boards(new BoardTableModel(this))
    {
        setModel(boards);
        tabs->addTab(this, DeviceSelector::tr("&Boards"));
        tabs->tabBar()->setAccessibleName(DeviceSelector::tr("Chips or boards"));
        setAccessibleName(DeviceSelector::tr("Boards"));
        setAccessibleDescription(DeviceSelector::tr("The boards that pass the search; the selected row's chip is the chosen chip"));
        setSelectionBehavior(QAbstractItemView::SelectRows);
        setSelectionMode(QAbstractItemView::SingleSelection);
        setTabKeyNavigation(false);
        verticalHeader()->hide();
        verticalHeader()->setDefaultSectionSize(rowHeight);
        setSortingEnabled(true);
        sortByColumn(BoardTableModel::Name, Qt::AscendingOrder);
        connect(boards, &QAbstractItemModel::modelReset, this, [this] { reselect(); });
    }

    QTabWidget* const tabs;
    const BoardCatalogue* catalogue = nullptr;
    BoardTableModel* const boards;
    QString chosen; // the board whose chip is the chosen chip
    bool choosing = false, reselecting = false;

    // The boards @p text finds, in the header's order.
    void showFound(const QString& text)
    {
        boards->setBoards(catalogue->search(text));
        sortByColumn(horizontalHeader()->sortIndicatorSection(), horizontalHeader()->sortIndicatorOrder());
    }

    // Every rebuild and sort drops the selection; the chosen board gets it back.
    void reselect(bool forget = false)
    {
        reselecting = true;
        chosen = forget ? QString() : chosen;
        clearSelection();
        selectRow(boards->rowOf(chosen)); // nothing for -1
        reselecting = false;
    }
};

} // namespace pimpl

void DeviceSelector::setBoards(const BoardCatalogue* boards)
{
    auto* view = findChild<pimpl::BoardsView*>();
    if (!boards && view) {
        // The layout hands back the item it replaced, and the caller owns it.
        delete ui->verticalLayout->replaceWidget(view->tabs, ui->tableView);
        ui->tableView->show();
        delete view->tabs;
    }
    if (!boards)
        return;
    if (!view) {
        QWidget* beforeTable = ui->tableView->previousInFocusChain();
        auto* tabs = new QTabWidget(this);
        delete ui->verticalLayout->replaceWidget(ui->tableView, tabs);
        tabs->addTab(ui->tableView, tr("&Chips"));
        view = new pimpl::BoardsView(tabs, ui->tableView->verticalHeader()->defaultSectionSize());
        setTabOrder(beforeTable, tabs);
        setTabOrder(tabs, ui->tableView);
        setTabOrder(ui->tableView, view);
        connect(searchEdit, &QLineEdit::textChanged, view, [view](const QString& text) { view->showFound(text); });
        // A chip chosen otherwise, or the choice voided, ends the board's choice.
        connect(this, &DeviceSelector::selectedDeviceChanged, view, [view](const DeviceArg& chip) {
            if (!view->choosing && chip.partNumber != view->catalogue->find(view->chosen).chip.partNumber)
                view->reselect(true);
        });
        connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, view, [this, view] {
            const QModelIndexList rows = view->selectionModel()->selectedRows();
            if (view->reselecting || rows.isEmpty())
                return;
            const Board board = view->boards->board(rows.first().row());
            const bool focused = view->hasFocus();
            view->chosen = board.id;
            view->choosing = true;
            setCurrentDevice(board.chip);
            // The field's text finds boards here, and would hide their chips.
            if (selectedDevice().partNumber != board.chip.partNumber && !searchEdit->text().isEmpty()) {
                searchEdit->clear();
                filterBySearch();
                setCurrentDevice(board.chip);
            }
            view->choosing = false;
            if (focused)
                view->setFocus(Qt::OtherFocusReason);
        });
    }
    view->catalogue = boards;
    view->chosen.clear();
    view->showFound(searchEdit->text());
    view->resizeColumnsToContents();
}

Board DeviceSelector::selectedBoard() const
{
    const auto* view = findChild<pimpl::BoardsView*>();
    const Board board = view ? view->catalogue->find(view->chosen) : Board();
    return !board.id.isEmpty() && board.chip.partNumber == selectedDevice().partNumber ? board : Board();
}

} // namespace DEV

#include "selectorboards.moc"
