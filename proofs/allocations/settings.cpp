// Settings, serialization buffers, files and directories.
#include "trial.hpp"

#include <tova/config/config.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

#include <sstream>

namespace proof {

using namespace tova;
using config::config_node_list;
using config::config_tree;
using generic::argument;
using generic::varg_list;
using memory::pointers::rc_pointer;
using serialization::labeled_serialize_buffer;
using serialization::labeled_text_buffer;
using serialization::serialize_buffer;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
using types::variant;

namespace {

const char key[] = "a_section_with_a_long_name.and_a_key_with_a_long_name";
const char settings_text[] = "# a comment\n[a_section_with_a_long_name]\n"
                             "and_a_key_with_a_long_name = a value that is longer than it\n"
                             "list[] = 1, 2, \"three, and longer than a short string\"\n";
const char settings_file[] = "settings whose name is longer.cfg";

template <typename Printed>
ustring8 printed(Printed& object) {
    std::ostringstream out;
    out.exceptions(std::ios_base::badbit);
    out << object;
    return out.str();
}

// ---- settings

void trees(trial& t) {
    config_tree tree;
    t([&] { tree.set_node(key, variant(long_text), 0); });
    t([&] { tree.set_node("numbers.one", variant(1), 6); });
    t([&] {
        ustring8 head;
        ustring8 tail;
        tree.parse_string(key, head, tail);
        return head + "|" + tail;
    });
    t([&] { return *tree.get_node(key); });
    t([&] {
        config_node_list found;
        tree.get_array("numbers", found);
        tree.get_value_pair_array("", found, true, "");
        return found;
    });
    t([&] { return printed(tree); });
    t([&] {
        std::ostringstream out;
        out.exceptions(std::ios_base::badbit);
        tree.dump(out, 1);
        return out.str();
    });
    config_tree copy = t.make([&] { return config_tree(tree); });
    t([&] { copy = tree; });
    t([&] { delete tree.clone(); });
    t([&] { copy.erase(); });
    t([&] { return printed(copy); });
}

void characters_and_tokens(trial& t) {
    t([] {
        return config::isConfigDotSlash('.') + config::isConfigWhite('\n') +
               config::isConfigSpace(' ') + config::isConfigAlpha('a') +
               config::isConfigDigit('1') + config::isConfigDelim('=');
    });
    config::user_item item;
    const ustring8 line("a_key_with_a_long_name = \"a value that is longer than a string\"");
    unsigned int position = 0;
    for (int i = 0; i < 6; ++i) {
        config::config_token token;
        t([&] { return item.get_token(line, position, token); });
        t([&] { return token.CvtTokStr(); });
    }
    t([&] { return item.make_key_value(line, config::config_token::T_EQ); });
    t([&] { return config::quote_value("a value with \"quotes\" that is longer"); });
}

void note_item(trial& t, config::base_config_item& item) {
    t([&] { return item.get_id(); });
    t([&] {
        const config::config_node* const node = item.get_value(key);
        return node != nullptr ? node->second.as_utf8() : ustring8();
    });
    t([&] {
        config_node_list found;
        item.get_array("a_section_with_a_long_name.list", found);
        item.get_value_pair_array("a_section_with_a_long_name", found, true);
        return found;
    });
    t([&] { return printed(item); });
    t([&] {
        std::ostringstream out;
        out.exceptions(std::ios_base::badbit);
        item.dump(out);
        return out.str();
    });
}

void user_items(trial& t) {
    config::user_item item;
    t([&] { item.set(key, variant(long_text), 0); });
    t([&] { item.set(std::pair<ustring8, variant>("b", variant(2)), 0); });
    t([&] { item.set(ustring8("c = a value that is longer than a short string"), 0); });
    t([&] {
        item.set_array("a_section_with_a_long_name.list",
                       varg_list(argument(variant(1)), argument(variant(long_text))), varg_list());
    });
    note_item(t, item);
    // The base's implementation, which sources may override.
    config::config_item_list none;
    t([&] { return item.load(none) + item.load() * 2 + item.save(none) * 4 + item.save() * 8; });
    t([&] { return config::user_item(item).get_id(); });
    t([&] { delete item.clone(); });
    t([&] { item.unload(); });
    note_item(t, item);
}

void file_items(trial& t) {
    write_file(settings_file, settings_text);
    config::file_item item{ustring8(settings_file)};
    t([&] { return item.load(); });
    note_item(t, item);
    t([&] { return item.get_filename(); });
    t([&] { return item.save(); });
    t([&] { return config::file_item(item).get_filename(); });
    t([&] { delete item.clone(); });
    t([&] { item.unload(); });
    t([&] { item.load_file(); });
    unsigned int position = 0;
    t([&] { item.parse_comment("# a comment that is longer than a short string\nx", position); });
    t.note(position);
    config::config_item_list none;
    t([&] { return item.load(none); });
    t([&] { return item.save(none); });
    ustring8 written;
    system::load_file(ustring8(settings_file), written);
    t.note(written);
}

const char* const words[] = {"tool", "-a_section_with_a_long_name.and_a_key_with_a_long_name=value",
                             "--b", "c", nullptr};
const char* const variables[] = {"A_VARIABLE_WITH_A_LONG_NAME=a value that is longer", "B=2",
                                 nullptr};

void sources_of_the_process(trial& t) {
    config::config_item_list none;
    config::commandline_item line(4, words);
    t([&] { return line.load(none) + line.load(); });
    note_item(t, line);
    t([&] { return line.get_argc() + (line.get_argv() == words); });
    t([&] { return config::commandline_item(line).get_argc(); });
    t([&] { delete line.clone(); });
    t([&] { line.unload(); });
    config::enviroment_item environment(variables);
    t([&] { return environment.load(none) + environment.load(); });
    note_item(t, environment);
    t([&] { return environment.get_envp() == variables; });
    t([&] { return config::enviroment_item(environment).get_envp() == variables; });
    t([&] { delete environment.clone(); });
    t([&] { environment.unload(); });
}

void dispatch(trial& t, const config::config_dispatch& dispatcher) {
    config::config_item_list items;
    t([&] { return dispatcher.setup(items); });
    t([&] { return dispatcher.load(items); });
    for (const auto& item : items)
        note_item(t, *item);
    t([&] { return dispatcher.save(items); });
    t([&] { return dispatcher.unload(items); });
    t([&] { delete dispatcher.clone(); });
}

void dispatchers(trial& t) {
    write_file(settings_file, settings_text);
    t([] { config::std_config_dispatch(); });
    dispatch(t, config::std_config_dispatch(4, words, variables, settings_file, "second"));
    dispatch(t, config::module_config_dispatch(varg_list(argument("", variant(settings_file))),
                                               variables));
}

void managers(trial& t) {
    write_file(settings_file, settings_text);
    config::config_manager manager;
    const config::std_config_dispatch dispatcher(4, words, variables, settings_file, "");
    t([&] { return manager.init(dispatcher); });
    t([&] { return manager.load(); });
    t([&] { return manager.get_value(key, variant("none")); });
    t([&] { return manager.get_value("a key that is longer and missing", variant(long_text)); });
    t([&] {
        return manager.value_exist(key) + 2 * manager.is_array("a_section_with_a_long_name.list");
    });
    t([&] {
        std::vector<variant> values;
        manager.get_array("a_section_with_a_long_name.list", values);
        return values;
    });
    t([&] {
        std::vector<std::pair<ustring8, variant>> values;
        manager.get_key_value_array("a_section_with_a_long_name", values, true);
        return values;
    });
    t([&] { return manager.get_config_item("command line")->get_id(); });
    t([&] { return printed(manager); });
    t([&] {
        std::ostringstream out;
        out.exceptions(std::ios_base::badbit);
        manager.dump(out);
        return out.str();
    });
    t([&] { return manager.save(); });
    t([&] { return manager.unload(); });
}

template <typename Holder, typename Counted>
void one_holder(trial& t, Counted& first, Counted& second) {
    t([&] {
        Holder one;
        Holder two(&first);
        const Holder three(two);
        one = three;
        two = &second;
        return (one.operator->() == &first) + (&*two == &second) + (three.get() == &first) +
               (three ? 1 : 0);
    });
    t([] {
        struct counted : generic::abilities::reference_count_pointer_ability<Counted> {};
        counted one;
        const counted two(one);
        one = two;
        return one.count + two.count;
    });
}

void holders(trial& t) {
    config::user_item one;
    config::user_item two;
    one_holder<rc_pointer<config::base_config_item>, config::base_config_item>(t, one, two);
    config_tree tree;
    config_tree other;
    one_holder<rc_pointer<config_tree>>(t, tree, other);
    serialization::serialize_text_buf words_of_one;
    serialization::serialize_text_buf words_of_two;
    one_holder<rc_pointer<serialize_buffer>, serialize_buffer>(t, words_of_one, words_of_two);
    labeled_text_buffer labels_of_one;
    labeled_text_buffer labels_of_two;
    one_holder<rc_pointer<labeled_serialize_buffer>, labeled_serialize_buffer>(t, labels_of_one,
                                                                               labels_of_two);
    types::variant_value_t<int> body(1);
    types::variant_value_t<int> other_body(2);
    one_holder<rc_pointer<types::variant_type>, types::variant_type>(t, body, other_body);
    i18n::catalog_t catalog;
    i18n::catalog_t other_catalog;
    one_holder<memory::pointers::shared_pointer<i18n::catalog_t>>(t, catalog, other_catalog);
}

// ---- serialization

void append_everything(trial& t, serialize_buffer& buffer) {
    t([&] { buffer.append_int8(-1); });
    t([&] { buffer.append_int16(-2); });
    t([&] { buffer.append_int32(-3); });
    t([&] { buffer.append_int64(-4); });
    t([&] { buffer.append_uint8(1); });
    t([&] { buffer.append_uint16(2); });
    t([&] { buffer.append_uint32(3); });
    t([&] { buffer.append_uint64(4); });
    t([&] { buffer.append_float(1.5f, 6); });
    t([&] { buffer.append_double(1.2345678901234567e-300, 17); });
    t([&] { buffer.append_string(long_text); });
}

void read_everything(trial& t, const serialize_buffer& buffer) {
    t([&] { return buffer.read_int8(); });
    t([&] { return buffer.read_int16(); });
    t([&] { return buffer.read_int32(); });
    t([&] { return buffer.read_int64(); });
    t([&] { return buffer.read_uint8(); });
    t([&] { return buffer.read_uint16(); });
    t([&] { return buffer.read_uint32(); });
    t([&] { return buffer.read_uint64(); });
    t([&] { return buffer.read_float(); });
    t([&] { return buffer.read_double(); });
    t([&] { return buffer.read_string(); });
}

template <typename Buffer>
void buffers(trial& t) {
    Buffer buffer;
    append_everything(t, buffer);
    Buffer inner;
    inner.append_string(long_text);
    t([&] { buffer.append_buffer(inner); });
    read_everything(t, buffer);
    const auto owned = [&](serialize_buffer* made) {
        made->allocated = true;
        const rc_pointer<serialize_buffer> holder(made);
        t.note(holder->as_str());
    };
    owned(t.make([&] { return buffer.read_buffer(); }));
    owned(t.make([&] { return buffer.create(); }));
    owned(t.make([&] { return buffer.clone(); }));
    t([&] { return buffer.at_end(); });
    t([&] { buffer.reset_read(); });
    const std::string bytes = buffer.as_str();
    const serialize_buffer& base = buffer;
    t([&] { return Buffer(bytes).as_str(); });
    t([&] { return Buffer(base).as_str(); });
    t([&] { return Buffer(buffer).as_str(); });
    Buffer other;
    t([&] { other = buffer; });
    t.note(other.as_str());
    t([&] { other.assign(base); });
    t([&] { other.assign(bytes); });
    t([&] { other.assign(bytes.data(), static_cast<int>(bytes.size())); });
    t.note(other.as_str());
}

void fill(trial& t, labeled_text_buffer& tree) {
    t([&] {
        return tree.add_value("a label that is longer than a short string", variant(long_text));
    });
    t([&] { return tree.add_value("number", variant(1.5)); });
    labeled_serialize_buffer* const group =
        t.make([&] { return tree.create_group("a group that is longer than a short string"); });
    t([&] { return group->add_value("inner", variant(7)); });
}

void labeled_buffers(trial& t) {
    labeled_text_buffer tree;
    fill(t, tree);
    t([&] { return tree.as_str(); });
    const std::string encoded = tree.as_str();
    const std::string label("a label that is longer than a short string");
    const std::string group("a group that is longer than a short string");
    t([&] {
        return tree.has_label(label) + 2 * tree.has_value(label) + 4 * tree.has_group(group) +
               8 * tree.is_empty();
    });
    t([&] { return tree.retrieve_value(label); });
    const labeled_text_buffer& constant = tree;
    t([&] { return tree.retrieve_group(group)->as_str(); });
    t([&] { return constant.retrieve_group(group)->as_str(); });
    const auto owned = [&](labeled_serialize_buffer* made) {
        made->allocated = true;
        const rc_pointer<labeled_serialize_buffer> holder(made);
        t.note(holder->as_str());
    };
    owned(t.make([&] { return tree.create(); }));
    owned(t.make([&] { return tree.clone(); }));
    t([&] { return labeled_text_buffer(tree).as_str(); });
    t([&] { return labeled_text_buffer(encoded).as_str(); });
    labeled_text_buffer other;
    const labeled_serialize_buffer& base = tree;
    t([&] { other = tree; });
    t([&] { other.assign(tree); });
    t([&] { other.assign(base); });
    t([&] { other.assign(encoded); });
    t([&] { other.assign(encoded.data(), static_cast<int>(encoded.size())); });
    t([&] { other.overlay(tree); });
    t.note(other.as_str());
}

// ---- files

template <typename String>
void files(trial& t) {
    const String path = text<String>("a file whose name is longer than a short string");
    const String moved = text<String>("a file that was moved and has a longer name");
    const String folder = text<String>("./a folder whose name is longer than a short string/");
    const String inner = text<String>("./a folder whose name is longer than a short string/inner/");
    // An earlier run may have ended in the middle.
    for (const String& left : {inner, path, moved})
        if (system::io::exists(left))
            system::io::is_directory(left) ? system::io::remove_dir(left)
                                           : system::io::remove_file(left);
    if (system::io::exists(folder))
        system::io::remove_dir(folder);
    const ustring8 bytes(long_text);
    t([&] { return system::store_file(path, bytes); });
    ustring8 content;
    std::string plain;
    t([&] { return system::load_file(path, content); });
    t([&] { return system::load_file(path, plain); });
    t.note(content);
    t.note(plain);
    t([&] { return system::have_read_access(path); });
    t([&] {
        return system::io::exists(path) + 2 * system::io::is_file(path) +
               4 * system::io::is_directory(path);
    });
    t([&] { return system::create_directory(folder); });
    t([&] { return system::create_directory(inner); });
    t([&] {
        std::vector<String> found;
        system::get_directory_files(folder, found);
        return found;
    });
    t([&] { return system::list_directory(folder); });
    t([&] { system::io::move(moved, path); });
    t([&] { system::io::remove_dir(inner); });
    t([&] { system::io::remove_dir(folder); });
    t([&] { return system::io::exists(moved); });
}

template <typename String>
void remove_one_file(trial& t) {
    write_file("a file that is to be removed and has a long name", "x");
    const String path = text<String>("a file that is to be removed and has a long name");
    t([&] { system::io::remove_file(path); });
    t([&] { return system::io::exists(path); });
}

}  // namespace

void add_settings(scenarios& all) {
    all.push_back({"settings: trees", trees, may_end});
    all.push_back({"settings: characters and tokens", characters_and_tokens, may_end});
    all.push_back({"settings: of the user", user_items, may_end});
    all.push_back({"settings: of a file", file_items, may_end});
    all.push_back({"settings: of the process", sources_of_the_process, may_end});
    all.push_back({"settings: dispatchers", dispatchers, may_end});
    all.push_back({"settings: managers", managers, may_end});
}

void add_buffers(scenarios& all) {
    all.push_back({"holders", holders, never_ends});
    all.push_back({"buffers: text", buffers<serialization::serialize_text_buf>, never_ends});
    all.push_back({"buffers: binary", buffers<serialization::serialize_binary_buf>, never_ends});
    all.push_back({"buffers: labeled", labeled_buffers, may_end});
}

void add_files(scenarios& all) {
    all.push_back({"files: 8 bits", files<ustring8>, never_ends});
    all.push_back({"files: 16 bits", files<ustring16>, never_ends});
    all.push_back({"files: 32 bits", files<ustring32>, never_ends});
    all.push_back({"files: removed",
                   [](trial& t) {
                       remove_one_file<ustring8>(t);
                       remove_one_file<ustring16>(t);
                       remove_one_file<ustring32>(t);
                   },
                   never_ends});
}

}  // namespace proof
