#pragma once

#include "bitstream.hpp"

namespace Parser {

/// Reads numbers, most significant bit first. Bits past the end of the data are zero: ask `has_bits` first where
/// that matters.
template <typename T>
class reader : public bitstream<T> {
public:
    using bitstream<T>::bitstream;

    /// The next `a_bits` bits.
    T read(std::uint8_t a_bits);
    /// Whether `n` more bits are within the data.
    bool has_bits(std::uint8_t n) const;
    /// Drops what is left of the current word, unless a whole number of bytes is left of it.
    void trim();

protected:
    using bitstream<T>::kWordBits;
    using bitstream<T>::kWordBytes;
    using bitstream<T>::m_bits;
    using bitstream<T>::m_offset;
    using bitstream<T>::m_size;
    using bitstream<T>::m_word;
    using bitstream<T>::NextWord;

private:
    T Word() const;
    T Take(std::uint8_t aBits);
};

template <typename T>
T reader<T>::read(std::uint8_t a_bits) {
    // clang-format off
    PLAYER_ASSERT(a_bits <= sizeof(T)*8);
    // clang-format on
    if (a_bits <= m_bits) { return Take(a_bits); }
    const auto lMore = static_cast<std::uint8_t>(a_bits - m_bits);
    const T lHead = Take(m_bits);
    const T lTail = NextWord() ? Take(lMore) : 0;
    return (kWordBits == lMore ? 0 : lHead << lMore) | lTail;
}

template <typename T>
bool reader<T>::has_bits(std::uint8_t n) const {
    const std::uint64_t lConsumed = std::uint64_t{m_offset} * 8 + kWordBits - m_bits;
    return lConsumed + n <= std::uint64_t{m_size} * 8;
}

template <typename T>
void reader<T>::trim() {
    if (0 != m_bits % 8) { m_bits = 0; }
}

/// The current word, big-endian; bytes past the end of the data are zero.
template <typename T>
T reader<T>::Word() const {
    T lWord = 0;
    for (UInt lByte = 0; lByte < kWordBytes; ++lByte) {
        lWord = lWord << 8 | (lByte < m_size - m_offset ? m_word[lByte] : 0);
    }
    return lWord;
}

/// The next bits of the current word, which has that many left.
template <typename T>
T reader<T>::Take(std::uint8_t aBits) {
    if (0 == aBits) { return 0; }
    m_bits = static_cast<std::uint8_t>(m_bits - aBits);
    return Word() >> m_bits & static_cast<T>(~T{0}) >> (kWordBits - aBits);
}

}  // namespace Parser
