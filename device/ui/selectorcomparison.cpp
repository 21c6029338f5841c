// SPDX-License-Identifier: BSD-3-Clause
// Choosing between chips: the table's context menu on the chosen chip (its
// package, the comparison) and the comparison panel.
#include "deviceselector.h"

#include "chipcomparisonmodel.h"
#include "chipinfotablemodel.h"
#include "devicedb.h"
#include "deviceselector_p.h"
#include "searchlineedit.h"
#include "ui_deviceselector.h"

#include <QAction>
#include <QBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

#include <algorithm>

namespace DEV {
namespace pimpl {

/**
 * The selector's comparison panel: the compared chips side by side (a
 * ChipComparisonModel), with buttons to choose the chip of the current
 * column in the table, to remove it and to clear the comparison. A
 * double-click on a column, or Enter, chooses its chip as well.
 */
class ComparisonPanel : public QWidget
{
    Q_OBJECT

public:
    explicit ComparisonPanel(QWidget* parent);

    ChipComparisonModel* model() const { return m_model; }

    /// Its widgets in the order Tab visits them.
    QList<QWidget*> focusOrder() const { return {m_view, m_choose, m_remove, m_clear}; }

Q_SIGNALS:
    /// The user asked for @p chip to be chosen in the table.
    void chosen(const DEV::ChipInfo& chip);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    int currentColumn() const { return m_view->currentIndex().isValid() ? m_view->currentIndex().column() : -1; }

    void choose(int column)
    {
        if (column >= 0 && column < m_model->columnCount())
            Q_EMIT chosen(m_model->chips().at(column));
    }

    void updateButtons()
    {
        const bool current = currentColumn() >= 0;
        m_choose->setEnabled(current);
        m_remove->setEnabled(current);
        m_clear->setEnabled(m_model->columnCount() > 0);
    }

    ChipComparisonModel* m_model;
    QTableView* m_view;
    QPushButton* m_choose;
    QPushButton* m_remove;
    QPushButton* m_clear;
};

ComparisonPanel::ComparisonPanel(QWidget* parent)
    : QWidget(parent)
    , m_model(new ChipComparisonModel(this))
    , m_view(new QTableView(this))
    , m_choose(new QPushButton(DeviceSelector::tr("Select in table"), this))
    , m_remove(new QPushButton(DeviceSelector::tr("Remove"), this))
    , m_clear(new QPushButton(DeviceSelector::tr("Clear"), this))
{
    auto* caption = new QLabel(DeviceSelector::tr("Compared chips (rows that differ in bold):"), this);
    caption->setBuddy(m_view);
    auto* bar = new QHBoxLayout;
    bar->addWidget(caption, 1);
    for (QPushButton* button : {m_choose, m_remove, m_clear}) {
        button->setAutoDefault(false); // Enter in a dialog still means OK
        bar->addWidget(button);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(bar);
    layout->addWidget(m_view);

    m_view->setObjectName(QStringLiteral("comparisonView"));
    m_view->setModel(m_model);
    m_view->setSelectionBehavior(QAbstractItemView::SelectColumns);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setTabKeyNavigation(false);
    m_view->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_view->horizontalHeader()->setHighlightSections(false);
    m_view->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_view->installEventFilter(this);
    selectFirstOnArrow(m_view);
    m_view->setAccessibleName(DeviceSelector::tr("Compared chips"));
    m_view->setAccessibleDescription(DeviceSelector::tr(
        "One column per chip, the rows that differ in bold; Enter or a double-click selects the column's chip in the table"));
    m_choose->setToolTip(DeviceSelector::tr("Selects the chip of the current column in the table"));
    m_remove->setToolTip(DeviceSelector::tr("Removes the chip of the current column from the comparison"));
    m_clear->setToolTip(DeviceSelector::tr("Removes every chip from the comparison"));

    connect(m_view, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) { choose(index.column()); });
    connect(m_choose, &QPushButton::clicked, this, [this] { choose(currentColumn()); });
    connect(m_remove, &QPushButton::clicked, this, [this] { m_model->removeColumns(currentColumn(), 1); });
    connect(m_clear, &QPushButton::clicked, m_model, &ChipComparisonModel::clear);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { updateButtons(); });
    connect(m_model, &QAbstractItemModel::columnsInserted, this, [this] { updateButtons(); });
    connect(m_model, &QAbstractItemModel::columnsRemoved, this, [this] { updateButtons(); });
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { updateButtons(); });
    updateButtons();
}

