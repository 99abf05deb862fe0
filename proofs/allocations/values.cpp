// Numbers as text and as bytes, variants, arguments, and the classes below them.
#include "trial.hpp"

#include <tova/debug/assert.hpp>
#include <tova/exceptions/exceptions.hpp>
#include <tova/generic/clone_interface.hpp>

#include <limits>
#include <locale>
#include <sstream>

namespace proof {

using namespace tova;
namespace convert = generic::convert;
using generic::argument;
using generic::varg_list;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
using types::variant;

namespace {

// ---- numbers

template <typename String>
void integers_from_text(trial& t) {
    const String number = text<String>("+123 and no more");
    const auto* const s = number.c_str();
    const unsigned long n = number.size();
    const auto base = types::radix_t::decimal;
    t([&] { return convert::str_to_long(s, n, base, false); });
    t([&] { return convert::str_to_int(s, n, base, false); });
    t([&] { return convert::str_to_short(s, n, base, false); });
    t([&] { return convert::str_to_signed(s, n, base, false); });
    t([&] { return convert::str_to_int8(s, n, base, false); });
    t([&] { return convert::str_to_int16(s, n, base, false); });
    t([&] { return convert::str_to_int32(s, n, base, false); });
    t([&] { return convert::str_to_int64(s, n, base, false); });
    t([&] { return convert::str_to_unsigned(s, n, base, false); });
    t([&] { return convert::str_to_uint8(s, n, base, false); });
    t([&] { return convert::str_to_uint16(s, n, base, false); });
    t([&] { return convert::str_to_uint32(s, n, base, false); });
    t([&] { return convert::str_to_uint64(s, n, base, false); });
    t([&] { return convert::is_space(s[0]); });
}

template <typename Unit>
void integers_to_text(trial& t) {
    Unit buffer[80];
    const auto show = [&] { return std::basic_string<Unit>(buffer); };
    t([&] { return convert::ltoa(-123456, buffer, 10), show(); });
    t([&] { return convert::ultoa(123456u, buffer, 16), show(); });
    t([&] { return convert::lltoa(-1234567890123l, buffer, 2), show(); });
    t([&] { return convert::ulltoa(1234567890123ul, buffer, 36), show(); });
}

// The number is out of range, so the reader raises its own exception.
void range_errors(trial& t) {
    const ustring8 number("99999999999999999999999999999");
    for (const bool is_long : {false, true}) {
        try {
            t([&] {
                return is_long ? convert::str_to_long(number.data(), number.size(),
                                                      types::radix_t::decimal, true)
                               : convert::str_to_int16(number.data(), number.size(),
                                                       types::radix_t::decimal, true);
            });
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const exceptions::exception& error) {
            t.note(error.get_message());
        } catch (const std::exception& error) {
            t.note(error.what());
        }
    }
}

void floating_point(trial& t) {
    const std::locale locale = std::locale::classic();
    for (const char* const number :
         {"1.5", "-0.000000000000000000000000000001234567890123456789012345678901234567890123e-290",
          "179769313486231570814527423731704356798070567525844996598917476803157260780028538760589"
          "558632766878171540458953514382464234321326889464182768467546703537516986049910576551282"
          "076245490090389328944075868508455133942304583236903222948165808559332123347747800000",
          "inf and beyond"}) {
        const ustring8 written(number);
        t([&] { return convert::str_to_float(written); });
        t([&] { return convert::str_to_float(written, locale); });
        t([&] { return convert::str_to_double(written); });
        t([&] { return convert::str_to_double(written, locale); });
        t([&] { return convert::str_to_long_double(written); });
        t([&] { return convert::str_to_long_double(written, locale); });
    }
    t([&] { return convert::str_to_bool(text<ustring16>("true")); });
    t([&] { return convert::to_str('c'); });
    t([&] { return convert::to_str(123u); });
    t([&] { return convert::to_str(123456.75); });
}

void bytes_from_numbers(trial& t) {
#define PROOF_EACH_ORDER(of)                                                                       \
    t([&] { return of int16_to_bin_str(-2); });                                                    \
    t([&] { return of int32_to_bin_str(-2); });                                                    \
    t([&] { return of int64_to_bin_str(-2); });                                                    \
    t([&] { return of uint16_to_bin_str(2); });                                                    \
    t([&] { return of uint32_to_bin_str(2); });                                                    \
    t([&] { return of uint64_to_bin_str(2); });                                                    \
    t([&] { return of float_to_bin_str(2); });                                                     \
    t([&] { return of double_to_bin_str(2); })
    PROOF_EACH_ORDER(convert::);
    PROOF_EACH_ORDER(convert::little_endian::);
    PROOF_EACH_ORDER(convert::big_endian::);
#undef PROOF_EACH_ORDER
}

void numbers_from_bytes(trial& t) {
    const std::string bytes("\x01\x02\x03\x04\x05\x06\x07\x08");
    const char* const raw = bytes.data();
    // Which forms exist in each byte order differs.
#define PROOF_EACH_ORDER(of)                                                                       \
    t([&] { return of bin_str_to_int16(bytes); });                                                 \
    t([&] { return of bin_str_to_int32(raw) + of bin_str_to_int32(bytes); });                      \
    t([&] { return of bin_str_to_int64(raw) / 2 + of bin_str_to_int64(bytes) / 2; });              \
    t([&] { return of bin_str_to_uint16(raw); });                                                  \
    t([&] { return of bin_str_to_uint32(raw) + of bin_str_to_uint32(bytes); });                    \
    t([&] { return of bin_str_to_uint64(raw) + of bin_str_to_uint64(bytes); });                    \
    t([&] { return of bin_str_to_double(raw); })
    PROOF_EACH_ORDER(convert::);
    PROOF_EACH_ORDER(convert::little_endian::);
    PROOF_EACH_ORDER(convert::big_endian::);
#undef PROOF_EACH_ORDER
    t([&] { return convert::bin_str_to_int16(raw); });
    t([&] { return convert::big_endian::bin_str_to_int16(raw); });
    t([&] { return convert::bin_str_to_uint16(bytes); });
    t([&] { return convert::little_endian::bin_str_to_uint16(bytes); });
    t([&] { return convert::bin_str_to_double(bytes); });
    t([&] { return convert::little_endian::bin_str_to_double(bytes); });
    t([&] { return convert::bin_str_to_float(raw) + convert::bin_str_to_float(bytes); });
    t([&] {
        return convert::little_endian::bin_str_to_float(raw) +
               convert::little_endian::bin_str_to_float(bytes);
    });
}

// ---- variants

template <typename Value>
void every_conversion(trial& t, const Value& value) {
    t([&] { return value.as_bool(); });
    t([&] { return value.as_float(); });
    t([&] { return value.as_double(); });
    t([&] { return value.as_long_double(); });
    t([&] { return value.as_short(); });
    t([&] { return value.as_int(); });
    t([&] { return value.as_long(); });
    t([&] { return value.as_int8(); });
    t([&] { return value.as_int16(); });
    t([&] { return value.as_int32(); });
    t([&] { return value.as_int64(); });
    t([&] { return value.as_uint8(); });
    t([&] { return value.as_uint16(); });
    t([&] { return value.as_uint32(); });
    t([&] { return value.as_uint64(); });
    t([&] { return value.as_string(); });
    t([&] { return value.as_wstring(); });
    t([&] { return value.as_ustring(); });
    t([&] { return value.as_utf8(); });
    t([&] { return value.as_utf16(); });
    t([&] { return value.as_utf32(); });
    t([&] { return value.type().name(); });
}

// A wide string is printed as the address of the object, which differs between threads.
std::string without_address(const std::string& printed) {
    return printed.substr(0, printed.find(" instance at 0x"));
}

void convert_variant(trial& t, const variant& value) {
    every_conversion(t, value);
    t([&] { return value.as_signed(); });
    t([&] { return value.as_unsigned(); });
    t([&] { return value.as_uint(); });
    t([&] { return value.as_ulong(); });
    t([&] { return value.as_ushort(); });
    t([&] { return variant(value); });
    t([&] {
        std::ostringstream out;
        out.exceptions(std::ios_base::badbit);
        out << value;
        return without_address(out.str());
    });
}

template <typename T>
void variant_of(trial& t, const T& value) {
    convert_variant(t, t.make([&] { return variant(value); }));
    // The body itself. Its copy is owned by a holder.
    types::variant_value_t<T> body(value);
    every_conversion(t, body);
    t([&] { return body.convertible(); });
    t([&] {
        std::ostringstream out;
        out.exceptions(std::ios_base::badbit);  // or the stream would swallow a std::bad_alloc
        body.ostream(out);
        return without_address(out.str());
    });
    const memory::pointers::rc_pointer<types::variant_type> holder(t.make([&] {
        types::variant_type* const copy = body.clone();
        copy->allocated = true;
        return copy;
    }));
    t.note(holder->as_int());
}

void variants_of_integers(trial& t) {
    variant_of<signed char>(t, -5);
    variant_of<short>(t, -500);
    variant_of<int>(t, -50000);
    variant_of<long>(t, -5000000000l);
    variant_of<unsigned char>(t, 5);
    variant_of<unsigned short>(t, 500);
    variant_of<unsigned int>(t, 50000);
    variant_of<unsigned long>(t, std::numeric_limits<unsigned long>::max());
    variant_of<bool>(t, true);
}

void variants_of_floating_point(trial& t) {
    variant_of<float>(t, 1.5f);
    variant_of<double>(t, 1e15 / 3);
    variant_of<long double>(t, 1e15L / 3);
}

template <typename String>
void variants_of_strings(trial& t) {
    for (const char* const bytes : {long_text, "123.5e2", "true"}) {
        const String value = text<String>(bytes);
        variant_of<String>(t, value);
        t([&] { return variant(value.c_str()); });
    }
}

void variants_of_std_strings(trial& t) {
    variant_of<std::string>(t, text<std::string>(long_text));
    variant_of<std::wstring>(t, text<std::wstring>(long_text));
    const unsigned short units[] = {'a', 'b', 0};
    t([&] { return variant(units); });
    t([&] { return variant(L"a string that is longer than a short one"); });
}

void variants_of_nothing(trial& t) {
    convert_variant(t, t.make([] { return variant(); }));
    t([] { return variant(types::nil); });
    types::variant_value_t<types::nil_t> body{types::nil_t()};
    every_conversion(t, body);
    t([&] { return body.convertible(); });
    const memory::pointers::rc_pointer<types::variant_type> holder(t.make([&] {
        types::variant_type* const copy = body.clone();
        copy->allocated = true;
        return copy;
    }));
    t([&] {
        std::ostringstream out;
        out.exceptions(std::ios_base::badbit);
        holder->ostream(out);
        return out.str();
    });
}

void assigned_variants(trial& t) {
    const variant number(5);
    const variant words(long_text);
    variant one;
    t([&] { one = number; });
    t([&] { one.assign(words); });
    t.note(one);
    t([&] { return one.equal(types::nil) + (one == types::nil) * 2 + (one != types::nil) * 4; });
    t([&] { one = types::nil; });
    t.note(one);
}

void holders_of_bodies(trial& t) {
    typedef memory::pointers::rc_pointer<types::variant_type> holder;
    types::variant_value_t<int> first(1);
    types::variant_value_t<int> second(2);
    t([&] {
        holder one;
        holder two(&first);
        const holder three(two);
        one = three;
        two = &second;
        return one->as_int() + (*two).as_int() * 10 + (three.get() == &first ? 100 : 0) +
               (three ? 1000 : 0);
    });
}

// ---- arguments

void arguments(trial& t) {
    const variant words(long_text);
    const ustring8 name("a name that is longer than a short string");
    t([&] { return argument(); });
    t([&] { return argument(types::nil); });
    t([&] { return argument(words); });
    t([&] { return argument(std::string(long_text)); });
    const argument named = t.make([&] { return argument(name, words); });
    argument one;
    t([&] { one.assign(name, words); });
    t.note(one);
    t([&] { one.assign(words); });
    t([&] { one = words; });
    t([&] { one.assign(named); });
    t([&] { one = named; });
    t([&] { one.name("another name that is longer than a short string"); });
    t([&] { one.value(variant(7)); });
    t([&] {
        return one.has_name() + 2 * one.equal(types::nil) + 4 * (one == types::nil) +
               8 * (one != types::nil);
    });
    t.note(one);
    t([&] { return argument(named); });
}

void argument_lists(trial& t) {
    const variant words(long_text);
    const varg_list filled = t.make([&] {
        return varg_list(argument("a", words), argument("b", variant(2)), argument(words));
    });
    varg_list list = t.make([&] { return varg_list(filled); });
    t([&] { return list.push_back(argument("c", words)); });
    t([&] { return list.push_back("d", words); });
    t.note(list);
    const varg_list& constant = list;
    t([&] { return constant.at("a"); });
    t([&] { return constant["b"]; });
    t([&] { return constant.at(0ul); });
    t([&] { return constant[1ul]; });
    t([&] { return list.at(0ul); });
    t([&] { return list[1ul]; });
    t([&] {
        return (list.find("c") - list.begin()) + (constant.find("c") - constant.begin()) +
               (list.end() - list.begin()) + (constant.end() - constant.begin());
    });
    t([&] {
        return static_cast<int>(list.count()) + list.empty() + list.has_argument("a") +
               list.equal(types::nil) + (list == types::nil) + (list != types::nil);
    });
    t([&] { list.erase("a"); });
    t([&] { list.erase(0ul); });
    t([&] { list.erase(list.begin()); });
    t([&] { list.erase(list.begin(), list.begin() + 1); });
    t.note(list);
    t([&] { list.assign(filled); });
    t([&] { list = filled; });
    t.note(list);
    t([&] { list.clear(); });
    t([&] { list.erase(); });
    t.note(list);
}

// ---- exceptions, delegates, assertions

template <typename Error>
void one_exception(trial& t) {
    const exceptions::exception::state where(7, "file", "function");
    t([&] {
        const Error one(long_text, 7, "file", "function");
        const Error two(std::string(long_text), where);
        const Error copy(two);
        return std::string(one.get_message()) + copy.get_message();
    });
}

// The base of all exceptions, which adds no message.
class plain_exception : public exceptions::exception {
public:
    plain_exception(unsigned int line) : exception(line, "file", "function") {}
    plain_exception(const state& where) : exception(where) {}
    const char* get_message() const override { return "plain"; }
};

void every_exception(trial& t) {
    one_exception<exceptions::logic_error>(t);
    one_exception<exceptions::out_of_range>(t);
    one_exception<exceptions::length_error>(t);
    one_exception<exceptions::invalid_argument_value>(t);
    one_exception<exceptions::runtime_error>(t);
    one_exception<exceptions::empty_error>(t);
    one_exception<exceptions::full_error>(t);
    one_exception<exceptions::overflow_error>(t);
    one_exception<exceptions::underflow_error>(t);
    t([&] {
        const exceptions::exception::state where(7, "file", "function");
        const exceptions::exception::state same(where);
        const plain_exception one(same);
        const plain_exception two(7);
        const plain_exception three(two);
        return std::string(one.get_message()) + three.get_message();
    });
}

struct receiver {
    void one(const ustring8& value) { received += value; }
    void two(const ustring8& first, const ustring8& second) { received += first + second; }
    void check(const char* expression, const char*, unsigned int&) { received += expression; }
    ustring8 received;
};

template <typename Signature, typename Member, typename... Arguments>
void one_delegate(trial& t, Member member, Arguments... arguments) {
    receiver object;
    const functor::member_function_t<receiver, Signature> function(&object, member);
    t([&] {
        functor::delegate_t<Signature> empty;
        functor::delegate_t<Signature> first(function);
        functor::delegate_t<Signature> second(first);
        empty = function;
        second = empty;
        second.invoke(arguments...);
        return first.is_empty() + second.is_empty();
    });
    t.note(object.received);
}

void delegates(trial& t) {
    const ustring8 value(long_text);
    one_delegate<void(const ustring8&)>(t, &receiver::one, value);
    one_delegate<void(const ustring8&, const ustring8&)>(t, &receiver::two, value, value);
    unsigned int line = 1;
    receiver object;
    typedef void signature(const char*, const char*, unsigned int&);
    const functor::member_function_t<receiver, signature> function(&object, &receiver::check);
    t([&] {
        functor::delegate_t<signature> empty;
        functor::delegate_t<signature> first(function);
        functor::delegate_t<signature> second(first);
        empty = function;
        second = empty;
        second.invoke("an expression that is longer than a short string", "file", line);
        return first.is_empty() + second.is_empty();
    });
    t.note(object.received);
}

void assertion_hooks(trial& t) {
    receiver object;
    struct reset {
        ~reset() { debug::set_assert_hook(types::nil); }
    } at_end;
    static_cast<void>(at_end);
    typedef void signature(const char*, const char*, unsigned int&);
    const functor::member_function_t<receiver, signature> function(&object, &receiver::check);
    t([&] { debug::set_assert_hook(functor::delegate_t<signature>(function)); });
    t([&] { return debug::is_assert_hook_set(); });
    unsigned int line = 1;
    const char expression[] = "an expression that is longer than a short string";
    t([&] {
        debug::_private::____________________ASSERT____________________(expression, "f", 1, "g");
    });
    t([&] {
        debug::_private::_______________CONTEXT__ASSERT________________(expression, "f", 1, "g",
                                                                        "context");
    });
    t([&] { debug::_private::native_assert(expression, "f", line, "g"); });
    t.note(object.received);
}

struct counted : generic::abilities::reference_count_pointer_ability_b {};

struct sample : generic::clone_interface, generic::abilities::create_ability {
    sample* clone() const override { return new sample; }
};

void abilities(trial& t) {
    t([&] {
        counted one;
        counted two(one);
        two = one;
        generic::abilities::alloc_detection_ability plain;
        const generic::abilities::alloc_detection_ability copy(plain);
        plain = copy;
        return one.count + two.count;
    });
    t([&] {
        const sample one;
        delete one.clone();
    });
}

}  // namespace

void add_numbers(scenarios& all) {
    all.push_back({"integers from text, 8 bits", integers_from_text<ustring8>, never_ends});
    all.push_back({"integers from text, 16 bits", integers_from_text<ustring16>, never_ends});
    all.push_back({"integers from text, 32 bits", integers_from_text<ustring32>, never_ends});
    all.push_back({"integers to text, 8 bits", integers_to_text<char>, never_ends});
    all.push_back({"integers to text, 16 bits", integers_to_text<unsigned short>, never_ends});
    all.push_back({"integers to text, 32 bits", integers_to_text<wchar_t>, never_ends});
    all.push_back({"integers out of range", range_errors, never_ends});
    all.push_back({"floating point and text", floating_point, never_ends});
    all.push_back({"bytes from numbers", bytes_from_numbers, never_ends});
    all.push_back({"numbers from bytes", numbers_from_bytes, never_ends});
}

void add_values(scenarios& all) {
    all.push_back({"variant: integers", variants_of_integers, may_end});
    all.push_back({"variant: floating point", variants_of_floating_point, may_end});
    all.push_back({"variant: strings of 8 bits", variants_of_strings<ustring8>, may_end});
    all.push_back({"variant: strings of 16 bits", variants_of_strings<ustring16>, may_end});
    all.push_back({"variant: strings of 32 bits", variants_of_strings<ustring32>, may_end});
    all.push_back({"variant: standard strings", variants_of_std_strings, may_end});
    all.push_back({"variant: nothing", variants_of_nothing, may_end});
    all.push_back({"variant: assigned", assigned_variants, may_end});
    all.push_back({"variant: holders of its body", holders_of_bodies, never_ends});
    all.push_back({"arguments", arguments, may_end});
    all.push_back({"lists of arguments", argument_lists, may_end});
}

void add_foundation(scenarios& all) {
    all.push_back({"exceptions", every_exception, never_ends});
    all.push_back({"delegates", delegates, never_ends});
    all.push_back({"assertion hooks", assertion_hooks, never_ends});
    all.push_back({"abilities", abilities, never_ends});
}

}  // namespace proof
