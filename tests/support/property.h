// RapidCheck for our tests: laws checked on generated inputs, the same inputs in every run.
//
// A failing property prints the smallest counterexample found. RC_PARAMS in the environment, when set,
// decides seed and number of cases instead. Where RapidCheck is not to be had, tests/windows/stand-in/
// brings what the laws use of it.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#if __has_include(<rapidcheck/detail/TestListenerAdapter.h>)
#include <rapidcheck/detail/TestListenerAdapter.h>
#define TARVEX_HAS_RAPIDCHECK
#endif

namespace tarvex::test {

/// Fails the running test unless `law`, a callable of generated arguments, holds for `cases` of them.
/// A law speaks by RC_ASSERT or by returning bool.
template <class Law>
void ExpectLaw(Law&& law, int cases = 100) {
#ifdef TARVEX_HAS_RAPIDCHECK
    rc::detail::TestParams params;
    params.seed = 20240229;
    params.maxSuccess = cases;
    if (std::getenv("RC_PARAMS") != nullptr) params = rc::detail::configuration().testParams;
    rc::detail::TestListenerAdapter silent;
    const std::unordered_map<std::string, rc::detail::Reproduce> nothingToReproduce;
    const auto result = rc::detail::checkTestable(std::forward<Law>(law), rc::detail::TestMetadata(), params,
                                                  silent, nothingToReproduce);
    if (result.template is<rc::detail::SuccessResult>()) return;
    std::ostringstream message;
    rc::detail::printResultMessage(result, message);
    ADD_FAILURE() << message.str();
#else
    const std::string failure = rc::detail::FirstFailure(std::forward<Law>(law), cases);
    if (!failure.empty()) ADD_FAILURE() << failure;
#endif
}

/// A generated number spread over [-limit, limit]: multiplied modulo 2^16, so that the small numbers that
/// are generated first spread as widely.
inline double Spread(std::int16_t n, double limit) {
    const auto scrambled = static_cast<std::uint16_t>(static_cast<std::uint16_t>(n) * 40503U);
    return static_cast<std::int16_t>(scrambled) / 32768.0 * limit;
}

}  // namespace tarvex::test