bool ComparisonPanel::eventFilter(QObject* watched, QEvent* event)
{
    // Enter chooses the column's chip here; it does not also reach the
    // dialog's default button.
    if (watched == m_view && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            choose(currentColumn());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace pimpl

void DeviceSelector::setUpComparison()
{
    d->comparison = new pimpl::ComparisonPanel(this);
    d->comparison->hide();
    // Shown, it shares the height with the table.
    ui->verticalLayout->addWidget(d->comparison, 1);
    ui->verticalLayout->setStretchFactor(ui->tableView, 1);
    connect(d->comparison, &pimpl::ComparisonPanel::chosen, this, [this](const ChipInfo& chip) { setCurrentDevice(chip); });
    QWidget* previous = ui->tableView;
    for (QWidget* next : d->comparison->focusOrder()) {
        setTabOrder(previous, next);
        previous = next;
    }

    QTableView* table = ui->tableView;
    d->separator = new QAction(table);
    d->separator->setSeparator(true);
    d->samePackage = new QAction(tr("Show chips in the same package"), table);
    d->addToComparison = new QAction(tr("Add to comparison"), table);
    d->removeFromComparison = new QAction(tr("Remove from comparison"), table);
    // A copy: the first rebuild voids the chosen chip.
    connect(d->samePackage, &QAction::triggered, this, [this] { showSamePackage(ChipInfo(d->chosen)); });
    ChipComparisonModel* compared = d->comparison->model();
    connect(d->addToComparison, &QAction::triggered, this, [this, compared] { compared->addChip(d->chosen); });
    connect(d->removeFromComparison, &QAction::triggered, this,
            [this, compared] { compared->removeChip(d->chosen.partNumber); });
    // After the chosen chip was noted (setUpUsability()).
    connect(this, &DeviceSelector::selectedDeviceChanged, this, [this] { updateChipActions(); });
    connect(compared, &QAbstractItemModel::modelReset, this, [this] { updateChipActions(); });
    connect(compared, &QAbstractItemModel::columnsInserted, this, [this] { updateChipActions(); });
    connect(compared, &QAbstractItemModel::columnsRemoved, this, [this] { updateChipActions(); });
    updateChipActions();
}

void DeviceSelector::updateChipActions()
{
    const bool chip = !d->chosen.partNumber.isEmpty();
    const bool compared = chip && d->comparison->model()->columnOf(d->chosen.partNumber) >= 0;
    d->samePackage->setEnabled(chip);
    d->addToComparison->setEnabled(chip);
    d->addToComparison->setVisible(!compared);
    d->removeFromComparison->setVisible(compared);
}

/*
 * The series and the package of @p chip, every other box at "Any" and no
 * search, with the chip selected among its neighbours. The series is chosen
 * first, which resets the other boxes at "Any" in one rebuild (run directly
 * when the series stays); the package is a second rebuild. Each reports the
 * empty choice, as every rebuild does, and the chip is reported last.
 */
void DeviceSelector::showSamePackage(const ChipInfo& chip)
{
    const int series = ui->cbSeries->findText(chip.series, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (chip.partNumber.isEmpty() || series < 0)
        return;
    // Cleared by code, the field reports no edit; the label then counts no search.
    searchEdit->clear();
    ui->matchCountLabel->setText(tr("(0 matches)"));
    if (series == ui->cbSeries->currentIndex())
        onSeriesChanged();
    else
        ui->cbSeries->setCurrentIndex(series);
    ui->cbPackage->setCurrentIndex(
        std::max(0, ui->cbPackage->findText(chip.package, Qt::MatchExactly | Qt::MatchCaseSensitive)));
    const int row = pimpl::rowOfChip(*model, chip);
    if (row >= 0)
        showPreset(model->index(row, 0));
}

void DeviceSelector::setComparisonVisible(bool visible)
{
    // The entries join the context menu with the panel: by default the menu
    // holds the copy actions only.
    d->comparison->setVisible(visible);
    for (QAction* action : {d->separator, d->samePackage, d->addToComparison, d->removeFromComparison}) {
        if (visible)
            ui->tableView->addAction(action);
        else
            ui->tableView->removeAction(action);
    }
}

bool DeviceSelector::comparisonVisible() const
{
    return !d->comparison->isHidden();
}

QList<ChipInfo> DeviceSelector::comparedChips() const
{
    return d->comparison->model()->chips();
}

void DeviceSelector::setComparedChips(const QList<ChipInfo>& chips)
{
    QList<ChipInfo> known;
    for (const ChipInfo& chip : chips) {
        const ChipInfo found = chip.partNumber.isEmpty() ? ChipInfo() : db->find(chip.partNumber, chip.matchKey);
        if (!found.partNumber.isEmpty())
            known << found;
    }
    d->comparison->model()->setChips(known);
}

} // namespace DEV

#include "selectorcomparison.moc"
