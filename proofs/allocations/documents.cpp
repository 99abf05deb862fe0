// XML, messages and catalogs.
#include "trial.hpp"

#include <tova/i18n/format.hpp>

#include <sstream>

namespace proof {

using namespace tova;
using generic::argument;
using generic::varg_list;
using i18n::message_catalogs;
using i18n::message_item;
using i18n::message_t;
using parser::xml_parser;
using parser::xml_stream_parser;
using parser::xml_token_stream;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
using types::variant;
using loader = i18n::_private::xmc_file_loader;

namespace {

const char document[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<an_element_with_a_long_name first_attribute='a value that is longer &amp; longer'>\n"
    "  <!-- a comment that is longer than a short string -->\n"
    "  <inner number=\"1\"/>text of a length that needs memory &lt; more\n"
    "</an_element_with_a_long_name>\n";

void note_error(trial& t, const xml_parser::parse_error& error) {
    t.note(error.type);
    t.note(error.line);
    t.note(error.text);
}

// ---- XML

struct xml_events {
    void one(const ustring8& text) { all += text; }
    void two(const ustring8& name, const ustring8& value) { all += name + "=" + value; }
    ustring8 all;
};

void parse_document(trial& t) {
    const ustring8 text(document);
    xml_events events;
    typedef functor::member_function_t<xml_events, void(const ustring8&)> one;
    typedef functor::member_function_t<xml_events, void(const ustring8&, const ustring8&)> two;
    xml_parser parser;
    t([&] {
        parser.on_element_start = one(&events, &xml_events::one);
        parser.on_element_end = one(&events, &xml_events::one);
        parser.on_character = one(&events, &xml_events::one);
        parser.on_space = one(&events, &xml_events::one);
        parser.on_comment = one(&events, &xml_events::one);
        parser.on_attribute = two(&events, &xml_events::two);
    });
    note_error(t, t.make([&] { return parser.parse(text); }));
    note_error(t, t.make([&] { return parser.parse(text.begin(), text.end()); }));
    note_error(t, t.make([&] { return parser.parse("<?xml version='1.0'?><a><b></a>"); }));
    t.note(events.all);
}

void parts_of_the_parser(trial& t) {
    xml_parser parser;
    const ustring8 text(
        "  a_name_that_is_longer_than_a_short_string='a value that is long too' &amp;");
    xml_parser::iterator cursor = text.begin();
    xml_parser::iterator end = text.end();
    t([&] { return parser.parse_whitespace(cursor, end); });
    t([&] { return parser.is_white_space(cursor); });
    t([&] { return parser.parse_name(cursor, end); });
    cursor += 2;
    t([&] { return parser.parse_attrib_value(cursor, end); });
    cursor += 2;
    t([&] { return parser.parse_character(cursor, end); });
    const ustring8 whole(document);
    cursor = whole.begin();
    end = whole.end();
    note_error(t, t.make([&] { return parser.do_parse(cursor, end); }));
    note_error(t, t.make([&] {
        const xml_parser::parse_error error(xml_parser::parse_error::no_root, 3, long_text);
        return xml_parser::parse_error(error);
    }));
}

void token_stream(trial& t) {
    const ustring8 text(document);
    xml_token_stream tokens;
    note_error(t, t.make([&] { return tokens.parse(text); }));
    t([&] {
        tokens.on_element_start("an element whose name is longer");
        tokens.on_attribute("an attribute whose name is longer", long_text);
        tokens.on_space("                                    ");
        tokens.on_character(long_text);
        tokens.on_comment(long_text);
        tokens.on_element_end("an element whose name is longer");
    });
    for (const xml_token_stream::token& token : tokens) {
        t.note(token.type());
        t.note(token.value());
    }
    t([&] {
        const xml_token_stream& constant = tokens;
        return tokens.size() + (tokens.begin() == constant.begin()) +
               (tokens.end() == constant.end());
    });
    xml_token_stream range;
    note_error(t, t.make([&] { return range.parse(text.begin(), text.end()); }));
    t([&] { return xml_token_stream::token(xml_token_stream::token::comment, long_text).value(); });
}

void bindings_of_the_token_stream(trial& t) {
    xml_token_stream tokens;
    typedef functor::member_function_t<xml_token_stream, void(const ustring8&)> one;
    typedef functor::member_function_t<xml_token_stream, void(const ustring8&, const ustring8&)>
        two;
    t([&] {
        one first(&tokens, &xml_token_stream::on_comment);
        two second(&tokens, &xml_token_stream::on_attribute);
        first.invoke(long_text);
        second.invoke(long_text, long_text);
        delete first.do_clone();
        delete second.do_clone();
        return first.do_equal(first) + second.do_equal(second);
    });
    t.note(tokens.size());
}

void note_nodes(trial& t, xml_stream_parser& log) {
    while (!log.node_queue_empty()) {
        t([&] { return log.node_queue_front().name; });
        t([&] { return log.node_queue_size(); });
        const xml_stream_parser::node node = t.make([&] { return log.node_queue_pop(); });
        t.note(node.name);
        t.note(node.text);
        t.note(node.attributes);
        t.note(node.line);
    }
}

const char log_name[] = "a log whose name is longer than a short string.xml";

template <typename String>
void follow(trial& t) {
    write_file(log_name, document);
    xml_stream_parser log(text<String>(log_name), 1);
    t([&] { return log.parse(); });
    note_nodes(t, log);
    t([&] { return log.root(); });
    t([&] { return log.line() + log.parse_offset() + log.file_length() + log.error(); });
}

void open_log(trial& t) {
    write_file(log_name, document);
    t([] { return xml_stream_parser(ustring8(log_name), 1).error(); });
    t([] { return xml_stream_parser(text<ustring16>(log_name), 1).error(); });
    t([] { return xml_stream_parser(text<ustring32>(log_name), 1).error(); });
}

void recover_log(trial& t) {
    write_file(log_name, "<?xml version=\"1.0\" encoding=\"UTF-8\"?><root_of_the_log>"
                         "<an_entry_whose_name_is_long><broken a=></an_entry_whose_name_is_long>"
                         "<an_entry_whose_name_is_long>text</an_entry_whose_name_is_long>");
    xml_stream_parser first(ustring8(log_name), 1);
    t([&] { return first.parse(); });
    t([&] { return first.recover(std::list<ustring8>{"an_entry_whose_name_is_long"}); });
    note_nodes(t, first);
    xml_stream_parser second(ustring8(log_name), 1);
    t([&] { return second.parse(); });
    t([&] { return second.recover(std::list<std::string>{"an_entry_whose_name_is_long"}); });
    note_nodes(t, second);
}

void empty_queue(trial& t) {
    write_file(log_name, document);
    xml_stream_parser log(ustring8(log_name), 1);
    try {
        t([&] { log.node_queue_pop(); });
    } catch (const xml_stream_parser::EmptyNodeQueue& error) {
        t.note(error.what());
    }
}

// ---- messages

std::vector<message_item> items_of_every_type() {
    return {message_item(long_text),
            message_item("words", message_item::type_string),
            message_item("n", message_item::type_number),
            message_item("n\1precision\1"
                         "4",
                         message_item::type_double),
            message_item("n", message_item::type_int),
            message_item("n", message_item::type_memory),
            message_item("n", message_item::type_memory_unit),
            message_item("n", message_item::type_metric),
            message_item("n", message_item::type_metric_unit),
            message_item("n", message_item::type_duration)};
}

const std::map<ustring8, ustring8> names_to_resolve = {{"words", long_text}};

void render_messages(trial& t) {
    const varg_list values(argument("words", variant(long_text)), argument("n", variant(123456.5)));
    const message_t message("a key that is longer than a short string", items_of_every_type());
    t([&] { return message.as_string(values); });
    t([&] { return message.as_utf8(values); });
    t([&] { return message.as_ustring(values); });
    t([&] { return message.as_utf16(values); });
    t([&] { return message.as_utf32(values); });
    t([&] { return message.as_wstring(values); });
    t([&] { return message.arguments(); });
    t([&] { return message.has_valid_args(values); });
    for (const message_item& item : items_of_every_type())
        t([&] { return item.as_string(values); });
}

void build_messages(trial& t) {
    t([] {
        message_item one(long_text);
        message_item two(long_text, message_item::type_string);
        const message_item three(one);
        two = three;
        two.assign(one);
        return std::make_pair(two.data() + one.name(), two.type());
    });
    const std::vector<message_item> items = items_of_every_type();
    message_t message = t.make([&] { return message_t("key", items); });
    t([&] { return message_t("key", items, long_text).meta(); });
    t([&] { return message_t(types::nil).name() + message_t().name(); });
    t([&] { return message_t(message).name(); });
    t([&] { message.name("another key that is longer than a short string"); });
    t([&] { message.meta(long_text); });
    t([&] { message._orginal_locale("a locale that is longer than a short string"); });
    t([&] { message.resolve(names_to_resolve); });
    t.note(message.name());
    t.note(message.meta());
    t.note(message._orginal_locale());
    t([&] { return message.argument_count() + message.count() + message.size(); });
    const message_t& constant = message;
    t([&] {
        return (message.end() - message.begin()) + (constant.end() - constant.begin()) +
               message.equal(types::nil) + (message == types::nil);
    });
    message_t other;
    t([&] { other = message; });
    t([&] { other.assign(message); });
    t.note(other.meta());
    t([&] { other.assign(types::nil); });
    t([&] { other = types::nil; });
    t.note(other.count());
}

void format_values(trial& t) {
    namespace parts = i18n::_private;
    const ustring8 plain("n");
    const ustring8 precise("n\1precision\1"
                           "30");
    for (const ustring8& format : {plain, precise}) {
        t([&] { return i18n::format_value(message_item::type_double, variant(1e15 / 3), format); });
        t([&] { return i18n::format_value(message_item::type_int, variant(-5), format); });
        t([&] { return parts::format_int(-1234567890123456789, format); });
        t([&] { return parts::format_double(1e15 / 3, format); });
        t([&] { return parts::format_duration(123456.5, format); });
        ustring8 unit;
        t([&] { return parts::format_memory(variant(123456789), format, unit); });
        t([&] { return parts::format_metric(variant(123456789), format, unit); });
        t.note(unit);
    }
    t([] { return parts::mem_prefix_index("MiB") + parts::thousands("k"); });
}

// ---- catalogs

const char catalog_text[] =
    "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"a_catalog_with_a_long_name\" "
    "lang=\"en\"><msg name=\"a_message_with_a_long_name\">a text that is longer <arg "
    "type=\"string\" name=\"an_argument_with_a_long_name\"/></msg><msg name=\"b\">x</msg>"
    "</catalog><catalog name=\"b\" lang=\"de_AT\"><msg name=\"c\">y<br/></msg></catalog></xmc>";
const char including_text[] = "<?xml version=\"1.0\"?><xmc version=\"1.1\"><include "
                              "file=\"catalog.xmc\"/></xmc>";
const char broken_text[] = "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"a\" "
                           "lang=\"en\"><msg nam=\"m\"></catalog></xmc>";

void write_catalogs() {
    system::create_directory(ustring8("./catalogs/"));
    write_file("catalogs/catalog.xmc", catalog_text);
    write_file("including.xmc", "<?xml version=\"1.0\"?><xmc version=\"1.1\"><include "
                                "file=\"catalogs/catalog.xmc\"/></xmc>");
    write_file("broken.xmc", broken_text);
}

void note_set(trial& t, const message_catalogs& set) {
    const varg_list values(argument("an_argument_with_a_long_name", variant(7)));
    for (const auto& catalog : set) {
        t.note(catalog.first);
        for (const auto& message : *catalog.second) {
            t.note(message.first);
            t.note(message.second.as_utf8(values));
        }
    }
}

// Loads in one way, and records the result and the loaded content.
template <typename Load>
void loaded(trial& t, const Load& load) {
    message_catalogs set;
    const message_catalogs::result_type result = t.make([&] { return load(set); });
    t.note(result.type);
    t.note(result.message);
    note_set(t, set);
}

template <typename String>
void load_catalogs(trial& t) {
    write_catalogs();
    const String file = text<String>("including.xmc");
    const String folder = text<String>("catalogs");
    const String broken = text<String>("broken.xmc");
    const String missing = text<String>("a file that does not exist and has a long name");
    const String lang = text<String>("de_AT");
    const String id = text<String>("b");
    using set = message_catalogs;
    loaded(t, [&](set& all) { return all.load(file, lang); });
    loaded(t, [&](set& all) { return all.load(file, lang, id); });
    loaded(t, [&](set& all) { return all.load_file(file, lang); });
    loaded(t, [&](set& all) { return all.load_file(file, lang, id); });
    loaded(t, [&](set& all) { return all.load_directory(folder, lang); });
    loaded(t, [&](set& all) { return all.load_directory(folder, lang, id); });
    loaded(t, [&](set& all) { return all.load_file(broken, lang); });
    loaded(t, [&](set& all) { return all.load_file(missing, lang); });
}

template <typename Path, typename String>
void load_folders(trial& t) {
    write_catalogs();
    const std::vector<Path> folders = {text<Path>("."), text<Path>("catalogs")};
    const String lang = text<String>("en");
    const String id = text<String>("a_catalog_with_a_long_name");
    loaded(t, [&](message_catalogs& all) { return all.load(folders, lang); });
    loaded(t, [&](message_catalogs& all) { return all.load(folders, lang, id); });
}

template <typename String>
void ask_catalogs(trial& t) {
    write_catalogs();
    message_catalogs set;
    set.load_file(ustring8("including.xmc"), ustring8("en"));
    const String name = text<String>("a_catalog_with_a_long_name");
    const String key = text<String>("a_message_with_a_long_name");
    const String none = text<String>("a name that is longer and that nothing has");
    const String lang = text<String>("en");
    const varg_list values(argument("an_argument_with_a_long_name", variant(7)));
    for (const String& each : {name, none})
        t([&] {
            return set.has_catalog(each) + 2 * set.has_catalog(each, lang) +
                   4 * set.has_message(each, key) + 8 * set.has_message(name, each) +
                   set.count(each) + set.size(each);
        });
    t([&] { return set.catalog(name).name(); });
    t([&] { return set.message(name, key).as_utf8(values); });
    t([&] { return set.begin(name)->first; });
    t([&] { return set.begin(name) == set.end(name); });
    const i18n::catalog_t& catalog = set.catalog(name);
    t([&] { return catalog.message(key).name(); });
    t([&] { return catalog.has_message(key); });
    t([&] { return catalog.is_language_loaded(lang); });
    t([&] { set.erase(name); });
    note_set(t, set);
}

void change_catalogs(trial& t) {
    write_catalogs();
    message_catalogs set;
    t([&] { set.set_resolve_container(names_to_resolve); });
    set.load_file(ustring8("including.xmc"), ustring8("en"));
    message_catalogs other = t.make([&] { return message_catalogs(set); });
    t([&] { other = set; });
    t([&] { other.assign(set); });
    note_set(t, other);
    const message_catalogs& constant = other;
    t([&] {
        return other.count() + other.size() + (other.begin() == constant.begin()) +
               (other.end() == constant.end()) + other.equal(types::nil) + (other == types::nil) +
               (other != types::nil);
    });
    t([&] { other.erase(); });
    t([&] { other.assign(types::nil); });
    t([&] { other = types::nil; });
    note_set(t, other);
}

void build_catalogs(trial& t) {
    const message_t message("a key that is longer than a short string", items_of_every_type());
    i18n::catalog_t catalog;
    t([&] { catalog._name("a name that is longer than a short string"); });
    t([&] { catalog.message("a key that is longer than a short string", message); });
    t([&] { catalog.gen_lang_set(); });
    t.note(catalog.name());
    i18n::catalog_t copy = t.make([&] { return i18n::catalog_t(catalog); });
    t([&] { copy = catalog; });
    t([&] { copy.assign(catalog); });
    t([&] {
        return copy.size() + static_cast<unsigned long>(std::distance(copy.begin(), copy.end())) +
               static_cast<unsigned long>(
                   std::distance(copy.languages_begin(), copy.languages_end())) +
               copy.equal(types::nil) + (copy == types::nil) + (copy != types::nil);
    });
    t([&] { copy.assign(types::nil); });
    t([&] { copy = types::nil; });
    t.note(copy.size());
}

void results_of_loading(trial& t) {
    t([] {
        loader::load_error error(loader::invalid_element, long_text);
        const loader::load_error of_xml(
            loader::xml_error,
            xml_parser::parse_error(xml_parser::parse_error::no_root, 3, long_text));
        const loader::load_error copy(of_xml);
        error.append_error_stack(loader::load_error::in_file, long_text);
        message_catalogs::result_type result(error);
        message_catalogs::result_type plain(message_catalogs::unexpected, long_text);
        std::ostringstream out;
        out.exceptions(std::ios_base::badbit);
        i18n::operator<<(out, result);
        return ustring8(out.str()) + copy.message + error.format_msg(loader::bad_version, "v") +
               error.format_msg(loader::load_error::at_line, "7") +
               error.format_msg(xml_parser::parse_error(xml_parser::parse_error::no_root, 3, "x")) +
               plain.format_message(message_catalogs::no_catalog, "name") +
               plain.format_message(copy);
    });
}

void loader_itself(trial& t) {
    write_catalogs();
    const auto noted = [&](const loader::load_error& error) {
        t.note(error.type);
        t.note(error.message);
    };
    loader one;
    noted(t.make([&] { return one.parse(ustring8("including.xmc"), ustring8("en")); }));
    noted(t.make(
        [&] { return one.parse(ustring8("including.xmc"), ustring8("en"), ustring8("b")); }));
    noted(t.make([&] { return one.parse(ustring8("including.xmc")); }));
    t([&] { one.reset(); });
    t([&] { one.handle_language("de_AT"); });
    t([&] {
        return one.get_locale_weight("de") + one.is_lang_id_good("de") + one.is_cat_id_set();
    });
    t([&] { return one.is_catalog_matched("a_catalog_with_a_long_name"); });
    noted(t.make([&] { return one.parse_file("including.xmc"); }));
    noted(t.make([&] { return one.parse_string(including_text, "catalogs/other.xmc"); }));
    noted(t.make([&] { return one.parse_string(broken_text, "other.xmc"); }));
    t([&] { return one.parse_message_type("memory_unit"); });
    t([&] { one.set_message(message_t("key", items_of_every_type()), "a catalog, long named"); });
    std::map<ustring8, memory::pointers::shared_pointer<i18n::catalog_t>> target;
    t([&] { return one.combine_data(target, names_to_resolve); });
    t.note(target.size());
}

// Passes the tokens of an element to the part of the loader that reads it.
template <typename Read>
void one_element(trial& t, const char* element, const Read& read) {
    xml_token_stream tokens;
    tokens.parse(ustring8(std::string("<?xml version='1.0'?>") + element));
    const xml_token_stream& constant = tokens;
    loader::token_iterator cursor = constant.begin();
    loader::token_iterator end = constant.end();
    try {
        t([&] { return read(cursor, end); });
    } catch (const loader::load_error& error) {
        t.note(error.message);
    }
    t.note(static_cast<unsigned long>(std::distance(cursor, end)));
}

void parts_of_the_loader(trial& t) {
    write_catalogs();
    loader one;
    one.handle_language("en");
    using place = loader::token_iterator;
    one_element(t, "<xmc version='1.1'></xmc>", [&](place& cursor, place& end) {
        one.parse_xmc_header(cursor, end);
        return 0;
    });
    one_element(
        t, "<catalog name='a_catalog_with_a_long_name' lang='en'><msg name='m'>x</msg></catalog>",
        [&](place& cursor, place& end) {
            one.parse_catalog(cursor, end);
            return 0;
        });
    one_element(t, "<include file='catalogs/catalog.xmc'/>", [&](place& cursor, place& end) {
        one.parse_include(cursor, end);
        return 0;
    });
    one_element(t, "<msg name='a_message_with_a_long_name'>text <arg type='int' name='n'/></msg>",
                [&](place& cursor, place& end) { return one.parse_message(cursor, end).name(); });
    one_element(
        t, "<arg type='int' name='an_argument_with_a_long_name'/>",
        [&](place& cursor, place& end) { return one.parse_message_arg(cursor, end).data(); });
    one_element(t, "<a><!-- a comment that is longer than a short string --></a>",
                [&](place& cursor, place& end) {
                    one.parse_ignorable(cursor, end);
                    return 0;
                });
}

}  // namespace

void add_documents(scenarios& all) {
    all.push_back({"XML: events", parse_document, never_ends});
    all.push_back({"XML: parts of the parser", parts_of_the_parser, never_ends});
    all.push_back({"XML: tokens", token_stream, never_ends});
    all.push_back({"XML: bindings of the tokens", bindings_of_the_token_stream, never_ends});
    all.push_back({"stream: followed, 8 bits", follow<ustring8>, never_ends});
    all.push_back({"stream: followed, 16 bits", follow<ustring16>, never_ends});
    all.push_back({"stream: followed, 32 bits", follow<ustring32>, never_ends});
    all.push_back({"stream: opened", open_log, never_ends});
    all.push_back({"stream: recovered", recover_log, never_ends});
    all.push_back({"stream: an empty queue", empty_queue, never_ends});
}

void add_messages(scenarios& all) {
    all.push_back({"messages: rendered", render_messages, may_end});
    all.push_back({"messages: built", build_messages, may_end});
    all.push_back({"messages: formatted values", format_values, never_ends});
    all.push_back({"catalogs: loaded, 8 bits", load_catalogs<ustring8>, never_ends});
    all.push_back({"catalogs: loaded, 16 bits", load_catalogs<ustring16>, never_ends});
    all.push_back({"catalogs: loaded, 32 bits", load_catalogs<ustring32>, never_ends});
    all.push_back({"catalogs: folders, 8 bits", load_folders<ustring8, ustring8>, never_ends});
    all.push_back({"catalogs: folders, 16 bits", load_folders<ustring16, ustring16>, never_ends});
    all.push_back({"catalogs: folders, 32 bits", load_folders<ustring32, ustring32>, never_ends});
    all.push_back({"catalogs: folders, std::string",
                   [](trial& t) {
                       load_folders<std::string, ustring8>(t);
                       load_folders<std::string, ustring16>(t);
                       load_folders<std::string, ustring32>(t);
                   },
                   never_ends});
    all.push_back({"catalogs: folders, std::wstring",
                   [](trial& t) {
                       load_folders<std::wstring, ustring8>(t);
                       load_folders<std::wstring, ustring16>(t);
                       load_folders<std::wstring, ustring32>(t);
                   },
                   never_ends});
    all.push_back({"catalogs: asked, 8 bits", ask_catalogs<ustring8>, never_ends});
    all.push_back({"catalogs: asked, 16 bits", ask_catalogs<ustring16>, never_ends});
    all.push_back({"catalogs: asked, 32 bits", ask_catalogs<ustring32>, never_ends});
    all.push_back({"catalogs: changed", change_catalogs, never_ends});
    all.push_back({"catalogs: built", build_catalogs, never_ends});
    all.push_back({"catalogs: results", results_of_loading, never_ends});
    all.push_back({"catalogs: the loader", loader_itself, never_ends});
    all.push_back({"catalogs: parts of the loader", parts_of_the_loader, never_ends});
}

}  // namespace proof
