// The attribute filter: which criteria are set, how they compare, and the
// database queries that apply it.

#include "chipfilter.h"
#include "testhelpers.h"

#include <QTest>

using DEV::ChipFilter;
using DEV::ChipInfo;
using DEV::DeviceDb;

Q_DECLARE_METATYPE(DEV::ChipFilter)

namespace {

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
    for (const Criterion& k : Criteria)
        c.*(k.member) = QString::fromLatin1(k.name) + QLatin1String("-1");
    return c;
}

} // namespace

class TestChipFilter : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;
    std::unique_ptr<DeviceDb> m_db;

private slots:
    void initTestCase()
    {
        // Versions descend down the file, so file order is database order.
        m_db = m_files.load("v-c,PN-6,S1,MK6,DEV1,C,PKG1,1.0V,C6,AUX1,100\n"
                            "v-b,PN-3,S2,MK1,DEV2,BB,PKG1,1.2V,C6,AUX2,100\n"
                            "dup,PN-4,S2,MK4,DEV2,B,PKG1,1.2V,C6,AUX2,100\n"
                            "dup,PN-4,S2,MK4,DEV2,B,PKG1,1.2V,C6,AUX2,100\n"
                            "v-a,PN-2,S1,MK2,DEV1,A,PKG2,1.0V,C7,AUX1,100\n"
                            "any,PN-5,Any,MK5,dev1,0,PKG5,1.00V,I5,AUX5,100\n"
                            "v-none,PN-1,S1,MK1,DEV1,,PKG1,1.0V,C6,AUX1,100\n");
        QCOMPARE(TestHelpers::ids(m_db->allChipInfo()),
                 (QStringList{"v-c", "v-b", "dup", "dup", "v-a", "any", "v-none"}));
    }

    // Hosts brace-initialise the record, so the declaration order matters.
    void memberOrder()
    {
        const ChipFilter f{"pn", "se", "mk", "de", "dv", "pa", "au", "vo", "sp"};
        QCOMPARE(QStringList({f.partNumber, f.series, f.matchKey, f.device, f.deviceVersion, f.package, f.auxiliary,
                              f.voltage, f.speed}),
                 QStringList({"pn", "se", "mk", "de", "dv", "pa", "au", "vo", "sp"}));
    }

    void singleCriterion_data()
    {
        QTest::addColumn<int>("criterion");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("expected");
        for (int i = 0; i < int(std::size(Criteria)); ++i) {
            const QString own = sampleChip().*(Criteria[i].member);
            const auto row = [&](const char* what) -> QTestData& {
                return QTest::addRow("%s: %s", Criteria[i].name, what) << i;
            };
            row("equal") << own << true;
            row("other value") << own + "X" << false;
            row("other case") << own.toUpper() << false;
            row("trailing blank") << own + " " << false;
            row("leading blank") << " " + own << false;
            row("Any is a value") << "Any" << false;
            row("null") << QString() << true;
            // Only the version takes an empty, non-null string as a criterion.
            row("empty") << QString(QLatin1String("")) << (i != 4);
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

    void filterChips_data()
    {
        QTest::addColumn<ChipFilter>("filter");
        QTest::addColumn<QStringList>("expected");
        const QString empty(QLatin1String(""));
        const auto with = [](std::initializer_list<std::pair<QString ChipFilter::*, QString>> criteria) {
            ChipFilter f;
            for (const auto& c : criteria)
                f.*(c.first) = c.second;
            return f;
        };
        QTest::newRow("default keeps all, duplicates too")
            << ChipFilter() << QStringList{"v-c", "v-b", "dup", "dup", "v-a", "any", "v-none"};
        QTest::newRow("series") << with({{&ChipFilter::series, "S1"}}) << QStringList{"v-c", "v-a", "v-none"};
        QTest::newRow("empty version: unversioned only")
            << with({{&ChipFilter::deviceVersion, empty}}) << QStringList{"v-none"};
        QTest::newRow("empty series is no criterion") << with({{&ChipFilter::series, empty}, {&ChipFilter::deviceVersion, empty}})
                                                      << QStringList{"v-none"};
        QTest::newRow("four criteria")
            << with({{&ChipFilter::device, "DEV2"}, {&ChipFilter::package, "PKG1"}, {&ChipFilter::speed, "C6"},
                     {&ChipFilter::matchKey, "MK1"}}) << QStringList{"v-b"};
        QTest::newRow("case and number spelling count")
            << with({{&ChipFilter::device, "DEV1"}, {&ChipFilter::voltage, "1.0V"}}) << QStringList{"v-c", "v-a", "v-none"};
        QTest::newRow("Any as a value") << with({{&ChipFilter::series, "Any"}}) << QStringList{"any"};
        QTest::newRow("nothing") << with({{&ChipFilter::series, "S1"}, {&ChipFilter::auxiliary, "AUX2"}}) << QStringList();
    }
    void filterChips()
    {
        QFETCH(ChipFilter, filter);
        QFETCH(QStringList, expected);
        const QList<ChipInfo> chips = m_db->filterChips(filter);
        QCOMPARE(TestHelpers::ids(chips), expected);
        const QList<DEV::DeviceArg> devices = m_db->filterDevice(filter);
        QCOMPARE(devices.size(), chips.size());
        for (int i = 0; i < chips.size(); ++i)
            QCOMPARE(TestHelpers::fields(devices.at(i)), TestHelpers::fields(chips.at(i)));
    }
};

QTEST_GUILESS_MAIN(TestChipFilter)
#include "tst_chipfilter.moc"
