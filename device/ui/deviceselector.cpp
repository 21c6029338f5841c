// SPDX-License-Identifier: BSD-3-Clause
#include "deviceselector.h"

#include "chipcolumns.h"
#include "chipfilter.h"
#include "chipinfotablemodel.h"
#include "chiprequirements.h"
#include "chipsearch.h"
#include "devicedb.h"
#include "requirementsrow_p.h"
#include "searchlineedit.h"
#include "ui_deviceselector.h"

#include <QAction>
#include <QClipboard>
#include <QDataStream>
#include <QGuiApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QHash>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QToolTip>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <future>
#include <system_error>
#include <tuple>

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
        // Chips of one device stand together and share their values:
        // comparing with the last value spares most hash look-ups.
        if (m_last >= 0 && equal(value, m_values.at(m_last)))
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

    static bool equal(const QString& a, const QString& b)
    {
        return a.size() == b.size() && std::memcmp(a.constData(), b.constData(), size_t(a.size()) * sizeof(QChar)) == 0;
    }

    QHash<QString, int> m_seen; // where in m_values
    QStringList m_values;
    int m_last = -1; // in m_values
};

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
    explicit MinimumFromLayout(QWidget* widget)
        : QObject(widget)
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        auto* widget = static_cast<QWidget*>(watched);
        if ((type == QEvent::Polish || type == QEvent::FontChange || type == QEvent::StyleChange) && widget->layout())
            widget->setMinimumSize(widget->minimumSize().expandedTo(widget->layout()->totalMinimumSize()));
        return false;
    }
};

// The row of exactly @p chip. One device identifier covers several part
// numbers, so the identifier alone does not tell the rows apart.
int rowOfChip(ChipInfoTableModel& model, const ChipInfo& chip)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        const ChipInfo shown = model.index2chipInfo(model.index(row, 0));
        if (shown.partNumber == chip.partNumber && shown.matchKey == chip.matchKey && shown.deviceId == chip.deviceId)
            return row;
    }
    return -1;
}

// Tags saved states, so that restoring something else fails cleanly. The columns are kept one by one, not as
// QHeaderView's own state, whose reader trusts the counts in it and allocates whatever a damaged one claims.
constexpr quint32 SelectorStateMagic = 0x44455332;

} // namespace

/*
 * The selector shows and searches positions in the database's list: the
 * base (what the boxes and the minimums leave) and each search's hits are
 * kept in database order, as the database's prepared search answers, and
 * shown in the table's first order (part number ascending), which the
 * database computes once for every selector. The table's sort right after
 * then finds nothing to move, and no record is ever copied.
 */
namespace {

// One search of the field and its hits. While the user types on, each
// pattern extends the one before and its hits are among the earlier ones.
struct SearchStep
{
    ChipFilterBySearch search;
    QVector<int> hits;
};

// Enough steps for a part number's worth of Backspace without searching again.
constexpr int KeptSteps = 8;

// @p work on another thread, or, where none can be started, when its result is asked for.
template <typename Work>
auto soon(Work work)
{
    try {
        return std::async(std::launch::async, work);
    } catch (const std::system_error&) {
        return std::async(std::launch::deferred, work);
    }
}

} // namespace

struct DeviceSelector::Private
{
    QList<ChipInfo> all;
    ChipSearch search;
    /// Positions in all in part-number order.
    QVector<int> order;
    /// The boxes and minimums the base was made for, and the base itself
    /// (positions in all, ascending); every chip when baseIsAll.
    ChipFilter baseFilter;
    QVector<int> base;
    bool baseIsAll = true;
    bool baseValid = false;
    std::vector<SearchStep> steps;
    std::future<QVector<int>> pendingOrder;
    std::future<ChipSearch> pendingSearch;
    /// The last chip reported; empty after the choice was voided.
    ChipInfo chosen;
    /// Set while the selection a sort dropped is put back: the choice is unchanged, so nobody is told.
    bool reselecting = false;
    /// The row of resource minimums, hidden unless the host shows it.
    pimpl::RequirementsRow* requirementsRow = nullptr;
    /// The minimums the table and the boxes apply now.
    ChipRequirements applied;

