/// @file
/// A labeled tree whose encoded form is text.
///
///     tova::serialization::labeled_text_buffer defaults;
///     defaults.create_group("pen")->add_value("width", 0.35);
///     tova::serialization::labeled_text_buffer mine;
///     mine.create_group("pen")->add_value("ink", "red");
///
///     tova::serialization::labeled_text_buffer all(defaults);
///     all.overlay(mine);  // the group pen has both values
///     const std::string text = all.as_str();
///
/// Threads: a tree, its groups and the values taken from it belong to one thread at a time, even
/// for reading: `as_str` is const and encodes the tree into a member.
#pragma once

#include <tova/abi.hpp>
#include <tova/serialization/labeled_serialize_buffer.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/types/variant.hpp>

#include <map>
#include <string>
#include <utility>

namespace TOVA_2_18 {
namespace serialization {

/// A labeled tree that is encoded as the strings of a `serialize_text_buf`, in pairs of label and
/// payload.
///
/// Labels are ordered by their bytes. In the encoded form a space at the end of a label introduces
/// a group; labels are therefore stored without surrounding whitespace (space, line feed, carriage
/// return, tab). All values are encoded as strings: a number that was written comes back as a
/// `std::string` variant. docs/serialization.md shows the bytes.
///
/// Groups are held by value and may be nested to any depth. A copy is a deep copy of the tree that
/// shares the bodies of the values.
class TOVA_API labeled_text_buffer : public labeled_serialize_buffer {
public:
    labeled_text_buffer();  ///< An empty tree.

    /// A deep copy, with `count` 0 and without the heap mark.
    labeled_text_buffer(const labeled_text_buffer& other);

    /// The tree that `assign(text)` reads.
    labeled_text_buffer(const std::string& text);

    ~labeled_text_buffer() TOVA_NOTHROW override;

    /// The same as `assign(other)`.
    labeled_text_buffer& operator=(const labeled_text_buffer& other);

    /// Reads the encoded form of the other buffer, so all values arrive as strings. A buffer that
    /// is assigned to itself through this overload is encoded and read again, too.
    labeled_serialize_buffer& assign(const labeled_serialize_buffer& other) override;

    /// Replaces the tree with an encoded one. Reading stops at an empty label, and what follows it
    /// is lost.
    ///
    /// Invalid text yields whatever strings can be read from it. Raises `std::out_of_range` for a
    /// length item without its separator, and when another item is read after a length that goes
    /// past the end. After an exception the tree holds everything read before it.
    ///
    /// Contract: if a text ends after a label, without the payload, it is read over and over, and
    /// the call never returns. The same happens with a negative length that leads back to a label,
    /// such as in `1|a|-4|b` with the byte 1 for each `|`. Text written by `as_str` always consists
    /// of complete pairs. Its truncations that end after a label or after the 0 of an empty value,
    /// in any group, are read forever: a tenth of all truncations of a typical tree. If the text
    /// may be truncated or modified, store it as a data file (`<tova/extras/data_file.hpp>`), which
    /// is checked before it is read.
    labeled_serialize_buffer& assign(const std::string& text) override;

    /// The same as `assign(std::string(text, length))`. Raises `std::logic_error` for a null
    /// pointer with a length other than 0, and `std::length_error` for a negative length.
    labeled_serialize_buffer& assign(const char* text, int length) override;

    /// The encoded tree, built again by each call. The result is valid until the next call on this
    /// buffer or on one that contains it as a group. If memory runs out while a value is converted
    /// to a string, the process ends through `std::unexpected` (see `types::variant`); otherwise
    /// `std::bad_alloc` leaves the tree unchanged.
    const std::string& as_str() const override;

    /// Trims the label and sets its value; a group under the label stays. Returns true if the value
    /// before was not nil.
    bool add_value(const std::string& label, const types::variant& value) override;

    /// Trims the label and gives it an empty group; a group it already had is emptied, and a value
    /// under the label stays. The result is valid as long as the label is in the tree.
    labeled_serialize_buffer* create_group(const std::string& label) override;

    /// Whether a label is present (`has_label`), has a value that is not nil, or has a group. The
    /// label is not trimmed. `has_group` returns whether the label has a group that is not
    /// empty.
    bool has_label(const std::string& label) const override;
    bool has_value(const std::string& label) const override;
    bool has_group(const std::string& label) const override;

    /// Whether there are no labels.
    bool is_empty() const override;

    /// The value of a label, which is not trimmed; nil for a label without a value and for an
    /// unknown label.
    types::variant retrieve_value(const std::string& label) const override;

    /// The group of a label, which is not trimmed; null for an unknown label.
    ///
    /// Contract: every label in the tree has a group, which is empty for a label with only a value.
    const labeled_serialize_buffer* retrieve_group(const std::string& label) const override;
    labeled_serialize_buffer* retrieve_group(const std::string& label) override;

    labeled_serialize_buffer* create() const override;
    labeled_serialize_buffer* clone() const override;

    /// Replaces the tree with a deep copy of the other one. Values keep their types. Assigning a
    /// buffer to itself changes nothing, and neither does an assignment that raises.
    virtual labeled_text_buffer& assign(const labeled_text_buffer& other);

    /// Merges the other tree into this one. No label is removed.
    ///
    /// An entry whose label is missing here is copied. Otherwise an entry of `other` with an empty
    /// group replaces the value here, even by nil; an entry with a group replaces the value only if
    /// its own is not nil, and its group is merged into the group here. After `std::bad_alloc`,
    /// only some of the entries are merged; another call completes the merge.
    void overlay(const labeled_text_buffer& other);

private:
    typedef std::map<std::string, std::pair<labeled_text_buffer, types::variant>> entry_map;
    // The walks over the tree. They are loops: a tree may be deeper than any stack.
    struct __attribute__((visibility("hidden"))) tree;

    entry_map m_entries;
    mutable serialize_text_buf m_text;
};

}  // namespace serialization
}  // namespace TOVA_2_18
