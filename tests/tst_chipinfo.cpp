#include "chipinfo.h"
#include "devicedb.h"

#include <QSignalSpy>
#include <QTest>
#include <QVariant>

using DEV::ChipInfo;
using DEV::DeviceArg;

namespace {

ChipInfo chip(const QString& id, const QString& pn)
{
    ChipInfo c;
    c.deviceId = id;
    c.partNumber = pn;
    c.series = QStringLiteral("S-") + pn;
    c.matchKey = QStringLiteral("K-") + pn;
    c.device = QStringLiteral("D-") + pn;
    c.deviceVersion = QStringLiteral("V-") + pn;
    c.package = QStringLiteral("P-") + pn;
    c.voltage = QStringLiteral("U-") + pn;
    c.speed = QStringLiteral("C-") + pn;
    c.auxiliary = QStringLiteral("X-") + pn;
    c.resources = QStringList{pn, pn + pn};
    return c;
}

// Emits a DeviceArg so that queued delivery can be observed.
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
    void defaultRecordIsEmpty()
    {
        const ChipInfo c;
        QVERIFY(c.partNumber.isNull());
        QVERIFY(c.deviceId.isNull());
        QVERIFY(c.auxiliary.isNull());
        QVERIFY(c.resources.isEmpty());

        const DeviceArg a;
        QVERIFY(a.deviceId.isNull());
        QVERIFY(a.resources.isEmpty());
    }

    void converterCopiesEveryMember()
    {
        const ChipInfo c = chip(QStringLiteral("id1"), QStringLiteral("PN1"));
        const DeviceArg a(c);
        QCOMPARE(a.deviceId, c.deviceId);
        QCOMPARE(a.partNumber, c.partNumber);
        QCOMPARE(a.series, c.series);
        QCOMPARE(a.matchKey, c.matchKey);
        QCOMPARE(a.device, c.device);
        QCOMPARE(a.deviceVersion, c.deviceVersion);
        QCOMPARE(a.package, c.package);
        QCOMPARE(a.voltage, c.voltage);
        QCOMPARE(a.speed, c.speed);
        QCOMPARE(a.auxiliary, c.auxiliary);
        QCOMPARE(a.resources, c.resources);
    }

    void equalityLooksOnlyAtDeviceId_data()
    {
        QTest::addColumn<QString>("leftId");
        QTest::addColumn<QString>("leftPn");
        QTest::addColumn<QString>("rightId");
        QTest::addColumn<QString>("rightPn");
        QTest::addColumn<bool>("equal");

        QTest::newRow("same id, every other member differs")
            << "zr9k31a-000" << "PN-A" << "zr9k31a-000" << "PN-B" << true;
        QTest::newRow("different id, same part number")
            << "zr9k31a-000" << "PN-A" << "zr9k31a-003" << "PN-A" << false;
        QTest::newRow("id differs in letter case")
            << "zr9k31-000" << "PN-A" << "ZR9K31-000" << "PN-A" << false;
        QTest::newRow("id differs by a trailing blank")
            << "zr9k31-000" << "PN-A" << "zr9k31-000 " << "PN-A" << false;
        QTest::newRow("both ids empty") << "" << "PN-A" << "" << "PN-B" << true;
    }

    void equalityLooksOnlyAtDeviceId()
    {
        QFETCH(QString, leftId);
        QFETCH(QString, leftPn);
        QFETCH(QString, rightId);
        QFETCH(QString, rightPn);
        QFETCH(bool, equal);

        DeviceArg left(chip(leftId, leftPn));
        const DeviceArg right(chip(rightId, rightPn));
        QCOMPARE(left == right, equal);
        QCOMPARE(left != right, !equal);
    }

    void twoDefaultArgsAreEqual()
    {
        DeviceArg a;
        const DeviceArg b;
        QVERIFY(a == b);
        QVERIFY(!(a != b));
    }

