#include "chipinfo.h"
#include "chipinfotablemodel.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

using DEV::ChipInfo;
using DEV::ChipInfoTableModel;

namespace {

enum Kind { Text, Number, KbSize };

// The comparison kind of each column, written out here independently of
// the model.
Kind kindOf(int column)
{
    if (column < 7)
        return Text;
    if (column >= 10 && column <= 13)
        return KbSize;
    return Number;
}

// Marks a resource entry that the record does not carry at all.
const QString Missing = QStringLiteral("<missing>");

// A record showing @p text in @p column; @p id tells the records apart.
ChipInfo withCell(int column, const QString& text, int id)
{
    ChipInfo c;
    c.deviceId = QString::number(id);
    QString* members[] = {&c.partNumber, &c.series, &c.device, &c.deviceVersion, &c.package, &c.speed,
                          &c.voltage};
    if (column < 7) {
        *members[column] = text;
        return c;
    }
    for (int k = 0; k < column - 7; ++k)
        c.resources << QString::number(k);
    if (text != Missing)
        c.resources << text << QStringLiteral("1");
    return c;
}

QList<ChipInfo> listOf(int column, const QStringList& texts)
{
    QList<ChipInfo> list;
    for (int i = 0; i < texts.size(); ++i)
        list << withCell(column, texts.at(i), i);
    return list;
}

QStringList columnTexts(const ChipInfoTableModel& model, int column)
{
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.data(model.index(row, column)).toString();
    return out;
}

QStringList deviceIds(const QList<ChipInfo>& list)
{
    QStringList out;
    for (const ChipInfo& c : list)
        out << c.deviceId;
    return out;
}

QList<ChipInfo> rows(ChipInfoTableModel& model)
{
    QList<ChipInfo> out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.index2chipInfo(model.index(row, 0));
    return out;
}

// The comparison written out the plain way: cell texts built afresh for
// every comparison. The model's sort must agree with it.
struct LiteralLess
{
    const ChipInfoTableModel* model;
    int column;
    bool ascending;

    static int number(QString text, Kind kind)
    {
        if (kind == KbSize)
            text.remove(QStringLiteral("Kb"), Qt::CaseSensitive);
        return text.toInt(nullptr, 10);
    }

    bool operator()(const ChipInfo& l, const ChipInfo& r) const
    {
        const QString a = model->columnOfChipInfo(l, column);
        const QString b = model->columnOfChipInfo(r, column);
        const Kind kind = kindOf(column);
        if (kind == Text)
            return ascending ? QString::compare(a, b, Qt::CaseSensitive) < 0
                             : QString::compare(a, b, Qt::CaseSensitive) > 0;
        return ascending ? number(a, kind) < number(b, kind) : number(a, kind) > number(b, kind);
    }
};

QString recordText(const ChipInfo& c)
{
    const QChar sep(0x1f);
    return QStringList{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion, c.package,
                       c.voltage, c.speed, c.auxiliary, c.resources.join(sep), QString::number(c.resources.size())}
        .join(QChar(0x1e));
}

QString pick(QRandomGenerator& rng, const QStringList& pool)
{
    return pool.at(int(rng.bounded(quint32(pool.size()))));
}

// Records full of ties and of texts that only some comparisons tell apart:
// texts that differ only after many equal units or only by a trailing U+0000,
// counts that are not plain digits, "Kb" in odd places, short resource lists.
// With @p prefix, every text cell starts with it.
QList<ChipInfo> randomChips(quint32 seed, int count, const QString& prefix = QString())
{
    const QStringList words{QString(), QStringLiteral("a"), QStringLiteral("A"), QStringLiteral("Z"),
                            QStringLiteral("z"), QStringLiteral("9"), QStringLiteral("10"), QStringLiteral(" "),
                            QStringLiteral("LV9QN88"), QStringLiteral("PC6/I5"), QString(QChar(0)),
                            QString(QChar(0xe9)), QString(QChar(0xffff)),
                            QString::fromUtf8("\xf0\x9f\x98\x80")}; // U+1F600, a surrogate pair
    const QStringList counts{QString(), QStringLiteral("0"), QStringLiteral("7"), QStringLiteral("-3"),
                             QStringLiteral("+4"), QStringLiteral(" 5"), QStringLiteral("5 "), QStringLiteral("x"),
                             QStringLiteral("007"), QStringLiteral("123456789"), QStringLiteral("1234567890"),
                             QStringLiteral("2147483647"), QStringLiteral("2147483648"),
                             QStringLiteral("9999999999"), QStringLiteral("8Kb"), QStringLiteral("Kb8"),
                             QStringLiteral("0Kb"), QStringLiteral("Kb"), QStringLiteral("64KB"),
                             QStringLiteral("2Mb"), QStringLiteral("16kb"), QStringLiteral("1Kb0Kb"),
                             QStringLiteral("KbKb"), QStringLiteral("12KbKb"), QStringLiteral("0x10"),
                             QStringLiteral("1234567890Kb"), QStringLiteral("1:"), QStringLiteral("1/")};
    QRandomGenerator rng(seed);
    QList<ChipInfo> list;
    for (int i = 0; i < count; ++i) {
        ChipInfo c;
        c.deviceId = QString::number(i);
        QString* members[] = {&c.partNumber, &c.series, &c.device, &c.deviceVersion, &c.package, &c.speed,
                              &c.voltage};
        for (QString* m : members) {
            *m = prefix;
            for (int w = int(rng.bounded(7)); w > 0; --w)
                *m += pick(rng, words);
        }
        const int entries = int(rng.bounded(11)); // 0 to 10: short lists too
        for (int k = 0; k < entries; ++k) {
            const int n = int(rng.bounded(40)) - 5;
            switch (rng.bounded(3)) {
            case 0:
                c.resources << pick(rng, counts);
                break;
            case 1:
                c.resources << QString::number(n);
                break;
            default:
                c.resources << QString::number(n) + QLatin1String("Kb");
            }
        }
        list << c;
    }
    return list;
}

} // namespace

