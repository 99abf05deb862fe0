/// @file
/// The interface of labeled trees: values and groups under labels, in one string.
///
///     tova::serialization::labeled_text_buffer tree;
///     tree.add_value("a", 1);
///     tree.create_group("g")->add_value("b", "x");
///
///     const tova::serialization::labeled_text_buffer loaded(tree.as_str());
///     const int one = loaded.retrieve_value("a").as_int();
///
/// Threads: a buffer and its groups belong to one thread at a time, even for reading, since const
/// operations may encode the tree into the buffer.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/types/variant.hpp>

#include <string>

namespace TOVA_2_18 {
namespace serialization {

/// A tree in which each label names a value, a nested group, or both.
///
/// Buffers are counted: `memory::pointers::rc_pointer<labeled_serialize_buffer>` holds them.
/// `create` and `clone` return a new buffer on the heap with `allocated` set, which the caller
/// owns. Groups are owned by the buffer that they belong to.
class TOVA_API labeled_serialize_buffer
    : public generic::abilities::create_ability,
      public generic::abilities::clone_ability,
      public generic::abilities::reference_count_pointer_ability<labeled_serialize_buffer> {
public:
    ~labeled_serialize_buffer() TOVA_NOTHROW override;

    /// Replaces the tree with that of another buffer, or with an encoded one (`length` counts
    /// bytes). Returns this buffer.
    virtual labeled_serialize_buffer& assign(const labeled_serialize_buffer& other) = 0;
    virtual labeled_serialize_buffer& assign(const std::string& text) = 0;
    virtual labeled_serialize_buffer& assign(const char* text, int length) = 0;

    /// The encoded tree.
    virtual const std::string& as_str() const = 0;

    /// Sets the value of a label. Returns whether that replaced a value.
    virtual bool add_value(const std::string& label, const types::variant& value) = 0;

    /// Gives the label an empty group and returns it, to be filled. This buffer owns the group.
    virtual labeled_serialize_buffer* create_group(const std::string& label) = 0;

    /// Whether a label is present (`has_label`), has a value, or has a group.
    virtual bool has_label(const std::string& label) const = 0;
    virtual bool has_value(const std::string& label) const = 0;
    virtual bool has_group(const std::string& label) const = 0;

    /// Whether there are no labels.
    virtual bool is_empty() const = 0;

    /// The value of a label; nil for a label without a value and for an unknown label.
    virtual types::variant retrieve_value(const std::string& label) const = 0;

    /// The group of a label; null for an unknown label.
    virtual const labeled_serialize_buffer* retrieve_group(const std::string& label) const = 0;
    virtual labeled_serialize_buffer* retrieve_group(const std::string& label) = 0;

    /// A new empty buffer of the same class on the heap with its heap mark set, owned by the
    /// caller.
    virtual labeled_serialize_buffer* create() const = 0;

    /// A copy of this buffer on the heap with its heap mark set, owned by the caller.
    virtual labeled_serialize_buffer* clone() const = 0;
};

}  // namespace serialization

extern template class generic::abilities::reference_count_pointer_ability<
    serialization::labeled_serialize_buffer>;
extern template class memory::pointers::rc_pointer<serialization::labeled_serialize_buffer>;

}  // namespace TOVA_2_18
