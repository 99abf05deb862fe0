// One object of every type that the debugger shows. printers_test.py stops in `look_here` and
// prints the variables of `main`.
#include <tova/tova.hpp>

#include <string>

namespace {

struct counter {
    virtual ~counter() {}
    void add(const tova::strings::ustring8&) { ++sum; }
    virtual void change(const tova::strings::ustring8&) { --sum; }
    int sum = 0;
};

typedef void signature(const tova::strings::ustring8&);

struct silent : tova::functor::function_type_interface<signature> {
    void invoke(const tova::strings::ustring8&) override {}
    bool do_equal(const function_type_interface&) const override { return true; }
    silent* do_clone() const override { return new silent; }
};

// What a variable may contain before its constructor has run.
template <typename T>
struct uninitialized {
    uninitialized() {
        for (unsigned char& byte : bytes)
            byte = 0xA5;
    }
    alignas(T) unsigned char bytes[sizeof(T)];
};

__attribute__((noinline)) void look_here() {
    asm volatile("");
}

}  // namespace

// Long because it has a variable for every case of every type.
int main() {
    using namespace tova;
    using generic::argument;
    using strings::ustring16;
    using strings::ustring32;
    using strings::ustring8;
    using types::variant;

    const ustring8 text8("Gr\xC3\xBC\xC3\x9F \"you\"");
    const ustring16 text16 = strings::utf8_to_utf16(text8);
    const ustring32 text32 = strings::utf8_to_utf32(text8);
    const ustring8 empty8;
    const ustring8 invalid8("caf\xE9!");
    const ustring8 zero8("a\0b", 3);
    const ustring8 long8(1000, 'x');
    const ustring8& reference8 = text8;

    const variant v_nil;
    const variant v_int8(static_cast<signed char>(-5));
    const variant v_short(static_cast<short>(-300));
    const variant v_int(-70000);
    const variant v_long(-5000000000L);
    const variant v_uint8(static_cast<unsigned char>('A'));
    const variant v_ushort(static_cast<unsigned short>(65535));
    const variant v_uint(4294967295u);
    const variant v_ulong(18446744073709551615ul);
    const variant v_bool(true);
    const variant v_float(1.5f);
    const variant v_double(2.25);
    const variant v_long_double(-3.125L);
    const variant v_ustring8(text8);
    const variant v_ustring16(text16);
    const variant v_ustring32(text32);
    const variant v_string(std::string("plain\n"));
    const variant v_wstring(std::wstring(L"wide"));

    const argument unnamed(3);
    const argument named("count", 3);
    generic::varg_list arguments(named, "two");
    const generic::varg_list no_arguments;

    const memory::pointers::rc_pointer<config::config_tree> no_tree;
    config::config_tree on_stack;
    const memory::pointers::rc_pointer<config::config_tree> tree_on_stack(&on_stack);
    config::config_tree settings;
    settings.set_node("server.port", 8080, 1);
    settings.set_node("server.name", "mia", 1);
    settings.set_node("old", "server.port", 5);
    settings.set_node("ports", true, 3);
    settings.set_node("ports.0", 1, 1);
    const memory::pointers::rc_pointer<config::config_tree> tree(settings.clone());
    const memory::pointers::rc_pointer<config::config_tree> tree_again(tree);

    counter target;
    typedef functor::member_function_t<counter, signature> member;
    const functor::delegate_t<signature> no_call;
    const functor::delegate_t<signature> call(member(&target, &counter::add));
    const functor::delegate_t<signature> virtual_call(member(&target, &counter::change));
    const functor::delegate_t<signature> other_call = silent();

    using i18n::message_item;
    i18n::message_t message("copied", {message_item("Copied "),
                                       message_item("n\1base\1hex", message_item::type_int),
                                       message_item(" files.")});
    message._orginal_locale("de_AT");
    const i18n::message_t no_message;
    i18n::catalog_t catalog;
    catalog._name("app");
    const i18n::catalog_t no_catalog(catalog);
    for (const char* key : {"b", "a", "e", "d", "c"})
        catalog.message(key, i18n::message_t(key, {message_item(key)}));
    catalog.message("f", message);
    catalog.is_language_loaded("de_AT");
    i18n::catalog_t* const on_heap = new i18n::catalog_t(no_catalog);
    on_heap->allocated = true;
    const memory::pointers::shared_pointer<i18n::catalog_t> shared(on_heap);

    const system::date_time::date_time_t moment(system::date_time::date(3, 2, 2026),
                                                system::date_time::time(4, 5, 6, 7));
    const system::date_time::date day(31, 2, 1999);
    const system::date_time::time midnight;

    const uninitialized<ustring8> raw_text;
    const uninitialized<variant> raw_variant;
    const uninitialized<argument> raw_argument;
    const uninitialized<generic::varg_list> raw_arguments;
    const uninitialized<i18n::message_t> raw_message;
    const uninitialized<i18n::catalog_t> raw_catalog;
    const uninitialized<config::config_tree> raw_tree;
    const uninitialized<functor::delegate_t<signature>> raw_call;
    const uninitialized<memory::pointers::rc_pointer<config::config_tree>> raw_holder;

    // g++ does not describe the class, so gdb cannot name it in a cast.
    const auto raw_tree_pointer = reinterpret_cast<const config::config_tree*>(raw_tree.bytes);

    look_here();
    return raw_tree_pointer == nullptr;
}
