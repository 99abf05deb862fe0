// A tree maps each label to a pair: a group, which is a buffer by value, and a value, which is a
// variant. A label without a group has an empty group, and a label without a value has nil.
//
// The encoded form is a sequence of strings (text_items.hpp), alternating label and payload:
//
//     the entry has            written
//     an empty group           label, value            (a nil value as an empty string)
//     a group and a value      label, value; label + " ", encoded group
//     a group and nil          label + " ", encoded group
//
// A caller or a text may nest groups deeper than any stack allows. So nothing here recurses: each
// walk over a tree is a loop that keeps its path in a vector of steps.
//
// - `tree::copy` copies entries from the top down.
// - `tree::dismantle` removes entries from the leaves up. It runs in a destructor and must not
//   allocate, so each group that is about to be destroyed stores the way back up in its `m_text`.
// - `tree::encode` writes from back to front: the length of a group's text precedes the text, and
//   is known only once the text has been written. Each byte is written once, however deeply it is
//   nested.
// - `tree::read` reads nested groups in place. Only the top level of `assign(text)` goes through
//   the virtual operations and the read position of `m_text`.
// - `tree::overlay` merges one tree into another; either may be part of the other.
//
// Apart from that, `m_text` holds the result of `as_str` or the source of `assign(text)`.
#include <tova/serialization/labeled_text_buffer.hpp>

#include <tova/types/nil.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "serialization/contents.hpp"
#include "serialization/text_items.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

namespace TOVA_2_18 {
namespace serialization {

namespace {

const char group_mark = ' ';  // the last byte of a group's label in the encoded form

// Contract: only these four bytes are trimmed. `isspace` would also accept \v and \f, and would
// depend on the locale.
std::string trimmed(const std::string& label) {
    const char whitespace[] = " \n\r\t";
    const std::size_t last = label.find_last_not_of(whitespace);
    if (last == std::string::npos)
        return std::string();
    const std::size_t first = label.find_first_not_of(whitespace);
    return label.substr(first, last - first + 1);
}

// A string of items that grows at its front. The bytes written so far are at the end of `m_bytes`,
// from `m_begin` on, with free space before them.
class backward_writer {
public:
    explicit backward_writer(std::size_t room) : m_bytes(room, '\0'), m_begin(room) {}

    std::size_t size() const { return m_bytes.size() - m_begin; }

    // Replaces the content of the buffer with what has been written.
    void store_in(serialize_text_buf& buffer) const {
        if (size() <= static_cast<std::size_t>(std::numeric_limits<int>::max()))
            buffer.assign(m_bytes.data() + m_begin, static_cast<int>(size()));
        else
            buffer.assign(m_bytes.substr(m_begin));
    }

    // Writes a string item from its last byte to its first: separator, bytes, length field. The
    // label of a group has one more byte, its mark.
    void prepend_string(const std::string& bytes, bool is_group = false) {
        const std::size_t length = bytes.size() + (is_group ? 1 : 0);
        need(length + max_overhead);
        put(detail::item_separator);
        if (is_group)
            put(group_mark);
        m_begin -= bytes.size();
        std::memcpy(&m_bytes[m_begin], bytes.data(), bytes.size());
        put_length(length);
    }

    void prepend_length(std::size_t length) {
        need(max_overhead);
        put_length(length);
    }

    void prepend_separator() {
        need(1);
        put(detail::item_separator);
    }

private:
    // Two separators, and a length field whose digits are stored eight at a time.
    static const std::size_t max_overhead = 2 + generic::convert::detail::max_decimal_size;

    // Makes room before what has been written. The functions below rely on it.
    void need(std::size_t count) {
        if (count > m_begin)
            grow(count);
    }

    void put(char byte) { m_bytes[--m_begin] = byte; }

    void put_length(std::size_t length) {
        put(detail::item_separator);
        if (length < 10) {
            put(static_cast<char>('0' + length));
            return;
        }
        if (length < 100) {
            m_begin -= 2;
            generic::convert::detail::store_pair(&m_bytes[m_begin], static_cast<unsigned>(length));
            return;
        }
        char digits[generic::convert::detail::max_decimal_size];
        const std::size_t size = generic::convert::detail::write_decimal(digits, length);
        m_begin -= size;
        std::memcpy(&m_bytes[m_begin], digits, size);
    }

    // Doubles the space, so the total time for growing is linear in the length of the text.
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

// The walks over a tree, as static members: they reach the private fields of other buffers.
struct labeled_text_buffer::tree {
    typedef entry_map::mapped_type entry_type;

    // Empties the group of a label and returns it. A new label is added with a nil value.
    static labeled_text_buffer& empty_group(entry_map& entries, const std::string& label) {
        const auto place = place_of(entries, label);
        if (place == entries.end() || place->first != label)
            return add(entries, place, label, types::variant()).first;
        labeled_text_buffer& group = place->second.first;
        group.m_entries.clear();
        group.m_text = serialize_text_buf();  // also frees the memory of its last encoding
        return group;
    }

    // Adds an entry with an empty group, constructed in the map: a group has no cheap move.
    static entry_type& add(entry_map& entries, entry_map::const_iterator place,
                           const std::string& label, const types::variant& value) {
        return entries
            .emplace_hint(place, std::piecewise_construct, std::forward_as_tuple(label),
                          std::forward_as_tuple(std::piecewise_construct, std::forward_as_tuple(),
                                                std::forward_as_tuple(value)))
            ->second;
    }

