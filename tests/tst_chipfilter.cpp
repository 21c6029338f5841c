// The attribute filter: which criteria are set, how they compare, and the
// database queries that apply it.

#include "chipfilter.h"
#include "devicedb.h"
#include "testhelpers.h"

#include <QTemporaryDir>
#include <QTest>

using DEV::ChipFilter;
using DEV::ChipInfo;
using DEV::DeviceArg;
using DEV::DeviceDb;

Q_DECLARE_METATYPE(DEV::ChipFilter)

namespace {

// Empty but not null: the one value that sets the version criterion.
QString emptyString()
{
    return QLatin1String("");
}

struct Criterion
{
    const char* name;
    QString ChipFilter::*criterion;
    QString ChipInfo::*member;
};

const Criterion Criteria[] = {
    {"partNumber", &ChipFilter::partNumber, &ChipInfo::partNumber},
    {"series", &ChipFilter::series, &ChipInfo::series},
    {"matchKey", &ChipFilter::matchKey, &ChipInfo::matchKey},
    {"device", &ChipFilter::device, &ChipInfo::device},
    {"deviceVersion", &ChipFilter::deviceVersion, &ChipInfo::deviceVersion},
    {"package", &ChipFilter::package, &ChipInfo::package},
    {"auxiliary", &ChipFilter::auxiliary, &ChipInfo::auxiliary},
    {"voltage", &ChipFilter::voltage, &ChipInfo::voltage},
    {"speed", &ChipFilter::speed, &ChipInfo::speed},
};

ChipInfo sampleChip()
{
    ChipInfo c;
    c.deviceId = "id-1";
    c.partNumber = "PN-1";
    c.series = "S1";
    c.matchKey = "MK1";
    c.device = "DEV1";
    c.deviceVersion = "A";
    c.package = "PKG1";
    c.voltage = "1.0V";
    c.speed = "C6";
    c.auxiliary = "AUX1";
    c.resources = QStringList{"100", "200"};
    return c;
}

QStringList fields(const ChipInfo& c)
{
    return QStringList{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion,
                       c.package, c.voltage, c.speed, c.auxiliary}
        + c.resources;
}

QStringList ids(const QList<ChipInfo>& chips)
{
    QStringList out;
    for (const ChipInfo& c : chips)
        out << c.deviceId;
    return out;
}

} // namespace

