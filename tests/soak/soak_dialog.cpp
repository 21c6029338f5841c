// SPDX-License-Identifier: BSD-3-Clause
// Soak: opens the selector dialog through getSelectedChip() on the bundled catalogue, lets it answer and closes it,
// again and again, and watches the resident size. Built with LeakSanitizer (tests/soak/soak-dialog runs it), which
// reports at exit whatever the openings left unfreed.
//
//   soak_dialog CATALOGUE [ROUNDS]   (default 2000 rounds)
//
// Prints the mean resident size of the first and of the last hundred rounds; exits 1 when the last is more than
// 5 % above the first, 2 on bad usage or a catalogue without chips.

#include "devicedb.h"
#include "deviceselectordialog.h"

#include <QApplication>
#include <QSet>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

namespace {

long residentKiB()
{
    long pages = 0, resident = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(statm);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace

int main(int argc, char** argv)
{
    // Each distinct message once: the offscreen platform repeats its own at every opening.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& message) {
        static QSet<QString> seen;
        if (!seen.contains(message)) {
            seen.insert(message);
            std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
        }
    });
    QApplication app(argc, argv);
    const int rounds = argc > 2 ? QByteArray(argv[2]).toInt() : 2000;
    if (argc < 2 || rounds < 200) {
        std::fprintf(stderr, "usage: soak_dialog CATALOGUE [ROUNDS >= 200]\n");
        return 2;
    }
    DEV::DeviceDb db(QString::fromLocal8Bit(argv[1]));
    if (db.allChipInfo().isEmpty())
        return 2;
    const QString preset = db.allChipInfo().constFirst().deviceId;
    double first = 0, last = 0;
    int chosen = 0;
    for (int round = 0; round < rounds; ++round) {
        // Answered as a user would, through OK, once the dialog runs its own event loop.
        QTimer::singleShot(0, [] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                dialog->accept();
        });
        chosen += DEV::DeviceSelectorDialog::getSelectedChip(nullptr, &db, preset).deviceId == preset;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (round < 100)
            first += residentKiB() / 100.0;
        else if (round >= rounds - 100)
            last += residentKiB() / 100.0;
    }
    const double growth = 100.0 * (last - first) / first;
    std::printf("soak: %d openings, %d answered with the preset chip; resident size first 100: %.0f KiB, "
                "last 100: %.0f KiB (%+.2f %%)\n", rounds, chosen, first, last, growth);
    return chosen == rounds && growth <= 5.0 ? 0 : 1;
}
