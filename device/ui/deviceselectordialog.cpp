// SPDX-License-Identifier: BSD-3-Clause
#include "deviceselectordialog.h"

#include "deviceselector.h"

#include <QDialogButtonBox>
#include <QPushButton>
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
}

DeviceSelectorDialog::~DeviceSelectorDialog() = default;

ChipInfo DeviceSelectorDialog::getSelectedChip(QWidget* parent, DeviceDb* db, const QString& device)
{
    DeviceSelectorDialog dialog(db, parent);
    dialog.selector->setCurrentDevice(device);
    if (dialog.exec() == QDialog::Accepted)
        return dialog.selector->selectedDevice();
    return ChipInfo();
}

void DeviceSelectorDialog::setCurrentDevice(const QString& device)
{
    selector->setCurrentDevice(device);
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
