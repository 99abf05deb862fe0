// A second implementation of the labeled tree, written recursively and step by step. The tests and
// the fuzz target compare `labeled_text_buffer` with it.
#pragma once

#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant.hpp>

#include <cstddef>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace test_support {

struct tree_model {
    std::map<std::string, std::pair<tree_model, tova::types::variant>> entries;

    static std::string trim(std::string label) {
        const std::string whitespace(" \n\r\t");
        while (!label.empty() && whitespace.find(label.back()) != std::string::npos)
            label.pop_back();
        while (!label.empty() && whitespace.find(label.front()) != std::string::npos)
            label.erase(0, 1);
        return label;
    }

    bool add_value(const std::string& label, const tova::types::variant& value) {
        const std::string key = trim(label);
        const bool replaced = entries.count(key) != 0 && entries[key].second != tova::types::nil;
        entries[key].second = value;
        return replaced;
    }

    tree_model& create_group(const std::string& label) {
        tree_model& group = entries[trim(label)].first;
        group.entries.clear();
        return group;
    }

    std::string encode() const {
        tova::serialization::serialize_text_buf text;
        for (const auto& entry : entries) {
            const tree_model& group = entry.second.first;
            const tova::types::variant& value = entry.second.second;
            if (group.entries.empty() || value != tova::types::nil) {
                text.append_string(entry.first);
                text.append_string(value.as_string());
            }
            if (!group.entries.empty()) {
                text.append_string(entry.first + " ");
                text.append_string(group.encode());
            }
        }
        return text.as_str();
    }

    // The ways in which reading a text can end.
    enum outcome { complete, raises, endless };

    outcome read(const std::string& content) {
        const tova::serialization::serialize_text_buf text(content);
        entries.clear();
        std::set<std::string> positions;
        try {
            while (!text.at_end()) {
                // All further reads depend only on the position, so a repeated position means a
                // loop.
                if (!positions.insert(position_of(text)).second)
                    return endless;
                const std::string label = text.read_string();
                if (label.empty())
                    return complete;
                if (label.back() == ' ') {
                    tree_model& group = create_group(label);
                    const outcome inner = group.read(text.read_string());
                    if (inner != complete)
                        return inner;
                } else {
                    const std::string value = text.read_string();
                    add_value(label, tova::types::variant(value));
                }
            }
        } catch (const std::out_of_range&) {
            return raises;
        }
        return complete;
    }

    void overlay(const tree_model& other) {
        for (const auto& entry : other.entries) {
            const auto found = entries.find(entry.first);
            if (found == entries.end()) {
                entries.insert(entry);
            } else if (entry.second.first.entries.empty()) {
                found->second.second = entry.second.second;
            } else {
                if (entry.second.second != tova::types::nil)
                    found->second.second = entry.second.second;
                found->second.first.overlay(entry.second.first);
            }
        }
    }

    // Whether a buffer holds the same labels, values, value types and groups.
    bool matches(const tova::serialization::labeled_serialize_buffer& buffer) const {
        if (buffer.is_empty() != entries.empty() || buffer.as_str() != encode())
            return false;
        for (const auto& entry : entries) {
            const tova::types::variant& value = entry.second.second;
            const tova::types::variant other = buffer.retrieve_value(entry.first);
            const auto* group = buffer.retrieve_group(entry.first);
            if (!buffer.has_label(entry.first) || other.type() != value.type() ||
                other.as_string() != value.as_string() || group == nullptr ||
                buffer.has_value(entry.first) != (value != tova::types::nil) ||
                buffer.has_group(entry.first) == entry.second.first.entries.empty() ||
                !entry.second.first.matches(*group))
                return false;
        }
        return true;
    }

private:
    // The read position is 56 bytes into the buffer, as tests/abi checks.
    static std::string position_of(const tova::serialization::serialize_text_buf& text) {
        return std::string(reinterpret_cast<const char*>(&text) + 56, sizeof(std::size_t));
    }
};

}  // namespace test_support
