/// @file
/// One cell of the table: the same work by several libraries, whose results must be equal.
///
///     bench_support::cell work("to_lower/64B", [&text] { return to_lower(text); });
///     work.add("abseil", [&text] { return absl::AsciiStrToLower(text); });
///     work.floor_is_a_copy();
///
/// registers to_lower/64B/tova, to_lower/64B/abseil and to_lower/64B/floor. A library whose result
/// differs from ours is reported as an error and not measured. Two names have a meaning of their
/// own: "floor" does only what the interface cannot avoid, and "plain" is our own code without its
/// fast paths.
#pragma once

#include <benchmark/benchmark.h>

#ifdef HAVE_QT6
#include <QByteArray>
#include <QString>
#endif

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace bench_support {

/// What two results are compared by: a range or a number. Specialized for types that are neither.
template <typename Result>
struct comparable {
    static const Result& of(const Result& result) { return result; }
};

#ifdef HAVE_QT6
template <>
struct comparable<QString> {
    static std::u16string_view of(const QString& text) {
        return {reinterpret_cast<const char16_t*>(text.utf16()),
                static_cast<std::size_t>(text.size())};
    }
};

template <>
struct comparable<QByteArray> {
    static std::string_view of(const QByteArray& bytes) {
        return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
    }
};
#endif

/// Whether two results are equal, unit by unit; the types of the units may differ.
template <typename Left, typename Right>
bool same(const Left& left, const Right& right) {
    if constexpr (std::is_arithmetic<Left>::value) {
        return left == static_cast<Left>(right);
    } else {
        const auto& a = comparable<Left>::of(left);
        const auto& b = comparable<Right>::of(right);
        return std::equal(std::begin(a), std::end(a), std::begin(b), std::end(b),
                          [](const auto& x, const auto& y) { return same(x, y); });
    }
}

/// For results that agree in their length only.
struct same_size {
    template <typename Left, typename Right>
    bool operator()(const Left& left, const Right& right) const {
        return std::size(comparable<Left>::of(left)) == std::size(comparable<Right>::of(right));
    }
};

struct same_result {
    template <typename Left, typename Right>
    bool operator()(const Left& left, const Right& right) const {
        return same(left, right);
    }
};

/// Does nothing; the call is what it costs to cross into a library and to return a value.
template <typename Value>
__attribute__((noinline)) Value called(Value value) {
    asm volatile("" : "+r"(value));
    return value;
}

template <typename Ours>
class cell {
public:
    using result = std::decay_t<std::invoke_result_t<Ours>>;

    /// `prepare` runs once, before the first result is needed: it makes inputs that are too large
    /// to be made for a run of other cells.
    cell(const std::string& name, const Ours& ours, const std::function<void()>& prepare = nullptr)
        : m_name(name), m_shared(std::make_shared<shared>(shared{ours, prepare, nullptr})) {
        add("tova", ours, [](const result&, const result&) { return true; });
    }

    /// `work` returns a fresh result. `equal` compares it with ours before the first measurement.
    template <typename Work, typename Equal = same_result>
    cell& add(const std::string& library, const Work& work, const Equal& equal = Equal()) {
        const auto all = m_shared;
        benchmark::RegisterBenchmark(
            (m_name + "/" + library).c_str(),
            [all, work, equal, is_checked = false](benchmark::State& state) mutable {
                const result& expected = all->expected();
                if (!is_checked && !equal(work(), expected))
                    return state.SkipWithError("has another result");
                is_checked = true;
                for (auto _ : state) {
                    auto made = work();
                    benchmark::DoNotOptimize(made);
                }
            });
        return *this;
    }

    /// The floor of work whose result is a fresh string or container: a copy of it.
    cell& floor_is_a_copy() {
        const result* const* const expected = &m_shared->made;
        return add("floor", [expected] { return result(**expected); });
    }

    /// The floor of other work: `work` is called with our result and returns an equal one.
    template <typename Work>
    cell& floor_is(const Work& work) {
        const result* const* const expected = &m_shared->made;
        return add("floor", [expected, work] { return work(**expected); });
    }

    /// The floor of work on `count` values that each need one call: as many calls.
    cell& floor_is_calls(int count) {
        const result* const* const expected = &m_shared->made;
        return add("floor", [expected, count] {
            for (int i = 0; i < count; ++i)
                benchmark::DoNotOptimize(called(i));
            return **expected;
        });
    }

private:
    // What the libraries of a cell share. Our result is made when it is first needed, and kept
    // until the program ends.
    struct shared {
        Ours ours;
        std::function<void()> prepare;
        const result* made;

        const result& expected() {
            if (made == nullptr) {
                if (prepare)
                    prepare();
                made = new result(ours());
            }
            return *made;
        }
    };

    std::string m_name;
    std::shared_ptr<shared> m_shared;
};

}  // namespace bench_support
