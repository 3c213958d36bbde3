#pragma once

#include <cstdint>

#include "Parser/Types.hpp"
#include "Player/Assert.hpp"

namespace Parser {

enum class seek_mode { kBegin, kCurrent, kEnd };

/// A place in bytes that it does not own and that outlive it, kept as a word of `T` and the bits left in it.
/// Words start every `sizeof(T)` bytes. It stays within the words that hold at least one byte; when none
/// of the bits of a word are left, the place is the same as the start of the next one.
template <typename T>
class bitstream {
    static_assert(sizeof(T) * 8 >= 32, "a seek crosses at most one word boundary");

public:
    bitstream(const Byte* aData, UInt aSize) : m_data(aData), m_size(aSize), m_word(aData) {}
    bitstream(const bitstream&) = delete;
    bitstream& operator=(const bitstream&) = delete;
    virtual ~bitstream() = default;

    /// Moves by `a_bits`, back when negative. False, and no move, for any mode but `kCurrent` and for a
    /// place outside the words.
    bool seek(std::int8_t a_bits, seek_mode aMode);

protected:
    static constexpr UInt kWordBytes = sizeof(T);
    static constexpr std::uint8_t kWordBits = sizeof(T) * 8;

    bool NextWord();
    bool PreviousWord();

    const Byte* m_data;
    UInt m_size;                      ///< in bytes
    UInt m_offset = 0;                ///< of the current word, in bytes
    const Byte* m_word;               ///< the current word; the data may end within it
    std::uint8_t m_bits = kWordBits;  ///< not yet consumed in the current word
};

template <typename T>
bool bitstream<T>::seek(std::int8_t a_bits, seek_mode aMode) {
    PLAYER_ASSERT(a_bits >= -32 && a_bits <= 32);
    if (seek_mode::kCurrent != aMode) { return false; }
    int lBits = m_bits - a_bits;
    if (lBits < 0) {
        if (!NextWord()) { return false; }
        lBits += kWordBits;
    } else if (lBits > kWordBits) {
        if (!PreviousWord()) { return false; }
        lBits -= kWordBits;
    }
    m_bits = static_cast<std::uint8_t>(lBits);
    return true;
}

/// To the start of the next word; false when the data ends before it.
template <typename T>
bool bitstream<T>::NextWord() {
    if (m_size - m_offset <= kWordBytes) { return false; }
    m_offset += kWordBytes;
    m_word = m_data + m_offset;
    m_bits = kWordBits;
    return true;
}

/// To the start of the word before; false when there is none.
template <typename T>
bool bitstream<T>::PreviousWord() {
    if (0 == m_offset) { return false; }
    m_offset -= kWordBytes;
    m_word = m_data + m_offset;
    m_bits = kWordBits;
    return true;
}

}  // namespace Parser
