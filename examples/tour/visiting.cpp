// Tests the type of variants, visits them and compares them.

#include <iostream>
#include <string>
#include <vector>

#include <tova/extras/variants.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::strings::ustring8;
using tova::types::variant;

namespace {

// One overload for each group of types; the most specific one wins.
struct describe {
    std::string operator()(tova::types::nil_t) const { return "nothing"; }
    std::string operator()(bool held) const { return held ? "yes" : "no"; }
    std::string operator()(const ustring8& held) const { return "a string, " + held; }
    std::string operator()(const std::string& held) const { return "bytes, " + held; }
    std::string operator()(double held) const { return "a fraction near " + std::to_string(held); }
    template <typename Other>
    std::string operator()(const Other&) const {
        return "something else";
    }
    std::string operator()(int held) const { return "the number " + std::to_string(held); }
};

enum class level { low = 1, high = 2 };

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: visiting\n\nLooks into variants.\n\nExit status: 0.\n";
        return 0;
    }
    const std::vector<variant> values = {variant(42),  variant(ustring8("tova")),
                                         variant(2.5), variant(true),
                                         variant(),    variant(7l)};
    for (const variant& value : values)
        std::cout << ex::visit(describe(), value) << '\n';

    // `holds` tests for one exact type; `==` compares numbers of any type by their value.
    using ex::operator==;
    const variant answer = 42;
    std::cout << "holds an int: " << ex::holds<int>(answer)
              << ", a long: " << ex::holds<long>(answer) << '\n'
              << "equals 42.0: " << (answer == variant(42.0))
              << ", \"42\": " << (answer == variant("42")) << '\n';

    // Types from which a variant cannot be constructed directly.
    std::cout << ex::make_variant(level::high).as_int() << ' '
              << ex::make_variant(9000000000ll).as_long() << '\n';
}
