// `labeled_text_buffer`: a random sequence of operations on two trees. After each operation, both
// are compared with the model from the tests. serialization.cpp tests reading arbitrary text.
//
// Input: operations. Each is a byte that says what to do and on which tree, a byte for the label,
// and a byte for the value.
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/types/nil.hpp>

#include "../tests/serialization/tree_model.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using fuzz_support::require;
using test_support::tree_model;
using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::types::variant;

struct pair {
    labeled_text_buffer tree;
    tree_model model;
};

// Merges two models entry by entry.
void overlay(tree_model& into, const tree_model& other) {
    for (const auto& entry : other.entries) {
        const auto found = into.entries.find(entry.first);
        if (found == into.entries.end()) {
            into.entries.insert(entry);
            continue;
        }
        const bool has_group = !entry.second.first.entries.empty();
        if (!has_group || entry.second.second != tova::types::nil)
            found->second.second = entry.second.second;
        if (has_group)
            overlay(found->second.first, entry.second.first);
    }
}

void compare(const pair& one) {
    require(one.tree.is_empty() == one.model.entries.empty());
    require(one.tree.as_str() == one.model.encode());
    for (const char* label : {"a", "b", " a", "", "c"}) {
        const auto entry = one.model.entries.find(label);
        const bool exists = entry != one.model.entries.end();
        require(one.tree.has_label(label) == exists);
        require((one.tree.retrieve_group(label) != nullptr) == exists);
        require(one.tree.has_group(label) == (exists && !entry->second.first.entries.empty()));
        require(one.tree.has_value(label) == (exists && entry->second.second != tova::types::nil));
        if (exists)
            require(one.tree.retrieve_value(label).as_string() == entry->second.second.as_string());
    }
}

std::string label_of(std::uint8_t byte) {
    static const char* const labels[] = {"a", "b", " a", "a ", "\t b\r\n", "", " ", "c d"};
    return labels[byte % 8];
}

variant value_of(std::uint8_t byte) {
    switch (byte % 4) {
    case 0:
        return variant();
    case 1:
        return variant(static_cast<int>(byte));
    case 2:
        return variant(std::string(byte / 4 % 8, 'v'));
    default:
        return variant(std::string("a\1"
                                   "b "));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    if (size > 300)
        return 0;
    pair pairs[2];
    // The target of the next operation: the tree, or one of its groups.
    labeled_serialize_buffer* places[2] = {&pairs[0].tree, &pairs[1].tree};
    tree_model* models[2] = {&pairs[0].model, &pairs[1].model};
    const auto to_the_top = [&] {
        for (int i = 0; i < 2; ++i) {
            places[i] = &pairs[i].tree;
            models[i] = &pairs[i].model;
        }
    };
    for (std::size_t i = 0; i + 2 < size; i += 3) {
        const int which = data[i] & 1;
        pair& one = pairs[which];
        const pair& other = pairs[1 - which];
        const std::string label = label_of(data[i + 1]);
        switch (data[i] / 2 % 8) {
        case 0:
        case 1: {
            const variant value = value_of(data[i + 2]);
            require(places[which]->add_value(label, value) ==
                    models[which]->add_value(label, value));
            break;
        }
        case 2:
            places[which] = places[which]->create_group(label);
            models[which] = &models[which]->create_group(label);
            break;
        case 3:
            to_the_top();
            break;
        case 4:
            one.tree.overlay(other.tree);
            overlay(one.model, tree_model(other.model));
            to_the_top();
            break;
        case 5:
            one.tree.assign(other.tree);
            one.model = tree_model(other.model);
            to_the_top();
            break;
        case 6: {
            const labeled_text_buffer copy(other.tree);
            one.tree = copy;
            one.model = tree_model(other.model);
            to_the_top();
            break;
        }
        default: {
            // The tree and the model read written text in the same way.
            const std::string text = one.tree.as_str();
            one.tree.assign(text);
            require(one.model.read(text) == tree_model::complete);
            to_the_top();
            break;
        }
        }
        compare(pairs[0]);
        compare(pairs[1]);
    }
    return 0;
}