    // Finds the position of a label, or the position for it. Labels that arrive in order are added
    // at the end.
    static entry_map::iterator place_of(entry_map& entries, const std::string& label) {
        if (!entries.empty() && entries.rbegin()->first < label)
            return entries.end();
        return entries.lower_bound(label);
    }

    // Whether each group in the map is empty.
    static bool holds_no_groups(const entry_map& entries) TOVA_NOTHROW {
        return std::all_of(entries.begin(), entries.end(), [](const entry_map::value_type& entry) {
            return entry.second.first.m_entries.empty();
        });
    }

    static void copy(const entry_map& from, entry_map& to);
    static void dismantle(labeled_text_buffer& root) TOVA_NOTHROW;
    static void encode(const labeled_text_buffer& root, backward_writer& out);
    static void read(labeled_text_buffer& group, const std::string& text);
    static void overlay(labeled_text_buffer& root, const labeled_text_buffer& other);

private:
    static void remember(labeled_text_buffer& group, labeled_text_buffer* parent) TOVA_NOTHROW;
    static labeled_text_buffer* remembered(const labeled_text_buffer& group) TOVA_NOTHROW;
};

// Copies all entries, level by level, into an empty map.
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

// Where `dismantle` came from, stored in the text of a group that is about to be destroyed. The
// eight bytes of a pointer fit into every string without an allocation.
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

// Removes all entries from the leaves up, so the destructor of an entry never finds a group with
// entries, which would make it recurse.
void labeled_text_buffer::tree::dismantle(labeled_text_buffer& root) TOVA_NOTHROW {
    labeled_text_buffer* current = &root;
    bool entered = true;
    for (;;) {
        entry_map& entries = current->m_entries;
        if (entered && holds_no_groups(entries))
            entries.clear();  // all at once, which is possible for most groups
        while (!entries.empty() && entries.begin()->second.first.m_entries.empty())
            entries.erase(entries.begin());
        entered = !entries.empty();
        if (entered) {
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

void labeled_text_buffer::tree::encode(const labeled_text_buffer& root, backward_writer& out) {
    struct step {
        const labeled_text_buffer* group;
        entry_map::const_reverse_iterator next;
        std::size_t size_after;  // bytes written before this group, which follow it in the text
    };
    std::vector<step> open(1, step{&root, root.m_entries.rbegin(), 0});
    for (;;) {
        step& current = open.back();
        if (current.next == current.group->m_entries.rend()) {
            // The group is complete. Its length and label precede it, and the value of the same
            // label precedes both.
            const std::size_t length = out.size() - current.size_after;
            open.pop_back();
            if (open.empty())
                return;
            out.prepend_length(length);
            const auto& entry = *open.back().next++;
            out.prepend_string(entry.first, true);
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
            // The payload's separator comes first; its bytes follow in steps of their own.
            out.prepend_separator();
            open.push_back(step{&group, group.m_entries.rbegin(), out.size()});
        }
    }
}

// Does what `assign(text)` does, for a group that has just been created and all groups inside it.
// The text of each group is part of the text of the enclosing group and is read in place.
//
// Contract: if a payload is missing, reading starts over at the start of the group's text, as in
// `assign`, and the loop doesn't end.
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
    // A step advances only after its entry has been merged completely, including its groups. If one
    // of the buffers is part of the other, the walk may add labels that it visits later.
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
        // Contract: an entry with an empty group replaces the value here, even by nil.
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

// Contract: a copy starts with count 0 and without the heap mark, unlike a copy of the sequential
// buffers.
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

// Contract: there is no test for self-assignment: a buffer assigned to itself is encoded and read
// again, which turns its values into strings.
labeled_serialize_buffer& labeled_text_buffer::assign(const labeled_serialize_buffer& other) {
    return assign(other.as_str());
}

// Contract: in a text that ends after a label, reading the payload wraps the read position to 0, as
// described in `serialize_text_buf::read_string`, and the loop doesn't end.
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
        // Exactly this class: its virtual operations are known, so the whole group is read in a
        // loop. Any other class, which an override of `create_group` may return, reads its text
        // itself.
        if (typeid(*group) == typeid(labeled_text_buffer))
            tree::read(static_cast<labeled_text_buffer&>(*group), payload);
        else
            group->assign(payload);
    }
    return *this;
}

labeled_serialize_buffer& labeled_text_buffer::assign(const char* text, int length) {
    detail::require_text(text, length);
    // Raises the same exception as the string's constructor, without computing an invalid pointer
    // first.
    if (length < 0)
        throw std::length_error("basic_string::_M_create");
    return assign(std::string(text, static_cast<std::size_t>(length)));
}

const std::string& labeled_text_buffer::as_str() const {
    backward_writer out(m_text.as_str().size() + 256);  // room for a text as long as the last one
    tree::encode(*this, out);
    out.store_in(m_text);
    return m_text.as_str();
}

bool labeled_text_buffer::add_value(const std::string& label, const types::variant& value) {
    const std::string key = trimmed(label);
    const auto place = tree::place_of(m_entries, key);
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
    if (group == nullptr)
        return false;
    // For exactly this class, the text is empty if there are no entries, so it is not encoded. Any
    // other class, which an override of `retrieve_group` may return, must provide its text.
    if (typeid(*group) == typeid(labeled_text_buffer))
        return !static_cast<const labeled_text_buffer*>(group)->m_entries.empty();
    return !group->as_str().empty();
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
    // The other buffer may be a group of this one, or the other way round: the copy is complete
    // before anything is removed.
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
