#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

/// What a hostile or broken server sends, in tables: each row names an input and says what comes of it.
namespace Player::Hostile {

/// Rows stand for themselves by their names, in messages and in the names of tests.
template <typename Row>
auto operator<<(std::ostream& aOut, const Row& aRow) -> decltype(aOut << aRow.mName) {
    return aOut << aRow.mName;
}

struct NameOfRow {
    template <typename Row>
    std::string operator()(const testing::TestParamInfo<Row>& aInfo) const {
        return aInfo.param.mName;
    }
};

}  // namespace Player::Hostile
