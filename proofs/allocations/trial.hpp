// One run of a scenario of proof_allocations and proof_threads. The scenario sets itself up as
// usual and passes each operation to the trial, which runs it while allocations may fail and
// records its result:
//
//     [](trial& t) {
//         const ustring8 text("a text");            // never fails
//         t([&] { return strings::to_lower(text); });  // may fail; the result is recorded
//     }
#pragma once

#include <tova/tova.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace proof {

// While an object of this class exists, allocations may fail. If an exception destroys it in a run
// in which all allocations fail from some point on, they keep failing while the scenario is
// unwound.
class while_memory_may_fail {
public:
    while_memory_may_fail();
    ~while_memory_may_fail();
    while_memory_may_fail(const while_memory_may_fail&) = delete;
    while_memory_may_fail& operator=(const while_memory_may_fail&) = delete;
};

class trial {
public:
    // Runs an operation and records its result, if it has one.
    template <typename Operation>
    void operator()(const Operation& operation) {
        run(operation, std::is_void<decltype(operation())>());
    }

    // Runs an operation and returns its result without recording it.
    template <typename Operation>
    auto make(const Operation& operation) -> decltype(operation()) {
        const while_memory_may_fail now;
        return operation();
    }

    // A hash of everything that was recorded.
    std::uint64_t result() const { return m_hash; }

    template <typename T>
    typename std::enable_if<std::is_arithmetic<T>::value || std::is_enum<T>::value>::type
    note(const T& value) {
        char text[64];
        const long double number =
            static_cast<long double>(value);  // holds every value of each type
        add(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%La,", number)));
    }
    template <typename Unit>
    void note(const std::basic_string<Unit>& text) {
        note(text.size());
        add(text.data(), text.size() * sizeof(Unit));
    }
    void note(const char* text) { add(text, std::strlen(text) + 1); }
    void note(const tova::types::variant& value) {
        note(value.type().name());
        note(value.as_utf8());
    }
    void note(const tova::generic::argument& value) {
        note(value.name());
        note(value.value());
    }
    void note(const tova::generic::varg_list& values) {
        for (const auto& value : values)
            note(value);
    }
    template <typename First, typename Second>
    void note(const std::pair<First, Second>& both) {
        note(both.first);
        note(both.second);
    }
    template <typename T>
    void note(const std::vector<T>& all) {
        for (const auto& one : all)
            note(one);
    }
    template <typename T>
    void note(const std::list<T>& all) {
        for (const auto& one : all)
            note(one);
    }

private:
    template <typename Operation>
    void run(const Operation& operation, std::true_type) {
        const while_memory_may_fail now;
        operation();
    }
    template <typename Operation>
    void run(const Operation& operation, std::false_type) {
        const auto result = make(operation);
        note(result);
    }

    void add(const void* bytes, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i)
            m_hash = (m_hash ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001B3u;
    }

    std::uint64_t m_hash = 0xCBF29CE484222325u;  // FNV-1a
};

struct scenario {
    const char* name;
    std::function<void(trial&)> run;
    // Whether the process may end through std::unexpected: a value is copied or converted by an
    // operation that has an empty exception specification.
    bool may_end;
};

typedef std::vector<scenario> scenarios;

const bool may_end = true;
const bool never_ends = false;

void add_strings(scenarios& all);
void add_numbers(scenarios& all);
void add_values(scenarios& all);
void add_foundation(scenarios& all);
void add_units_and_dates(scenarios& all);
void add_documents(scenarios& all);
void add_messages(scenarios& all);
void add_settings(scenarios& all);
void add_buffers(scenarios& all);
void add_files(scenarios& all);
void add_extras(scenarios& all);

// What the functions above add, in that order.
scenarios all_scenarios();

// ---- input

// A string of any type from UTF-8.
template <typename String>
String text(const char* bytes);
template <>
inline std::string text<std::string>(const char* bytes) {
    return bytes;
}
template <>
inline tova::strings::ustring8 text<tova::strings::ustring8>(const char* bytes) {
    return bytes;
}
template <>
inline tova::strings::ustring16 text<tova::strings::ustring16>(const char* bytes) {
    return tova::strings::utf8_to_utf16(bytes);
}
template <>
inline tova::strings::ustring32 text<tova::strings::ustring32>(const char* bytes) {
    return tova::strings::utf8_to_utf32(bytes);
}
template <>
inline std::wstring text<std::wstring>(const char* bytes) {
    const auto wide = tova::strings::utf8_to_utf32(bytes);
    return std::wstring(wide.begin(), wide.end());
}

// Longer than a string can store without an allocation.
const char long_text[] =
    "Gr\xC3\xBC\xC3\x9F Gott, a text that is longer than a short string, \xE4\xB8\xAD";

// A file in the working directory, which is private to the run.
void write_file(const std::string& name, const std::string& content);

}  // namespace proof
