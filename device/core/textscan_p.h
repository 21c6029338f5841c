// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_TEXTSCAN_P_H
#define DEV_TEXTSCAN_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include <QStringView>

#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace DEV {
namespace pimpl {

/*
 * Folded text: UTF-16 text below U+0080 written one byte a unit, with A to Z
 * lower-cased. Below U+0080 that is all Unicode case folding does, so folded
 * text holds a folded pattern exactly where QString::contains() with
 * Qt::CaseInsensitive finds the pattern in the text. Each kernel here has its
 * plain twin beside it: the fast one hands the plain one what its blocks
 * leave over, and the tests compare the two.
 */

constexpr size_t NotFound = std::string_view::npos;

/// @p u as folded text writes it (meaningful below U+0080).
inline char foldedUnit(ushort u)
{
    return char(u + (ushort(u - 'A') < 26 ? 32 : 0));
}

/// Where @p needle first starts in @p text, or NotFound.
inline size_t plainFind(std::string_view text, std::string_view needle)
{
    return text.find(needle);
}

/// plainFind() for a needle of at least one byte: sixteen positions at a time
/// where both the needle's first and its last byte stand, and only those
/// compared in full.
inline size_t find(std::string_view text, std::string_view needle)
{
    size_t i = 0;
#if defined(__SSE2__)
    const size_t m = needle.size();
    const __m128i head = _mm_set1_epi8(needle.front());
    const __m128i tail = _mm_set1_epi8(needle.back());
    // Both loads end within the text: the second at i + 15 + m - 1.
    for (; i + m + 15 <= text.size(); i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + i + m - 1));
        unsigned hits = unsigned(_mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, head), _mm_cmpeq_epi8(b, tail))));
        for (; hits; hits &= hits - 1) {
            const size_t at = i + size_t(__builtin_ctz(hits));
            if (std::memcmp(text.data() + at, needle.data(), m) == 0)
                return at;
        }
    }
#endif
    const size_t rest = plainFind(text.substr(i), needle);
    return rest == NotFound ? NotFound : i + rest;
}

/// Writes @p value folded to @p out (value.size() bytes); false when a unit
/// is U+0080 or beyond, whose bytes then mean nothing.
inline bool plainFold(QStringView value, char* out)
{
    ushort all = 0;
    for (const QChar c : value) {
        all |= c.unicode();
        *out++ = foldedUnit(c.unicode());
    }
    return all < 0x80;
}

/// plainFold(), eight units at a time: capitals are the units 0 to 25 above
/// 'A' (compared without sign), and get 32 added. The last few units of a
/// longer value are its last eight, folded again.
inline bool fold(QStringView value, char* out)
{
    const qsizetype n = value.size();
    qsizetype i = 0;
    bool ascii = true;
#if defined(__SSE2__)
    const __m128i a = _mm_set1_epi16('A');
    const __m128i sign = _mm_set1_epi16(short(0x8000));
    const __m128i letters = _mm_set1_epi16(short(26 ^ 0x8000));
    const __m128i lower = _mm_set1_epi16(32);
    __m128i all = _mm_setzero_si128();
    const auto eight = [&](qsizetype at) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(value.utf16() + at));
        all = _mm_or_si128(all, v);
        const __m128i capital = _mm_cmplt_epi16(_mm_xor_si128(_mm_sub_epi16(v, a), sign), letters);
        v = _mm_add_epi16(v, _mm_and_si128(capital, lower));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + at), _mm_packus_epi16(v, v));
    };
    for (; i + 8 <= n; i += 8)
        eight(i);
    if (i < n && n >= 8) {
        eight(n - 8);
        i = n;
    }
    ascii = _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(all, _mm_set1_epi16(short(0xFF80))), _mm_setzero_si128()))
        == 0xFFFF;
#endif
    return plainFold(value.mid(i), out + i) && ascii;
}

} // namespace pimpl
} // namespace DEV

#endif // DEV_TEXTSCAN_P_H
