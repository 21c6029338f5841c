// libFuzzer target: the free-text search. Random chips (built by hand, and
// loaded from a file so that equal values share their data) and a random
// search; the library must agree with the plain reference matcher on every
// chip, both one chip at a time and over the whole list.

#include "chipfilter.h"
#include "devicedb.h"
#include "fuzzhelpers.h"
#include "reference/searchreference.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

using DEV::ChipFilterBySearch;
using DEV::ChipInfo;

namespace {

// Short strings from a small alphabet meet each other often enough to
// match; the extra characters are ones whose case folding is not ASCII's.
QString fuzzText(FuzzedDataProvider& in)
{
    static const char16_t Alphabet[] = u"0aAbBkKsS*?.[]()^$\\|-+{}, \u212A\u017F\u00DF\u00E4\u00C4\xD835";
    // Mostly short, now and then longer than the matcher's 8-character blocks.
    const int length = in.ConsumeIntegralInRange<int>(0, in.ConsumeBool() ? 6 : 24);
    QString s;
    for (int i = 0; i < length; ++i)
        s += QChar(Alphabet[in.ConsumeIntegralInRange<size_t>(0, sizeof(Alphabet) / 2 - 2)]);
    return s;
}

ChipInfo fuzzChip(FuzzedDataProvider& in, int n)
{
    ChipInfo c;
    c.deviceId = QString::number(n);
    for (QString* m : {&c.partNumber, &c.series, &c.matchKey, &c.device, &c.deviceVersion, &c.package,
                       &c.voltage, &c.speed, &c.auxiliary})
        *m = in.ConsumeBool() ? fuzzText(in) : QString();
    const int counts = in.ConsumeIntegralInRange<int>(0, 11);
    for (int i = 0; i < counts; ++i)
        c.resources << fuzzText(in);
    return c;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    FuzzHelpers::init(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    ChipFilterBySearch search;
    search.group = in.ConsumeIntegralInRange<int>(-2, 18);
    search.patternSyntax = in.ConsumeIntegralInRange<int>(-1, 4);
    search.caseSensitive = in.ConsumeBool();
    search.pattern = fuzzText(in);

    QList<ChipInfo> chips;
    const int count = in.ConsumeIntegralInRange<int>(0, 24);
    QByteArray file;
    for (int i = 0; i < count; ++i) {
        const ChipInfo c = fuzzChip(in, i);
        chips << c;
        QStringList columns{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion,
                            c.package, c.voltage, c.speed, c.auxiliary};
        columns += c.resources;
        file += columns.join(QLatin1Char(',')).toUtf8() + '\n';
    }

    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("chips.csv"));
    {
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        f.write(file);
    }
    const DEV::DeviceDb db(path);
    // Loaded chips repeat their values; mix them with the hand-built ones.
    const QList<ChipInfo> loaded = db.allChipInfo();
    for (int i = 0; i < loaded.size(); ++i)
        chips.insert(std::min(chips.size(), 2 * i), loaded.at(i));

    QList<ChipInfo> expected;
    for (const ChipInfo& chip : chips) {
        const bool reference = Reference::matchSearch(chip, search);
        if (DEV::matchFilter(chip, search) != reference)
            std::abort();
        if (reference)
            expected << chip;
    }
    const QList<ChipInfo> got = db.filterChips(search, chips);
    if (got.size() != expected.size())
        std::abort();
    for (int i = 0; i < got.size(); ++i) {
        if (got.at(i).deviceId != expected.at(i).deviceId || got.at(i).partNumber != expected.at(i).partNumber)
            std::abort();
    }
    return 0;
}
