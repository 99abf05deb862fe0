#pragma once

#include <vector>

#include <tova/abi.hpp>
#include <tova/generic/argument.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace generic {

/// An ordered list of arguments, read by position or by name.
///
/// Filled through `push_back` or a constructor, a list holds each name once, while unnamed
/// arguments may repeat; what is changed through iterators or references is not checked. Names are
/// compared byte for byte, by a walk from the front. Positions count from 0.
///
/// The same rule for threads as for `types::variant`. Operations raise what an allocation raises.
class TOVA_API varg_list {
public:
    typedef std::vector<argument>::iterator iterator;
    typedef std::vector<argument>::const_iterator const_iterator;

    /// What a lookup by name answers if it finds nothing: unnamed and nil. To be left alone.
    static argument nil_argument;

    varg_list();
    varg_list(const varg_list& other);

    /// Takes up to 26 arguments, as `push_back` does, and ends at the first that is unnamed and
    /// nil: those behind it are ignored. A repeated name is dropped silently.
    varg_list(const argument& first, const argument& a2 = nil_argument,
              const argument& a3 = nil_argument, const argument& a4 = nil_argument,
              const argument& a5 = nil_argument, const argument& a6 = nil_argument,
              const argument& a7 = nil_argument, const argument& a8 = nil_argument,
              const argument& a9 = nil_argument, const argument& a10 = nil_argument,
              const argument& a11 = nil_argument, const argument& a12 = nil_argument,
              const argument& a13 = nil_argument, const argument& a14 = nil_argument,
              const argument& a15 = nil_argument, const argument& a16 = nil_argument,
              const argument& a17 = nil_argument, const argument& a18 = nil_argument,
              const argument& a19 = nil_argument, const argument& a20 = nil_argument,
              const argument& a21 = nil_argument, const argument& a22 = nil_argument,
              const argument& a23 = nil_argument, const argument& a24 = nil_argument,
              const argument& a25 = nil_argument, const argument& a26 = nil_argument);

    /// Appends a copy. Answers false, and leaves the list alone, if the name is in the list.
    bool push_back(const argument& value);
    bool push_back(const strings::ustring8& name, const types::variant& value);

    bool has_argument(const strings::ustring8& name) const;

    /// The first argument of that name, or `nil_argument`. Never fails.
    const argument& at(const strings::ustring8& name) const;
    const argument& operator[](const strings::ustring8& name) const;

    /// The argument at a position. All four raise `std::out_of_range` from `count()` on.
    const argument& at(unsigned long position) const;
    const argument& operator[](unsigned long position) const;
    argument& at(unsigned long position);
    argument& operator[](unsigned long position);

    /// The first argument of that name, or `end()`.
    iterator find(const strings::ustring8& name);
    const_iterator find(const strings::ustring8& name) const;

    iterator begin();
    const_iterator begin() const;
    iterator end();
    const_iterator end() const;

    unsigned long count() const;
    bool empty() const;

    /// Whether the list is empty.
    bool equal(const types::nil_t& nil_tag) const;
    bool operator==(const types::nil_t& nil_tag) const;
    bool operator!=(const types::nil_t& nil_tag) const;

    /// Both remove all arguments.
    void clear();
    void erase();

    /// Removes the first argument of that name, or the one at a position. Without such an argument
    /// nothing happens.
    void erase(const strings::ustring8& name);
    void erase(unsigned long position);

    /// Removes one argument or a range of this list; returns the place of the one that follows.
    iterator erase(iterator position);
    iterator erase(iterator first, iterator last);

    varg_list& assign(const varg_list& other);
    varg_list& operator=(const varg_list& other);

private:
    std::vector<argument> m_arguments;
};

}  // namespace generic
}  // namespace TOVA_2_18
