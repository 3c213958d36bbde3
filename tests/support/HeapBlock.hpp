#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

#include "Player/Buffer.hpp"

namespace TestSupport {

/// Bytes in a heap block of exactly their size: the address sanitizer guards the byte after the last.
class HeapBlock {
public:
    explicit HeapBlock(std::string_view aBytes)
        : mSize(static_cast<Player::UInt>(aBytes.size())), mData(new Player::Byte[mSize]) {
        std::copy(aBytes.begin(), aBytes.end(), mData.get());
    }

    Player::BufferRef Ref() const { return Player::BufferRef(mData.get(), mSize); }

private:
    Player::UInt mSize;
    std::unique_ptr<Player::Byte[]> mData;
};

}  // namespace TestSupport
