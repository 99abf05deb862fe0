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
#include "strings/ascii.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

namespace TOVA_2_18 {
namespace serialization {

namespace {

using strings::detail::is_white_space;

const char group_mark = ' ';  // the last byte of a group's label in the encoded form

// Contract: only these four bytes are trimmed. `isspace` would also accept \v and \f, and would
// depend on the locale.
detail::byte_run trimmed(detail::byte_run label) {
    while (label.length != 0 && is_white_space(label.begin[label.length - 1]))
        --label.length;
    while (label.length != 0 && is_white_space(*label.begin)) {
        ++label.begin;
        --label.length;
    }
    return label;
}

std::string trimmed(const std::string& label) {
    return trimmed(detail::byte_run{label.data(), label.size()}).as_string();
}

// A string of items that grows at its front. The bytes written so far are at the end of `m_bytes`,
// from `m_begin` on, with free space before them. An array, since a string would be cleared first.
class backward_writer {
public:
    explicit backward_writer(std::size_t room)
        : m_bytes(new char[room]), m_room(room), m_begin(room) {}

    std::size_t size() const { return m_room - m_begin; }

    // Replaces the content of the buffer with what has been written.
    void store_in(serialize_text_buf& buffer) const {
        if (size() <= static_cast<std::size_t>(std::numeric_limits<int>::max()))
            buffer.assign(front(), static_cast<int>(size()));
        else
            buffer.assign(std::string(front(), size()));
    }

    // Writes a string item from its last byte to its first: separator, bytes, length field. The
    // label of a group has one more byte, its mark.
    void prepend_string(const std::string& bytes, bool is_group = false) {
        const std::size_t length = bytes.size() + (is_group ? 1 : 0);
        need(length + max_overhead);
        char* to = front();
        *--to = detail::item_separator;
        if (is_group)
            *--to = group_mark;
        to -= bytes.size();
        std::memcpy(to, bytes.data(), bytes.size());
        move_to(put_length(to, length));
    }

    void prepend_length(std::size_t length) {
        need(max_overhead);
        move_to(put_length(front(), length));
    }

    void prepend_separator() {
        need(1);
        --m_begin;
        *front() = detail::item_separator;
    }

private:
    // Two separators, and a length field whose digits are stored eight at a time.
    static const std::size_t max_overhead = 2 + generic::convert::detail::max_decimal_size;

    char* front() const { return m_bytes.get() + m_begin; }
    void move_to(const char* front) { m_begin = static_cast<std::size_t>(front - m_bytes.get()); }

    // Makes room before what has been written. The functions above rely on it.
    void need(std::size_t count) {
        if (count > m_begin)
            grow(count);
    }

    // Writes a length field before `end` and returns its first byte.
    static char* put_length(char* end, std::size_t length) {
        *--end = detail::item_separator;
        if (length < 10) {
            *--end = static_cast<char>('0' + length);
            return end;
        }
        if (length < 100) {
            end -= 2;
            generic::convert::detail::store_pair(end, static_cast<unsigned>(length));
            return end;
        }
        return put_long_length(end, length);
    }

    // Apart, as it needs an array.
    __attribute__((noinline)) static char* put_long_length(char* end, std::size_t length) {
        char digits[generic::convert::detail::max_decimal_size];
        const std::size_t size = generic::convert::detail::write_decimal(digits, length);
        end -= size;
        std::memcpy(end, digits, size);
        return end;
    }

    // Doubles the space, so the total time for growing is linear in the length of the text.
    __attribute__((noinline)) void grow(std::size_t count) {
        const std::size_t room = m_room * 2 + count;
        std::unique_ptr<char[]> wider(new char[room]);
        const std::size_t begin = room - size();
        std::memcpy(wider.get() + begin, front(), size());
        m_bytes.swap(wider);
        m_room = room;
        m_begin = begin;
    }

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_room;
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

    // Stores a value under a label that is trimmed already. Returns whether it replaces another.
    static bool set_value(entry_map& entries, const std::string& label,
                          const types::variant& value) {
        const auto place = place_of(entries, label);
        if (place == entries.end() || place->first != label) {
            add(entries, place, label, value);
            return false;
        }
        types::variant& stored = place->second.second;
        const bool replaced = stored != types::nil;
        stored = value;
        return replaced;
    }

    // The same for a label in place. Most texts have their labels in order, so the entry is made at
    // the end before the map finds out whether there is one.
    static void set_next_value(entry_map& entries, detail::byte_run label,
                               const types::variant& value) {
        const std::size_t count = entries.size();
        const auto place = entries.emplace_hint(
            entries.end(), std::piecewise_construct,
            std::forward_as_tuple(label.begin, label.length),
            std::forward_as_tuple(std::piecewise_construct, std::forward_as_tuple(),
                                  std::forward_as_tuple(value)));
        if (entries.size() == count)
            place->second.second = value;
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
    std::string string;  // its memory is reused for all values
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
        entry_map& entries = current.group->m_entries;
        const detail::byte_run name = trimmed(label);
        if (label.begin[label.length - 1] != group_mark) {
            const detail::byte_run value = detail::next_string(current.text, current.position);
            string.assign(value.begin, value.length);
            set_next_value(entries, name, types::variant(string));
            continue;
        }
        labeled_text_buffer& created = empty_group(entries, name.as_string());
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
    return tree::set_value(m_entries, trimmed(label), value);
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
