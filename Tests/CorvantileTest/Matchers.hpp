#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvantile {

// The matchers that most tests use. Tests do not repeat the includes above.
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

// What an `Error` that the call throws says; empty when it throws none.
template <class Error, class Call>
std::string thrownText(Call call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return {};
}

} // namespace corvantile
