#include <tova/serialization/labeled_text_buffer.hpp>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <tuple>
#include <typeinfo>
#include <vector>

#include <tova/generic/convert/x_to_str.hpp>
#include <tova/types/nil.hpp>

#include "serialization/contents.hpp"
#include "serialization/text_items.hpp"

namespace TOVA_2_18 {
namespace serialization {

namespace {

const char group_mark = ' ';  // at the end of a label in the text

// Contract: these four bytes and no others surround a label without being part of it.
std::string trimmed(const std::string& label) {
    const char blanks[] = " \n\r\t";
    const std::size_t last = label.find_last_not_of(blanks);
    if (last == std::string::npos)
        return std::string();
    const std::size_t first = label.find_first_not_of(blanks);
    return label.substr(first, last - first + 1);
}

// A text that grows at its front. The length of a group's text stands in front of it, so whoever
// writes from the end has it at hand and writes each byte once, however deep the tree.
class backward_text {
public:
    explicit backward_text(std::size_t room) : m_bytes(room, '\0'), m_begin(room) {}

    std::size_t size() const { return m_bytes.size() - m_begin; }
    std::string text() const { return m_bytes.substr(m_begin); }

    void prepend_string(const std::string& bytes) {
        prepend_separator();
        prepend(bytes.data(), bytes.size());
        prepend_length(bytes.size());
    }

    void prepend_length(std::size_t length) {
        char digits[24];
        generic::convert::ulltoa(length, digits, 10);
        prepend_separator();
        prepend(digits, std::strlen(digits));
    }

    void prepend_separator() { prepend(&detail::item_separator, 1); }

private:
    void prepend(const char* bytes, std::size_t count) {
        if (count > m_begin)
            grow(count);
        m_begin -= count;
        m_bytes.replace(m_begin, count, bytes, count);
    }

    void grow(std::size_t count) {
        std::string wider(m_bytes.size() * 2 + count, '\0');
        const std::size_t begin = wider.size() - size();
        wider.replace(begin, size(), m_bytes, m_begin, std::string::npos);
        m_bytes.swap(wider);
        m_begin = begin;
    }

    std::string m_bytes;
    std::size_t m_begin;
};

}  // namespace

// Each walk keeps its way through the tree in a vector: groups are nested as deep as the text says.
struct labeled_text_buffer::tree {
    typedef entry_map::mapped_type entry_type;

    // The group of a label, emptied; the label is added with a nil value if it is new.
    static labeled_text_buffer& empty_group(entry_map& entries, const std::string& label) {
        const auto place = entries.lower_bound(label);
        if (place == entries.end() || place->first != label)
            return add(entries, place, label, types::variant()).first;
        labeled_text_buffer& group = place->second.first;
        group.m_entries.clear();
        group.m_text = serialize_text_buf();
        return group;
    }

    static entry_type& add(entry_map& entries, entry_map::const_iterator place,
                           const std::string& label, const types::variant& value) {
        return entries
            .emplace_hint(place, std::piecewise_construct, std::forward_as_tuple(label),
                          std::forward_as_tuple(std::piecewise_construct, std::forward_as_tuple(),
                                                std::forward_as_tuple(value)))
            ->second;
    }

