// SPDX-License-Identifier: BSD-3-Clause
#include "deviceselector.h"

#include "chipfilter.h"
#include "chipinfotablemodel.h"
#include "devicedb.h"
#include "searchlineedit.h"
#include "ui_deviceselector.h"

#include <QAction>
#include <QHeaderView>
#include <QSet>
#include <QTimer>

#include <algorithm>
#include <functional>

namespace DEV {

namespace {

// Table column widths in pixels, section by section. User Flash (13) is set
// after DSP (14); the hidden Series column (1) keeps a width all the same.
constexpr int SectionWidths[][2] = {
    {0, 210}, {1, 100}, {2, 110}, {3, 130}, {4, 90},  {5, 60},   {6, 60},  {7, 50},
    {8, 55},  {9, 50},  {10, 75}, {11, 75}, {12, 75}, {14, 120}, {13, 80}, {15, 40},
};

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
        if (!m_seen.contains(value)) {
            m_seen.insert(value);
            m_values.append(value);
        }
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

    QSet<QString> m_seen;
    QStringList m_values;
};

} // namespace

/*
 * The chips that pass the combo boxes, already in the table's default order
 * (part number ascending). Every rebuild shows them sorted that way and
 * every keystroke searches them again; kept sorted, the search result comes
 * out in order and the table's sort finds nothing to move.
 */
struct DeviceSelector::SortedBase
{
    ChipFilter filter;
    QList<ChipInfo> chips;
    bool valid = false;
};

namespace {

bool sameFilter(const ChipFilter& a, const ChipFilter& b)
{
    // A null and an empty version mean different things.
    return a.partNumber == b.partNumber && a.series == b.series && a.matchKey == b.matchKey && a.device == b.device
        && a.deviceVersion == b.deviceVersion && a.deviceVersion.isNull() == b.deviceVersion.isNull()
        && a.package == b.package && a.auxiliary == b.auxiliary && a.voltage == b.voltage && a.speed == b.speed;
}

} // namespace

DeviceSelector::DeviceSelector(DeviceDb* db, QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_DeviceSelector)
    , db(db)
    , model(nullptr)
    , currentDeviceIndex()
    , searchEdit(nullptr)
    , sortedBase(new SortedBase)
{
    ui->setupUi(this);

    searchEdit = new SearchLineEdit(this);
    ui->SerarchLayout->insertWidget(1, searchEdit, 0);
    connect(searchEdit, SIGNAL(patternSyntaxChange()), this, SLOT(filterBySearch()));
    // textEdited fires for the user's typing only, not for setText().
    connect(searchEdit, SIGNAL(textEdited(QString)), this, SLOT(filterBySearch()));

    ui->labelDeviceVersion->setAlignment(Qt::AlignTop);
    ui->labelDeviceVersion->setText(
        tr("<p style='line-height:60%'> Device Version: </p><p style='font-size:9px;line-height:0px'> "
           "&#10056;no version number is initial version </p>"));

    model = new ChipInfoTableModel(this);
    QTableView* table = ui->tableView;
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

    // Filled before its signal is connected, so filling it triggers nothing.
    DistinctValues series;
    const QList<ChipInfo> chips = db->allChipInfo();
    for (const ChipInfo& chip : chips)
        series.add(chip.series);
    ui->cbSeries->insertItems(ui->cbSeries->count(), series.ascending());

    connect(ui->cbSeries, SIGNAL(currentIndexChanged(int)), this, SLOT(onSeriesChanged()));
    connect(table->selectionModel(), SIGNAL(selectionChanged(QItemSelection, QItemSelection)), this,
            SLOT(onIndexSelected()));

    // "Any" series: fills the dependent boxes from every chip and shows the
    // whole database.
    onSeriesChanged();
}

DeviceSelector::~DeviceSelector()
{
    delete searchEdit;
    searchEdit = nullptr;
    // The form's widgets are children of this widget and go with it; the
    // form structure itself is ours.
    delete ui;
}

void DeviceSelector::onSeriesChanged()
{
    const QString series = ui->cbSeries->currentText();
    const bool anySeries = series == QLatin1String("Any");
    DistinctValues devices;
    DistinctValues packages;
    DistinctValues speeds;
    DistinctValues versions;
    const QList<ChipInfo> chips = db->allChipInfo();
    for (const ChipInfo& chip : chips) {
        if (chip.series != series && !anySeries)
            continue;
        devices.add(chip.device);
        packages.add(chip.package);
        speeds.add(chip.speed);
        versions.add(chip.deviceVersion);
    }

    // Refilling moves every box's current index; without these connections
    // the refill runs neither the filter nor the version refill once per box.
    QComboBox* const dependents[] = {ui->cbDevice, ui->cbPackage, ui->cbCondition, ui->cbDeviceVersion};
    for (QComboBox* box : dependents)
        disconnect(box, SIGNAL(currentIndexChanged(int)), this, SLOT(filter()));
    disconnect(ui->cbDevice, SIGNAL(currentIndexChanged(int)), this, SLOT(onDeviceChanged()));

    ui->cbDevice->clear();
    ui->cbDevice->insertItems(ui->cbDevice->count(), devices.ascending());
    ui->cbPackage->clear();
    ui->cbPackage->insertItems(ui->cbPackage->count(), packages.ascending());
    ui->cbCondition->clear();
    ui->cbCondition->insertItems(ui->cbCondition->count(), speeds.ascending());
    ui->cbDeviceVersion->clear();
    ui->cbDeviceVersion->insertItems(ui->cbDeviceVersion->count(), versions.descending());

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
    const QList<ChipInfo> chips = db->allChipInfo();
    for (const ChipInfo& chip : chips) {
        if (chip.series != series)
            continue;
        if (!anyDevice && chip.device != device)
            continue;
        versions.add(chip.deviceVersion);
    }

    // The box stays connected to filter(): clearing and refilling it runs
    // the filter as the index moves to -1 and back to 0.
    ui->cbDeviceVersion->clear();
    ui->cbDeviceVersion->insertItems(ui->cbDeviceVersion->count(), versions.descending());
}

