// Tests nesting of any depth: `proof_depth NAME DEPTH` runs one operation on a document or a tree
// of that depth and checks its result. `proof_depth --list` prints the names, each with the depth
// that it must reach. The caller sets the stack to 8 MiB.
#include <tova/tova.hpp>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

namespace {

using namespace tova;
using serialization::labeled_serialize_buffer;
using serialization::labeled_text_buffer;
using strings::ustring8;
using types::variant;

const char declaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

void require(bool condition, const char* what) {
    if (condition)
        return;
    std::cout << "not so: " << what << '\n';
    std::exit(1);
}

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

std::string nested_elements(std::size_t depth) {
    return declaration + repeated("<a>", depth) + repeated("</a>", depth);
}

// The file is in the working directory, which the caller removes.
void write_file(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
}

// ---- documents

void parse_events(std::size_t depth) {
    struct counter {
        void start(const ustring8&) { ++started; }
        void end(const ustring8&) { ++ended; }
        std::size_t started, ended;
    } counts = {0, 0};
    typedef functor::member_function_t<counter, void(const ustring8&)> handler;
    parser::xml_parser xml;
    xml.on_element_start = handler(&counts, &counter::start);
    xml.on_element_end = handler(&counts, &counter::end);
    const ustring8 document(nested_elements(depth));
    require(xml.parse(document).type == parser::xml_parser::parse_error::no_error, "it is parsed");
    require(counts.started == depth && counts.ended == depth, "every element is reported");
}

void parse_tokens(std::size_t depth) {
    parser::xml_token_stream tokens;
    const ustring8 document(nested_elements(depth));
    require(tokens.parse(document).type == parser::xml_parser::parse_error::no_error,
            "it is parsed");
    require(tokens.size() >= 2 * depth, "every element is a token");
}

// An unclosed document: all elements are still open at its end.
void parse_unclosed(std::size_t depth) {
    parser::xml_parser xml;
    const ustring8 document(declaration + repeated("<a>", depth));
    require(xml.parse(document).type == parser::xml_parser::parse_error::unexpected_end,
            "the end is missing");
}

std::size_t read_nodes(parser::xml_stream_parser& log) {
    std::size_t nodes = 0;
    for (unsigned long read = 0;;) {
        log.parse();
        for (; !log.node_queue_empty(); ++nodes)
            log.node_queue_pop();
        if (log.parse_offset() == read)
            return nodes;
        read = log.parse_offset();
    }
}

void follow_one_node(std::size_t depth) {
    write_file("log.xml", nested_elements(depth));
    parser::xml_stream_parser log(ustring8("log.xml"), 0);
    require(read_nodes(log) == depth, "every element is a node");
}

// An end tag with the name of the root ends the document, so the other elements have another name.
void follow_open_levels(std::size_t depth) {
    write_file("log.xml", declaration + ("<r>" + repeated("<a>", depth - 1)) +
                              repeated("</a>", depth - 1) + "</r>");
    parser::xml_stream_parser log(ustring8("log.xml"), static_cast<unsigned>(depth));
    require(read_nodes(log) == 2 * depth, "every start and every end is a node");
    require(log.error() == parser::xml_stream_parser::end_of_document, "the root has closed");
}

// ---- trees

void settings_tree(std::size_t depth) {
    const ustring8 key(repeated("s.", depth - 1) + "end");
    config::config_tree tree;
    tree.set_node(key, variant("deep"), 0);
    require(tree.get_node(key)->second.as_string() == "deep", "the value is found");
    config::config_tree copy(tree);
    tree.erase();
    tree = copy;
    require(tree.get_node(key)->second.as_string() == "deep", "the copy has the value");
}

void settings_line(std::size_t depth) {
    config::user_item item;
    const ustring8 key(repeated("s.", depth - 1) + "end");
    item.set(ustring8(key + " = deep"), 0);
    require(item.get_value(key)->second.as_string() == "deep", "the value is found");
    const std::unique_ptr<config::user_item> copy(item.clone());
    require(copy->get_value(key)->second.as_string() == "deep", "the copy has the value");
}

void dig(labeled_serialize_buffer& tree, std::size_t depth, const char* value) {
    labeled_serialize_buffer* group = &tree;
    for (std::size_t i = 0; i < depth; ++i)
        group = group->create_group("g");
    group->add_value("bottom", value);
}

ustring8 bottom_of(const labeled_serialize_buffer& tree, std::size_t depth) {
    const labeled_serialize_buffer* group = &tree;
    for (std::size_t i = 0; i < depth; ++i)
        group = group->retrieve_group("g");
    return group->retrieve_value("bottom").as_string();
}

void labeled_groups(std::size_t depth) {
    labeled_text_buffer tree;
    dig(tree, depth, "old");
    labeled_text_buffer copy(tree);
    require(bottom_of(copy, depth) == "old", "the copy has the value");
    labeled_text_buffer other;
    dig(other, depth, "new");
    tree.overlay(other);
    require(bottom_of(tree, depth) == "new", "the merged tree has the new value");
    require(tree.has_group("g"), "the group is found");
    copy.assign(tree);
    require(bottom_of(copy, depth) == "new", "the assigned tree has the value");
}

void labeled_text(std::size_t depth) {
    labeled_text_buffer tree;
    dig(tree, depth, "value");
    const std::string text = tree.as_str();
    labeled_text_buffer read(text);
    require(bottom_of(read, depth) == "value", "the tree that is read has the value");
    require(read.as_str() == text, "the text is the same again");
}

// ---- files

std::string xmc(const std::string& content) {
    return "<?xml version=\"1.0\"?><xmc version=\"1.1\">" + content + "</xmc>";
}

void includes(std::size_t depth) {
    for (std::size_t i = 0; i < depth; ++i)
        write_file("c" + std::to_string(i) + ".xmc",
                   xmc("<include file='c" + std::to_string(i + 1) + ".xmc'/>"));
    write_file("c" + std::to_string(depth) + ".xmc",
               xmc("<catalog name='a' lang='en'><msg name='m'>last</msg></catalog>"));
    i18n::message_catalogs set;
    const auto result = set.load_file(ustring8("c0.xmc"), ustring8("en"));
    require(result.type == i18n::message_catalogs::no_error, result.message.c_str());
    require(set.message(ustring8("a"), ustring8("m")).as_string(generic::varg_list()) == "last",
            "the last file has the message");
}

const std::size_t million = 1000000;

const struct scenario {
    const char* name;
    std::size_t depth;
    void (*run)(std::size_t depth);
} scenarios[] = {
    {"elements: events", million, parse_events},
    {"elements: tokens", million, parse_tokens},
    {"elements: unclosed", million, parse_unclosed},
    {"elements: followed, one whole node", million, follow_one_node},
    {"elements: followed, every level open", million, follow_open_levels},
    {"settings: segments of a key, in a tree", million, settings_tree},
    {"settings: segments of a key, in a line", million, settings_line},
    {"labeled groups: copied and merged", million, labeled_groups},
    {"labeled groups: written and read", million, labeled_text},
    {"catalogs: a chain of includes", 100000, includes},
};

}  // namespace

int main(int count, char** words) {
    if (count == 2 && std::strcmp(words[1], "--list") == 0) {
        for (const scenario& one : scenarios)
            std::cout << one.name << '\t' << one.depth << '\n';
        return 0;
    }
    if (count == 3)
        for (const scenario& one : scenarios)
            if (std::strcmp(words[1], one.name) == 0) {
                one.run(std::strtoul(words[2], nullptr, 10));
                return 0;
            }
    std::cerr << "usage: proof_depth --list | NAME DEPTH\n";
    return 2;
}
