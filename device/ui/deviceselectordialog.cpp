// SPDX-License-Identifier: BSD-3-Clause
#include "deviceselectordialog.h"

#include "chipinfo_p.h"
#include "chiprequirements.h"
#include "devicedb.h"
#include "deviceselector.h"
#include "ui_deviceselector.h"

#include <QDataStream>
#include <QDialogButtonBox>
#include <QIODevice>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

namespace DEV {

/*
 * What the dialog keeps beyond its selector and its buttons: the chips last
 * accepted in it, newest first, each at most once, and the "Recent"
 * drop-down that lists them; choosing one presets it. The list is kept while
 * the drop-down is hidden.
 */
class pimpl::DeviceSelectorDialogPrivate
{
public:
    /// How many chips are kept.
    static constexpr int Kept = 8;

    explicit DeviceSelectorDialogPrivate(DeviceDb* db)
        : db(db)
    {
    }

    void setUpRecent(DeviceSelectorDialog* dialog);

    /// The part number and match key of each chip, for a saved state.
    QStringList keys() const
    {
        QStringList keys;
        for (const ChipInfo& chip : recent)
            keys << chip.partNumber << chip.matchKey;
        return keys;
    }

    /// The chips of @p keys (as keys() writes them) that the database still
    /// knows, in their order; false, with @p chips untouched, for anything
    /// keys() cannot have written: more than Kept chips, a chip twice or one
    /// without a part number.
    bool readKeys(const QStringList& keys, QList<ChipInfo>* chips) const
    {
        if (keys.size() % 2 != 0 || keys.size() > 2 * Kept)
            return false;
        QList<ChipInfo> known;
        for (int k = 0; k < keys.size(); k += 2) {
            if (keys.at(k).isEmpty())
                return false;
            for (int earlier = 0; earlier < k; earlier += 2) {
                if (keys.at(earlier) == keys.at(k) && keys.at(earlier + 1) == keys.at(k + 1))
                    return false;
            }
            const ChipInfo chip = db->find(keys.at(k), keys.at(k + 1));
            if (!chip.partNumber.isEmpty())
                known << chip;
        }
        *chips = known;
        return true;
    }

    /// Lists @p chips, the first Kept of them.
    void setRecent(const QList<ChipInfo>& chips)
    {
        recent = chips.mid(0, Kept);
        recentButton->menu()->clear();
        for (const ChipInfo& chip : qAsConst(recent))
            recentButton->menu()->addAction(QString(chip.partNumber).replace(QLatin1Char('&'), QLatin1String("&&")));
        recentButton->setEnabled(!recent.isEmpty());
    }

    DeviceDb* const db;
    QPushButton* recentButton = nullptr;
    QList<ChipInfo> recent;
};

void pimpl::DeviceSelectorDialogPrivate::setUpRecent(DeviceSelectorDialog* dialog)
{
    recentButton = new QPushButton(DeviceSelectorDialog::tr("Recent"), dialog);
    recentButton->setObjectName(QStringLiteral("recentButton"));
    recentButton->setAutoDefault(false); // Enter still means OK
    recentButton->setMenu(new QMenu(recentButton));
    recentButton->setAccessibleName(DeviceSelectorDialog::tr("Recent chips"));
    recentButton->setToolTip(DeviceSelectorDialog::tr("The chips accepted last, newest first; choosing one selects it"));
    recentButton->setAccessibleDescription(recentButton->toolTip());
    QMenu* menu = recentButton->menu();
    QObject::connect(menu, &QMenu::triggered, dialog, [this, dialog, menu](QAction* action) {
        dialog->setCurrentDevice(recent.value(menu->actions().indexOf(action)));
    });
    QObject::connect(dialog, &QDialog::accepted, dialog, [this, dialog] {
        const ChipInfo chip = dialog->selectedDevice();
        if (chip.partNumber.isEmpty())
            return;
        QList<ChipInfo> chips{chip};
        for (const ChipInfo& earlier : qAsConst(recent)) {
            if (!sameChip(earlier, chip))
                chips << earlier;
        }
        setRecent(chips);
    });
    setRecent({});
}

DeviceSelectorDialog::DeviceSelectorDialog(DeviceDb* db, QWidget* parent)
    : QDialog(parent)
    , d(new pimpl::DeviceSelectorDialogPrivate(db))
{
    setWindowTitle(tr("Select Device"));
    auto* layout = new QVBoxLayout(this);
    selector = new DeviceSelector(db, this);
    layout->addWidget(selector);
    buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, this);
    layout->addWidget(buttonBox);

    connect(buttonBox, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttonBox, SIGNAL(rejected()), this, SLOT(reject()));
    // Connected after the selector has built and filtered itself, so OK
    // starts enabled and waits for the first report.
    connect(selector, SIGNAL(selectedDeviceChanged(DEV::DeviceArg)), this,
            SLOT(onSelectedDeviceChanged(DEV::DeviceArg)));