class TestChipFilter : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<DeviceDb> m_db;

    // The chips of the database whose identifier is listed, in database order.
    QStringList inDatabaseOrder(const QStringList& wanted) const
    {
        QStringList out;
        for (const ChipInfo& c : m_db->allChipInfo()) {
            if (wanted.contains(c.deviceId))
                out << c.deviceId;
        }
        return out;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QByteArray bytes =
            "v-none,PN-1,S1,MK1,DEV1,,PKG1,1.0V,C6,AUX1,100\n"
            "v-a,PN-2,S1,MK2,DEV1,A,PKG2,1.0V,C7,AUX1,100\n"
            "v-b,PN-3,S2,MK1,DEV2,B,PKG1,1.2V,C6,AUX2,100\n"
            "dup,PN-4,S2,MK4,DEV2,B,PKG1,1.2V,C6,AUX2,100\n"
            "dup,PN-4,S2,MK4,DEV2,B,PKG1,1.2V,C6,AUX2,100\n"
            "any,PN-5,Any,MK5,dev1,,PKG5,1.00V,I5,AUX5,100\n"
            "v-c,PN-6,S1,MK6,DEV1,C,PKG1,1.0V,C6,AUX1,100\n";
        const QString path = m_dir.filePath(QStringLiteral("device_info.csv"));
        QVERIFY(TestHelpers::writeFile(path, bytes));
        m_db.reset(new DeviceDb(path));
        QCOMPARE(m_db->allChipInfo().size(), 7);
    }

    // Brace initialisation fails to compile or fills the wrong member if the
    // declaration order changes; hosts rely on it.
    void memberOrder()
    {
        const ChipFilter f{"pn", "se", "mk", "de", "dv", "pa", "au", "vo", "sp"};
        QCOMPARE(QStringList({f.partNumber, f.series, f.matchKey, f.device, f.deviceVersion, f.package,
                              f.auxiliary, f.voltage, f.speed}),
                 QStringList({"pn", "se", "mk", "de", "dv", "pa", "au", "vo", "sp"}));
    }

    void singleCriterion_data()
    {
        QTest::addColumn<int>("criterion");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("expected");

        const ChipInfo chip = sampleChip();
        for (int i = 0; i < int(sizeof Criteria / sizeof *Criteria); ++i) {
            const Criterion& c = Criteria[i];
            const QString own = chip.*(c.member);
            const bool isVersion = QByteArray(c.name) == "deviceVersion";
            auto row = [&](const char* what) -> QTestData& {
                return QTest::addRow("%s: %s", c.name, what) << i;
            };
            row("equal") << own << true;
            row("other value") << own + "X" << false;
            row("other letter case") << own.toLower() << false;
            row("trailing blank") << own + " " << false;
            row("leading blank") << " " + own << false;
            row("Any is a value") << "Any" << false;
            row("null") << QString() << true;
            // Only the version treats an empty, non-null string as a criterion.
            row("empty, not null") << emptyString() << !isVersion;
        }
    }

    void singleCriterion()
    {
        QFETCH(int, criterion);
        QFETCH(QString, value);
        QFETCH(bool, expected);

        ChipFilter filter;
        filter.*(Criteria[criterion].criterion) = value;
        QCOMPARE(DEV::matchFilter(sampleChip(), filter), expected);
    }

    void emptyVersionSelectsUnversionedChips()
    {
        ChipFilter filter;
        filter.deviceVersion = emptyString();
        ChipInfo chip = sampleChip();
        for (const QString& version : {emptyString(), QString()}) {
            chip.deviceVersion = version;
            QVERIFY(DEV::matchFilter(chip, filter));
        }
        for (const QString& version : {QStringLiteral(" "), QStringLiteral("A")}) {
            chip.deviceVersion = version;
            QVERIFY(!DEV::matchFilter(chip, filter));
        }
    }

    void filterChips_data()
    {
        QTest::addColumn<ChipFilter>("filter");
        QTest::addColumn<QStringList>("expectedIds");

        QTest::newRow("default keeps everything, duplicates too")
            << ChipFilter() << QStringList{"v-none", "v-a", "v-b", "dup", "any", "v-c"};
        ChipFilter f;
        f.series = "S1";
        QTest::newRow("series") << f << QStringList{"v-none", "v-a", "v-c"};
        f.deviceVersion = emptyString();
        QTest::newRow("series, unversioned") << f << QStringList{"v-none"};
        f = ChipFilter();
        f.deviceVersion = emptyString();
        QTest::newRow("unversioned only") << f << QStringList{"v-none", "any"};
        f = ChipFilter();
        f.device = "DEV2";
        QTest::newRow("identical chips both kept") << f << QStringList{"v-b", "dup"};
        f.package = "PKG1";
        f.speed = "C6";
        f.matchKey = "MK1";
        QTest::newRow("four criteria") << f << QStringList{"v-b"};
        f = ChipFilter();
        f.device = "DEV1";
        f.voltage = "1.0V";
        QTest::newRow("case and number spelling count") << f << QStringList{"v-none", "v-a", "v-c"};
        f = ChipFilter();
        f.series = "Any";
        QTest::newRow("Any as a value") << f << QStringList{"any"};
        f.series = "S1";
        f.auxiliary = "AUX2";
        QTest::newRow("nothing matches") << f << QStringList{};
    }

    void filterChips()
    {
        QFETCH(ChipFilter, filter);
        QFETCH(QStringList, expectedIds);

        const QList<ChipInfo> chips = m_db->filterChips(filter);
        QCOMPARE(ids(chips), inDatabaseOrder(expectedIds));

        const QList<DeviceArg> devices = m_db->filterDevice(filter);
        QCOMPARE(devices.size(), chips.size());
        for (int i = 0; i < chips.size(); ++i)
            QCOMPARE(fields(devices.at(i)), fields(chips.at(i)));
    }
};

QTEST_GUILESS_MAIN(TestChipFilter)
#include "tst_chipfilter.moc"
