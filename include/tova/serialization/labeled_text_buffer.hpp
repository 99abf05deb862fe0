#pragma once

#include <map>
#include <string>
#include <utility>

#include <tova/abi.hpp>
#include <tova/serialization/labeled_serialize_buffer.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace serialization {

/// A labelled tree whose encoded form is text: strings of `serialize_text_buf`, in pairs of label
/// and payload.
///
/// Labels are ordered by their bytes. A label whose last byte is a space introduces a group in the
/// text, so labels are stored without blanks (space, line feed, carriage return, tab) around them.
/// In the text all values are strings: a number that was written comes back as a `std::string`
/// variant. docs/serialization.md shows the bytes.
///
/// Groups are held by value and may be nested to any depth. A copy is a deep copy of the tree in
/// which the bodies of the values are shared.
class TOVA_API labeled_text_buffer : public labeled_serialize_buffer {
public:
    /// Empty.
    labeled_text_buffer();

    /// A deep copy. It starts with `count` 0 and without the heap mark.
    labeled_text_buffer(const labeled_text_buffer& other);

    /// The tree that `assign(text)` reads.
    labeled_text_buffer(const std::string& text);

    virtual ~labeled_text_buffer() TOVA_NOTHROW;

    /// As `assign(other)`.
    labeled_text_buffer& operator=(const labeled_text_buffer& other);

    /// Reads the encoded form of the other buffer, so that all its values arrive as strings. A
    /// buffer assigned to itself through this form is read anew, too.
    labeled_serialize_buffer& assign(const labeled_serialize_buffer& other) override;

    /// Replaces the tree by the encoded one. Reading stops at an empty label.
    ///
    /// Bad text gives what the strings in it make. Raises `std::out_of_range` for a length item
    /// that isn't closed and for a length that reaches behind the end in front of another item.
    ///
    /// Contract: a text that ends behind a label, with the payload missing, is read over and over
    /// and the call never returns. Text that `as_str` wrote always holds whole pairs.
    labeled_serialize_buffer& assign(const std::string& text) override;

    /// As `assign(std::string(text, length))`. Raises `std::logic_error` for a null pointer with a
    /// length other than 0, and `std::length_error` for a negative length.
    labeled_serialize_buffer& assign(const char* text, int length) override;

    /// The encoded tree, built anew at each call. The result is valid until the next call on the
    /// same buffer or on one that holds it.
    const std::string& as_str() const override;

    /// Trims the label and sets its value; a group under the label stays. Returns true if the label
    /// had a value that wasn't nil.
    bool add_value(const std::string& label, const types::variant& value) override;

    /// Trims the label and gives it an empty group, in place of the one it may have had; a value
    /// under the label stays. The result is valid as long as the label's entry.
    labeled_serialize_buffer* create_group(const std::string& label) override;

    /// Lookups take the label as it stands, untrimmed. Every label has a group that
    /// `retrieve_group` finds; `has_group` asks whether there is anything in it, at the price of
    /// encoding it.
    bool has_label(const std::string& label) const override;
    bool has_value(const std::string& label) const override;
    bool has_group(const std::string& label) const override;

    /// Whether there are no labels.
    bool is_empty() const override;

    types::variant retrieve_value(const std::string& label) const override;
    const labeled_serialize_buffer* retrieve_group(const std::string& label) const override;
    labeled_serialize_buffer* retrieve_group(const std::string& label) override;

    labeled_serialize_buffer* create() const override;
    labeled_serialize_buffer* clone() const override;

    /// Takes over a deep copy of the other tree. Values keep their types; a buffer assigned to
    /// itself stays as it is.
    virtual labeled_text_buffer& assign(const labeled_text_buffer& other);

    /// Merges the other tree into this one, which loses no label.
    ///
    /// A label that is missing here is copied. Otherwise a label of `other` without a group sets
    /// the value here, even to nil; one with a group sets the value only if it has one, and its
    /// group is merged into the group here.
    void overlay(const labeled_text_buffer& other);

private:
    typedef std::map<std::string, std::pair<labeled_text_buffer, types::variant>> entry_map;
    // The walks over the tree, which is deeper than any stack.
    struct __attribute__((visibility("hidden"))) tree;

    entry_map m_entries;
    mutable serialize_text_buf m_text;
};

}  // namespace serialization
}  // namespace TOVA_2_18
