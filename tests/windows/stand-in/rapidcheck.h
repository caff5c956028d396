// Stands in for RapidCheck where no package brings it (Windows): the generators and assertions that our
// laws use, from a fixed seed, without shrinking a counterexample.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace rc {

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct Discard {};

/// What a case is generated from; size grows from 0 to 100 over the cases of a law, discarded ones too.
struct Source {
    std::mt19937_64 random{20240229};
    int size = 100;
};

inline Source& TheSource() {
    static Source source;
    return source;
}

template <class T>
class Gen {
  public:
    using Function = std::function<T(Source&)>;
    template <class F>
    requires std::invocable<F, Source&> Gen(F f)
        : m_function(std::move(f)) {}  // NOLINT(google-explicit-constructor): as the original
    T operator()(Source& source) const { return m_function(source); }
    T operator*() const { return m_function(TheSource()); }

  private:
    Function m_function;
};

namespace gen {

template <class T>
T Below(Source& source, T low, T high) {
    const auto span = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
    return static_cast<T>(static_cast<std::uint64_t>(low) + (span == 0 ? 0 : source.random() % span));
}

/// From low to high without high; small cases stay near low.
template <class T>
Gen<T> inRange(T low, T high) {
    return [=](Source& source) {
        const auto span = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
        const std::uint64_t part = span < 100 ? span : span / 100 * static_cast<unsigned>(source.size) + 1;
        return Below(source, low,
                     static_cast<T>(static_cast<std::uint64_t>(low) + (part < span ? part : span)));
    };
}

template <class T>
struct Arbitrary {
    static T Make(Source& source) requires std::is_integral_v<T> {
        const auto bits = source.random();
        const int shift = 64 - static_cast<int>(sizeof(T)) * 8 * (source.size < 20 ? 20 : source.size) / 100;
        const auto magnitude = static_cast<T>(bits >> (shift > 63 ? 63 : shift));
        return std::is_signed_v<T> && (source.random() & 1) != 0 ? static_cast<T>(~magnitude) : magnitude;
    }
    static T Make(Source& source) requires std::is_floating_point_v<T> {
        const double scale =
            static_cast<double>(std::int64_t{1} << (source.random() % 30)) * source.size / 100;
        return static_cast<T>(std::uniform_real_distribution<double>(-scale, scale)(source.random));
    }
};
template <>
struct Arbitrary<bool> {
    static bool Make(Source& source) { return (source.random() & 1) != 0; }
};
template <class T, std::size_t N>
struct Arbitrary<std::array<T, N>> {
    static std::array<T, N> Make(Source& source) {
        std::array<T, N> all{};
        for (T& one : all) one = Arbitrary<T>::Make(source);
        return all;
    }
};
template <class T>
struct Arbitrary<std::vector<T>> {
    static std::vector<T> Make(Source& source) {
        std::vector<T> all(source.random() % static_cast<unsigned>(source.size + 1));
        for (auto&& one : all) one = Arbitrary<T>::Make(source);
        return all;
    }
};
template <class A, class B>
struct Arbitrary<std::pair<A, B>> {
    static std::pair<A, B> Make(Source& source) {
        A first = Arbitrary<A>::Make(source);
        return {std::move(first), Arbitrary<B>::Make(source)};
    }
};

template <class T>
Gen<T> arbitrary() {
    return [](Source& source) { return Arbitrary<T>::Make(source); };
}

template <class Container>
Gen<typename Container::value_type> elementOf(Container all) {
    return [all](Source& source) { return all[source.random() % all.size()]; };
}

template <class T, class... More>
Gen<std::decay_t<T>> element(T first, More... more) {
    return elementOf(std::vector<std::decay_t<T>>{std::decay_t<T>(first), std::decay_t<T>(more)...});
}

template <class T, class F>
auto map(Gen<T> from, F f) -> Gen<std::decay_t<std::invoke_result_t<F, T>>> {
    return [from, f](Source& source) { return f(from(source)); };
}

template <class A, class B>
Gen<std::pair<A, B>> pair(Gen<A> a, Gen<B> b) {
    return [a, b](Source& source) {
        A first = a(source);
        return std::pair<A, B>(std::move(first), b(source));
    };
}

template <class T>
Gen<T> weightedOneOf(std::vector<std::pair<std::size_t, Gen<T>>> choices) {
    return [choices](Source& source) {
        std::size_t sum = 0;
        for (const auto& choice : choices) sum += choice.first;
        std::size_t at = source.random() % sum;
        std::size_t i = 0;
        while (at >= choices[i].first) at -= choices[i++].first;
        return choices[i].second(source);
    };
}

template <class Container, class T>
Gen<Container> container(Gen<T> of) {
    return [of](Source& source) {
        Container all;
        for (auto n = source.random() % static_cast<unsigned>(source.size + 1); n > 0; --n)
            all.push_back(of(source));
        return all;
    };
}

template <class Container, class T>
Gen<Container> container(std::size_t count, Gen<T> of) {
    return [count, of](Source& source) {
        Container all;
        while (all.size() < count) all.push_back(of(source));
        return all;
    };
}

template <class Container>
Gen<Container> nonEmpty(Gen<Container> from) {
    return [from](Source& source) {
        Container all = from(source);
        while (all.empty()) {
            source.size = source.size < 1 ? 1 : source.size;
            all = from(source);
        }
        return all;
    };
}

}  // namespace gen

namespace detail {

template <class... Arguments, class Result>
bool RunCase(const std::function<Result(Arguments...)>& law) {
    std::tuple<std::decay_t<Arguments>...> arguments{
        gen::Arbitrary<std::decay_t<Arguments>>::Make(TheSource())...};
    if constexpr (std::is_same_v<Result, bool>) {
        return std::apply(law, std::move(arguments));
    } else {
        std::apply(law, std::move(arguments));
        return true;
    }
}

/// The message of the first failure among `cases`, or an empty text.
template <class Law>
std::string FirstFailure(Law&& law, int cases) {
    const std::function function(std::forward<Law>(law));
    TheSource() = {};
    for (int done = 0, discarded = 0; done < cases;) {
        TheSource().size = std::min(100, cases > 1 ? (done + discarded) * 100 / (cases - 1) : 100);
        try {
            if (!RunCase(function)) return "case " + std::to_string(done) + " is false";
            ++done;
        } catch (const Discard&) {
            if (++discarded > 10 * cases) return "gave up: too many cases were discarded";
        } catch (const Failure& failure) {
            return "case " + std::to_string(done) + ": " + failure.what();
        }
    }
    return {};
}

}  // namespace detail
}  // namespace rc

// NOLINTBEGIN(cppcoreguidelines-macro-usage): the names that the laws use
#define RC_ASSERT(...)                                                                                       \
    do {                                                                                                     \
        if (!(__VA_ARGS__))                                                                                  \
            throw ::rc::Failure(std::string(__FILE__) + ":" + std::to_string(__LINE__) + ": " #__VA_ARGS__); \
    } while (false)
#define RC_FAIL(message) throw ::rc::Failure(message)
#define RC_PRE(...)                                \
    do {                                           \
        if (!(__VA_ARGS__)) throw ::rc::Discard{}; \
    } while (false)
// NOLINTEND(cppcoreguidelines-macro-usage)
