// SPDX-License-Identifier: BSD-3-Clause
#include "deviceselector.h"

#include "chipcolumns.h"
#include "chipfilter.h"
#include "chipinfo_p.h"
#include "chipinfotablemodel_p.h"
#include "chipsearch.h"
#include "devicedb.h"
#include "deviceselector_p.h"
#include "parallel_p.h"
#include "searchlineedit.h"
#include "tuning_p.h"
#include "ui_deviceselector.h"

#include <QAction>
#include <QHash>
#include <QHeaderView>
#include <QTimer>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

/*
 * The selector shows and searches positions in the database's list: the
 * base (what the boxes and the minimums leave) and each search's hits are
 * kept in database order, as the database's prepared search answers, and
 * shown in the table's first order (part number ascending), which the
 * database computes once for every selector. The table's sort right after
 * then finds nothing to move, and no record is ever copied.
 */
namespace DEV {

namespace {

// Table column widths in pixels, section by section. User Flash (13) is set
// after DSP (14); the hidden Series column (1) keeps a width all the same.
constexpr int SectionWidths[][2] = {
    {0, 210}, {1, 100}, {2, 110}, {3, 130}, {4, 90},  {5, 60},   {6, 60},  {7, 50},
    {8, 55},  {9, 50},  {10, 75}, {11, 75}, {12, 75}, {14, 120}, {13, 80}, {15, 40},
};

// Enough steps for a part number's worth of Backspace without searching again.
constexpr int KeptSteps = 8;

// A box with this many entries is sized by their length, not their measure.
constexpr int ManyEntries = 1000;

/*
 * Distinct values in order of first appearance. Catalogues hold tens of
 * thousands of chips, so membership is a hash look-up rather than a scan of
 * the list gathered so far; the result is sorted afterwards, so only the set
 * of values matters.
 */
class DistinctValues
{
public:
    void add(const QString& value)
    {
        // Chips of one device stand together and share their values:
        // comparing with the last value spares most hash look-ups.
        if (m_last >= 0 && pimpl::sameText(value, m_values.at(m_last)))
            return;
        const auto seen = m_seen.constFind(value);
        m_last = seen != m_seen.constEnd() ? seen.value() : int(m_values.size());
        if (seen == m_seen.constEnd()) {
            m_seen.insert(value, m_last);
            m_values.append(value);
        }
    }

    void add(const DistinctValues& other)
    {
        for (const QString& value : other.m_values)
            add(value);
    }

    /// The values in ascending code-unit order, after "Any".
    QStringList ascending()
    {
        m_values.sort(Qt::CaseSensitive);
        return withAny();
    }

    /// The values in descending code-unit order, after "Any": the newest
    /// device version first, the initial (empty) one last.
    QStringList descending()
    {
        std::sort(m_values.begin(), m_values.end(), std::greater<QString>());
        return withAny();
    }

private:
    QStringList withAny()
    {
        m_values.prepend(QStringLiteral("Any"));
        return m_values;
    }

