// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: arbitrary bytes as a saved state of the selector (first byte even) or of the dialog (odd), over
// a catalogue in which two records are one chip (one part number and match key, two device identifiers). Whatever
// the bytes, restoreState() either answers false and leaves the widget as it was, or takes a state that saveState()
// could have written: saved again, it restores to the same choice, geometry, columns and recent chips, the recent
// chips each there once, eight at most, each known to the database. Nothing may crash or leak.

#include "devicedb.h"
#include "deviceselector.h"
#include "deviceselectordialog.h"

#include <QApplication>
#include <QHeaderView>
#include <QTableView>

#include <cstdlib>
#include <type_traits>

namespace {

DEV::DeviceDb* db = nullptr;

template <typename Widget>
constexpr bool isDialog = std::is_same_v<Widget, DEV::DeviceSelectorDialog>;

// What the user has of a state: the chosen chip, the geometry as shown (Qt fits a restored geometry to the screen, so
// the saved bytes may differ), the columns and the recent chips, which must keep their promises.
template <typename Widget>
QVariantList seen(const Widget& widget)
{
    QStringList recent;
    QByteArray columns = widget.saveState();
    if constexpr (isDialog<Widget>) {
        columns = widget.deviceSelector()->saveState();
        for (const DEV::ChipInfo& chip : widget.recentChips()) {
            const QString key = chip.partNumber + QLatin1Char('/') + chip.matchKey;
            if (recent.contains(key) || recent.size() == 8 || db->find(chip.partNumber, chip.matchKey).partNumber.isEmpty())
                std::abort(); // a chip twice, more than eight, or one the database does not know
            recent << key;
        }
    }
    return {widget.selectedDevice().deviceId, widget.geometry(), columns, recent};
}

template <typename Widget>
void check(const QByteArray& state)
{
    Widget widget(db);
    if constexpr (isDialog<Widget>) {
        for (const char* id : {"qb1-009", "qb1-001", "qb1-002"}) { // both records of one chip: listed once
            widget.setCurrentDevice(QString::fromLatin1(id));
            widget.accept();
        }
    }
    widget.setCurrentDevice(QStringLiteral("qb1-002"));
    const QString chosen = widget.selectedDevice().deviceId;
    const auto* table = widget.template findChild<QTableView*>();
    const int rows = table->model()->rowCount();
    const QByteArray before = widget.saveState();
    if (chosen != QLatin1String("qb1-002"))
        std::abort(); // the catalogue is not the one this target was written for
    if (!widget.restoreState(state)) {
        if (widget.saveState() != before)
            std::abort(); // refused, yet changed
    } else {
        const QVariantList restored = seen(widget);
        if (!widget.restoreState(widget.saveState()) || seen(widget) != restored)
            std::abort(); // took something it cannot keep
    }
    // Whatever happened: every row and column there, a sort column among them (or none), the chip still chosen.
    const QHeaderView* header = table->horizontalHeader();
    if (table->model()->rowCount() != rows || header->count() != table->model()->columnCount()
        || header->sortIndicatorSection() >= header->count() || widget.selectedDevice().deviceId != chosen)
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