    // A double-click on a row chooses it and answers at once, as OK would.
    // (Enter reaches OK as the default button.)
    QTableView* table = selector->ui->tableView;
    connect(table, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        QPushButton* ok = buttonBox->button(QDialogButtonBox::Ok);
        if (index.isValid() && ok->isEnabled())
            ok->click();
    });

    d->setUpRecent(this);
    d->recentButton->hide();
}

DeviceSelectorDialog::~DeviceSelectorDialog() = default;

namespace {

template <typename Preset>
ChipInfo askFor(QWidget* parent, DeviceDb* db, const Preset& preset)
{
    DeviceSelectorDialog dialog(db, parent);
    dialog.setCurrentDevice(preset);
    if (dialog.exec() == QDialog::Accepted)
        return dialog.selectedDevice();
    return ChipInfo();
}

// Tags saved states, so that restoring something else fails cleanly.
constexpr quint32 DialogStateMagic = 0x44455344;

} // namespace

ChipInfo DeviceSelectorDialog::getSelectedChip(QWidget* parent, DeviceDb* db, const QString& device)
{
    return askFor(parent, db, device);
}

ChipInfo DeviceSelectorDialog::getSelectedChip(QWidget* parent, DeviceDb* db, const ChipInfo& chip)
{
    return askFor(parent, db, chip);
}

void DeviceSelectorDialog::setCurrentDevice(const QString& device)
{
    selector->setCurrentDevice(device);
}

void DeviceSelectorDialog::setCurrentDevice(const ChipInfo& chip)
{
    selector->setCurrentDevice(chip);
}

void DeviceSelectorDialog::setRequirements(const ChipRequirements& requirements)
{
    selector->setRequirements(requirements);
    selector->setRequirementsVisible(!requirements.isEmpty());
}

DeviceSelector* DeviceSelectorDialog::deviceSelector() const
{
    return selector;
}

/*
 * Shown, the drop-down is one of the buttons, so the dialog stays its
 * selector above its buttons. Hidden, it leaves the button box, which hands
 * the focus Tab brings it to its first button, hidden or not, and keeps
 * doing so after the button is removed until it lays its buttons out again.
 */
void DeviceSelectorDialog::setRecentVisible(bool visible)
{
    if (visible == recentVisible())
        return;
    if (visible) {
        buttonBox->addButton(d->recentButton, QDialogButtonBox::ActionRole);
    } else {
        buttonBox->removeButton(d->recentButton);
        if (buttonBox->focusProxy() == d->recentButton)
            buttonBox->setFocusProxy(nullptr);
        d->recentButton->setParent(this);
    }
    d->recentButton->setVisible(visible);
}

bool DeviceSelectorDialog::recentVisible() const
{
    return !d->recentButton->isHidden();
}

QList<ChipInfo> DeviceSelectorDialog::recentChips() const
{
    return d->recent;
}

QByteArray DeviceSelectorDialog::saveState() const
{
    QByteArray state;
    QDataStream out(&state, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_12);
    out << DialogStateMagic << saveGeometry() << selector->saveState() << d->keys();
    return state;
}

bool DeviceSelectorDialog::restoreState(const QByteArray& state)
{
    QDataStream in(state);
    in.setVersion(QDataStream::Qt_5_12);
    quint32 magic = 0;
    QByteArray geometry;
    QByteArray selectorState;
    in >> magic >> geometry >> selectorState;
    // States written before the recent chips were kept end here.
    // The list is read key by key: QDataStream's own reader reserves room for
    // whatever count damaged bytes claim.
    QStringList recentKeys;
    if (!in.atEnd()) {
        quint32 count = 0;
        in >> count;
        for (QString key; quint32(recentKeys.size()) < count && in.status() == QDataStream::Ok && !in.atEnd();) {
            in >> key;
            recentKeys << key;
        }
        if (quint32(recentKeys.size()) != count)
            in.setStatus(QDataStream::ReadCorruptData);
    }
    QList<ChipInfo> chips;
    // Every part is checked before anything changes, the geometry on widgets
    // of their own. Qt fits a restored geometry to the screen; one that it
    // would fit anew when restored from its own save (a window of no height
    // far below the screen) would not stay as restored, and is refused. The
    // selector takes all of its part or none.
    QWidget trial, again;
    if (in.status() != QDataStream::Ok || !in.atEnd() || magic != DialogStateMagic
        || !d->readKeys(recentKeys, &chips) || !trial.restoreGeometry(geometry)
        || !again.restoreGeometry(trial.saveGeometry()) || again.geometry() != trial.geometry()
        || !selector->restoreState(selectorState))
        return false;
    restoreGeometry(geometry);
    d->setRecent(chips);
    return true;
}

ChipInfo DeviceSelectorDialog::selectedDevice() const
{
    return selector->selectedDevice();
}

QSize DeviceSelectorDialog::sizeHint() const
{
    return QSize(800, 450);
}

void DeviceSelectorDialog::onSelectedDeviceChanged(const DeviceArg& device)
{
    buttonBox->button(QDialogButtonBox::Ok)->setEnabled(!device.deviceId.isEmpty());
    Q_EMIT selectedDeviceChanged(device);
}

} // namespace DEV
