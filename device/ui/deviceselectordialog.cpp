// SPDX-License-Identifier: BSD-3-Clause
#include "deviceselectordialog.h"

#include "chiprequirements.h"
#include "deviceselector.h"
#include "recentchips_p.h"

#include <QDataStream>
#include <QDialogButtonBox>
#include <QIODevice>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

namespace DEV {

DeviceSelectorDialog::DeviceSelectorDialog(DeviceDb* db, QWidget* parent)
    : QDialog(parent)
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
    auto* table = selector->findChild<QTableView*>();
    connect(table, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        QPushButton* ok = buttonBox->button(QDialogButtonBox::Ok);
        if (index.isValid() && ok->isEnabled())
            ok->click();
    });

    // Above OK and Cancel, at the left, hidden unless the host shows it.
    auto* recent = new pimpl::RecentChips(db, this);
    recent->hide();
    layout->insertWidget(1, recent, 0, Qt::AlignLeft);
    // From the table, and what the selector shows below it, to the buttons.
    QWidget* last = table;
    for (QWidget* next = table->nextInFocusChain(); selector->isAncestorOf(next); next = next->nextInFocusChain())
        last = next;
    setTabOrder(last, recent);
    setTabOrder(recent, buttonBox->button(QDialogButtonBox::Ok));
    setTabOrder(buttonBox->button(QDialogButtonBox::Ok), buttonBox->button(QDialogButtonBox::Cancel));
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

void DeviceSelectorDialog::setRecentVisible(bool visible)
{
    findChild<pimpl::RecentChips*>()->setVisible(visible);
}

bool DeviceSelectorDialog::recentVisible() const
{
    return !findChild<pimpl::RecentChips*>()->isHidden();
}

QList<ChipInfo> DeviceSelectorDialog::recentChips() const
{
    return findChild<pimpl::RecentChips*>()->chips();
}

QByteArray DeviceSelectorDialog::saveState() const
{
    QByteArray state;
    QDataStream out(&state, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_12);
    out << DialogStateMagic << saveGeometry() << selector->saveState() << findChild<pimpl::RecentChips*>()->keys();
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
    auto* recent = findChild<pimpl::RecentChips*>();
    QList<ChipInfo> chips;
    // Every part is checked before anything changes, the geometry on a
    // widget of its own; the selector takes all of its part or none.
    QWidget trial;
    if (in.status() != QDataStream::Ok || !in.atEnd() || magic != DialogStateMagic
        || !recent->readKeys(recentKeys, &chips) || !trial.restoreGeometry(geometry)
        || !selector->restoreState(selectorState))
        return false;
    restoreGeometry(geometry);
    recent->setChips(chips);
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