namespace {

// Index 0 ("Any") leaves a criterion null, which constrains nothing.
ChipFilter filterFromBoxes(const Ui_DeviceSelector& ui)
{
    ChipFilter filter;
    if (ui.cbSeries->currentIndex() != 0)
        filter.series = ui.cbSeries->currentText();
    if (ui.cbDevice->currentIndex() != 0)
        filter.device = ui.cbDevice->currentText();
    if (ui.cbPackage->currentIndex() != 0)
        filter.package = ui.cbPackage->currentText();
    if (ui.cbCondition->currentIndex() != 0)
        filter.speed = ui.cbCondition->currentText();
    if (ui.cbDeviceVersion->currentIndex() != 0)
        filter.deviceVersion = ui.cbDeviceVersion->currentText();
    return filter;
}

// In the table's first order, so that a search over it keeps that order and
// the table's own sort right after finds nothing to move.
QList<ChipInfo> sortedByPartNumber(QList<ChipInfo> chips)
{
    ChipInfoTableModel sorter;
    sorter.setChipInfoList(chips);
    // With the sorter's copy the only one left, it sorts in place.
    chips.clear();
    sorter.sort(0, Qt::AscendingOrder);
    return sorter.chipInfoList();
}

} // namespace

void DeviceSelector::filter()
{
    // The search path applies the combo boxes as well.
    if (!searchEdit->text().isEmpty()) {
        filterBySearch();
        return;
    }

    model->setChipInfoList(chipsOfBoxes());
    ui->tableView->scrollToTop();
    // Whatever was chosen is gone with the old list.
    Q_EMIT selectedDeviceChanged(DeviceArg());
    ui->tableView->sortByColumn(0, Qt::AscendingOrder);
}

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
    if (searchEdit->wildCardAction->isChecked())
        search.patternSyntax = 0;
    else if (searchEdit->regExpAction->isChecked())
        search.patternSyntax = 1;
    else if (searchEdit->matchExactlyAction->isChecked())
        search.patternSyntax = 2;
    else
        search.patternSyntax = 3;
    search.caseSensitive = searchEdit->caseSensitiveAction->isChecked();
    search.pattern = searchEdit->text();

    const QList<ChipInfo> base = chipsOfBoxes();
    QList<ChipInfo> result;
    if (!search.pattern.isEmpty()) {
        result = db->filterChips(search, base);
        model->setChipInfoList(result);
        ui->tableView->scrollToTop();
    }
    ui->matchCountLabel->setText(tr("(%1 matches)").arg(result.size()));
    Q_EMIT selectedDeviceChanged(DeviceArg());
    ui->tableView->sortByColumn(0, Qt::AscendingOrder);
}

const QList<ChipInfo>& DeviceSelector::chipsOfBoxes()
{
    const ChipFilter filter = filterFromBoxes(*ui);
    if (!sortedBase->valid || !sameFilter(sortedBase->filter, filter)) {
        sortedBase->chips = sortedByPartNumber(db->filterChips(filter));
        sortedBase->filter = filter;
        sortedBase->valid = true;
    }
    return sortedBase->chips;
}

void DeviceSelector::onIndexSelected()
{
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

void DeviceSelector::setCurrentDevice(const QString& deviceId)
{
    if (deviceId.isEmpty())
        return;
    const ChipInfo chip = db->findByID(deviceId);
    if (chip.deviceId.isEmpty())
        return;

    // Each move runs the cascade: a new series refills the other boxes at
    // "Any", a new device refills the versions. An entry that is not listed
    // leaves its box as it is.
    const auto choose = [](QComboBox* box, const QString& text) {
        const int index = box->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
        if (index >= 0)
            box->setCurrentIndex(index);
    };
    choose(ui->cbSeries, chip.series);
    choose(ui->cbDevice, chip.device);
    choose(ui->cbDeviceVersion, chip.deviceVersion);

    // The table is now whatever the last filter left; the search text may
    // keep the chip out of it.
    const QModelIndex index = model->info2index(chip);
    if (index.row() < 0 || index.column() < 0 || !index.model())
        return;
    QItemSelectionModel* selection = ui->tableView->selectionModel();
    ui->tableView->clearSelection();
    selection->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    ui->tableView->setFocus(Qt::OtherFocusReason);
    currentDeviceIndex = index;
    // Scrolling must wait until the widget has been laid out and shown.
    QTimer::singleShot(0, this, SLOT(scrollToCurrentDevice()));
}

} // namespace DEV
