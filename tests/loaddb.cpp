// Helper for tst_dataloader: loads each file named on the command line, so
// that the test can read the loader's messages exactly as they reach stderr.

#include "devicedb.h"

#include <QCoreApplication>
#include <QStringList>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    for (const QString& file : args)
        DEV::DeviceDb db(file);
    return 0;
}