    QHash<QString, int> m_seen; // where in m_values
    QStringList m_values;
    int m_last = -1; // in m_values
};

bool sameFilter(const ChipFilter& a, const ChipFilter& b)
{
    // A null and an empty version mean different things.
    return a.partNumber == b.partNumber && a.series == b.series && a.matchKey == b.matchKey && a.device == b.device
        && a.deviceVersion == b.deviceVersion && a.deviceVersion.isNull() == b.deviceVersion.isNull()
        && a.package == b.package && a.auxiliary == b.auxiliary && a.voltage == b.voltage && a.speed == b.speed;
}

// The search field, between the "Search:" caption and the match count.
SearchLineEdit* addSearchField(const Ui_DeviceSelector& ui, DeviceSelector* selector)
{
    auto* edit = new SearchLineEdit(selector);
    ui.SerarchLayout->insertWidget(1, edit, 0);
    QObject::connect(edit, SIGNAL(patternSyntaxChange()), selector, SLOT(filterBySearch()));
    // textEdited fires for the user's typing only, not for setText().
    QObject::connect(edit, SIGNAL(textEdited(QString)), selector, SLOT(filterBySearch()));
    return edit;
}

// The caption tells what the blank version entry stands for.
void captionVersions(QLabel* label)
{
    label->setAlignment(Qt::AlignTop);
    label->setText(
        DeviceSelector::tr("<p style='line-height:60%'> Device Version: </p><p style='font-size:9px;line-height:0px'> "
                           "&#10056;no version number is initial version </p>"));
}

void setUpTable(QTableView* table, ChipInfoTableModel* model)
{
    table->setModel(model);
    table->setSortingEnabled(true);
    // The Series column repeats what the Series combo box shows.
    table->setColumnHidden(1, true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->verticalHeader()->setDefaultSectionSize(24);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setHighlightSections(false);
    for (const auto& width : SectionWidths)
        table->horizontalHeader()->resizeSection(width[0], width[1]);
}

/*
 * Qt fits a box to its widest entry by measuring every entry as the selector
 * is first shown, some microseconds each: a fifth of a second for the
 * devices of a million-chip catalogue. Such a box is made as wide as its
 * longest entry's number of characters instead, and one more for letters
 * wider than the average capital Qt counts with.
 */
void fitLongBoxes(const Ui_DeviceSelector& ui)
{
    for (QComboBox* box : {ui.cbSeries, ui.cbDevice, ui.cbPackage, ui.cbCondition, ui.cbDeviceVersion}) {
        if (box->count() < ManyEntries)
            continue;
        int longest = 0;
        for (int i = 0; i < box->count(); ++i)
            longest = std::max(longest, int(box->itemText(i).size()));
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(longest + 1);
    }
}

} // namespace

void pimpl::DeviceSelectorPrivate::await()
{
    if (pendingOrder.pending())
        order = pendingOrder.take();
    if (pendingSearch.pending())
        search = pendingSearch.take();
}

// One pass over the order, whatever the number of positions.
QVector<int> pimpl::DeviceSelectorPrivate::inTableOrder(const QVector<int>& positions) const
{
    if (positions.size() == all.size())
        return order;
    std::vector<char> shown(size_t(all.size()), 0);
    for (int k : positions)
        shown[size_t(k)] = 1;
    QVector<int> rows;
    rows.reserve(positions.size());
    for (int k : order) {
        if (shown[size_t(k)])
            rows.append(k);
    }
    return rows;
}

DeviceSelector::DeviceSelector(DeviceDb* db, QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_DeviceSelector)
    , db(db)
    , model(nullptr)
    , currentDeviceIndex()
    , searchEdit(nullptr)
    , d(new pimpl::DeviceSelectorPrivate)
{
    ui->setupUi(this);
    d->all = db->allChipInfo();
    // Both are the database's, made once for all its selectors: the first
    // selector has them made while it builds its boxes.
    const bool worth = d->all.size() >= pimpl::tuning().selectorParallelFrom;
    d->pendingOrder.start(worth, [db] { return db->partNumberOrder(); });
    d->pendingSearch.start(worth, [db] { return db->preparedSearch(); });

    searchEdit = addSearchField(*ui, this);
    captionVersions(ui->labelDeviceVersion);
    model = new ChipInfoTableModel(this);
    setUpTable(ui->tableView, model);
    // Filled before its signal is connected, so filling it triggers nothing.
    ui->cbSeries->insertItems(ui->cbSeries->count(), seriesOfCascade());
    connect(ui->cbSeries, SIGNAL(currentIndexChanged(int)), this, SLOT(onSeriesChanged()));
    connect(ui->tableView->selectionModel(), SIGNAL(selectionChanged(QItemSelection, QItemSelection)), this,
            SLOT(onIndexSelected()));
    setUpUsability();
    // "Any" series: fills the dependent boxes from every chip and shows the
    // whole database.
    onSeriesChanged();
    fitLongBoxes(*ui);
}

DeviceSelector::DeviceSelector(QWidget* parent)
    : DeviceSelector(DeviceDb::instance(), parent)
{
}

DeviceSelector::~DeviceSelector()
{
    delete searchEdit;
    searchEdit = nullptr;
    // The form's widgets are children of this widget and go with it; the
    // form structure itself is ours.
    delete ui;
}

namespace {

// devices, packages, speeds, versions
using BoxValues = std::array<DistinctValues, 4>;

// The values of the chips of @p series ("Any": of all) for the four boxes
// under the series box, a long list in parts at once: only the set of
// values matters, as each box sorts them.
BoxValues valuesOfSeries(const QList<ChipInfo>& chips, const QString& series)
{
    const bool anySeries = series == QLatin1String("Any");
    const int n = int(chips.size());
    std::vector<BoxValues> parts(size_t(pimpl::partsFor(n, pimpl::tuning().selectorParallelFrom)));
    pimpl::runParts(int(parts.size()), [&](int p) {
        BoxValues& values = parts[size_t(p)];
        const int to = int(pimpl::partStart(n, p + 1, int(parts.size())));
        for (int i = int(pimpl::partStart(n, p, int(parts.size()))); i < to; ++i) {
            const ChipInfo& chip = chips.at(i);
            if (!anySeries && chip.series != series)
                continue;
            values[0].add(chip.device);
            values[1].add(chip.package);
            values[2].add(chip.speed);
            values[3].add(chip.deviceVersion);
        }
    });
    BoxValues& values = parts.front();
    for (size_t p = 1; p < parts.size(); ++p) {
        for (size_t b = 0; b < values.size(); ++b)
            values[b].add(parts[p][b]);
    }
    return std::move(values);
}

} // namespace

void pimpl::refill(QComboBox* box, const QStringList& entries)
{
    box->clear();
    box->insertItems(box->count(), entries);
}

QStringList DeviceSelector::seriesOfCascade() const
{
    DistinctValues series;
    const QList<ChipInfo> chips = chipsOfCascade();
    for (const ChipInfo& chip : chips)
        series.add(chip.series);
    return series.ascending();
}

void DeviceSelector::onSeriesChanged()
{
    BoxValues values = valuesOfSeries(chipsOfCascade(), ui->cbSeries->currentText());

    // Refilling moves every box's current index; without these connections
    // the refill runs neither the filter nor the version refill once per box.
    QComboBox* const dependents[] = {ui->cbDevice, ui->cbPackage, ui->cbCondition, ui->cbDeviceVersion};
    for (QComboBox* box : dependents)
        disconnect(box, SIGNAL(currentIndexChanged(int)), this, SLOT(filter()));
    disconnect(ui->cbDevice, SIGNAL(currentIndexChanged(int)), this, SLOT(onDeviceChanged()));

    for (int b = 0; b < 3; ++b)
        pimpl::refill(dependents[b], values[size_t(b)].ascending());
    pimpl::refill(ui->cbDeviceVersion, values[3].descending());

    // The device box's filter connection comes first, so a device change
    // filters before it refills the versions.
    for (QComboBox* box : dependents)
        connect(box, SIGNAL(currentIndexChanged(int)), this, SLOT(filter()));
    connect(ui->cbDevice, SIGNAL(currentIndexChanged(int)), this, SLOT(onDeviceChanged()));

    filter();
}

void DeviceSelector::onDeviceChanged()
{
    // Versions are listed for a chosen series only: with "Any" as series no
    // chip qualifies and the box keeps just "Any".
    const QString series = ui->cbSeries->currentText();
    const bool anyDevice = ui->cbDevice->currentIndex() == 0;
    const QString device = ui->cbDevice->currentText();
    DistinctValues versions;
    const QList<ChipInfo> chips = chipsOfCascade();
    for (const ChipInfo& chip : chips) {
        if (chip.series == series && (anyDevice || chip.device == device))
            versions.add(chip.deviceVersion);
    }
    // The box stays connected to filter(): clearing and refilling it runs
    // the filter as the index moves to -1 and back to 0.
    pimpl::refill(ui->cbDeviceVersion, versions.descending());
}

namespace {

// Index 0 ("Any") leaves a criterion null, which constrains nothing.
ChipFilter filterFromBoxes(const Ui_DeviceSelector& ui)
{
    const std::pair<QComboBox*, QString ChipFilter::*> criteria[] = {
        {ui.cbSeries, &ChipFilter::series},   {ui.cbDevice, &ChipFilter::device},
        {ui.cbPackage, &ChipFilter::package}, {ui.cbCondition, &ChipFilter::speed},
        {ui.cbDeviceVersion, &ChipFilter::deviceVersion},
    };
    ChipFilter filter;
    for (const auto& [box, criterion] : criteria) {
        if (box->currentIndex() != 0)
            filter.*criterion = box->currentText();
    }
    return filter;
}

} // namespace

void DeviceSelector::filter()
{
    d->await();
    // The search path applies the combo boxes as well.
    if (!searchEdit->text().isEmpty()) {
        filterBySearch();
        return;
    }

    updateBase();
    pimpl::ChipInfoTableModelPrivate::setOrderedRows(*model, d->all, d->baseIsAll ? d->order : d->inTableOrder(d->base),
                                                     int(ChipColumn::PartNumber));
    ui->tableView->scrollToTop();
    // Whatever was chosen is gone with the old list.
    Q_EMIT selectedDeviceChanged(DeviceArg());
    ui->tableView->sortByColumn(0, Qt::AscendingOrder);
}

namespace {

// Whether every chip that @p next finds is among those @p previous found:
// the same options, and a pattern found anywhere that extends the last one.
bool narrows(const ChipFilterBySearch& next, const ChipFilterBySearch& previous)
{
    const bool anywhere = next.patternSyntax < 0 || next.patternSyntax > 2;
    return anywhere && next.patternSyntax == previous.patternSyntax && next.group == previous.group
        && next.caseSensitive == previous.caseSensitive && next.pattern.startsWith(previous.pattern);
}

} // namespace

void DeviceSelector::filterBySearch()
{
    if (searchEdit->text().isEmpty()) {
        // The label counts search hits only, so it reads zero while the
        // table shows the combo boxes' result.
        ui->matchCountLabel->setText(tr("(0 matches)"));
        filter();
        return;
    }

    ChipFilterBySearch search;
    search.group = searchEdit->filterGroup();
    // The first option checked wins; none is "Match anywhere".
    search.patternSyntax = searchEdit->wildCardAction->isChecked() ? 0
        : searchEdit->regExpAction->isChecked()                     ? 1
        : searchEdit->matchExactlyAction->isChecked()               ? 2
                                                                    : 3;
    search.caseSensitive = searchEdit->caseSensitiveAction->isChecked();
    search.pattern = searchEdit->text();

    d->await();
    updateBase();
    // Typing on searches the last hits only; Backspace goes back to them.
    std::vector<pimpl::SearchStep>& steps = d->steps;
    while (!steps.empty() && !narrows(search, steps.back().search))
        steps.pop_back();
    if (steps.empty() || steps.back().search.pattern != search.pattern) {
        QVector<int> hits;
        if (!steps.empty())
            hits = d->search.filterRows(search, steps.back().hits);
        else
            hits = d->baseIsAll ? d->search.filterRows(search) : d->search.filterRows(search, d->base);
        if (steps.size() == size_t(KeptSteps))
            steps.erase(steps.begin());
        steps.push_back({search, hits});
    }
    const QVector<int>& hits = steps.back().hits;
    pimpl::ChipInfoTableModelPrivate::setOrderedRows(*model, d->all, d->inTableOrder(hits), int(ChipColumn::PartNumber));
    ui->tableView->scrollToTop();
    ui->matchCountLabel->setText(tr("(%1 matches)").arg(hits.size()));
    Q_EMIT selectedDeviceChanged(DeviceArg());
    ui->tableView->sortByColumn(0, Qt::AscendingOrder);
}

void DeviceSelector::updateBase()
{
    const ChipFilter filter = filterFromBoxes(*ui);
    if (d->baseValid && sameFilter(d->baseFilter, filter))
        return;
    d->baseFilter = filter;
    d->baseValid = true;
    d->steps.clear();
    d->baseIsAll = sameFilter(filter, ChipFilter()) && d->applied.isEmpty();
    d->base.clear();
    if (d->baseIsAll)
        return;
    for (int k = 0; k < d->all.size(); ++k) {
        const ChipInfo& chip = d->all.at(k);
        if (matchFilter(chip, filter) && matchFilter(chip, d->applied))
            d->base.append(k);
    }
}

void DeviceSelector::onIndexSelected()
{
    if (d->reselecting)
        return;
    // A selection that was merely cleared is not reported here; the
    // rebuilds that clear it report the empty choice themselves.
    const QModelIndexList rows = ui->tableView->selectionModel()->selectedRows(0);
    if (rows.isEmpty())
        return;
    Q_EMIT selectedDeviceChanged(DeviceArg(model->index2chipInfo(rows.first())));
}

void DeviceSelector::scrollToCurrentDevice()
{
    ui->tableView->scrollTo(currentDeviceIndex, QAbstractItemView::PositionAtCenter);
}

ChipInfo DeviceSelector::selectedDevice() const
{
    const QModelIndexList rows = ui->tableView->selectionModel()->selectedRows(0);
    if (rows.isEmpty())
        return ChipInfo();
    return model->index2chipInfo(rows.first());
}

// Each move runs the cascade: a new series refills the other boxes at "Any",
// a new device refills the versions. An entry that is not listed leaves its
// box as it is.
void pimpl::moveBoxesTo(const Ui_DeviceSelector& ui, const ChipInfo& chip)
{
    const auto choose = [](QComboBox* box, const QString& text) {
        const int index = box->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
        if (index >= 0)
            box->setCurrentIndex(index);
    };
    choose(ui.cbSeries, chip.series);
    choose(ui.cbDevice, chip.device);
    choose(ui.cbDeviceVersion, chip.deviceVersion);
}

void DeviceSelector::setCurrentDevice(const QString& deviceId)
{
    if (deviceId.isEmpty())
        return;
    const ChipInfo chip = db->findByID(deviceId);
    if (chip.deviceId.isEmpty())
        return;
    pimpl::moveBoxesTo(*ui, chip);

    // The table is now whatever the last filter left; the search text may
    // keep the chip out of it.
    const QModelIndex index = model->info2index(chip);
    if (index.row() < 0 || index.column() < 0 || !index.model())
        return;
    showPreset(index);
}

void DeviceSelector::showPreset(const QModelIndex& index)
{
    QItemSelectionModel* selection = ui->tableView->selectionModel();
    ui->tableView->clearSelection();
    selection->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    makeCurrent(index);
    ui->tableView->setFocus(Qt::OtherFocusReason);
    currentDeviceIndex = index;
    // Scrolling must wait until the widget has been laid out and shown.
    QTimer::singleShot(0, this, SLOT(scrollToCurrentDevice()));
}

} // namespace DEV
