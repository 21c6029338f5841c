// SPDX-License-Identifier: BSD-3-Clause
// A host of the installed library: scripts/consumer-test builds it through find_package and pkg-config and compares
// what it prints, for a data file or else the catalogue beside bin/, with that catalogue.

#include <Device/devicedb.h> // hosts may include <Device/x.h> or <x.h>; both must work
#include <chipfilter.h>
#include <device_version.h>
#include <searchlineedit.h>
#include <ui_deviceselector.h>

#include <QAction>
#include <QApplication>

#include <cstdio>
#include <memory>

static_assert(DEVICE_VERSION >= DEVICE_VERSION_CHECK(1, 0, 0) && DEVICE_VERSION_MAJOR == 1, "the version macros");

int main(int argc, char** argv)
{
    // Widgets need a platform plugin; a test machine has no display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const std::unique_ptr<DEV::DeviceDb> own(argc > 1 ? new DEV::DeviceDb(QString::fromLocal8Bit(argv[1])) : nullptr);
    const DEV::DeviceDb* db = own ? own.get() : DEV::DeviceDb::instance();

    const QList<DEV::ChipInfo> byPn = db->findByPN("ZR9K31AA-LVBG484C6/I5");
    const DEV::ChipInfo chip = byPn.size() == 1 ? byPn.first() : DEV::ChipInfo(); // else an empty part line
    DEV::ChipFilter filter;
    filter.series = chip.series;
    filter.package = chip.package;
    DEV::SearchLineEdit search;
    search.caseSensitiveAction->trigger();
    search.rangeActions.at(2)->trigger();
    QWidget selector;
    DEV::Ui_DeviceSelector form;
    form.setupUi(&selector);

    const QString part = QStringList{"part", chip.partNumber, chip.deviceId, chip.series, chip.device, chip.package,
                                     chip.voltage, chip.speed}.join(QLatin1Char(' '));
    std::printf("chips %d\n%s\nid zr9k31-013 -> %s\nfilter %s %s %d\nsearch group %d case %s ranges %d\nform %s %s\n",
                int(db->allChipInfo().size()), qPrintable(part), qPrintable(db->findByID("zr9k31-013").deviceId),
                qPrintable(chip.series), qPrintable(chip.package), int(db->filterChips(filter).size()), search.filterGroup(),
                search.caseSensitiveAction->isChecked() ? "on" : "off", int(search.rangeActions.size()),
                qPrintable(selector.objectName()), qPrintable(form.cbPackage->objectName()));
    return chip.deviceId.isEmpty() ? 1 : 0;
}