    void copyAssignmentTakesAllMembers()
    {
        DeviceArg target(chip(QStringLiteral("old"), QStringLiteral("OLD")));
        target.resources = QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                                       QStringLiteral("4"), QStringLiteral("5")};
        const DeviceArg source(chip(QStringLiteral("new"), QStringLiteral("NEW")));

        DeviceArg& result = (target = source);
        QCOMPARE(&result, &target);
        QCOMPARE(target.deviceId, QStringLiteral("new"));
        QCOMPARE(target.partNumber, QStringLiteral("NEW"));
        QCOMPARE(target.series, source.series);
        QCOMPARE(target.matchKey, source.matchKey);
        QCOMPARE(target.device, source.device);
        QCOMPARE(target.deviceVersion, source.deviceVersion);
        QCOMPARE(target.package, source.package);
        QCOMPARE(target.voltage, source.voltage);
        QCOMPARE(target.speed, source.speed);
        QCOMPARE(target.auxiliary, source.auxiliary);
        QCOMPARE(target.resources.size(), 2);
        QCOMPARE(target.resources, source.resources);
    }

    void moveAssignmentExchangesMembers()
    {
        ChipInfo target = chip(QStringLiteral("t"), QStringLiteral("T"));
        ChipInfo source = chip(QStringLiteral("s"), QStringLiteral("S"));
        target = std::move(source);
        QCOMPARE(target.deviceId, QStringLiteral("s"));
        QCOMPARE(target.resources, (QStringList{QStringLiteral("S"), QStringLiteral("SS")}));
    }

    void copiesShareStringData()
    {
        const ChipInfo original = chip(QStringLiteral("id"), QStringLiteral("PN"));
        const ChipInfo copy = original;
        QVERIFY(copy.partNumber.isSharedWith(original.partNumber));
        QVERIFY(copy.resources.isSharedWith(original.resources));
    }

    void metaTypeNameIsRegistered()
    {
        DEV::DeviceDb db(QStringLiteral("/nonexistent/device_info.csv"));
        const int id = QMetaType::type("DEV::DeviceArg");
        QVERIFY(id != QMetaType::UnknownType);
        QCOMPARE(id, qMetaTypeId<DEV::DeviceArg>());
        QCOMPARE(QByteArray(QMetaType::typeName(id)), QByteArray("DEV::DeviceArg"));
        QVERIFY(QMetaType::typeFlags(id) & QMetaType::NeedsConstruction);
        QVERIFY(QMetaType::typeFlags(id) & QMetaType::NeedsDestruction);
        QVERIFY(!(QMetaType::typeFlags(id) & QMetaType::MovableType));
    }

    void travelsInVariant()
    {
        const DeviceArg a(chip(QStringLiteral("zr9k31a-015"), QStringLiteral("PN")));
        const QVariant v = QVariant::fromValue(a);
        QCOMPARE(QByteArray(v.typeName()), QByteArray("DEV::DeviceArg"));
        const DeviceArg back = v.value<DeviceArg>();
        QCOMPARE(back.partNumber, QStringLiteral("PN"));
        QCOMPARE(back.resources, a.resources);
    }

    void travelsThroughQueuedConnection()
    {
        DEV::DeviceDb db(QStringLiteral("/nonexistent/device_info.csv"));
        Emitter emitter;
        DeviceArg received;
        QObject::connect(&emitter, &Emitter::deviceChanged, &emitter,
                         [&received](const DeviceArg& d) { received = d; }, Qt::QueuedConnection);
        emit emitter.deviceChanged(DeviceArg(chip(QStringLiteral("id-q"), QStringLiteral("PN-Q"))));
        QVERIFY(received.deviceId.isEmpty()); // not delivered before the event loop runs
        QTRY_COMPARE(received.deviceId, QStringLiteral("id-q"));
        QCOMPARE(received.partNumber, QStringLiteral("PN-Q"));
    }
};

QTEST_GUILESS_MAIN(TestChipInfo)
#include "tst_chipinfo.moc"
