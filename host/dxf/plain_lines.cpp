#include "host/dxf/plain_lines.h"

#include <algorithm>

namespace mor::host {

namespace {

/// Moved on by so many bytes; what moves in comes from the block before.
template <unsigned kBytes, typename Row>
inline std::uint64_t moved(const Row& row, std::size_t at) {
    return row[at + 1] << kBytes | row[at] >> (kBlock - kBytes);
}

/// The same steps for all blocks, one after the other, so that they are taken for many at once.
template <typename Rows>
[[gnu::always_inline]] inline void sortLines(const BlockMasks& masks, const Masks& open, Rows& rows,
                                             Masks& codes, Masks& odd) {
    for (std::size_t i = 0; i < kBlocks; ++i) {
        // The bytes of codes: all before such a line feed, or before the return in front of it.
        const std::uint64_t line = ~open[i] & ~masks.feed[i];
        rows.carriage[i + 1] = masks.carriage[i] & line & rows.returns;
        const std::uint64_t code = line & ~rows.carriage[i + 1];
        rows.code[i + 1] = code;
        rows.digit[i + 1] = masks.digit[i] & code;
        rows.seven[i + 1] = masks.seven[i] & code;
        rows.front[i + 1] = masks.feed[i] | (masks.blank[i] & code);
    }
    for (std::size_t i = 0; i < kBlocks; ++i) {
        rows.leading[i + 1] = masks.zero[i] & rows.digit[i + 1] & moved<1>(rows.front, i);
        rows.run[i + 1] = rows.code[i + 1] & moved<1>(rows.code, i);
    }
    for (std::size_t i = 0; i < kBlocks; ++i) {
        const std::uint64_t ends = masks.feed[i] & open[i];  // of lines of codes
        const std::uint64_t last = (ends & ~rows.returns) | rows.carriage[i + 1];
        const std::uint64_t code = rows.code[i + 1];
        const std::uint64_t digit = rows.digit[i + 1];
        const std::uint64_t behindDigit = moved<1>(rows.digit, i);
        const std::uint64_t longRun =
            rows.run[i + 1] & moved<2>(rows.run, i) & moved<4>(rows.code, i);
        odd[i] = (code & ~(masks.digit[i] | masks.blank[i])) |
                 (code & masks.blank[i] & behindDigit) | (last & ~behindDigit) | longRun |
                 (digit & moved<1>(rows.leading, i)) |
                 ((moved<1>(rows.carriage, i) ^ ends) & rows.returns);
        const std::uint64_t single = moved<2>(rows.front, i);
        const std::uint64_t many = moved<2>(rows.digit, i) & moved<3>(rows.digit, i);
        codes[i] = last & (single | many | moved<1>(rows.seven, i));
    }
    for (auto* row : {&rows.front, &rows.digit, &rows.code, &rows.run, &rows.leading,
                      &rows.carriage, &rows.seven})
        row->front() = row->back();
}

}  // namespace

/// The work of `look`, with what the processor has.
struct PlainLines::Ways {
    using Sort = void (*)(const BlockMasks& masks, const Masks& open, Rows& rows, Masks& codes,
                          Masks& odd);

    static void sortPlainly(const BlockMasks& masks, const Masks& open, Rows& rows, Masks& codes,
                            Masks& odd) {
        sortLines(masks, open, rows, codes, odd);
    }
#if defined(__x86_64__)
    __attribute__((target("avx2,bmi"))) static void sortWithAvx2(const BlockMasks& masks,
                                                                 const Masks& open, Rows& rows,
                                                                 Masks& codes, Masks& odd) {
        sortLines(masks, open, rows, codes, odd);
    }
    __attribute__((target("avx512f,avx512vl,prefer-vector-width=512"))) static void sortWithAvx512(
        const BlockMasks& masks, const Masks& open, Rows& rows, Masks& codes, Masks& odd) {
        sortLines(masks, open, rows, codes, odd);
    }
#endif
    static Sort best() {
#if defined(__x86_64__)
        if (__builtin_cpu_supports("avx512vl")) return sortWithAvx512;
        if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi")) return sortWithAvx2;
#endif
        return sortPlainly;
    }
};

PlainLines::PlainLines(bool returns) {
    m_rows.returns = returns ? ~std::uint64_t{} : 0;
    m_rows.front[0] = std::uint64_t{1} << 63U;
}

void PlainLines::look(const BlockMasks& masks, std::size_t blocks, std::uint64_t kept) {
    Masks open;
    for (std::size_t i = 0; i < blocks; ++i) {
        open[i] = masks.odd[i] ^ m_open;
        m_open = std::uint64_t{} - (open[i] >> 63U);
    }
    for (std::size_t i = blocks; i < kBlocks; ++i) open[i] = 0;
    static const Ways::Sort sort = Ways::best();
    sort(masks, open, m_rows, m_codes, m_odd);
    m_codes[blocks - 1] &= kept;
    m_odd[blocks - 1] &= kept;
    const auto found = std::find_if(m_odd.begin(), m_odd.begin() + blocks,
                                    [](std::uint64_t bits) { return bits != 0; });
    m_firstOdd =
        found == m_odd.begin() + blocks ? kBlocks : static_cast<std::size_t>(found - m_odd.begin());
}

}  // namespace mor::host