    static void copy(const entry_map& from, entry_map& to);
    static void dismantle(labeled_text_buffer& root) TOVA_NOTHROW;
    static std::string encode(const labeled_text_buffer& root);
    static void read(labeled_text_buffer& group, const std::string& text);
    static void overlay(labeled_text_buffer& root, const labeled_text_buffer& other);

private:
    static void remember(labeled_text_buffer& group, labeled_text_buffer* parent) TOVA_NOTHROW;
    static labeled_text_buffer* remembered(const labeled_text_buffer& group) TOVA_NOTHROW;
};

// `to` is empty.
void labeled_text_buffer::tree::copy(const entry_map& from, entry_map& to) {
    struct step {
        const entry_map* from;
        entry_map* to;
    };
    if (from.empty())
        return;
    std::vector<step> open(1, step{&from, &to});
    while (!open.empty()) {
        const step current = open.back();
        open.pop_back();
        for (const auto& source : *current.from) {
            const labeled_text_buffer& group = source.second.first;
            entry_type& added =
                add(*current.to, current.to->end(), source.first, source.second.second);
            added.first.m_text = group.m_text;
            if (!group.m_entries.empty())
                open.push_back(step{&group.m_entries, &added.first.m_entries});
        }
    }
}

// The way back up is kept in the text of a group that is about to go: eight bytes fit into every
// string, so a destructor needs no memory.
void labeled_text_buffer::tree::remember(labeled_text_buffer& group,
                                         labeled_text_buffer* parent) TOVA_NOTHROW {
    char bytes[sizeof(void*)];
    std::memcpy(bytes, &parent, sizeof bytes);
    group.m_text.assign(bytes, sizeof bytes);
}

labeled_text_buffer*
labeled_text_buffer::tree::remembered(const labeled_text_buffer& group) TOVA_NOTHROW {
    labeled_text_buffer* parent = nullptr;
    std::memcpy(&parent, group.m_text.as_str().data(), sizeof(void*));
    return parent;
}

// Removes all entries from the leaves up, so that no destructor of an entry meets a filled group.
void labeled_text_buffer::tree::dismantle(labeled_text_buffer& root) TOVA_NOTHROW {
    labeled_text_buffer* current = &root;
    for (;;) {
        entry_map& entries = current->m_entries;
        while (!entries.empty() && entries.begin()->second.first.m_entries.empty())
            entries.erase(entries.begin());
        if (!entries.empty()) {
            labeled_text_buffer& group = entries.begin()->second.first;
            remember(group, current);
            current = &group;
        } else if (current != &root) {
            current = remembered(*current);
        } else {
            return;
        }
    }
}

std::string labeled_text_buffer::tree::encode(const labeled_text_buffer& root) {
    struct step {
        const labeled_text_buffer* group;
        entry_map::const_reverse_iterator next;
        std::size_t size_behind;  // of the text that follows the group's own
    };
    backward_text out(root.m_text.as_str().size() + 256);
    std::vector<step> open(1, step{&root, root.m_entries.rbegin(), 0});
    for (;;) {
        step& current = open.back();
        if (current.next == current.group->m_entries.rend()) {
            const std::size_t length = out.size() - current.size_behind;
            open.pop_back();
            if (open.empty())
                return out.text();
            out.prepend_length(length);
            const auto& entry = *open.back().next++;
            out.prepend_string(entry.first + group_mark);
            if (entry.second.second != types::nil) {
                out.prepend_string(entry.second.second.as_string());
                out.prepend_string(entry.first);
            }
            continue;
        }
        const auto& entry = *current.next;
        const labeled_text_buffer& group = entry.second.first;
        if (group.is_empty()) {
            out.prepend_string(entry.second.second.as_string());
            out.prepend_string(entry.first);
            ++current.next;
        } else {
            out.prepend_separator();
            open.push_back(step{&group, group.m_entries.rbegin(), out.size()});
        }
    }
}

// What `assign(text)` does on a group that has just been created, and on those within it. The texts
// of the groups lie within one another and are read where they lie.
void labeled_text_buffer::tree::read(labeled_text_buffer& group, const std::string& text) {
    struct step {
        labeled_text_buffer* group;
        detail::byte_run text;
        std::size_t position;
    };
    std::vector<step> open(1, step{&group, detail::byte_run{text.data(), text.size()}, 0});
    while (!open.empty()) {
        step& current = open.back();
        if (detail::at_end(current.text, current.position)) {
            open.pop_back();
            continue;
        }
        const detail::byte_run label = detail::next_string(current.text, current.position);
        if (label.length == 0) {
            open.pop_back();
            continue;
        }
        labeled_text_buffer& target = *current.group;
        if (label.begin[label.length - 1] != group_mark) {
            const detail::byte_run value = detail::next_string(current.text, current.position);
            target.labeled_text_buffer::add_value(label.as_string(),
                                                  types::variant(value.as_string()));
            continue;
        }
        labeled_text_buffer& created = empty_group(target.m_entries, trimmed(label.as_string()));
        const detail::byte_run payload = detail::next_string(current.text, current.position);
        open.push_back(step{&created, payload, 0});
    }
}

void labeled_text_buffer::tree::overlay(labeled_text_buffer& root,
                                        const labeled_text_buffer& other) {
    struct step {
        labeled_text_buffer* target;
        entry_map::const_iterator next;
        entry_map::const_iterator end;
    };
    // A step goes on to its next entry once the entry is done with, groups included: if one of the
    // buffers holds the other, labels may be added on the way.
    std::vector<step> open(1, step{&root, other.m_entries.begin(), other.m_entries.end()});
    for (;;) {
        step& current = open.back();
        if (current.next == current.end) {
            open.pop_back();
            if (open.empty())
                return;
            ++open.back().next;
            continue;
        }
        const auto& source = *current.next;
        const auto found = current.target->m_entries.find(source.first);
        if (found == current.target->m_entries.end()) {
            current.target->m_entries.insert(source);
            ++current.next;
            continue;
        }
        // Contract: a label without a group sets the value here, also to nil.
        const entry_map& group = source.second.first.m_entries;
        if (group.empty() || source.second.second != types::nil)
            found->second.second = source.second.second;
        if (group.empty())
            ++current.next;
        else
            open.push_back(step{&found->second.first, group.begin(), group.end()});
    }
}

labeled_text_buffer::labeled_text_buffer() : m_entries(), m_text() {}

// Contract: the base starts afresh here, with count 0 and no heap mark, unlike the copies of the
// buffers of plain sequences.
labeled_text_buffer::labeled_text_buffer(const labeled_text_buffer& other)
    : labeled_serialize_buffer(other), m_entries(), m_text(other.m_text) {
    tree::copy(other.m_entries, m_entries);
}

labeled_text_buffer::labeled_text_buffer(const std::string& text) : m_entries(), m_text() {
    labeled_text_buffer::assign(text);
}

labeled_text_buffer::~labeled_text_buffer() TOVA_NOTHROW {
    tree::dismantle(*this);
}

labeled_text_buffer& labeled_text_buffer::operator=(const labeled_text_buffer& other) {
    return assign(other);
}

// Contract: no test for a buffer assigned to itself, whose values become strings by it.
labeled_serialize_buffer& labeled_text_buffer::assign(const labeled_serialize_buffer& other) {
    return assign(other.as_str());
}

// Contract: a text that ends behind a label brings the read position back to 0 when the payload is
// read, as `serialize_text_buf::read_string` tells, and the loop doesn't end.
labeled_serialize_buffer& labeled_text_buffer::assign(const std::string& text) {
    m_text.assign(text);
    m_entries.clear();
    m_text.reset_read();
    while (!m_text.at_end()) {
        const std::string label = m_text.read_string();
        if (label.empty())
            break;
        if (label.back() != group_mark) {
            add_value(label, types::variant(m_text.read_string()));
            continue;
        }
        labeled_serialize_buffer* const group = create_group(label);
        const std::string payload = m_text.read_string();
        // A group of our own class is read in a loop; another class, which an override of
        // `create_group` may bring, reads its text itself.
        if (typeid(*group) == typeid(labeled_text_buffer))
            tree::read(static_cast<labeled_text_buffer&>(*group), payload);
        else
            group->assign(payload);
    }
    return *this;
}

labeled_serialize_buffer& labeled_text_buffer::assign(const char* text, int length) {
    detail::require_text(text, length);
    return assign(std::string(text, static_cast<std::size_t>(length)));
}

const std::string& labeled_text_buffer::as_str() const {
    m_text.assign(tree::encode(*this));
    return m_text.as_str();
}

bool labeled_text_buffer::add_value(const std::string& label, const types::variant& value) {
    const std::string key = trimmed(label);
    const auto place = m_entries.lower_bound(key);
    if (place == m_entries.end() || place->first != key) {
        tree::add(m_entries, place, key, value);
        return false;
    }
    types::variant& stored = place->second.second;
    const bool replaced = stored != types::nil;
    stored = value;
    return replaced;
}

labeled_serialize_buffer* labeled_text_buffer::create_group(const std::string& label) {
    return &tree::empty_group(m_entries, trimmed(label));
}

bool labeled_text_buffer::has_label(const std::string& label) const {
    return m_entries.find(label) != m_entries.end();
}

bool labeled_text_buffer::has_value(const std::string& label) const {
    return retrieve_value(label) != types::nil;
}

bool labeled_text_buffer::has_group(const std::string& label) const {
    const labeled_serialize_buffer* const group = retrieve_group(label);
    return group != nullptr && !group->as_str().empty();
}

bool labeled_text_buffer::is_empty() const {
    return m_entries.empty();
}

types::variant labeled_text_buffer::retrieve_value(const std::string& label) const {
    const auto found = m_entries.find(label);
    return found == m_entries.end() ? types::variant() : found->second.second;
}

const labeled_serialize_buffer*
labeled_text_buffer::retrieve_group(const std::string& label) const {
    const auto found = m_entries.find(label);
    return found == m_entries.end() ? nullptr : &found->second.first;
}

labeled_serialize_buffer* labeled_text_buffer::retrieve_group(const std::string& label) {
    const auto found = m_entries.find(label);
    return found == m_entries.end() ? nullptr : &found->second.first;
}

labeled_serialize_buffer* labeled_text_buffer::create() const {
    return detail::marked(new labeled_text_buffer());
}

labeled_serialize_buffer* labeled_text_buffer::clone() const {
    return detail::marked(new labeled_text_buffer(*this));
}

labeled_text_buffer& labeled_text_buffer::assign(const labeled_text_buffer& other) {
    if (&other == this)
        return *this;
    // The other buffer may be a group of this one, or hold it: the copy is made before anything
    // goes.
    entry_map copied;
    tree::copy(other.m_entries, copied);
    m_entries.swap(copied);
    return *this;
}

void labeled_text_buffer::overlay(const labeled_text_buffer& other) {
    tree::overlay(*this, other);
}

}  // namespace serialization
}  // namespace TOVA_2_18
