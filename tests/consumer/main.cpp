// A host of the installed library. It includes headers both ways a host may
// (<Device/x.h> and <x.h>), uses the database, a filter, the search field and
// the generated form, and prints what it found for scripts/consumer-test to
// compare against the catalogue.
//
//   consumer [DATA_FILE]
//
// Without DATA_FILE it uses DeviceDb::instance(), i.e. the catalogue at
// <program dir>/../data/device/device_info.csv.

#include <Device/devicedb.h>
#include <chipfilter.h>
#include <searchlineedit.h>
#include <ui_deviceselector.h>

#include <QAction>
#include <QApplication>
#include <QWidget>

#include <cstdio>
#include <memory>

namespace {

void print(const QString& line)
{
    std::printf("%s\n", line.toUtf8().constData());
}

} // namespace

int main(int argc, char** argv)
{
    // Widgets need a platform plugin; a test machine has no display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    std::unique_ptr<DEV::DeviceDb> own;
    DEV::DeviceDb* db = nullptr;
    if (argc > 1) {
        own = std::make_unique<DEV::DeviceDb>(QString::fromLocal8Bit(argv[1]));
        db = own.get();
    } else {
        db = DEV::DeviceDb::instance();
    }

    const QList<DEV::ChipInfo> all = db->allChipInfo();
    print(QStringLiteral("chips %1").arg(all.size()));

    const QList<DEV::ChipInfo> byPn = db->findByPN(QStringLiteral("ZR9K31AA-LVBG484C6/I5"));
    if (byPn.size() != 1) {
        print(QStringLiteral("part number found %1 times").arg(byPn.size()));
        return 1;
    }
    const DEV::ChipInfo& chip = byPn.first();
    print(QStringLiteral("part %1 %2 %3 %4 %5 %6 %7")
              .arg(chip.partNumber, chip.deviceId, chip.series, chip.device, chip.package,
                   chip.voltage, chip.speed));

    // An old identifier resolves to the current one.
    print(QStringLiteral("id zr9k31-013 -> %1").arg(db->findByID(QStringLiteral("zr9k31-013")).deviceId));

    DEV::ChipFilter filter;
    filter.series = chip.series;
    filter.package = chip.package;
    print(QStringLiteral("filter %1 %2 %3")
              .arg(chip.series, chip.package)
              .arg(db->filterChips(filter).size()));

    DEV::SearchLineEdit search;
    search.caseSensitiveAction->trigger();
    search.rangeActions.at(2)->trigger();
    print(QStringLiteral("search group %1 case %2 ranges %3")
              .arg(search.filterGroup())
              .arg(search.caseSensitiveAction->isChecked() ? QStringLiteral("on") : QStringLiteral("off"))
              .arg(search.rangeActions.size()));

    QWidget selector;
    DEV::Ui_DeviceSelector form;
    form.setupUi(&selector);
    print(QStringLiteral("form %1 %2").arg(selector.objectName(), form.cbPackage->objectName()));

    return 0;
}
