/// @file
/// Argument lists: what a caller passes where a variadic function would be used elsewhere.
///
///     using tova::generic::argument;
///     tova::generic::varg_list list(1, "two", argument("count", 3));
///     list.push_back("done", true);
///     const tova::types::variant& count = list["count"].value();
///     if (list["other"] == tova::types::nil)
///         list.push_back("other", 5);
///
/// Threads: a list, its copies and the arguments taken from it share the bodies of their values and
/// belong to one thread at a time. Beyond that, all failed lookups by name of the whole process
/// return one object, `nil_argument`: two threads may test it at once (`== types::nil`), but
/// copying it, or its value, changes the reference count of its body. Two threads that copy it at
/// the same time race, even if their lists have nothing in common. Call `has_argument` first, or
/// `find`, where several threads look names up that may be missing.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/argument.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant.hpp>

#include <vector>

namespace TOVA_2_18 {
namespace generic {

/// An ordered list of arguments, read by position or by name.
///
/// A list that is filled through `push_back` and the constructors holds each name at most once;
/// unnamed arguments may repeat. Changes through iterators and references are not checked. Names
/// are compared byte for byte, in a linear search from the front. Positions count from 0. A copy
/// has arguments of its own that share the bodies of their values. Raises what an allocation
/// raises, and where it says so `std::out_of_range`.
class TOVA_API varg_list {
public:
    /// Iterators as a `std::vector` has them: a change of the length makes them invalid.
    typedef std::vector<argument>::iterator iterator;
    typedef std::vector<argument>::const_iterator const_iterator;

    /// The result of every lookup by name that finds nothing: unnamed, with a nil value. One object
    /// for the whole process. Never write to it, and copy it on one thread at a time.
    static argument nil_argument;

    varg_list();  ///< An empty list.
    varg_list(const varg_list& other);

    /// Appends up to 26 arguments, as `push_back` does. The first unnamed nil ends the list: it and
    /// the arguments after it are ignored. An argument whose name is already in the list is dropped
    /// silently.
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

    /// Appends a copy and returns true. Returns false, and leaves the list alone, if the name is
    /// already in the list.
    bool push_back(const argument& value);
    bool push_back(const strings::ustring8& name, const types::variant& value);

    /// Whether the list has an argument of that name. Copies nothing. Never fails.
    bool has_argument(const strings::ustring8& name) const;

    /// The first argument of that name, or `nil_argument`. Never fails.
    ///
    /// A failed lookup returns the same object on all threads. Compare it with `types::nil` there;
    /// two threads that copy it at the same time race on its reference count.
    const argument& at(const strings::ustring8& name) const;
    const argument& operator[](const strings::ustring8& name) const;

    /// The argument at a position. Raises `std::out_of_range` for a position of `count()` or more.
    const argument& at(unsigned long position) const;
    const argument& operator[](unsigned long position) const;
    argument& at(unsigned long position);
    argument& operator[](unsigned long position);

    /// The first argument of that name, or `end()` of this list. Never fails. Unlike `at`, a failed
    /// search never leads to the shared `nil_argument`.
    iterator find(const strings::ustring8& name);
    const_iterator find(const strings::ustring8& name) const;

    /// The arguments in order; what changes through an iterator is not checked. Never fails.
    iterator begin();
    const_iterator begin() const;
    iterator end();
    const_iterator end() const;

    /// The number of arguments. Never fails.
    unsigned long count() const;

    /// Whether there are no arguments. Never fails.
    bool empty() const;

    /// Compares the list with nil, which it equals if it is empty. Never fails.
    bool equal(const types::nil_t& nil_tag) const;
    bool operator==(const types::nil_t& nil_tag) const;
    bool operator!=(const types::nil_t& nil_tag) const;

    /// Removes all arguments. Never fails.
    void clear();
    void erase();

    /// Removes the first argument of that name, or the one at a position. Does nothing if there is
    /// none.
    void erase(const strings::ustring8& name);
    void erase(unsigned long position);

    /// Removes one argument or a range of this list, and returns an iterator to the one after it.
    iterator erase(iterator position);
    iterator erase(iterator first, iterator last);

    /// Replaces the contents by copies. A list assigned to itself stays as it is.
    varg_list& assign(const varg_list& other);
    varg_list& operator=(const varg_list& other);

private:
    std::vector<argument> m_arguments;
};

}  // namespace generic
}  // namespace TOVA_2_18
