// Strings: conversions, code pages, and the algorithms in each width.
#include "trial.hpp"

#include <tova/strings/strings.hpp>

namespace proof {

using namespace tova;
using strings::code_page;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

namespace {

template <typename String>
void every_algorithm(trial& t) {
    const String one = text<String>(long_text);
    const String comma = text<String>(", ");
    t([&] { return strings::split_string(one, comma, 0); });
    String changed = one;
    t([&] { return strings::replace_all(changed, comma, text<String>(" and, as was said, ")); });
    t.note(changed);
}

template <typename String>
void every_algorithm_of_ours(trial& t) {
    every_algorithm<String>(t);
    const String one = text<String>(long_text);
    t([&] { return strings::to_lower(one); });
    t([&] { return strings::to_upper(one); });
    t([&] { return strings::lower_case(one, 1, 20); });
    t([&] { return strings::string_length(one) + strings::string_length(one.c_str()); });
    t([&] { return strings::remove_BOM(one); });
    t([&] {
        std::size_t next = 0;
        return strings::unichar(one.data(), one.size(), 2, next) + next;
    });
}

void conversions(trial& t) {
    const ustring8 narrow(long_text);
    const ustring16 wide16 = strings::utf8_to_utf16(narrow);
    const ustring32 wide32 = strings::utf8_to_utf32(narrow);
    t([&] { return strings::utf8_to_utf16(narrow); });
    t([&] { return strings::utf8_to_utf32(narrow); });
    t([&] { return strings::utf16_to_utf8(wide16); });
    t([&] { return strings::utf16_to_utf32(wide16); });
    t([&] { return strings::utf32_to_utf8(wide32); });
    t([&] { return strings::utf32_to_utf16(wide32); });
    t([&] { return strings::utf8_to_utf16("not UTF-8: \xFF, and longer than a short string"); });
}

void operators(trial& t) {
    const ustring8 one(long_text);
    t([&] { return ustring8(long_text); });
    t([&] { return one + one; });
    t([&] { return "before, and longer than a short string" + one; });
    t([&] { return one + "after"; });
    t([&] { return (one == one ? 1 : 0) + (one != one ? 2 : 0); });
    t([&] { return strings::begin_with(one, 0ul, "Gr"); });
}

void byte_order(trial& t) {
    const ustring16 one = strings::utf8_to_utf16(ustring8("\xEF\xBB\xBF") + long_text);
    ustring16 changed = one;
    t([&] { return strings::swap_string_bytes_order(one); });
    t([&] { return strings::check_BOM_and_swap(one); });
    t([&] { strings::modify_swap_string_bytes_order(changed); });
    t([&] { strings::check_BOM_and_modify_swap(changed); });
    t.note(changed);
    const ustring8 narrow(long_text);
    t([&] { return strings::character_index(narrow, 6) + strings::character_index(one, 6); });
}

void code_pages(trial& t) {
    for (const int number : {1, 4, 932, 1252}) {
        const auto kind = static_cast<code_page::encoding_type>(number);
        const code_page page(kind);
        t([&] { return page.encode(ustring8(long_text)); });
        t([&] { return page.encode(text<ustring16>(long_text)); });
        t([&] { return page.encode(text<ustring32>(long_text)); });
        const std::string encoded = page.encode(ustring8(long_text));
        t([&] { return page.as_utf8(encoded); });
        t([&] { return page.as_utf16(encoded); });
        t([&] { return page.as_utf32(encoded); });
        t([&] { return page.as_ustring(encoded); });
        t([&] { return page.to_system_type(kind); });
    }
    t([&] {
        code_page one;
        code_page two(types::nil);
        const code_page three(one);
        const auto kind = static_cast<code_page::encoding_type>(1252);
        one = types::nil;
        one = three;
        one = kind;
        two.assign(types::nil);
        two.assign(one);
        two.assign(kind);
        two.type(kind);
        return static_cast<int>(two.type()) + static_cast<int>(three.type()) +
               one.equal(types::nil) + one.equal(two) + one.equal(kind) + (one == types::nil) +
               (one == two) + (one == kind) + (one != two) + (one != kind);
    });
}

void locale_strings(trial& t) {
    const std::string one(long_text);
    t([&] { return strings::gh2::tolower(one); });
    t([&] { return strings::gh2::toupper(one); });
    t([&] { return strings::gh2::to_ansi(one); });
    t([&] { return strings::gh2::from_ansi(one); });
    std::string changed = one;
    t([&] { strings::gh2::replace_all(changed, ", ", " and, as was said, "); });
    t.note(changed);
    const auto bytes = reinterpret_cast<const unsigned char*>(one.data());
    t([&] {
        return strings::gh2::get_utf8_length(one.data(), one.size()) +
               strings::gh2::get_utf8_length(bytes, one.size()) +
               strings::gh2::validate_utf8(one.data(), one.size()) +
               strings::gh2::validate_utf8(bytes, one.size());
    });
}

}  // namespace

void add_strings(scenarios& all) {
    all.push_back({"strings: conversions", conversions, never_ends});
    all.push_back({"strings: operators", operators, never_ends});
    all.push_back({"strings: byte order and positions", byte_order, never_ends});
    all.push_back({"strings: code pages", code_pages, never_ends});
    all.push_back({"strings: the locale's", locale_strings, never_ends});
    all.push_back({"strings: 8 bits", every_algorithm_of_ours<ustring8>, never_ends});
    all.push_back({"strings: 16 bits", every_algorithm_of_ours<ustring16>, never_ends});
    all.push_back({"strings: 32 bits", every_algorithm_of_ours<ustring32>, never_ends});
    all.push_back({"strings: std::string", every_algorithm<std::string>, never_ends});
    all.push_back({"strings: std::wstring", every_algorithm<std::wstring>, never_ends});
    all.push_back({"strings: split by a literal",
                   [](trial& t) {
                       const ustring8 one(long_text);
                       t([&] { return strings::split_string(one, ", ", 0); });
                   },
                   never_ends});
}

}  // namespace proof
