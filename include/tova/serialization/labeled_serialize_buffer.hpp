#pragma once

#include <string>

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace serialization {

/// A tree of labels in one string: each label names a value, a nested group, or both.
///
/// Counted: `memory::pointers::rc_pointer<labeled_serialize_buffer>` holds it. A buffer and its
/// groups belong to one thread at a time, even for reading.
class TOVA_API labeled_serialize_buffer
    : public generic::abilities::create_ability,
      public generic::abilities::clone_ability,
      public generic::abilities::reference_count_pointer_ability<labeled_serialize_buffer> {
public:
    virtual ~labeled_serialize_buffer() TOVA_NOTHROW;

    /// Replaces the tree, by that of another buffer or by an encoded one (`length` counts bytes).
    /// Returns this buffer.
    virtual labeled_serialize_buffer& assign(const labeled_serialize_buffer& other) = 0;
    virtual labeled_serialize_buffer& assign(const std::string& text) = 0;
    virtual labeled_serialize_buffer& assign(const char* text, int length) = 0;

    /// The encoded tree.
    virtual const std::string& as_str() const = 0;

    /// Sets the value of a label. Returns whether a value was replaced.
    virtual bool add_value(const std::string& label, const types::variant& value) = 0;

    /// Gives the label an empty group, which stays owned by this buffer and is filled through the
    /// result.
    virtual labeled_serialize_buffer* create_group(const std::string& label) = 0;

    virtual bool has_label(const std::string& label) const = 0;
    virtual bool has_value(const std::string& label) const = 0;
    virtual bool has_group(const std::string& label) const = 0;
    virtual bool is_empty() const = 0;

    /// The value of a label; nil for one without a value.
    virtual types::variant retrieve_value(const std::string& label) const = 0;

    /// The group of a label, owned by this buffer; null for an unknown label.
    virtual const labeled_serialize_buffer* retrieve_group(const std::string& label) const = 0;
    virtual labeled_serialize_buffer* retrieve_group(const std::string& label) = 0;

    /// A new empty buffer, or a copy of this one, of the same class. It lies on the heap with
    /// `allocated` set and belongs to the caller.
    virtual labeled_serialize_buffer* create() const = 0;
    virtual labeled_serialize_buffer* clone() const = 0;
};

}  // namespace serialization

extern template class generic::abilities::reference_count_pointer_ability<
    serialization::labeled_serialize_buffer>;
extern template class memory::pointers::rc_pointer<serialization::labeled_serialize_buffer>;

}  // namespace TOVA_2_18
