#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

#include "Player/Buffer.hpp"

namespace Player::Testing {

/// Bytes in a heap block of exactly their size: the address sanitizer guards the byte behind the last.
class HeapBlock {
public:
    explicit HeapBlock(std::string_view aBytes) : mSize(static_cast<UInt>(aBytes.size())), mData(new Byte[mSize]) {
        std::copy(aBytes.begin(), aBytes.end(), mData.get());
    }

    BufferRef Ref() const { return BufferRef(mData.get(), mSize); }

private:
    UInt mSize;
    std::unique_ptr<Byte[]> mData;
};

}  // namespace Player::Testing