    // Takes the order and the search once they are made.
    void await()
    {
        if (pendingOrder.valid())
            order = pendingOrder.get();
        if (pendingSearch.valid())
            search = pendingSearch.get();
    }

    // @p positions (in all, ascending) in part-number order: one pass over
    // the order, whatever their number.
    QVector<int> inTableOrder(const QVector<int>& positions) const
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

DeviceSelector::DeviceSelector(QWidget* parent)
    : DeviceSelector(DeviceDb::instance(), parent)
{
}

DeviceSelector::DeviceSelector(DeviceDb* db, QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_DeviceSelector)
    , db(db)
    , model(nullptr)
    , currentDeviceIndex()
    , searchEdit(nullptr)
    , d(new Private)
{
    ui->setupUi(this);
    d->all = db->allChipInfo();
    // Both are the database's, made once for all its selectors: the first
    // selector has them made while it builds its boxes.
    d->pendingOrder = soon([db] { return db->partNumberOrder(); });
    d->pendingSearch = soon([db] { return db->preparedSearch(); });

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
    const QList<ChipInfo> chips = chipsOfCascade();
    for (const ChipInfo& chip : chips)
        series.add(chip.series);
    ui->cbSeries->insertItems(ui->cbSeries->count(), series.ascending());

    connect(ui->cbSeries, SIGNAL(currentIndexChanged(int)), this, SLOT(onSeriesChanged()));
    connect(table->selectionModel(), SIGNAL(selectionChanged(QItemSelection, QItemSelection)), this,
            SLOT(onIndexSelected()));
    setUpUsability();

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
    const QList<ChipInfo> chips = chipsOfCascade();
    // devices, packages, speeds, versions
    using Boxes = std::array<DistinctValues, 4>;
    const auto collect = [&](int from, int to) {
        Boxes boxes;
        for (int i = from; i < to; ++i) {
            const ChipInfo& chip = chips.at(i);
            if (!anySeries && chip.series != series)
                continue;
            boxes[0].add(chip.device);
            boxes[1].add(chip.package);
            boxes[2].add(chip.speed);
            boxes[3].add(chip.deviceVersion);
        }
        return boxes;
    };
    // A long list in two halves at once; only the set of values matters, as
    // each box sorts them.
    const int half = chips.size() >= 65536 ? int(chips.size() / 2) : int(chips.size());
    std::future<Boxes> second = soon([&] { return collect(half, int(chips.size())); });
    Boxes boxes = collect(0, half);
    const Boxes rest = second.get();
    for (int b = 0; b < 4; ++b)
        boxes[size_t(b)].add(rest[size_t(b)]);
    DistinctValues& devices = boxes[0];
    DistinctValues& packages = boxes[1];
    DistinctValues& speeds = boxes[2];
    DistinctValues& versions = boxes[3];

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
    const QList<ChipInfo> chips = chipsOfCascade();
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
    model->setChipInfoList(d->all, d->baseIsAll ? d->order : d->inTableOrder(d->base), int(ChipColumn::PartNumber));
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

    d->await();
    updateBase();
    // Typing on searches the last hits only; Backspace goes back to them.
    std::vector<SearchStep>& steps = d->steps;
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
    model->setChipInfoList(d->all, d->inTableOrder(hits), int(ChipColumn::PartNumber));
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

namespace {

// Each move runs the cascade: a new series refills the other boxes at "Any",
// a new device refills the versions. An entry that is not listed leaves its
// box as it is.
void moveBoxesTo(const Ui_DeviceSelector& ui, const ChipInfo& chip)
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

} // namespace

void DeviceSelector::setCurrentDevice(const QString& deviceId)
{
    if (deviceId.isEmpty())
        return;
    const ChipInfo chip = db->findByID(deviceId);
    if (chip.deviceId.isEmpty())
        return;
    moveBoxesTo(*ui, chip);

    // The table is now whatever the last filter left; the search text may
    // keep the chip out of it.
    const QModelIndex index = model->info2index(chip);
    if (index.row() < 0 || index.column() < 0 || !index.model())
        return;
    showPreset(index);
}

void DeviceSelector::setCurrentDevice(const ChipInfo& chip)
{
    if (chip.partNumber.isEmpty())
        return;
    const ChipInfo known = db->find(chip.partNumber, chip.matchKey);
    if (known.partNumber.isEmpty())
        return;
    moveBoxesTo(*ui, known);
    const int row = rowOfChip(*model, known);
    if (row >= 0)
        showPreset(model->index(row, 0));
}

void DeviceSelector::showPreset(const QModelIndex& index)
{
    QItemSelectionModel* selection = ui->tableView->selectionModel();
    ui->tableView->clearSelection();
    selection->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    // The keyboard starts where the highlight is, so Enter, the arrow keys
    // and copying act on the preset chip.
    selection->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    ui->tableView->setFocus(Qt::OtherFocusReason);
    currentDeviceIndex = index;
    // Scrolling must wait until the widget has been laid out and shown.
    QTimer::singleShot(0, this, SLOT(scrollToCurrentDevice()));
}

/*
 * A click on a header sorts the model, and the reset drops the selection
 * while the host still holds the chip as chosen (an OK button stays enabled).
 * Select the same chip again, or, failing that, report that nothing is
 * chosen.
 */
void DeviceSelector::reselectAfterSort()
{
    QItemSelectionModel* selection = ui->tableView->selectionModel();
    if ((d->chosen.partNumber.isEmpty() && d->chosen.deviceId.isEmpty()) || selection->hasSelection())
        return;
    const int row = rowOfChip(*model, d->chosen);
    if (row < 0) {
        Q_EMIT selectedDeviceChanged(DeviceArg());
        return;
    }
    const QModelIndex index = model->index(row, 0);
    d->reselecting = true;
    selection->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    selection->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    d->reselecting = false;
    ui->tableView->scrollTo(index);
}

void DeviceSelector::setUpUsability()
{
    QTableView* table = ui->tableView;
    table->setItemDelegate(new ElidedCellTips(table));
    new MinimumFromLayout(this);
    connect(this, &DeviceSelector::selectedDeviceChanged, this, [this](const DeviceArg& chip) { d->chosen = chip; });
    // Connected after the view's own sorting, so this runs once the sort has
    // dropped the selection.
    connect(table->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this, [this] { reselectAfterSort(); });
    setUpKeyboard();
    setUpAccessibility();
    setUpRequirements();
}

void DeviceSelector::setUpKeyboard()
{
    QTableView* table = ui->tableView;
    // Tab leaves the table instead of walking its cells.
    table->setTabKeyNavigation(false);
    auto* options = searchEdit->findChild<QPushButton*>();
    // The order of the screen, whatever order the form made them in: the left
    // column of boxes, the right one, the search row, the table.
    QWidget* const order[] = {ui->cbSeries, ui->cbDevice, ui->cbDeviceVersion, ui->cbPackage,
                              ui->cbCondition, searchEdit, options, table};
    QWidget* previous = nullptr;
    for (QWidget* next : order) {
        if (previous && next)
            setTabOrder(previous, next);
        previous = next ? next : previous;
    }
    if (options)
        new KeyboardMenuPlacement(options, searchEdit);

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
        {searchEdit->findChild<QPushButton*>(), tr("Search options"),
         tr("Chooses the columns searched and how the text is matched")},
        {ui->tableView, tr("Matching chips"), tr("The chips that pass the filters; the selected row is the chosen chip")},
    };
    for (const auto& [widget, name, description] : described) {
        if (widget) {
            widget->setAccessibleName(name);
            widget->setAccessibleDescription(description);
        }
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

QByteArray DeviceSelector::saveState() const
{
    QByteArray state;
    QDataStream out(&state, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_12);
    const QHeaderView* header = ui->tableView->horizontalHeader();
    out << SelectorStateMagic << qint32(header->sortIndicatorSection()) << qint32(header->sortIndicatorOrder());
    for (int column = 0; column < header->count(); ++column)
        out << qint32(header->visualIndex(column)) << qint32(header->sectionSize(column)) << header->isSectionHidden(column);
    return state;
}

bool DeviceSelector::restoreState(const QByteArray& state)
{
    QDataStream in(state);
    in.setVersion(QDataStream::Qt_5_12);
    QHeaderView* header = ui->tableView->horizontalHeader();
    const int columns = header->count();
    quint32 magic = 0;
    qint32 sortColumn = 0, order = 0;
    in >> magic >> sortColumn >> order;
    bool valid = magic == SelectorStateMagic && sortColumn >= -1 && sortColumn < columns
        && (order == Qt::AscendingOrder || order == Qt::DescendingOrder);
    // Everything is read and checked before the table changes: each column once at a position of its own, and
    // sizes that the header takes as they are.
    QVector<qint32> position(columns), size(columns);
    QVector<bool> hidden(columns);
    QVector<int> columnAt(columns, -1);
    for (int column = 0; valid && column < columns; ++column) {
        in >> position[column] >> size[column] >> hidden[column];
        valid = position[column] >= 0 && position[column] < columns && columnAt[position[column]] < 0
            && size[column] >= 0 && size[column] <= header->maximumSectionSize();
        if (valid)
            columnAt[position[column]] = column;
    }
    if (!valid || in.status() != QDataStream::Ok || !in.atEnd())
        return false;
    for (int at = 0; at < columns; ++at) {
        const int column = columnAt[at];
        header->moveSection(header->visualIndex(column), at);
        header->setSectionHidden(column, false);
        header->resizeSection(column, size[column]);
        header->setSectionHidden(column, hidden[column]);
    }
    header->setSortIndicator(sortColumn, Qt::SortOrder(order));
    // The header shows the restored order but does not sort by itself.
    model->sort(header->sortIndicatorSection(), header->sortIndicatorOrder());
    reselectAfterSort();
    return true;
}

QList<ChipInfo> DeviceSelector::chipsOfCascade() const
{
    return DEV::filterChips(db->allChipInfo(), d->applied);
}

void DeviceSelector::setUpRequirements()
{
    d->requirementsRow = new pimpl::RequirementsRow(this);
    d->requirementsRow->hide();
    ui->verticalLayout->insertWidget(1, d->requirementsRow);
    connect(d->requirementsRow, &pimpl::RequirementsRow::changed, this, [this] { applyRequirements(); });
    // On screen the row lies between the search row and the table.
    QWidget* previous = searchEdit->findChild<QPushButton*>();
    for (QWidget* field : d->requirementsRow->fields()) {
        setTabOrder(previous ? previous : searchEdit, field);
        previous = field;
    }
    setTabOrder(previous, ui->tableView);
}

void DeviceSelector::setRequirementsVisible(bool visible)
{
    d->requirementsRow->setVisible(visible);
    applyRequirements();
}

bool DeviceSelector::requirementsVisible() const
{
    return !d->requirementsRow->isHidden();
}

void DeviceSelector::setRequirements(const ChipRequirements& requirements)
{
    d->requirementsRow->setRequirements(requirements);
    applyRequirements();
}

ChipRequirements DeviceSelector::requirements() const
{
    return d->applied;
}

void DeviceSelector::applyRequirements()
{
    const ChipRequirements wanted = requirementsVisible() ? d->requirementsRow->requirements() : ChipRequirements();
    if (wanted.minimum == d->applied.minimum)
        return;
    d->applied = wanted;
    d->baseValid = false;

    // The boxes list what the minimums leave. Each keeps its choice while
    // that is still listed and else falls back to "Any", so that clearing
    // the minimums brings back the view from before.
    QComboBox* const boxes[] = {ui->cbSeries, ui->cbDevice, ui->cbDeviceVersion, ui->cbPackage, ui->cbCondition};
    QStringList chosen;
    for (QComboBox* box : boxes)
        chosen << box->currentText();
    DistinctValues series;
    for (const ChipInfo& chip : chipsOfCascade())
        series.add(chip.series);
    {
        const QSignalBlocker quiet(ui->cbSeries);
        ui->cbSeries->clear();
        ui->cbSeries->insertItems(0, series.ascending());
        ui->cbSeries->setCurrentIndex(std::max(0, ui->cbSeries->findText(chosen.at(0))));
    }
    onSeriesChanged();
    for (int i = 1; i < 5; ++i)
        boxes[i]->setCurrentIndex(std::max(0, boxes[i]->findText(chosen.at(i))));
}

} // namespace DEV
