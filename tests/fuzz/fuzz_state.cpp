// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: arbitrary bytes as a saved state of the selector (first byte even) or of the dialog (odd). Whatever
// the bytes, restoreState() either answers false and leaves the widget as it was, or restores a state that the widget
// saves and restores again unchanged (the table's part of it: Qt fits a restored geometry to the screen each time),
// with the table's rows, columns, sort column and chosen chip still sound. Nothing may crash or leak.

#include "devicedb.h"
#include "deviceselector.h"
#include "deviceselectordialog.h"

#include <QApplication>
#include <QHeaderView>
#include <QTableView>

#include <cstdlib>

namespace {

DEV::DeviceDb* db = nullptr;

QByteArray tableState(const DEV::DeviceSelector& selector)
{
    return selector.saveState();
}

QByteArray tableState(const DEV::DeviceSelectorDialog& dialog)
{
    return dialog.findChild<DEV::DeviceSelector*>()->saveState();
}

// What must hold of the table whatever happened: every row and column there, a sort column among them (or none),
// and the chip chosen before still chosen.
template <typename Widget>
bool sound(const Widget& widget, int rows, const QString& chosen)
{
    const auto* table = widget.template findChild<QTableView*>();
    const QHeaderView* header = table->horizontalHeader();
    return table->model()->rowCount() == rows && header->count() == table->model()->columnCount()
        && header->sortIndicatorSection() < header->count() && widget.selectedDevice().partNumber == chosen;
}

template <typename Widget>
void check(const QByteArray& state)
{
    Widget widget(db);
    widget.setCurrentDevice(QStringLiteral("qb1-002"));
    const QString chosen = widget.selectedDevice().partNumber;
    const int rows = widget.template findChild<QTableView*>()->model()->rowCount();
    const QByteArray before = widget.saveState();
    if (chosen.isEmpty())
        std::abort(); // the catalogue is not the one this target was written for
    if (!widget.restoreState(state)) {
        if (widget.saveState() != before)
            std::abort(); // refused, yet changed
    } else {
        const QByteArray after = tableState(widget);
        if (!widget.restoreState(widget.saveState()) || tableState(widget) != after)
            std::abort(); // restored something it cannot keep
    }
    if (!sound(widget, rows, chosen))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt's own complaints about odd states are expected here; printing them only slows fuzzing down.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    new QApplication(*argc, *argv); // lives as long as the process, as the widgets need it
    db = new DEV::DeviceDb(QStringLiteral(DEVICE_FUZZ_CATALOGUE));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray state(reinterpret_cast<const char*>(data) + 1, int(size - 1));
    if (data[0] % 2 == 0)
        check<DEV::DeviceSelector>(state);
    else
        check<DEV::DeviceSelectorDialog>(state);
    return 0;
}
