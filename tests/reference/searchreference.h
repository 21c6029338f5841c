#ifndef DEV_SEARCHREFERENCE_H
#define DEV_SEARCHREFERENCE_H

// The search match written the slow, obvious way: a list of values per chip
// and a fresh pattern object per value. The library's matcher walks values in
// place and compiles the pattern once; the differential test holds the two to
// identical answers.

#include "chipfilter.h"

#include <QRegExp>
#include <QStringList>

namespace Reference {

inline QStringList searchedValues(const DEV::ChipInfo& c, int group)
{
    switch (group) {
    case 1:
        return {c.series};
    case 2:
        return {c.partNumber};
    case 3:
        return {c.device};
    case 4:
        return {c.deviceVersion};
    case 5:
        return {c.package};
    case 6:
        return {c.speed};
    case 7:
        return {c.voltage};
    case 8:
    case 9:
    case 10:
    case 11:
    case 12:
    case 13:
    case 14:
    case 15:
    case 16: {
        const int index = group - 8;
        return {index < c.resources.size() ? c.resources.at(index) : QString(QLatin1String(""))};
    }
    default: {
        QStringList values{c.series, c.partNumber, c.matchKey, c.device, c.package, c.auxiliary, c.voltage};
        values += c.resources;
        return values;
    }
    }
}

inline bool matchSearch(const DEV::ChipInfo& chip, const DEV::ChipFilterBySearch& filter)
{
    const QStringList values = searchedValues(chip, filter.group);
    const Qt::CaseSensitivity cs = filter.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;

    if (filter.pattern.compare(QLatin1String("0"), Qt::CaseSensitive) == 0) {
        for (const QString& v : values) {
            QRegExp empty(QStringLiteral("^$"), Qt::CaseSensitive, QRegExp::RegExp);
            if (empty.exactMatch(v))
                return true;
        }
    }

    for (const QString& v : values) {
        switch (filter.patternSyntax) {
        case 0: {
            QRegExp rx(filter.pattern, cs, QRegExp::WildcardUnix);
            if (rx.exactMatch(v))
                return true;
            break;
        }
        case 1: {
            QRegExp rx(filter.pattern, cs, QRegExp::RegExp);
            if (rx.exactMatch(v))
                return true;
            break;
        }
        case 2:
            if (filter.pattern.compare(v, cs) == 0)
                return true;
            break;
        default:
            if (v.indexOf(filter.pattern, 0, cs) != -1)
                return true;
            break;
        }
    }
    return false;
}

} // namespace Reference

#endif // DEV_SEARCHREFERENCE_H
