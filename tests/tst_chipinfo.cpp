// The chip record and DeviceArg: empty defaults, identity by device id only,
// whole-record copies, and travel through Qt's meta-type system.

#include "testhelpers.h"

#include <QTest>

using DEV::ChipInfo;
using DEV::DeviceArg;
using TestHelpers::fields;

namespace {

// Every member distinct, so a member dropped or swapped shows.
ChipInfo chip(const QString& id, const QString& pn)
{
    ChipInfo c;
    c.deviceId = id;
    c.partNumber = pn;
    int i = 0;
    for (QString* m : {&c.series, &c.matchKey, &c.device, &c.deviceVersion, &c.package, &c.voltage, &c.speed,
                       &c.auxiliary})
        *m = QStringLiteral("m%1-").arg(i++) + pn;
    c.resources = QStringList{pn, pn + pn};
    return c;
}

class Emitter : public QObject
{
    Q_OBJECT
signals:
    void deviceChanged(const DEV::DeviceArg& device);
};

} // namespace

class TestChipInfo : public QObject
{
    Q_OBJECT

private slots:
    void defaultsAreEmpty()
    {
        QVERIFY(ChipInfo().partNumber.isNull());
        QVERIFY(ChipInfo().resources.isEmpty());
        QVERIFY(DeviceArg().deviceId.isNull());
        QVERIFY(DeviceArg() == DeviceArg());
        QVERIFY(!(DeviceArg() != DeviceArg()));
    }

    void equalityLooksOnlyAtDeviceId_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::addColumn<bool>("equal");
        QTest::newRow("same id, other members differ") << "zr9k31a-000" << "zr9k31a-000" << true;
        QTest::newRow("other id") << "zr9k31a-000" << "zr9k31a-003" << false;
        QTest::newRow("letter case") << "zr9k31-000" << "ZR9K31-000" << false;
        QTest::newRow("trailing blank") << "zr9k31-000" << "zr9k31-000 " << false;
        QTest::newRow("both empty") << "" << "" << true;
    }
    void equalityLooksOnlyAtDeviceId()
    {
        QFETCH(QString, left);
        QFETCH(QString, right);
        QFETCH(bool, equal);
        // Equal part numbers when the ids differ, different ones when they agree.
        DeviceArg a(chip(left, equal ? "PN-A" : "PN"));
        const DeviceArg b(chip(right, equal ? "PN-B" : "PN"));
        QCOMPARE(a == b, equal);
        QCOMPARE(a != b, !equal);
    }

    void copiesTakeEveryMember()
    {
        const ChipInfo c = chip(QStringLiteral("id1"), QStringLiteral("PN1"));
        QCOMPARE(fields(DeviceArg(c)), fields(c));

        DeviceArg target(chip(QStringLiteral("old"), QStringLiteral("OLD")));
        target.resources << QStringLiteral("3") << QStringLiteral("4") << QStringLiteral("5");
        const DeviceArg source(c);
        QCOMPARE(&(target = source), &target);
        QCOMPARE(fields(target), fields(c));

        ChipInfo moved = chip(QStringLiteral("t"), QStringLiteral("T"));
        moved = ChipInfo(c);
        QCOMPARE(fields(moved), fields(c));
        QVERIFY(ChipInfo(c).resources.isSharedWith(c.resources));
    }

    // A DEV::DeviceArg signal argument is copied through the meta-type
    // registered under that name when the connection is queued.
    void travelsThroughQueuedConnection()
    {
        DEV::DeviceDb db(QStringLiteral("/nonexistent/device_info.csv"));
        const int id = QMetaType::type("DEV::DeviceArg");
        QCOMPARE(id, qMetaTypeId<DeviceArg>());
        QCOMPARE(QByteArray(QVariant::fromValue(DeviceArg()).typeName()), QByteArray("DEV::DeviceArg"));

        Emitter emitter;
        DeviceArg received;
        connect(&emitter, &Emitter::deviceChanged, this, [&](const DeviceArg& d) { received = d; },
                Qt::QueuedConnection);
        const ChipInfo sent = chip(QStringLiteral("id-q"), QStringLiteral("PN-Q"));
        emit emitter.deviceChanged(sent);
        QVERIFY(received.deviceId.isEmpty());
        QTRY_COMPARE(fields(received), fields(sent));
    }
};

QTEST_GUILESS_MAIN(TestChipInfo)
#include "tst_chipinfo.moc"