class TestChipInfoTableModelSort : public QObject
{
    Q_OBJECT

private slots:
    void orders_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("order");
        QTest::addColumn<QStringList>("cells");
        QTest::addColumn<QStringList>("expected");

        const int up = Qt::AscendingOrder;
        const int down = Qt::DescendingOrder;
        auto l = [](std::initializer_list<const char*> texts) {
            QStringList out;
            for (const char* t : texts)
                out << QString::fromUtf8(t);
            return out;
        };

        QTest::newRow("IO: 9 before 10") << 7 << up << l({"10", "9", "100", ""}) << l({"0", "9", "10", "100"});
        QTest::newRow("IO descending") << 7 << down << l({"10", "9", "100", ""}) << l({"100", "10", "9", "0"});
        QTest::newRow("part number: 10 before 9") << 0 << up << l({"10", "9", "100"}) << l({"10", "100", "9"});
        QTest::newRow("part number descending") << 0 << down << l({"10", "9", "100"}) << l({"9", "100", "10"});
        QTest::newRow("series: upper case first") << 1 << up << l({"a", "Z", "b", "B"}) << l({"B", "Z", "a", "b"});
        QTest::newRow("device: UTF-16 units") << 2 << up << l({"\xef\xbf\xbf", "\xf0\x9f\x98\x80", "\xc3\xa9"})
                                              << l({"\xc3\xa9", "\xf0\x9f\x98\x80", "\xef\xbf\xbf"});
        QTest::newRow("series: case of the first unit decides") << 1 << up << l({"ab", "Ac"}) << l({"Ac", "ab"});
        QTest::newRow("package: 17th unit decides")
            << 4 << up << l({"AAAAAAAAAAAAAAAAC", "B", "AAAAAAAAAAAAAAAAB", "AAAAAAAAAAAAAAAA"})
            << l({"AAAAAAAAAAAAAAAA", "AAAAAAAAAAAAAAAAB", "AAAAAAAAAAAAAAAAC", "B"});
        QTest::newRow("package: 17th unit decides, descending")
            << 4 << down << l({"AAAAAAAAAAAAAAAAB", "B", "AAAAAAAAAAAAAAAAC", "AAAAAAAAAAAAAAAA"})
            << l({"B", "AAAAAAAAAAAAAAAAC", "AAAAAAAAAAAAAAAAB", "AAAAAAAAAAAAAAAA"});
        const QString nul(QChar(0));
        QTest::newRow("speed: trailing U+0000 after the shorter text")
            << 5 << up << QStringList{QStringLiteral("A") + nul, QStringLiteral("A"), nul, QStringLiteral("A") + nul + nul}
            << QStringList{nul, QStringLiteral("A"), QStringLiteral("A") + nul, QStringLiteral("A") + nul + nul};
        QTest::newRow("version: empty first") << 3 << up << l({"B", "", "A"}) << l({"", "A", "B"});
        QTest::newRow("speed: no natural order") << 5 << up << l({"C9", "C10", "C8"}) << l({"C10", "C8", "C9"});
        QTest::newRow("voltage descending") << 6 << down << l({"1.0V", "1.2V", "0.9V"})
                                            << l({"1.2V", "1.0V", "0.9V"});
        QTest::newRow("ROM16: empty, 72Kb, 512Kb") << 10 << up << l({"512Kb", "", "72Kb"})
                                                   << l({"0", "72Kb", "512Kb"});
        QTest::newRow("SSRAM descending") << 11 << down << l({"512Kb", "72Kb", "", "1024Kb"})
                                          << l({"1024Kb", "512Kb", "72Kb", "0"});
        QTest::newRow("BSRAM: 64KB is 0") << 12 << up << l({"8Kb", "64KB", "1Kb"}) << l({"64KB", "1Kb", "8Kb"});
        QTest::newRow("User Flash: 2Mb is 0") << 13 << up << l({"16Kb", "2Mb", "4Kb"}) << l({"2Mb", "4Kb", "16Kb"});
        QTest::newRow("ROM16: kb is not a unit") << 10 << up << l({"8Kb", "16kb", "2Kb"})
                                                 << l({"16kb", "2Kb", "8Kb"});
        QTest::newRow("SSRAM: every Kb cut") << 11 << up << l({"1Kb0Kb", "9Kb", "2"}) << l({"2", "9Kb", "1Kb0Kb"});
        QTest::newRow("DSP: non-number is 0") << 14 << up << l({"5", "x", "-3"}) << l({"-3", "x", "5"});
        QTest::newRow("LUT: overflow is 0") << 8 << up << l({"2147483648", "5", "-1"})
                                            << l({"-1", "2147483648", "5"});
        QTest::newRow("PLL: missing entry is 0") << 15 << up << (l({"3", "1"}) << Missing) << l({"0", "1", "3"});
        QTest::newRow("FF: other order value is descending") << 9 << 7 << l({"1", "3", "2"}) << l({"3", "2", "1"});
    }
    void orders()
    {
        QFETCH(int, column);
        QFETCH(int, order);
        QFETCH(QStringList, cells);
        QFETCH(QStringList, expected);

        ChipInfoTableModel model;
        model.setChipInfoList(listOf(column, cells));
        model.sort(column, Qt::SortOrder(order));
        QCOMPARE(columnTexts(model, column), expected);
    }

    // One set of cells that each kind orders differently, for every column.
    void columnKinds_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QStringList>("expected");

        const QStringList text{QStringLiteral("10"), QStringLiteral("16Kb"), QStringLiteral("9")};
        const QStringList number{QStringLiteral("16Kb"), QStringLiteral("9"), QStringLiteral("10")};
        const QStringList size{QStringLiteral("9"), QStringLiteral("10"), QStringLiteral("16Kb")};
        for (int column = 0; column < 16; ++column) {
            const Kind kind = kindOf(column);
            QTest::addRow("column %d", column) << column << (kind == Text ? text : kind == Number ? number : size);
        }
    }
    void columnKinds()
    {
        QFETCH(int, column);
        QFETCH(QStringList, expected);

        ChipInfoTableModel model;
        model.setChipInfoList(
            listOf(column, {QStringLiteral("9"), QStringLiteral("16Kb"), QStringLiteral("10")}));
        model.sort(column, Qt::AscendingOrder);
        QCOMPARE(columnTexts(model, column), expected);
        model.sort(column, Qt::DescendingOrder);
        std::reverse(expected.begin(), expected.end());
        QCOMPARE(columnTexts(model, column), expected);
    }

    // An ordered list is left exactly as it is, equal keys included, and a
    // list ordered the other way round is still sorted.
    void orderedListKeepsItsOrder()
    {
        const QList<ChipInfo> chips = listOf(0, {"A", "B", "B", "C"});
        ChipInfoTableModel model;
        model.setChipInfoList(chips);
        model.sort(0, Qt::AscendingOrder);
        QCOMPARE(deviceIds(rows(model)), deviceIds(chips));
        model.sort(0, Qt::DescendingOrder);
        QCOMPARE(columnTexts(model, 0), (QStringList{"C", "B", "B", "A"}));
        model.sort(0, Qt::DescendingOrder);
        QCOMPARE(columnTexts(model, 0), (QStringList{"C", "B", "B", "A"}));
        model.sort(0, Qt::AscendingOrder);
        QCOMPARE(columnTexts(model, 0), (QStringList{"A", "B", "B", "C"}));
    }

    void columnOutsideTableKeepsOrder()
    {
        const QList<ChipInfo> chips = randomChips(7, 30);
        ChipInfoTableModel model;
        model.setChipInfoList(chips);
        for (int column : {16, -1, 1000}) {
            model.sort(column, Qt::AscendingOrder);
            model.sort(column, Qt::DescendingOrder);
        }
        QCOMPARE(deviceIds(rows(model)), deviceIds(chips));
    }

    void callerListStaysUntouched()
    {
        const QList<ChipInfo> chips = listOf(8, {QStringLiteral("3"), QStringLiteral("1"), QStringLiteral("2")});
        const QList<ChipInfo> copy = chips; // shares the data with the model
        ChipInfoTableModel model;
        model.setChipInfoList(copy);
        model.sort(8, Qt::AscendingOrder);

        QCOMPARE(columnTexts(model, 8), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
        QCOMPARE(deviceIds(copy), (QStringList{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")}));
        QCOMPARE(copy.at(0).resources.at(1), QStringLiteral("3"));
        QCOMPARE(deviceIds(chips), deviceIds(copy));
    }

    void agreesWithPlainComparisonSort_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("ascending");
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<QString>("prefix");

        // A long prefix shared by every text moves all differences far into
        // the texts.
        const QString shared = QStringLiteral("GW1NR-LV9QN88PC6/I5-");
        for (int column = 0; column < 16; ++column) {
            QTest::addRow("column %d ascending", column) << column << true << quint32(1000 + column) << QString();
            QTest::addRow("column %d descending", column) << column << false << quint32(2000 + column) << QString();
            if (column < 7) {
                QTest::addRow("column %d ascending, shared prefix", column)
                    << column << true << quint32(3000 + column) << shared;
                QTest::addRow("column %d descending, shared prefix", column)
                    << column << false << quint32(4000 + column) << shared;
            }
        }
    }
    void agreesWithPlainComparisonSort()
    {
        QFETCH(int, column);
        QFETCH(bool, ascending);
        QFETCH(quint32, seed);
        QFETCH(QString, prefix);

        const QList<ChipInfo> chips = randomChips(seed, 600, prefix);
        ChipInfoTableModel model;
        model.setChipInfoList(chips);
        model.sort(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
        const QList<ChipInfo> sorted = rows(model);

        const LiteralLess less{&model, column, ascending};
        QList<ChipInfo> reference = chips;
        std::sort(reference.begin(), reference.end(), less);

        // Records with equal keys may come in any order, so position by
        // position the two need only be equal under the comparison; for text
        // columns that means the very same cell text.
        QCOMPARE(sorted.size(), reference.size());
        for (int i = 0; i < sorted.size(); ++i) {
            const bool equivalent = !less(sorted.at(i), reference.at(i)) && !less(reference.at(i), sorted.at(i));
            QVERIFY2(equivalent, qPrintable(QStringLiteral("row %1: '%2' where '%3' belongs")
                                                .arg(i)
                                                .arg(model.columnOfChipInfo(sorted.at(i), column),
                                                     model.columnOfChipInfo(reference.at(i), column))));
        }

        // Same records, nothing lost, doubled or altered.
        QStringList before, after;
        for (const ChipInfo& c : chips)
            before << recordText(c);
        for (const ChipInfo& c : sorted)
            after << recordText(c);
        before.sort();
        after.sort();
        QCOMPARE(after, before);
    }
};

QTEST_MAIN(TestChipInfoTableModelSort)
#include "tst_chipinfotablemodel_sort.moc"
